// The program's explanations, drawings and reports, as files that other programs read.

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <map>
#include <set>

#include "korvex/korvex.h"
#include "tests/mol_helpers.h"
#include "tests/molfile_helpers.h"
#include "tests/program_helpers.h"
#include "tests/xml_helpers.h"

namespace ZQKorvex {
namespace {

using Words = std::vector<std::string>;
using Json = rapidjson::Value;
using Indices = std::vector<unsigned int>;

constexpr const char* aspirin = "CC(=O)Oc1ccccc1C(=O)O";
constexpr const char* salicylicAcid = "OC(=O)c1ccccc1O";

Indices IndicesOf(const Json& array) {
  Indices indices;
  for (const Json& value : array.GetArray()) indices.push_back(value.GetUint());
  return indices;
}

// Whether the bonds connect atoms of the list.
void ExpectWithin(const ZQMol& mol, const Indices& atoms, const Indices& bonds) {
  const std::set<unsigned int> members(atoms.begin(), atoms.end());
  EXPECT_EQ(members.size(), atoms.size());
  for (const unsigned int atom : atoms) EXPECT_LT(atom, mol.NumAtoms());
  for (const unsigned int idx : bonds) {
    const ZQBondBase* bond = mol.GetBondAt(idx);
    ASSERT_TRUE(bond);
    EXPECT_TRUE(members.contains(bond->GetBgn()->GetIdx()));
    EXPECT_TRUE(members.contains(bond->GetEnd()->GetIdx()));
  }
}

class ReportsTest : public ProgramFixture {
 protected:
  rapidjson::Document Explained(Words words) const {
    words.insert(words.begin(), "explain");
    words.insert(words.end(), {"-format", "json"});
    rapidjson::Document json;
    json.Parse(Output(words).c_str());
    EXPECT_FALSE(json.HasParseError());
    return json;
  }
  // The data in a page, which must be well-formed, refer to nothing outside, and have its drawings.
  rapidjson::Document DataOf(const std::string& name, std::size_t drawings) const {
    const std::string page = ReadFile(folder / name);
    const std::vector<XmlElement> elements = ReadXml(page);
    rapidjson::Document json;
    std::size_t numDrawings = 0;
    for (const XmlElement& element : elements) {
      if (element.Has("id", "data")) json.Parse(element.text.c_str());
      numDrawings += element.attributes.contains("data-drawing");
      for (const char* reference : {"src", "href", "xlink:href", "action"}) {
        EXPECT_FALSE(element.attributes.contains(reference)) << element.name;
      }
    }
    EXPECT_EQ(page.find("@import"), std::string::npos);
    EXPECT_EQ(page.find("url("), std::string::npos);
    EXPECT_EQ(numDrawings, drawings);
    EXPECT_TRUE(json.IsObject());
    return json;
  }
};

TEST_F(ReportsTest, PatternsOfOneMolecule) {
  // A molfile whose atoms are not in the order of a SMILES.
  const ZQMol mol = Shuffled(ReadSmiles("CC(=O)Oc1ccccc1C(=O)[O-]"), 5);
  WriteFile(folder / "mol.mol", ToMolfile(mol, false));
  for (const char* kind : {"Path", "Circular", "Tree"}) {
    const rapidjson::Document json = Explained({"mol.mol", "-fptype", kind});
    EXPECT_EQ(std::string(json["type"].GetString()).find(kind), 0U);
    const ZQMol read = ReadSmiles(json["molecule"].GetString());
    for (unsigned int i = 0; i < mol.NumAtoms(); ++i) {
      EXPECT_EQ(read.GetAtomAt(i)->GetAtomicNum(), mol.GetAtomAt(i)->GetAtomicNum());
    }
    ZQFingerPrint fp;
    ASSERT_TRUE(ZQMakeFP(fp, mol, ZQReadFPType(json["type"].GetString())));
    std::set<unsigned int> bits;
    std::set<unsigned int> covered;
    for (const Json& pattern : json["patterns"].GetArray()) {
      bits.insert(pattern["bit"].GetUint());
      EXPECT_TRUE(fp.IsBitOn(pattern["bit"].GetUint()));
      EXPECT_TRUE(pattern["identifier"].IsUint());
      ExpectWithin(mol, IndicesOf(pattern["atoms"]), IndicesOf(pattern["bonds"]));
      if (IndicesOf(pattern["atoms"]).size() == 1) {
        const ZQAtomBase* atom = mol.GetAtomAt(pattern["atoms"][0].GetUint());
        const std::string text = pattern["text"].GetString();
        EXPECT_EQ(text.find_first_of("Oo") != std::string::npos || text.find("#8") == 1,
                  atom->GetAtomicNum() == 8)
            << text;
      }
    }
    EXPECT_EQ(bits.size(), fp.CountBits());
    for (const Json& set : json["coverage"].GetArray()) {
      for (const unsigned int atom : IndicesOf(set["atoms"])) covered.insert(atom);
    }
    EXPECT_EQ(covered.size(), mol.NumAtoms());
    const Words lines = Lines(Output({"explain", "mol.mol", "-fptype", kind}));
    EXPECT_EQ(lines.size(), 2 + json["patterns"].Size() + json["coverage"].Size());
  }
}

TEST_F(ReportsTest, WhatTwoMoleculesShare) {
  const std::array<ZQMol, 2> mols{ReadSmiles(aspirin), ReadSmiles(salicylicAcid)};
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    const Words words{aspirin, salicylicAcid, "-fptype", kind.name};
    const rapidjson::Document json = Explained(words);
    const double a = json["counts"]["a"].GetUint();
    const double b = json["counts"]["b"].GetUint();
    const double both = json["counts"]["both"].GetUint();
    EXPECT_NEAR(json["scores"]["Tanimoto"].GetDouble(), both / (a + b - both), 1e-6) << kind.name;
    EXPECT_EQ(json["scores"].MemberCount(), kind.IsUnhashed() ? 1U : 6U);
    std::array<std::set<unsigned int>, 2> shared;
    std::size_t last = ~std::size_t{0};
    for (const Json& fragment : json["overlap"].GetArray()) {
      EXPECT_STRNE(fragment["text"].GetString(), "");
      const std::size_t size = fragment["atoms"][0].Size();
      EXPECT_LE(size, last);
      last = size;
      for (const unsigned int side : {0U, 1U}) {
        const Indices atoms = IndicesOf(fragment["atoms"][side]);
        EXPECT_EQ(atoms.size(), size);
        ExpectWithin(mols[side], atoms, IndicesOf(fragment["bonds"][side]));
        shared[side].insert(atoms.begin(), atoms.end());
      }
      for (unsigned int i = 0; i < size && kind.number == ZQFPType::Path; ++i) {
        EXPECT_EQ(mols[0].GetAtomAt(fragment["atoms"][0][i].GetUint())->GetAtomicNum(),
                  mols[1].GetAtomAt(fragment["atoms"][1][i].GetUint())->GetAtomicNum());
      }
    }
    const bool hasFragments = kind.fragments.overlap != nullptr;
    EXPECT_EQ(json["overlap"].Empty(), !hasFragments);
    for (const unsigned int side : {0U, 1U}) {
      const double atoms = mols[side].NumAtoms();
      EXPECT_NEAR(json["covered"][side]["atoms"].GetDouble(),
                  static_cast<double>(shared[side].size()) / atoms, 1e-6);
      EXPECT_EQ(json["weights"][side].Size(), hasFragments ? mols[side].NumAtoms() : 0U);
    }
  }
  EXPECT_EQ(
      Korvex({"explain", aspirin, salicylicAcid, "-fptype", "UHPath", "-simfunc", "Dice"}).exitCode,
      2);
  EXPECT_EQ(Explained({"C", "[Na+]", "-fptype", "Path"})["overlap"].Size(), 0U);
}

TEST_F(ReportsTest, KindsWithoutFragments) {
  EXPECT_EQ(Lines(Output({"explain", "*", "-html", "dummy.html"})).size(),
            2U);  // none, but all right
  RunResult run = Korvex({"explain", aspirin, "-fptype", "Lingo"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("ZQGetFPPatterns() is not available for Lingo fingerprint!"),
            std::string::npos);
  run = Korvex({"explain", aspirin, "-fptype", "MACCS166"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_NE(run.err.find("ZQGetFPPatterns() is not available for MACCS fingerprint!"),
            std::string::npos);
  EXPECT_NE(run.out.find("\ncoverage\t"), std::string::npos);
  EXPECT_EQ(run.out.find("\npattern\t"), std::string::npos);
  // The formula of a report gives its score; texts of fewer than four characters have none.
  const auto formulaOf = [this](const Words& words) {
    Korvex(words);
    return std::string(DataOf("pair.html", 2)["pairs"][0]["formula"].GetString());
  };
  EXPECT_EQ(formulaOf({"explain", "CCO", "CCN", "-fptype", "Lingo", "-simfunc", "Manhattan",
                       "-html", "pair.html"})
                .find("0: "),
            0U);
  EXPECT_TRUE(formulaOf({"explain", "CCCO", "CCCN", "-fptype", "Lingo", "-simfunc", "Tversky",
                         "-alpha", "0.333", "-html", "pair.html"})
                  .ends_with(" = 0 / (0.333 * (1 - 0) + 0.05 * (1 - 0) + 0)"));
}

TEST_F(ReportsTest, ExplanationsAsFiles) {
  Output({"explain", aspirin, salicylicAcid, "-html", "pair.html", "-svg", "pair.svg"});
  const rapidjson::Document json = DataOf("pair.html", 2);
  const Json& pair = json["pairs"][0];
  ASSERT_EQ(pair["sides"].Size(), 2U);
  EXPECT_EQ(pair["sides"][0]["weights"].Size(), 13U);
  for (const Json& fragment : pair["fragments"].GetArray()) {
    ASSERT_EQ(fragment.Size(), 4U);
    EXPECT_LT(fragment[0].GetUint(), json["fragments"].Size());
    EXPECT_GE(fragment[2].Size(), json["fragments"][fragment[0].GetUint()]["size"].GetUint());
  }
  const std::vector<XmlElement> svg = ReadXml(ReadFile(folder / "pair.svg"));
  EXPECT_EQ(AttributesOf(svg, "g", "atom", "data-atom").size(), 13U + 10U);
  EXPECT_EQ(AttributesOf(svg, "path", "bond", "data-bond").size(), 13U + 10U);
  const std::size_t shared =
      json["pairs"][0]["sides"][0]["atoms"].Size() + json["pairs"][0]["sides"][1]["atoms"].Size();
  EXPECT_EQ(AttributesOf(svg, "circle", "halo on", "data-atom").size(), shared);

  Output({"explain", aspirin, salicylicAcid, "-svg", "pair.svg", "-shade", "weights"});
  EXPECT_FALSE(
      AttributesOf(ReadXml(ReadFile(folder / "pair.svg")), "circle", "shade", "data-atom").empty());
  Output({"explain", aspirin, "-html", "one.html", "-svg", "one.svg"});
  EXPECT_EQ(DataOf("one.html", 1)["pairs"][0]["sides"].Size(), 1U);
  EXPECT_EQ(ReadXml(ReadFile(folder / "one.svg")).front().name, "svg");

  // A file that can't be written is an error, and the earlier one stays.
  WriteFile(folder / "old.html", "old");
  const RunResult run = folder.Run({KORVEX_PROGRAM, "explain", aspirin, "-html", "old.html"}, 6000);
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(ReadFile(folder / "old.html"), "old");
  for (const char* option : {"-html", "-svg"}) {
    for (const std::string& name : {std::string("nowhere/file"), Repeated("a", 300)}) {
      const RunResult lost = Korvex({"explain", aspirin, option, name});
      EXPECT_EQ(lost.exitCode, 1);
      EXPECT_NE(lost.err.find("cannot write " + name + ": "), std::string::npos) << lost.err;
      EXPECT_EQ(lost.out, "");
    }
  }
  EXPECT_EQ(Korvex({"explain", aspirin, "-svg", "both", "-html", "both"}).exitCode, 2);
}

TEST_F(ReportsTest, ReportOfASearch) {
  WriteFile(folder / "mols.smi", std::string(aspirin) + " </script><b>&\"'\x01\xff\xEF\xBF\xBE\n" +
                                     salicylicAcid + " acid\nnonsense\n" +
                                     "[Na+].[Cl-] salt\nC methane\nCOC(=O)c1ccccc1O\n" + "C" +
                                     Repeated("C", ZQMostLayoutAtoms) + "O chain\n");
  WriteFile(folder / "queries.smi", std::string(salicylicAcid) + " first\nCCCCCCO second\n");
  Output({"create", "mols.smi", "mols.fpbin"});
  for (const char* source : {"mols.fpbin", "mols.smi"}) {
    const Words lines =
        Lines(Output({"search", source, "queries.smi", "-html", "hits.html", "-threads", "3"}));
    const rapidjson::Document json = DataOf("hits.html", 2 + lines.size());
    ASSERT_EQ(json["pairs"].Size(), lines.size());
    const std::string page = ReadFile(folder / "hits.html");
    std::size_t scores = 0;
    for (const XmlElement& element : ReadXml(page)) {
      if (element.Has("class", "score")) {
        const std::string column = "\t" + element.text;
        EXPECT_NE(lines[scores++].find(column.substr(0, 4)), std::string::npos) << element.text;
      }
    }
    EXPECT_EQ(scores, lines.size());
    for (const Json& pair : json["pairs"].GetArray()) EXPECT_EQ(pair["sides"].Size(), 2U);
    const std::string count = source == std::string("mols.smi") ? "6" : "7";  // with the unread one
    EXPECT_NE(page.find("of " + count + " records"), std::string::npos);
  }
  // The plot marks the bins of the hits, which of a distance are the lowest.
  for (const char* measure : {"Tanimoto", "Manhattan"}) {
    const bool isDistance = measure == std::string("Manhattan");
    Output({"search", "mols.smi", aspirin, "-simfunc", measure, "-descending",
            isDistance ? "false" : "true", "-limit", "1", "-html", "best.html"});
    std::vector<std::string> kept;
    const std::vector<XmlElement> elements = ReadXml(ReadFile(folder / "best.html"));
    for (std::size_t i = 0; i + 1 < elements.size(); ++i) {
      if (elements[i].Has("class", "kept")) kept.push_back(elements[i + 1].text.substr(0, 12));
    }
    EXPECT_EQ(kept, Words{isDistance ? "0.00 to 0.02" : "0.98 to 1.00"});
  }
  // Without hits; without molecules; with too many hits.
  Output({"search", "mols.smi", "C", "-cutoff", "1", "-html", "none.html"});
  EXPECT_EQ(DataOf("none.html", 1)["pairs"].Size(), 0U);
  std::filesystem::rename(folder / "mols.smi", folder / "moved.smi");
  const RunResult run = Korvex({"search", "mols.fpbin", aspirin, "-html", "lost.html"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_NE(run.err.find("-molecules"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(folder / "lost.html"));
  std::string many;
  for (int i = 1; i <= 1001; ++i) many += Repeated("C", i % 50 + 1) + "O\n";
  WriteFile(folder / "many.smi", many);
  EXPECT_EQ(Korvex({"search", "many.smi", "CCO", "-limit", "0", "-html", "many.html"}).exitCode, 1);
}

}  // namespace
}  // namespace ZQKorvex
