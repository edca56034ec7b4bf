#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/readers.h"
#include "tests/mol_helpers.h"
#include "tests/told_helpers.h"

namespace Quarnel {

namespace {

struct Atom {
  const char* symbol;
  double x = 0, y = 0, z = 0;
  int charge = 0, radical = 0, mass = 0, valence = 0, parity = 0;  // as V3000 writes them
};
struct Bond {
  int bgn, end, type = 1;
  int cfg = 0;  // as V3000 writes it: 1 up, 2 either, 3 down
};

__attribute__((format(printf, 2, 3))) void Add(std::string& text, const char* format, ...) {
  char line[200];
  va_list values;
  va_start(values, format);
  std::vsnprintf(line, sizeof line, format, values);
  va_end(values);
  text += line;
}

/// One molecule in either version. Atoms are mapped by their number.
std::string Write(const std::vector<Atom>& atoms, const std::vector<Bond>& bonds, bool v3000) {
  std::string text = "title\n  program\n\n";
  std::string properties;
  const int numAtoms = static_cast<int>(atoms.size());
  const int numBonds = static_cast<int>(bonds.size());
  if (v3000) {
    text += "  0  0  0     0  0            999 V3000\nM  V30 BEGIN CTAB\n";
    Add(text, "M  V30 COUNTS %d %d 0 0 0\nM  V30 BEGIN ATOM\n", numAtoms, numBonds);
  } else {
    Add(text, "%3d%3d  0  0  0  0  0  0  0  0999 V2000\n", numAtoms, numBonds);
  }
  for (int i = 0; i < numAtoms; ++i) {
    const Atom& a = atoms[static_cast<std::size_t>(i)];
    if (v3000) {
      // Broken up as a writer may do it, in the middle of a number.
      Add(text, "M  V30 1-\nM  V30 %d %s %g %g %g %d CHG=%d RAD=%d MASS=%d VAL=%d CFG=%d\n", i,
          a.symbol, a.x, a.y, a.z, i + 1, a.charge, a.radical, a.mass, a.valence, a.parity);
      continue;
    }
    Add(text, "%10.4f%10.4f%10.4f %-3s 0  0%3d  0  0%3d  0  0  0%3d  0  0\n", a.x, a.y, a.z,
        a.symbol, a.parity, a.valence == -1 ? 15 : a.valence, i + 1);
    if (a.charge != 0) Add(properties, "M  CHG  1 %3d %3d\n", i + 1, a.charge);
    if (a.radical != 0) Add(properties, "M  RAD  1 %3d %3d\n", i + 1, a.radical);
    if (a.mass != 0) Add(properties, "M  ISO  1 %3d %3d\n", i + 1, a.mass);
  }
  if (v3000) text += "M  V30 END ATOM\nM  V30 BEGIN BOND\n";
  for (int i = 0; i < numBonds; ++i) {
    const Bond& b = bonds[static_cast<std::size_t>(i)];
    const int stereo = b.cfg == 3 ? 6 : b.cfg == 2 ? (b.type == 2 ? 3 : 4) : b.cfg;
    if (v3000) {
      Add(text, "M  V30 %d %d 1%d 1%d CFG=%d\n", i + 1, b.type, b.bgn - 1, b.end - 1, b.cfg);
    } else {
      Add(text, "%3d%3d%3d%3d\n", b.bgn, b.end, b.type, stereo);
    }
  }
  if (v3000) {
    text +=
        "M  V30 END BOND\nM  V30 BEGIN SGROUP\nM  V30 1 DAT 0 ATOMS=(1 10) -\nM  V30 "
        "FIELDNAME=\"END SGROUP\"\nM  V30 END SGROUP\nM  V30 BEGIN COLLECTION\nM  V30 "
        "MDLV30/STEABS ATOMS=(1 10)\nM  V30 END COLLECTION\nM  V30 END CTAB\n";
  } else {
    text += "A    1\nM  END of an alias\nS  SKP  1\nM  END skipped\n" + properties;
  }
  return text + "M  END\n";
}

struct Case {
  const char* smiles;  // with the atoms' numbers as classes
  std::vector<Atom> atoms;
  std::vector<Bond> bonds;
};

// A centre amid the corners of a square, and two double bonds with three neighbours up, one down.
const std::vector<Atom> square{{"F", 1, 1}, {"Cl", -1, 1}, {"Br", -1, -1}, {"I", 1, -1}, {"C"}};
const std::vector<Atom> chains{{"F", 0, 1}, {"C", 1, 0}, {"C", 2, 0}, {"Cl", 3, 1},
                               {"F", 0, 1}, {"C", 1, 0}, {"N", 2, 0}, {"O", 3, -1}};

}  // namespace

TEST(MolfileReader, BothVersionsTellTheMoleculeThatItsSmilesTells) {
  const std::vector<Case> cases{
      {"[NH3+:1][CH2:2][C:3](=[O:4])[O-:5]",
       {{"N", 0, 0, 0, 1}, {"C", 1, 0}, {"C", 2, 0}, {"O", 3, 0}, {"O", 2, 1, 0, -1}},
       {{1, 2}, {2, 3}, {3, 4, 2}, {3, 5}}},
      {"[13CH3:1].[2H:2][CH:3].[CH2:4]",  // radicals: two, three and three electrons short
       {{"C", 0, 0, 0, 0, 2, 13}, {"D", 1}, {"C", 2, 0, 0, 0, 1}, {"C", 3, 0, 0, 0, 3}},
       {{2, 3}}},
      {"[PH5:1].[S:2].[Fe:3].[*:4][*:5].[ClH:6]",
       {{"P", 0, 0, 0, 0, 0, 0, 5}, {"S", 1, 0, 0, 0, 0, 0, -1}, {"Fe"}, {"R#"}, {"Q"}, {"CL"}},
       {{4, 5}}},
      {"[cH:1]1[cH:2][n:3][cH:4][cH:5][cH:6]1",
       {{"C", 0}, {"C", 1}, {"N", 2}, {"C", 3}, {"C", 4}, {"C", 5}},
       {{1, 2, 4}, {2, 3, 4}, {3, 4, 4}, {4, 5, 4}, {5, 6, 4}, {6, 1, 4}}},
      // One bond up, one down, both; a wide end and a wavy bond say nothing.
      {"[F:1][C@:5]([Cl:2])([Br:3])[I:4]", square, {{5, 1, 1, 1}, {5, 2}, {5, 3}, {5, 4}}},
      {"[F:1][C@@:5]([Cl:2])([Br:3])[I:4]", square, {{5, 1, 1, 3}, {5, 2}, {5, 3}, {5, 4}}},
      {"[F:1][C@:5]([Cl:2])([Br:3])[I:4]", square, {{5, 4}, {5, 2, 1, 3}, {5, 3, 1, 1}, {5, 1}}},
      {"[F:1][C:5]([Cl:2])([Br:3])[I:4]", square, {{1, 5, 1, 1}, {5, 2}, {5, 3}, {5, 4}}},
      {"[F:1][C:5]([Cl:2])([Br:3])[I:4]", square, {{5, 1, 1, 1}, {5, 2, 1, 2}, {5, 3}, {5, 4}}},
      // A hydrogen count, a lone pair, three dimensions, a parity without coordinates, twins.
      {"[F:1][C@H:4]([Cl:2])[Br:3]",
       {square[0], square[1], square[2], {"C"}},
       {{4, 1, 1, 1}, {4, 2}, {4, 3}}},
      {"[CH3:1][S@@:4](=[O:2])[F:3]",
       {{"C", 0, 1}, {"O", -1, -1}, {"F", 1, -1}, {"S"}},
       {{4, 1, 1, 3}, {4, 2, 2}, {4, 3}}},
      {"[F:1][C@@H:4]([Cl:2])[Br:3]",
       {{"F", 1, 0, -.3}, {"Cl", -.5, .87, -.3}, {"Br", -.5, -.87, -.3}, {"C"}},
       {{1, 4}, {2, 4}, {3, 4}}},
      {"[F:1][C@@H:4]([Cl:2])[Br:3]",
       {{"F"}, {"Cl"}, {"Br"}, {"C", 0, 0, 0, 0, 0, 0, 0, 1}},
       {{3, 4}, {1, 4}, {2, 4}}},
      {"[CH3:1][C:2]([CH3:3])([F:4])[Cl:5]",
       {{"C", 1, 1}, {"C"}, {"C", -1, 1}, {"F", -1, -1}, {"Cl", 1, -1}},
       {{2, 1, 1, 1}, {2, 3}, {2, 4}, {2, 5}}},
      // Drawn cis and trans; as either; without a choice.
      {"[F:1]/[CH:2]=[CH:3]\\[Cl:4].[F:5]/[CH:6]=[N:7]/[OH:8]",
       chains,
       {{1, 2}, {2, 3, 2}, {3, 4}, {5, 6}, {6, 7, 2}, {7, 8}}},
      {"[F:1][CH:2]=[CH:3][Cl:4].[F:5][CH:6]=[N:7][OH:8]",
       chains,
       {{1, 2}, {2, 3, 2, 2}, {3, 4}, {6, 5, 1, 2}, {6, 7, 2}, {7, 8}}},
      {"[CH:1]1=[CH:2][CH2:3][CH2:4]1",
       {{"C", 0, 0}, {"C", 1, 0}, {"C", 1, 1}, {"C", 0, 1}},
       {{1, 2, 2}, {2, 3}, {3, 4}, {4, 1}}},
  };
  for (const Case& c : cases) {
    const ZQMol expected = ReadSmiles(c.smiles);
    for (const bool v3000 : {false, true}) {
      const std::string text = Write(c.atoms, c.bonds, v3000);
      std::string withReturns;
      for (const char ch : text) withReturns += ch == '\n' ? "\r\n" : std::string(1, ch);
      for (const std::string& variant :
           {text, withReturns, text + "> <DATA>\nM  CHG  1   1   9\n"}) {
        ZQMol mol;
        ASSERT_TRUE(ZQMolfileToMol(mol, variant)) << c.smiles << '\n' << text;
        EXPECT_EQ(Told(mol), Told(expected)) << c.smiles << '\n' << text;
        EXPECT_EQ(mol.GetTitle(), "title");
      }
    }
  }
}

TEST(MolfileReader, AtomBlockCodesHoldUntilAPropertyLineComes) {
  const std::string block =
      "\n\n\n  4  1  0  0  0  0\n"
      "    0.0000    0.0000    0.0000 N   0  3\n"
      "    1.0000    0.0000    0.0000 C   1  4\n"
      "    2.0000    0.0000    0.0000 O   0  5  0  0  0  0  0  0  0  7\n"
      "    3.0000    0.0000    0.0000 H   1  0\n"
      "  1  3  9\n";
  ZQMol mol;
  ASSERT_TRUE(ZQMolfileToMol(mol, block + "M  END"));
  EXPECT_EQ(ZQMolToSmiles(mol), "[NH4+].[13CH3].[OH-:7].[2HH]");
  EXPECT_EQ(mol.GetBondAt(0)->GetOrder(), 0U);
  ASSERT_TRUE(ZQMolfileToMol(mol, block + "M  CHG  1   2   1\nM  END"));
  EXPECT_EQ(ZQMolToSmiles(mol), "N.[13CH3+].[OH2:7].[2HH]");
  ASSERT_TRUE(ZQMolfileToMol(mol, block + "M  ISO  2   2  14   3  18\nM  END"));
  EXPECT_EQ(ZQMolToSmiles(mol), "[NH4+].[14CH3].[18OH-:7].[HH]");
}

TEST(MolfileReader, ReportsLineFindingAndExpectation) {
  const std::string good = Write({{"C"}, {"O", 1}}, {{1, 2}}, false);
  const std::string good3 = Write({{"C"}, {"O", 1}}, {{1, 2}}, true);
  const auto with = [](std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
  };
  const std::pair<std::string, const char*> cases[] = {
      {"", "4: found the end, expected the counts line, the fourth of a molfile"},
      {with(good, "  2  1", "  x  1"),
       "4: found \"x  1  0  0  0  0...\", expected the numbers of atoms and bonds, three columns "
       "each"},
      {with(good, "  2  1", "  4  1"),
       "7: found \"1  2  1  0\", expected an atom: three coordinates of ten columns, a blank and a "
       "symbol"},
      {with(good, "  2  1", "  2  2"),
       "8: found \"A    1\", expected a bond: two atom numbers, type and stereo, three columns "
       "each"},
      {with(good, " O  ", " Qq "), "6: found \"Qq\", expected an element symbol"},
      {with(good, "  1  2  1", "  1  3  1"),
       "7: found \"1  3\", expected two numbers of atoms of this molfile"},
      {with(good, "  1  2  1", "  2  2  1"),
       "7: found \"2  2  1  0\", expected a bond between two atoms"},
      {with(with(good, "  2  1", "  2  2"), "  1  2  1", "  1  2  2  0\n  2  1  1"),
       "8: found a second bond between two atoms, expected one"},
      {with(good, "  1  2  1", "  1  2  5"),
       "7: found \"5\", expected a bond type of a molecule: 1 to 4, 8, 9 or 10"},
      {with(good, "  1  2  1", "  1  2  4"),
       "5: found an aromatic atom in no such ring, expected rings of alternating single and double "
       "bonds"},
      {with(good, "A    1", "M  CHG  1   3   1"),
       "8: found \"3   1\", expected the number of an atom of this molfile"},
      {with(good, "A    1", "M  CHG  1   1  99"),
       "8: found \"99\", expected a charge from -15 to 15"},
      {with(good, "\nM  END\n", "\n$$$$\n"), "12: found \"$$$$\", expected \"M  END\""},
      {with(good3, "COUNTS 2 1", "COUNTS 3 1"),
       "23: found \"END CTAB\", expected the atoms and bonds that the counts promise"},
      {with(good3, "COUNTS 2 1", "COUNTS 1 1"),
       "11: found \"11 O 1 0 0 2 CHG...\", expected the end of the block, as the counts promise no "
       "more"},
      {with(good3, "M  V30 END BOND", "M  END"),
       "15: found \"M  END\", expected a line that begins with \"M  V30\""},
      {with(good3, " 10 11 CFG", " 10 12 CFG"),
       "14: found \"1 1 10 12 CFG=0\", expected two numbers of atoms of this molfile"},
      {with(good3, "CHG=0", "CHG=x"),
       "9: found \"CHG=x\", expected a whole number behind the \"=\""},
  };
  CapturedReports reports;
  for (const auto& [text, message] : cases) {
    ZQMol mol("CC"_mol);
    EXPECT_FALSE(ZQMolfileToMol(mol, text, "record 3 of x.sdf")) << text;
    EXPECT_EQ(reports.Take(), Texts{"record 3 of x.sdf: molfile line " + std::string(message)})
        << text;
    EXPECT_FALSE(mol.IsValid());
    EXPECT_EQ(mol.NumAtoms(), 0U);
  }
}

TEST(MolfileReader, EveryCutIsSeen) {
  CapturedReports reports;
  for (const bool v3000 : {false, true}) {
    const std::string whole = Write({{"C"}, {"O", 1, 0, 0, -1}}, {{1, 2}}, v3000);
    const std::size_t needed = whole.rfind("M  END") + 6;
    for (std::size_t length = 0; length < needed; ++length) {
      ZQMol mol;
      EXPECT_FALSE(ZQMolfileToMol(mol, whole.substr(0, length))) << whole.substr(0, length);
      EXPECT_EQ(reports.Take().size(), 1U);
    }
    ZQMol mol;
    EXPECT_TRUE(ZQMolfileToMol(mol, whole.substr(0, needed)));
  }
}

}  // namespace Quarnel
