// The sample library, and invariants of every molecule in it: the listed formula equals the counted
// one, and the fingerprint doesn't depend on the molecule's input format.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>

#include "contract/bostrel/strings.h"
#include "contract/quarnel/perception.h"
#include "korvex/path.h"
#include "tests/mol_helpers.h"
#include "tests/molfile_helpers.h"

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

using Counts = std::map<std::string, unsigned long>;

Counts ReadFormula(const std::string& formula) {
  Counts counts;
  for (std::size_t at = 0, digits = 0; at < formula.size(); at = digits) {
    const std::size_t end = formula.find_first_not_of("abcdefghijklmnopqrstuvwxyz", at + 1);
    const std::string symbol = formula.substr(at, end - at);
    digits = std::min(formula.find_first_not_of("0123456789", at + symbol.size()), formula.size());
    const std::string count = formula.substr(at + symbol.size(), digits - at - symbol.size());
    counts[symbol] = count.empty() ? 1 : std::stoul(count);
  }
  return counts;
}

Counts CountElements(const ZQMolBase& mol) {
  Counts counts;
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    ++counts[ZQGetAtomicSymbol(atom->GetAtomicNum())];
    if (atom->GetImplicitHCount() != 0) counts["H"] += atom->GetImplicitHCount();
  }
  return counts;
}

TEST(Drugs, FormulasAreTheOnesTold) {
  const std::vector<Entry> library = ReadLibrary();
  EXPECT_GE(library.size(), 300U);
  std::set<std::string> names;
  for (const Entry& entry : library) {
    const ZQMol mol = ReadSmiles(entry.smiles);
    EXPECT_EQ(CountElements(mol), ReadFormula(entry.formula)) << entry.name;
    EXPECT_TRUE(names.insert(entry.name).second) << entry.name << " stands twice";
  }
}

TEST(Drugs, PathBitsDoNotDependOnHowTheMoleculeCame) {
  // The default; everything at once; the equivalences; only the shape.
  const unsigned int typings[] = {191, 4223, 1 | 256 | 512 | 1024 | 4096, 0};
  unsigned int seed = 0;
  for (const Entry& entry : ReadLibrary()) {
    const ZQMol mol = ReadSmiles(entry.smiles);
    ZQMol fromMolfile;
    ASSERT_TRUE(ZQMolfileToMol(fromMolfile, ToMolfile(mol, ++seed % 2 != 0))) << entry.name;
    const ZQMol rewritten = ReadSmiles(ZQMolToSmiles(mol));
    ZQMol symmetric(mol);
    ZQPerceiveSymmetry(symmetric, true, false);  // the filter also below its usual size
    const std::vector<std::pair<const char*, ZQMol>> guises{
        {"shuffled with hydrogens", Shuffled(WithHydrogens(mol), seed)},
        {"as a molfile", fromMolfile},
        {"as another SMILES", rewritten},
        {"with symmetry classes", symmetric},
    };
    for (const unsigned int atype : typings) {
      ZQFingerPrint expected;
      ASSERT_TRUE(ZQMakePathFP(expected, mol, 4096, 0, 6, atype, 7));
      EXPECT_GT(expected.CountBits(), 0U) << entry.name;
      for (const auto& [guise, other] : guises) {
        ZQFingerPrint fp;
        ASSERT_TRUE(ZQMakePathFP(fp, other, 4096, 0, 6, atype, 7));
        EXPECT_TRUE(fp == expected) << entry.name << ' ' << guise << ", atype " << atype;
      }
    }
  }
}

}  // namespace
}  // namespace ZQKorvex
