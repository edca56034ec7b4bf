// The sample library, and what must hold for every molecule in it: the formula that is told
// equals the one counted, and the fingerprint doesn't depend on how the molecule came.

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "contract/bostrel/strings.h"
#include "contract/quarnel/perception.h"
#include "korvex/path.h"
#include "tests/mol_helpers.h"

namespace ZQKorvex {
namespace {

struct Entry {
  std::string smiles;
  std::string name;
  std::string formula;
};

std::vector<Entry> ReadLibrary() {
  std::ifstream file(KORVEX_SOURCE_DIR "/data/drugs.smi");
  std::vector<Entry> entries;
  for (std::string line; std::getline(file, line);) {
    const std::vector<std::string> fields = ZQStringTokenize(line, '\t');
    EXPECT_EQ(fields.size(), 3U) << line;
    if (fields.size() == 3) entries.push_back({fields[0], fields[1], fields[2]});
  }
  return entries;
}

// Hill order: carbon, hydrogen, then the alphabet; the alphabet alone where there's no carbon.
std::string Formula(const ZQMolBase& mol) {
  std::map<std::string, unsigned int> counts;
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    ++counts[ZQGetAtomicSymbol(atom->GetAtomicNum())];
    if (atom->GetImplicitHCount() != 0) counts["H"] += atom->GetImplicitHCount();
  }
  std::string formula;
  const auto write = [&](const std::string& symbol) {
    const auto found = counts.find(symbol);
    if (found == counts.end()) return;
    formula += symbol + (found->second == 1 ? "" : std::to_string(found->second));
    counts.erase(found);
  };
  if (counts.count("C") != 0) {
    write("C");
    write("H");
  }
  while (!counts.empty()) write(std::string(counts.begin()->first));
  return formula;
}

// A V2000 molfile without coordinates; the valence is told only where the usual one is wrong.
std::string ToMolfile(const ZQMolBase& mol) {
  char line[100];
  std::string text = "title\n\n\n";
  std::snprintf(line, sizeof line, "%3u%3u  0  0  0  0  0  0  0  0999 V2000\r\n", mol.NumAtoms(),
                mol.NumBonds());
  text += line;
  std::string properties;
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    const unsigned int sum = atom->GetValence() - atom->GetImplicitHCount();
    const bool usual = ZQDefaultHCount(atom->GetAtomicNum(), atom->GetFormalCharge(), sum) ==
                       atom->GetImplicitHCount();
    const unsigned int valence = usual ? 0 : atom->GetValence() == 0 ? 15 : atom->GetValence();
    std::snprintf(line, sizeof line, "    0.0000    0.0000    0.0000 %-3s 0  0  0  0  0%3u\r\n",
                  ZQGetAtomicSymbol(atom->GetAtomicNum()), valence);
    text += line;
    const auto add = [&](const char* name, int value) {
      std::snprintf(line, sizeof line, "M  %s  1 %3u %3d\r\n", name, atom->GetIdx() + 1, value);
      if (value != 0) properties += line;
    };
    add("CHG", atom->GetFormalCharge());
    add("ISO", static_cast<int>(atom->GetIsotope()));
  }
  for (auto bond = mol.GetBonds(); bond; ++bond) {
    std::snprintf(line, sizeof line, "%3u%3u%3u  0\r\n", bond->GetBgn()->GetIdx() + 1,
                  bond->GetEnd()->GetIdx() + 1, bond->GetOrder());
    text += line;
  }
  return text + properties + "M  END\r\n";
}

TEST(Drugs, FormulasAreTheOnesTold) {
  const std::vector<Entry> library = ReadLibrary();
  EXPECT_GE(library.size(), 300U);
  std::set<std::string> names;
  for (const Entry& entry : library) {
    const ZQMol mol = ReadSmiles(entry.smiles);
    EXPECT_EQ(Formula(mol), entry.formula) << entry.name;
    EXPECT_TRUE(names.insert(entry.name).second) << entry.name << " stands twice";
  }
}

TEST(Drugs, PathBitsDoNotDependOnHowTheMoleculeCame) {
  struct Typing {
    unsigned int maxbonds;
    unsigned int atype;
    unsigned int btype;
  };
  // The default; everything at once; the equivalences; nothing but the shape.
  const Typing typings[] = {
      {5, 191, 3}, {6, 4223, 7}, {5, 1 | 256 | 512 | 1024 | 4096, 1}, {7, 0, 1}};
  unsigned int seed = 0;
  for (const Entry& entry : ReadLibrary()) {
    const ZQMol mol = ReadSmiles(entry.smiles);
    ZQMol fromMolfile;
    ASSERT_TRUE(ZQMolfileToMol(fromMolfile, ToMolfile(mol))) << entry.name;
    const ZQMol rewritten = ReadSmiles(ZQMolToSmiles(mol));
    ZQMol symmetric(mol);
    ZQPerceiveSymmetry(symmetric, true, false);  // the filter also below its usual size
    const std::vector<std::pair<const char*, ZQMol>> guises{
        {"shuffled", Shuffled(mol, ++seed)},
        {"with hydrogens", WithHydrogens(mol)},
        {"shuffled with hydrogens", Shuffled(WithHydrogens(mol), ++seed)},
        {"as a molfile", fromMolfile},
        {"as another SMILES", rewritten},
        {"with symmetry classes", symmetric},
    };
    for (const Typing& typing : typings) {
      ZQFingerPrint expected;
      ASSERT_TRUE(
          ZQMakePathFP(expected, mol, 4096, 0, typing.maxbonds, typing.atype, typing.btype));
      EXPECT_GT(expected.CountBits(), 0U) << entry.name;
      for (const auto& [guise, other] : guises) {
        ZQFingerPrint fp;
        ASSERT_TRUE(ZQMakePathFP(fp, other, 4096, 0, typing.maxbonds, typing.atype, typing.btype));
        EXPECT_TRUE(fp == expected) << entry.name << ' ' << guise << ", atype " << typing.atype;
      }
    }
  }
}

}  // namespace
}  // namespace ZQKorvex
