#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

#include "tests/description_helpers.h"
#include "tests/molfile_helpers.h"

namespace Quarnel {

namespace {

struct Case {
  const char* smiles;  // with the atoms' numbers as classes
  std::vector<MolfileAtom> atoms;
  std::vector<MolfileBond> bonds;
};

// A centre inside a square, and two double bonds with three neighbours up, one down.
const std::vector<MolfileAtom> square{
    {"F", 1, 1}, {"Cl", -1, 1}, {"Br", -1, -1}, {"I", 1, -1}, {"C"}};
const std::vector<MolfileAtom> chains{{"F", 0, 1}, {"C", 1, 0}, {"C", 2, 0}, {"Cl", 3, 1},
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
      // One bond up, one down, both; a wide end and a wavy bond give no configuration.
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
      {"[CH3:1][S@@:4](=[O:2])[F:3]",
       {{"C", 0, 1}, {"O", -1, -1}, {"F", 1, -1}, {"S"}},
       {{4, 1}, {4, 2, 2, 3}, {4, 3}}},
      {"[F:1][C@@H:4]([Cl:2])[Br:3]",
       {{"F", 1, 0, -.3}, {"Cl", -.5, .87, -.3}, {"Br", -.5, -.87, -.3}, {"C"}},
       {{1, 4}, {2, 4}, {3, 4}}},
      {"[F:1][C@@H:4]([Cl:2])[Br:3]",
       {{"F"}, {"Cl"}, {"Br"}, {"C", 0, 0, 0, 0, 0, 0, 0, 1}},
       {{3, 4}, {1, 4}, {2, 4}}},
      {"[CH3:1][C:2]([CH3:3])([F:4])[Cl:5]",
       {{"C", 1, 1}, {"C"}, {"C", -1, 1}, {"F", -1, -1}, {"Cl", 1, -1}},
       {{2, 1, 1, 1}, {2, 3}, {2, 4}, {2, 5}}},
      // Drawn cis and trans; as either; with only one possibility.
      {"[F:1]/[CH:2]=[CH:3]\\[Cl:4].[F:5]/[CH:6]=[N:7]/[OH:8]",
       chains,
       {{1, 2}, {2, 3, 2}, {3, 4}, {5, 6}, {6, 7, 2}, {7, 8}}},
      {"[F:1][CH:2]=[CH:3][Cl:4].[F:5][CH:6]=[N:7][OH:8]",
       chains,
       {{1, 2}, {2, 3, 2, 2}, {3, 4}, {6, 5, 1, 2}, {6, 7, 2}, {7, 8}}},
      {"[F:1]/[CH:2]=[P:3]/[Cl:4].[F:5]/[CH:6]=[S+:7]\\[Cl:8]",
       {{"F", 0, 1},
        {"C", 1, 0},
        {"P", 2, 0},
        {"Cl", 3, -1},
        {"F", 0, 1},
        {"C", 1, 0},
        {"S", 2, 0, 0, 1},
        {"Cl", 3, 1}},
       {{1, 2}, {2, 3, 2}, {3, 4}, {5, 6}, {6, 7, 2}, {7, 8}}},
      {"[CH:1]1=[CH:2][CH2:3][CH2:4]1",
       {{"C", 0, 0}, {"C", 1, 0}, {"C", 1, 1}, {"C", 0, 1}},
       {{1, 2, 2}, {2, 3}, {3, 4}, {4, 1}}},
  };
  for (const Case& c : cases) {
    const ZQMol expected = ReadSmiles(c.smiles);
    for (const bool v3000 : {false, true}) {
      const std::string text = WriteMolfile(c.atoms, c.bonds, v3000);
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

TEST(MolfileReader, WedgesTellTheirConfigurationAtAllAngles) {
  // The directions of the neighbours 1 to 3 or 4 in degrees, the marks of their bonds (1 up, 2
  // either, 3 down, negative: begun at the neighbour), and their turn seen from the hydrogen or
  // else the first: 1 clockwise.
  const struct {
    std::vector<double> angles;
    std::vector<int> marks;
    int turn;
  } cases[] = {
      // The hydrogen is below neighbours that surround the centre, and opposite to those that
      // don't.
      {{80, 90, 100}, {0, 1, 0}, -1},
      {{35, 90, 145}, {0, 1, 0}, -1},
      {{30, 90, 150}, {0, 1, 0}, -1},
      {{20, 90, 160}, {0, 1, 0}, -1},
      {{0.5, 40, 179.5}, {0, 1, 0}, -1},
      {{0, 40, 180}, {0, 1, 0}, -1},
      {{-0.5, 90, 180.5}, {0, 1, 0}, 1},
      {{-30, 90, 210}, {0, 1, 0}, 1},
      {{-80, 90, 260}, {0, 1, 0}, 1},
      {{30, 90, 150}, {1, 0, 0}, 1},
      {{80, 90, 100}, {1, 0, 0}, 1},
      {{0, 90, 180}, {0, 0, 1}, 1},
      {{0, 90, 90}, {0, 1, 0}, -1},
      {{0, 90, 90}, {1, 0, 0}, 0},
      // Four neighbours, however crowded.
      {{0, 90, 180, 270}, {1, 0, 0, 0}, -1},
      {{0, 5, 10, 15}, {1, 0, 0, 0}, -1},
      {{0, 5, 10, 15}, {0, 1, 0, 0}, 1},
      {{0, 170, 180, 190}, {1, 0, 0, 0}, -1},
      {{0, 90, 270, 180}, {0, 0, 1, 0}, -1},
      {{0, 90, 180, 180}, {1, 0, 0, 0}, 0},
      // Several that agree, and several that don't.
      {{0, 90, 180, 270}, {1, 3, 0, 0}, -1},
      {{0, 90, 180, 270}, {1, 0, 1, 0}, -1},
      {{0, 90, 180, 270}, {1, 1, 1, 0}, -1},
      {{0, 90, 180, 270}, {1, 3, 1, 3}, -1},
      {{0, 70, 180, 270}, {1, 1, 0, 0}, 0},
      {{0, 70, 180, 270}, {1, 0, 3, 0}, 0},
      {{0, 70, 180, 270}, {1, 1, 3, 0}, 0},
      {{0, 70, 180, 270}, {1, 1, 1, 1}, 0},
      {{-30, 90, 200}, {1, 1, 0}, 1},
      {{-30, 90, 200}, {1, 1, 1}, 1},
      {{-30, 90, 200}, {1, 3, 0}, 0},
      {{-30, 90, 200}, {1, 1, 3}, 0},
      {{20, 90, 150}, {1, 3, 0}, 1},
      {{20, 90, 150}, {1, 1, 0}, 0},
      {{20, 90, 150}, {1, 0, 3}, 0},
      // Wide ends give no configuration; a wavy bond makes it unknown.
      {{-30, 90, 200}, {-1, 0, 0}, 0},
      {{-30, 90, 200}, {-1, 0, 3}, -1},
      {{-30, 90, 200}, {1, 2, 0}, 0},
      {{-30, 90, 200}, {1, -2, 0}, 1},
  };
  const double lengths[] = {1, 2.9, 1.4, 2};
  for (const auto& [angles, marks, turn] : cases) {
    // Each drawing also rotated, seen from behind, with uneven bonds, large and small.
    for (unsigned int variant = 0; variant < 48; ++variant) {
      const bool swapped = variant % 2 != 0;
      const bool flipped = variant / 2 % 2 != 0;
      const double turned = variant / 4 % 2 != 0 ? 47 : 0;
      const double scale = std::array{1.0, 1000.0, 1e-5}[variant / 16];
      std::vector<MolfileAtom> atoms;
      std::vector<MolfileBond> bonds;
      const int centre = static_cast<int>(angles.size()) + 1;
      for (std::size_t i = 0; i < angles.size(); ++i) {
        const double angle = (angles[i] + turned) * std::numbers::pi / 180;
        const double length = scale * (variant / 8 % 2 != 0 ? lengths[i] : 1);
        atoms.push_back({std::array{"F", "Cl", "Br", "I"}[i], length * std::cos(angle),
                         length * std::sin(angle) * (flipped ? -1 : 1)});
        const int mark = std::abs(marks[i]);
        const int neighbour = static_cast<int>(i) + 1;
        bonds.push_back({centre, neighbour, 1, swapped && mark % 2 != 0 ? 4 - mark : mark});
        if (marks[i] < 0) std::swap(bonds.back().bgn, bonds.back().end);
      }
      atoms.push_back({"C"});
      for (const bool v3000 : {false, true}) {
        if (scale < 1 && !v3000) continue;  // has four decimals
        const std::string text = WriteMolfile(atoms, bonds, v3000);
        ZQMol mol;
        ASSERT_TRUE(ZQMolfileToMol(mol, text));
        EXPECT_EQ(GetTurn(*mol.GetAtomAt(mol.NumAtoms() - 1)), swapped != flipped ? -turn : turn)
            << text;
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
  const std::string good = WriteMolfile({{"C"}, {"O", 1}}, {{1, 2}}, false);
  const std::string good3 = WriteMolfile({{"C"}, {"O", 1}}, {{1, 2}}, true);
  const auto with = [](std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
  };
  const struct {
    std::string text;
    int line;
    const char *found, *expected;
  } cases[] = {
      {"", 4, "the end", "the counts line, the fourth of a molfile"},
      {with(good, "  2  1", "  x  1"), 4, "\"x  1  0  0  0  0...\"",
       "the numbers of atoms and bonds, three columns each"},
      {with(good, "  2  1", "  4  1"), 7, "\"1  2  1  0\"",
       "an atom: three coordinates of ten columns, a blank and a symbol"},
      {with(good, "  2  1", "  2  2"), 8, "\"A    1\"",
       "a bond: two atom numbers, type and stereo, three columns each"},
      {with(good, " O  ", " Qq "), 6, "\"Qq\"", "an element symbol"},
      {with(good, "  1  2  1", "  1  3  1"), 7, "\"1  3\"", "two numbers of atoms of this molfile"},
      {with(good, "  1  2  1", "  2  2  1"), 7, "\"2  2  1  0\"", "a bond between two atoms"},
      {with(with(good, "  2  1", "  2  2"), "  1  2  1", "  1  2  2  0\n  2  1  1"), 8,
       "a second bond between two atoms", "one"},
      {with(good, "  1  2  1", "  1  2  5"), 7, "\"5\"",
       "a bond type of a molecule: 1 to 4, 8, 9 or 10"},
      {with(good, "  1  2  1", "  1  2  4"), 5, "an aromatic atom in no such ring",
       "rings of alternating single and double bonds"},
      {with(good, "A    1", "M  CHG  1   3   1"), 8, "\"3   1\"",
       "the number of an atom of this molfile"},
      {with(good, "A    1", "M  CHG  1   1  99"), 8, "\"99\"", "a charge from -15 to 15"},
      {with(good, "\nM  END\n", "\n$$$$\n"), 12, "\"$$$$\"", "\"M  END\""},
      {with(good3, "COUNTS 2 1", "COUNTS 3 1"), 23, "\"END CTAB\"",
       "the atoms and bonds that the counts promise"},
      {with(good3, "COUNTS 2 1", "COUNTS 1 1"), 11, "\"11 O 1 0 0 2 CHG...\"",
       "the end of the block, as the counts promise no more"},
      {with(good3, "M  V30 END BOND", "M  END"), 15, "\"M  END\"",
       "a line that begins with \"M  V30\""},
      {with(good3, " 10 11 CFG", " 10 12 CFG"), 14, "\"1 1 10 12 CFG=0\"",
       "two numbers of atoms of this molfile"},
      {with(good3, "CHG=0", "CHG=x"), 9, "\"CHG=x\"", "a whole number behind the \"=\""},
  };
  CapturedReports reports;
  for (const auto& [text, line, found, expected] : cases) {
    ZQMol mol("CC"_mol);
    EXPECT_FALSE(ZQMolfileToMol(mol, text, "record 3 of x.sdf")) << text;
    EXPECT_EQ(reports.Take(),
              Texts{"record 3 of x.sdf: molfile line " + Finding(line, found, expected)});
    EXPECT_FALSE(mol.IsValid());
    EXPECT_EQ(mol.NumAtoms(), 0U);
  }
}

TEST(MolfileReader, EveryCutIsSeen) {
  CapturedReports reports;
  for (const bool v3000 : {false, true}) {
    const std::string whole = WriteMolfile({{"C"}, {"O", 1, 0, 0, -1}}, {{1, 2}}, v3000);
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
