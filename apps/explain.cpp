#include <cstdio>
#include <string>
#include <vector>

#include "apps/json.h"
#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "apps/report.h"
#include "korvex/fpdatabaseoptions_params.h"
#include "korvex/fpkinds.h"

namespace KorvexProgram {

namespace {

const ZQNamespaceInterface& Formats() {
  static const ZQNamespaceInterface formats(
      "Format", ZQNamespaceMode::Single,
      {{"tsv", 0, "lines that begin with the name of what they hold"}, {"json", 1, "one object"}});
  return formats;
}

const ZQNamespaceInterface& Shades() {
  static const ZQNamespaceInterface shades(
      "Shades", ZQNamespaceMode::Single,
      {{"shared", 0, "the atoms and bonds of shared fragments, in one colour"},
       {"weights", 1, "each atom by its weight, in two colours"}});
  return shades;
}

void Configure(ZQInterface& interface) {
  AddArgument(interface, "MOL1", "A SMILES, or a molecule file whose first record counts");
  interface.AddParameter(
      ZQParameter("MOL2", "", ZQParamType::String,
                  "The same; without it, the fragments of the first molecule are listed")
          .SetPositional()
          .SetDefault(std::string())
          .SetDefaultText("none"));
  AddChoice(interface, "-format", "-f", "Output format", Formats(), "tsv");
  interface.AddParameter({"-svg", "", ZQParamType::String, "Writes a drawing to this file"});
  AddChoice(interface, "-shade", "", "What the drawing of two molecules shows", Shades(), "shared");
  interface.AddParameter({"-html", "", ZQParamType::String, "Writes a report to this file"});
  AddTypeOptions(interface, Kinds::All);
  ZQConfigureFPDatabaseOptionsSimFunc(interface);
  AddTverskyCoeffs(interface);
  AddMoleculeFileOptions(interface);
}

// The first molecule of an argument; false after a message, also if it has no fingerprint.
bool ReadFirst(ZQMol& mol, const std::string& argument, const ZQFPTypeBase* type,
               const ZQInterface& interface) {
  ZQMolDatabase molecules;
  ZQFingerPrint fp;
  return OpenMoleculesOrSmiles(molecules, argument, interface) && molecules.GetMolecule(mol, 0) &&
         MakeFingerPrint(fp, mol, type, argument);
}

// "0,4,5"
std::string Joined(const std::vector<unsigned int>& numbers) {
  std::string text;
  for (const unsigned int number : numbers) {
    text.append(text.empty() ? "" : ",").append(std::to_string(number));
  }
  return text;
}

// ---- one molecule

struct Patterns {
  std::vector<ZQFPPattern> patterns;
  std::vector<ZQAtomBondSet> coverage;
};

void PrintPatternsAsTsv(const Patterns& found, const ZQFPTypeBase* type,
                        const std::string& smiles) {
  std::printf("type\t%s\nmolecule\t%s\n", type->GetFPTypeString().c_str(), smiles.c_str());
  for (const ZQFPPattern& pattern : found.patterns) {
    const Marks marks = MarksOf(pattern);
    std::printf("pattern\t%u\t%u\t%s\t%s\t%s\n", pattern.GetBit(), pattern.GetHash(),
                pattern.GetSMARTS().c_str(), Joined(marks.atoms).c_str(),
                Joined(marks.bonds).c_str());
  }
  for (const ZQAtomBondSet& set : found.coverage) {
    const Marks marks = MarksOf(set);
    std::printf("coverage\t%s\t%s\n", Joined(marks.atoms).c_str(), Joined(marks.bonds).c_str());
  }
}

void WriteMarks(JsonWriter& writer, const Marks& marks) {
  writer.Key("atoms");
  writer.Numbers(marks.atoms);
  writer.Key("bonds");
  writer.Numbers(marks.bonds);
}

void PrintPatternsAsJson(const Patterns& found, const ZQFPTypeBase* type,
                         const std::string& smiles) {
  JsonWriter writer;
  writer.Object([&] {
    writer.Key("type");
    writer.Text(type->GetFPTypeString());
    writer.Key("molecule");
    writer.Text(smiles);
    writer.Key("patterns");
    writer.Array([&] {
      for (const ZQFPPattern& pattern : found.patterns) {
        writer.Object([&] {
          writer.Key("bit");
          writer.Number(pattern.GetBit());
          writer.Key("identifier");
          writer.Number(pattern.GetHash());
          writer.Key("text");
          writer.Text(pattern.GetSMARTS());
          WriteMarks(writer, MarksOf(pattern));
        });
      }
    });
    writer.Key("coverage");
    writer.Array([&] {
      for (const ZQAtomBondSet& set : found.coverage) {
        writer.Object([&] { WriteMarks(writer, MarksOf(set)); });
      }
    });
  });
  std::printf("%s\n", std::string(writer.Get()).c_str());
}

// Atoms and bonds in any of the sets.
Marks UnionOf(const std::vector<ZQAtomBondSet>& sets, const ZQMolBase& mol) {
  std::vector<bool> atoms(mol.GetMaxAtomIdx());
  std::vector<bool> bonds(mol.GetMaxBondIdx());
  for (const ZQAtomBondSet& set : sets) {
    for (const ZQAtomBase* atom : set.GetAtoms()) atoms[atom->GetIdx()] = true;
    for (const ZQBondBase* bond : set.GetBonds()) bonds[bond->GetIdx()] = true;
  }
  return {IndicesOfMarks(atoms), IndicesOfMarks(bonds)};
}

template <class T>
std::vector<T> Collected(ZQIter<T> items) {
  std::vector<T> all;
  for (; items; ++items) all.push_back(*items);
  return all;
}

// ---- two molecules

std::vector<std::pair<std::string, float>> ScoresOf(const ZQSimilarityExplanation& explanation,
                                                    const ReportMeasure& measure) {
  const auto& [a, b] = explanation.sides;
  std::vector<std::pair<std::string, float>> scores;
  for (unsigned int number = 1; ZQSimMeasure::IsValid(number); ++number) {
    if (!IsComparedBy(a.fp.GetFPTypeBase(), number)) continue;
    scores.emplace_back(ZQGetSimilarityMeasureName(number),
                        ZQGetSimilarity(number, a.fp, b.fp, measure.alpha, measure.beta));
  }
  return scores;
}

using Molecules = std::vector<DrawnMolecule>;

void PrintPairAsTsv(const ZQSimilarityExplanation& explanation, const ZQFPTypeBase* type,
                    const Molecules& molecules, const ReportMeasure& measure) {
  constexpr const char* names = "ab";
  const auto& sides = explanation.sides;
  std::printf("type\t%s\nmolecules\t%s\t%s\n", type->GetFPTypeString().c_str(),
              molecules[0].smiles.c_str(), molecules[1].smiles.c_str());
  for (const auto& [name, score] : ScoresOf(explanation, measure)) {
    std::printf("score\t%s\t%.6f\n", name.c_str(), score);
  }
  std::printf("count\ta\t%u\ncount\tb\t%u\ncount\tboth\t%u\n", sides[0].count, sides[1].count,
              explanation.both);
  for (const ZQSharedFragment& fragment : explanation.overlap) {
    const auto [a, b] = MarksOf(fragment.match);
    std::printf("overlap\t%s\t%s\t%s\t%s\t%s\n", fragment.text.c_str(), Joined(a.atoms).c_str(),
                Joined(b.atoms).c_str(), Joined(a.bonds).c_str(), Joined(b.bonds).c_str());
  }
  for (const std::size_t i : {0, 1}) {
    std::printf("covered\t%c\t%.6f\t%.6f\n", names[i], sides[i].coveredAtoms,
                sides[i].coveredBonds);
  }
  for (const std::size_t i : {0, 1}) {
    for (std::size_t atom = 0; atom < sides[i].weights.size(); ++atom) {
      std::printf("weight\t%c\t%zu\t%.6f\n", names[i], atom, sides[i].weights[atom]);
    }
  }
}

void PrintPairAsJson(const ZQSimilarityExplanation& explanation, const ZQFPTypeBase* type,
                     const Molecules& molecules, const ReportMeasure& measure) {
  const auto& sides = explanation.sides;
  JsonWriter writer;
  writer.Object([&] {
    writer.Key("type");
    writer.Text(type->GetFPTypeString());
    writer.Key("molecules");
    writer.Array([&] {
      for (const DrawnMolecule& molecule : molecules) writer.Text(molecule.smiles);
    });
    writer.Key("scores");
    writer.Object([&] {
      for (const auto& [name, score] : ScoresOf(explanation, measure)) {
        writer.Key(name.c_str());
        writer.Number(score, 6);
      }
    });
    writer.Key("counts");
    writer.Object([&] {
      writer.Key("a");
      writer.Number(sides[0].count);
      writer.Key("b");
      writer.Number(sides[1].count);
      writer.Key("both");
      writer.Number(explanation.both);
    });
    writer.Key("overlap");
    writer.Array([&] {
      for (const ZQSharedFragment& fragment : explanation.overlap) {
        const std::array<Marks, 2> sidesOf = MarksOf(fragment.match);
        writer.Object([&] {
          writer.Key("text");
          writer.Text(fragment.text);
          writer.Key("atoms");
          writer.Array([&] {
            for (const Marks& marks : sidesOf) writer.Numbers(marks.atoms);
          });
          writer.Key("bonds");
          writer.Array([&] {
            for (const Marks& marks : sidesOf) writer.Numbers(marks.bonds);
          });
        });
      }
    });
    writer.Key("covered");
    writer.Array([&] {
      for (const auto& side : sides) {
        writer.Object([&] {
          writer.Key("atoms");
          writer.Number(side.coveredAtoms, 6);
          writer.Key("bonds");
          writer.Number(side.coveredBonds, 6);
        });
      }
    });
    writer.Key("weights");
    writer.Array([&] {
      for (const auto& side : sides) writer.Numbers(side.weights, 6);
    });
  });
  std::printf("%s\n", std::string(writer.Get()).c_str());
}

// ---- the files

// Two drawings beside each other, or one.
std::string DrawTogether(const Molecules& molecules, std::vector<ZQDrawStyle> styles) {
  constexpr unsigned int width = 360;
  constexpr unsigned int height = 250;
  std::string drawings;
  for (std::size_t i = 0; i < molecules.size(); ++i) {
    styles[i].width = width;
    styles[i].height = height;
    styles[i].title = molecules[i].name;
    drawings += "<g transform=\"translate(" + std::to_string(i * width) + ",0)\">" +
                ZQDrawSVG(molecules[i].mol, molecules[i].layout, styles[i]) + "</g>\n";
  }
  const std::string size = std::to_string(molecules.size() * width);
  const std::string high = std::to_string(height);
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + size + "\" height=\"" + high +
         "\" viewBox=\"0 0 " + size + " " + high + "\">\n" + drawings + "</svg>\n";
}

// Writes the files that the options ask for, before anything is printed, so that a closed pipe
// doesn't cost them. False after a message.
bool WriteFiles(const ZQInterface& interface, const Molecules& molecules,
                const std::vector<ZQDrawStyle>& styles, const ReportPair& pair,
                const ZQFPTypeBase* type) {
  if (interface.IsSet("-svg") &&
      !WriteFile(interface.Get<std::string>("-svg"), DrawTogether(molecules, styles))) {
    return false;
  }
  if (!interface.IsSet("-html")) return true;
  std::vector<std::string> drawings;
  for (const DrawnMolecule& molecule : molecules) drawings.push_back(DrawForReport(molecule));
  return WriteFile(interface.Get<std::string>("-html"), MakeExplanationPage(type, pair, drawings));
}

// Draws the molecules if the options ask for a file; false after a message.
bool DrawAll(const ZQInterface& interface, Molecules& molecules) {
  if (!interface.IsSet("-svg") && !interface.IsSet("-html")) return true;
  for (std::size_t i = 0; i < molecules.size(); ++i) {
    if (!molecules[i].Draw(i == 0 ? nullptr : &molecules[0])) return false;
  }
  return true;
}

int ExplainMolecule(const ZQInterface& interface, Molecules& molecules, const ZQFPTypeBase* type) {
  const DrawnMolecule& molecule = molecules.front();
  if (!DrawAll(interface, molecules)) return BadInput;
  const unsigned int numWarnings = NumWarnings();
  const Patterns found{Collected(ZQGetFPPatterns(molecule.mol, type)),
                       Collected(ZQGetFPCoverage(molecule.mol, type, false))};
  const bool isEmpty = found.patterns.empty() && found.coverage.empty();
  if (isEmpty && NumWarnings() != numWarnings) return BadInput;  // this kind has none, or too many
  const Marks covered = UnionOf(found.coverage, molecule.mol);
  ZQDrawStyle style;
  style.atoms = covered.atoms;
  style.bonds = covered.bonds;
  const ReportPair single = DescribePatterns(molecule, found.patterns, covered);
  if (!WriteFiles(interface, molecules, {style}, single, type)) return BadInput;
  if (interface.Get<std::string>("-format") == "json") {
    PrintPatternsAsJson(found, type, molecule.smiles);
  } else {
    PrintPatternsAsTsv(found, type, molecule.smiles);
  }
  return Done;
}

int ExplainPair(const ZQInterface& interface, Molecules& molecules, const ZQFPTypeBase* type) {
  ZQFPDatabaseOptions options;
  ZQSetupFPDatabaseOptions(options, interface);
  const ReportMeasure measure{options.GetSimFunc(), interface.Get<float>("-alpha"),
                              interface.Get<float>("-beta")};
  if (!CheckMeasure(type, measure.number)) return BadUsage;
  if (!DrawAll(interface, molecules)) return BadInput;
  if (!ZQFindFPKind(type)->fragments.overlap) {
    ZQGetFPOverlap(molecules[0].mol, molecules[1].mol, type);  // reports that there are none
  }
  ZQSimilarityExplanation explanation;
  if (!ZQExplainSimilarity(explanation, molecules[0].mol, molecules[1].mol, type, measure.number,
                           measure.alpha, measure.beta)) {
    return BadInput;
  }
  std::vector<ZQDrawStyle> styles(2);
  for (const std::size_t i : {0, 1}) {
    const auto& side = explanation.sides[i];
    if (interface.Get<std::string>("-shade") == "weights") {
      styles[i].weights = side.weights;
    } else {
      styles[i].atoms = IndicesOfMarks(side.sharedAtoms);
      styles[i].bonds = IndicesOfMarks(side.sharedBonds);
    }
  }
  const ReportPair pair = DescribePair(molecules[0], molecules[1], explanation, measure);
  if (!WriteFiles(interface, molecules, styles, pair, type)) return BadInput;
  if (interface.Get<std::string>("-format") == "json") {
    PrintPairAsJson(explanation, type, molecules, measure);
  } else {
    PrintPairAsTsv(explanation, type, molecules, measure);
  }
  return Done;
}

int Run(const ZQInterface& interface) {
  const ZQFPTypeBase* type = GetTypeOption(interface, Kinds::All);
  if (!type) return BadUsage;
  if (interface.IsSet("-svg") && interface.IsSet("-html") &&
      interface.Get<std::string>("-svg") == interface.Get<std::string>("-html")) {
    ZQThrow.Error("-svg and -html name the same file");
    return BadUsage;
  }
  Molecules molecules(interface.IsSet("MOL2") ? 2 : 1);
  for (std::size_t i = 0; i < molecules.size(); ++i) {
    const auto argument = interface.Get<std::string>(i == 0 ? "MOL1" : "MOL2");
    if (!ReadFirst(molecules[i].mol, argument, type, interface)) return BadInput;
    molecules[i].Name();
  }
  return molecules.size() == 1 ? ExplainMolecule(interface, molecules, type)
                               : ExplainPair(interface, molecules, type);
}

}  // namespace

const Command explainCommand{"explain", "Prints the fragments behind a fingerprint or a similarity",
                             Configure, Run};

}  // namespace KorvexProgram
