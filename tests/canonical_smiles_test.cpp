#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "contract/quarnel/perception.h"
#include "tests/description_helpers.h"

namespace Quarnel {

namespace {

/// A torus of squares, each atom with four neighbours.
std::string Torus(unsigned int size, const std::string& symbol) {
  std::string text;
  const auto closure = [](unsigned int number) {
    return "%(" + std::to_string(number + 100) + ")";
  };
  for (unsigned int i = 0; i < size * size; ++i) {
    const unsigned int left = i % size == 0 ? i + size - 1 : i - 1;
    const unsigned int above = i < size ? i + size * size - size : i - size;
    text += (i == 0 ? "" : ".") + symbol + closure(2 * i) + closure(2 * left) + closure(2 * i + 1) +
            closure(2 * above + 1);
  }
  return text;
}

std::vector<std::string> HardSmiles() {
  return {
      "C12C3C4C5C1C6C7C2C8C3C9C4C1C5C6C2C7C8C9C12",
      std::string("c12c3c4c5c1c1c6c7c2c2c8c3c3c9c4c4c%10c5c5c1c1c6c6c%11c7c2c2c7c8c3c3c8c9c4c4") +
          "c9c%10c5c5c1c1c6c6c%11c2c2c7c3c3c8c4c4c9c5c1c1c6c2c3c41",
      "C1CCCCC1.C1CC1.C1CC1.C1CCCCC1C1CC1",
      std::string("OC[C@H]1O[C@@H]2O[C@H]3[C@H](O)[C@@H](O)[C@@H](O[C@H]4[C@H](O)[C@@H](O)[C@@H]") +
          "(O[C@H]1[C@H](O)[C@H]2O)O[C@@H]4CO)O[C@@H]3CO",
      "[C@H]12[C@@H]3[C@H]4[C@@H]1[C@H]5[C@@H]2[C@H]3[C@@H]45",
      "C/C=C/[C@@H](O)/C=C\\C",
      "F/C=C/C=CC=C/C=C/F",
      "[H]/N=C(/F)Cl",
      "c1ccc#cc1",
      "*c1ccc*cc1",
      "[CH3:1][CH2:7][CH3:2].[1024CH4].[1025CH4]",
      "O=C1C[N@+]23CC[N@@+]45CC(=O)O[Mg]24(O1)(OC(=O)C3)OC(=O)C5",
      "NC12C[C@H]3C[C@H](C1)C[C@@H](C2)C3",
      Repeated("C", 500),
      Repeated("C[C@H]1CC[C@H](CC1)", 20) + "C",
      "C" + Repeated("[C@@](CC)(CC)", 10) + "N",
      "[Pb]" + Repeated("(CC)", 200) + "CC",
      Repeated("O.[Na+].C[C@H](F)Cl.", 60) + "C[C@@H](F)Cl",
      Repeated("N[C@@H](Cc1ccccc1)C(=O)", 40) + "O",
      Torus(8, "*"),
      Torus(6, "[C@]"),
  };
}

// Whether atoms of equal index are equal, and bonded to equal ones.
bool HasSameOrder(const ZQMol& a, const ZQMol& b) {
  const auto atomsOf = [](const ZQMol& mol) {
    std::vector<std::vector<unsigned int>> atoms;
    for (auto atom = mol.GetAtoms(); atom; ++atom) {
      std::vector<unsigned int> row;
      for (auto bonded = atom->GetAtoms(); bonded; ++bonded) row.push_back(bonded->GetIdx());
      std::sort(row.begin(), row.end());
      row.push_back(atom->GetAtomicNum());
      atoms.push_back(std::move(row));
    }
    return atoms;
  };
  return atomsOf(a) == atomsOf(b);
}

}  // namespace

TEST(CanonicalSmiles, IsTheSameForEveryOrderAndReadsBack) {
  std::vector<std::string> all = HardSmiles();
  all.insert(all.end(), SampleSmiles().begin(), SampleSmiles().end());
  std::ifstream drugs(KORVEX_SOURCE_DIR "/data/drugs.smi");
  for (std::string line; std::getline(drugs, line);) all.push_back(line);
  ASSERT_GT(all.size(), 100U);
  for (const std::string& smiles : all) {
    const ZQMol mol = ReadSmiles(smiles);
    const std::string text = ZQMolToCanonicalSmiles(mol);
    const ZQMol back = ReadSmiles(text);
    EXPECT_EQ(ZQMolToCanonicalSmiles(back), text) << smiles;
    EXPECT_EQ(back.NumBonds(), mol.NumBonds()) << smiles;
    for (unsigned int seed = 0; seed < 3; ++seed) {
      const ZQMol shuffled = ShuffledWithStereo(mol, seed);
      EXPECT_EQ(ZQMolToCanonicalSmiles(shuffled), text) << smiles;
      EXPECT_EQ(ZQMolToCanonicalSmiles(ReadSmiles(ZQMolToSmiles(shuffled))), text) << smiles;
      const ZQMol ordered = ReadSmiles(ZQMolToOrderedSmiles(shuffled));
      EXPECT_EQ(ZQMolToCanonicalSmiles(ordered), text) << smiles;
      EXPECT_TRUE(HasSameOrder(ordered, shuffled)) << smiles;
    }
    ZQMol prepared(mol);
    ZQSuppressHydrogens(prepared);
    ZQFindRingAtomsAndBonds(prepared);
    ZQAssignAromaticFlags(prepared, 2, true, 0, false);
    EXPECT_EQ(ZQMolToCanonicalSmiles(prepared), text) << smiles;
  }
}

TEST(CanonicalSmiles, AHydrogenBesideALonePairHoldsNoConfiguration) {
  for (const char* smiles : {"F[P@H]Br", "F[P@]([H])Br", "FP([H])Br"}) {
    EXPECT_EQ(ZQMolToCanonicalSmiles(ReadSmiles(smiles)), "FPBr") << smiles;
  }
  EXPECT_EQ(ZQMolToCanonicalSmiles("C[S@]([H])=O"_mol), "CS=O");
}

// All combinations of configurations, against the number of stereoisomers counted by hand.
TEST(CanonicalSmiles, TellsStereoisomersApartAndNothingElse) {
  // "?" stands for @ or @@, "!" for / or a backslash. Among the first are the pentitols, which are
  // pseudoasymmetric in the middle, and the inositols.
  std::istringstream cases(R"t(
      C[C?H](F)Cl 2   C[C?H](O)[C?H](O)C 3   C[C?H](O)[C?H](O)[C?H](O)C 4
      C[C?H](O)[C?H](O)[C?H](O)[C?H](O)C 10   C[C?H]1CC[C?H](C)CC1 2
      C[C?H]1C[C?H](C)C[C?H](C)C1 2   O[C?H]1[C?H](O)[C?H](O)[C?H](O)[C?H](O)[C?H]1O 9
      OC[C?H]1OC(O)[C?H](O)[C?H](O)[C?H]1O 16   C[C?H]1C[C?]2(C1)C[C?H](C)C2 2   CC!C=C!C=C!CC 3
      C!C=C!C(O)!C=C!C 3   C!C=C!C[C?H](O)C!C=C!C 4   C[S?](=O)CC 2   C[C?](C)(F)Cl 1
      C[C?H](C)[C?H](F)C 2   C[N?](F)Cl 1   C[C?H](F)Cl.C[C?H](F)Cl 3)t");
  std::size_t numIsomers = 0;
  for (std::string pattern; cases >> pattern >> numIsomers;) {
    const auto isOpen = [](char ch) { return ch == '?' || ch == '!'; };
    const auto numOpen = std::ranges::count_if(pattern, isOpen);
    std::set<std::string> texts;
    for (unsigned int choice = 0; choice >> numOpen == 0; ++choice) {
      std::string smiles;
      unsigned int rest = choice;
      for (const char ch : pattern) {
        if (!isOpen(ch)) {
          smiles += ch;
          continue;
        }
        smiles += ch == '?' ? (rest % 2 != 0 ? "@" : "@@") : (rest % 2 != 0 ? "/" : "\\");
        rest /= 2;
      }
      texts.insert(ZQMolToCanonicalSmiles(ReadSmiles(smiles)));
    }
    EXPECT_EQ(texts.size(), numIsomers) << pattern << " " << *texts.begin();
  }
  EXPECT_TRUE(cases.eof());
}

TEST(CanonicalSmiles, OmitsTheConfigurationsThatCanBeCleared) {
  const auto numDrawn = [](const ZQMol& mol) {
    std::size_t count = 0;
    for (auto atom = mol.GetAtoms(); atom; ++atom) count += atom->GetStereo() != ZQAtomStereo::None;
    for (auto bond = mol.GetBonds(); bond; ++bond) count += bond->GetStereo() != ZQBondStereo::None;
    return count;
  };
  std::vector<std::string> all = HardSmiles();
  for (const char* more : {"C[C@H](C)O", "CC[C@H](CC)O", "C[N@](CC)CCC", "C[C@H]1CCC(C)CC1",
                           "C[C@H]1CC[C@H](C)CC1", "C[C@H](O)[C@@H](O)[C@H](O)C",
                           "C[C@H](O)[C@@H](O)[C@@H](O)C", "C/C(C)=C/F", "C[S@](=O)C"}) {
    all.emplace_back(more);
  }
  for (const std::string& smiles : all) {
    const std::string expected = ZQMolToCanonicalSmiles(ReadSmiles(smiles));
    for (const bool hydrogens : {false, true}) {
      ZQMol mol = ReadSmiles(smiles);
      if (hydrogens) mol = WithHydrogens(mol);
      for (int again = 0; again < 2; ++again) {
        ZQClearUnrealStereo(mol);
        EXPECT_EQ(ZQMolToCanonicalSmiles(mol), expected) << smiles;
        EXPECT_EQ(numDrawn(mol), numDrawn(ReadSmiles(expected))) << smiles;
        ZQFindRingAtomsAndBonds(mol);
        ZQAssignAromaticFlags(mol, 2, true, 0, false);
      }
    }
  }
  // Thousands at a time, beside a real one.
  ZQMol many = ReadSmiles("F[C@H](Cl)" + Repeated("C([C@H]1CCCCC1)", 1000));
  ZQClearUnrealStereo(many);
  EXPECT_EQ(numDrawn(many), 1U);
  ZQMol methyls = WithHydrogens("CC(F)O"_mol);
  for (auto atom = methyls.GetAtoms(); atom; ++atom) atom->SetStereo(ZQAtomStereo::Clockwise);
  ZQClearUnrealStereo(methyls);
  EXPECT_EQ(numDrawn(methyls), 1U);
  ZQMol edited = "C[C@H](C)O"_mol;
  edited.GetAtomAt(2)->SetIsotope(13);
  ZQClearUnrealStereo(edited);
  EXPECT_EQ(numDrawn(edited), 1U);
}

TEST(CanonicalSmiles, GivesOneTextToTheManyFormsOfAMolecule) {
  const struct {
    std::string text;
    Texts forms;
  } cases[] = {
      {"", {}},
      {"CCO", {"OCC", "[CH3][CH2][OH]", "[H]OC([H])([H])C"}},
      {"Cc1ccccc1C", {"CC1=CC=CC=C1C", "CC1=C(C)C=CC=C1"}},
      {"C[N+]([O-])=O.[Cl-].[Na+]", {"[Na+].[O-][N+](C)=O.[Cl-]"}},
      {"CC(C)(F)Cl", {"C[C@](C)(F)Cl", "C[C@@](F)(Cl)C"}},
      {"C=CF", {"[H]/C=C/F", "[H]/C([H])=C\\F", "F/C=C/[H]"}},
      {"CC(C)=CF", {"C/C(C)=C/F"}},
      {"CC1CCC(C)CC1", {"C[C@H]1CCC(C)CC1", "CC1CC[C@@H](C)CC1"}},
      {"[H][H]", {"[H][H]"}},
      {"[H+]", {"[H+]"}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ZQMolToCanonicalSmiles(c.text.empty() ? ZQMol() : ReadSmiles(c.text)), c.text);
    for (const std::string& form : c.forms) {
      EXPECT_EQ(ZQMolToCanonicalSmiles(ReadSmiles(form)), c.text) << form;
      EXPECT_EQ(ZQMolToCanonicalSmiles(WithHydrogens(ReadSmiles(form))), c.text) << form;
    }
  }
  // Bonds of no order aren't written, nor are differences that only they cause.
  ZQMol complex = "[Cu].N[C@@H](C)O"_mol;
  ZQBondBase* coordination = complex.NewBond(complex.GetAtomAt(0), complex.GetAtomAt(1), 0);
  EXPECT_EQ(ZQMolToCanonicalSmiles(complex), ZQMolToCanonicalSmiles("C[C@H](N)O.[Cu]"_mol));
  complex.DeleteBond(coordination);
  complex.NewBond(complex.GetAtomAt(0), complex.GetAtomAt(2), 0);
  EXPECT_EQ(ZQMolToCanonicalSmiles(complex), "CC(N)O.[Cu]");
}

}  // namespace Quarnel
