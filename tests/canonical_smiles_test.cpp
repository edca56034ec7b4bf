#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "contract/quarnel/perception.h"
#include "tests/mol_helpers.h"

namespace Quarnel {

namespace {

/// `Shuffled`, with all configurations restated for the new order.
ZQMol ShuffledWithStereo(const ZQMolBase& mol, unsigned int seed) {
  ZQMol tagged(mol);
  for (auto atom = tagged.GetAtoms(); atom; ++atom) atom->SetMapIdx(atom->GetIdx() + 1);
  ZQMol shuffled = Shuffled(tagged, seed);
  std::vector<const ZQAtomBase*> copies(mol.GetMaxAtomIdx());
  for (auto atom = shuffled.GetAtoms(); atom; ++atom) copies[atom->GetMapIdx() - 1] = &*atom;
  const auto neighbours = [](const ZQAtomBase& atom, const ZQAtomBase* left) {
    std::vector<const ZQAtomBase*> found;
    for (auto bond = atom.GetBonds(); bond; ++bond) {
      if (bond->GetNbr(&atom) != left) found.push_back(bond->GetNbr(&atom));
    }
    return found;
  };
  for (auto atom = shuffled.GetAtoms(); atom; ++atom) {
    const ZQAtomBase& original = *mol.GetAtomAt(atom->GetMapIdx() - 1);
    const auto order = neighbours(*atom, nullptr);
    std::vector<std::ptrdiff_t> places;
    bool odd = original.GetStereo() == ZQAtomStereo::Clockwise;
    for (const ZQAtomBase* neighbour : neighbours(original, nullptr)) {
      const auto place = std::ranges::find(order, copies[neighbour->GetIdx()]) - order.begin();
      for (const std::ptrdiff_t before : places) odd ^= before > place;
      places.push_back(place);
    }
    if (original.GetStereo() == ZQAtomStereo::None) continue;
    atom->SetStereo(odd ? ZQAtomStereo::Clockwise : ZQAtomStereo::CounterClockwise);
  }
  for (auto bond = mol.GetBonds(); bond; ++bond) {
    if (bond->GetStereo() == ZQBondStereo::None) continue;
    bool odd = bond->GetStereo() == ZQBondStereo::Trans;
    const ZQAtomBase* bgn = copies[bond->GetBgn()->GetIdx()];
    const ZQAtomBase* end = copies[bond->GetEnd()->GetIdx()];
    odd ^= copies[neighbours(*bond->GetBgn(), bond->GetEnd())[0]->GetIdx()] !=
           neighbours(*bgn, end)[0];
    odd ^= copies[neighbours(*bond->GetEnd(), bond->GetBgn())[0]->GetIdx()] !=
           neighbours(*end, bgn)[0];
    for (auto copy = bgn->GetBonds(); copy; ++copy) {
      if (copy->GetNbr(bgn) == end) copy->SetStereo(odd ? ZQBondStereo::Trans : ZQBondStereo::Cis);
    }
  }
  for (auto atom = shuffled.GetAtoms(); atom; ++atom) {
    atom->SetMapIdx(mol.GetAtomAt(atom->GetMapIdx() - 1)->GetMapIdx());
  }
  return shuffled;
}

std::string Repeated(const std::string& piece, std::size_t times) {
  std::string text;
  for (std::size_t i = 0; i < times; ++i) text += piece;
  return text;
}

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
      "c12c3c4c5c1c1c6c7c2c2c8c3c3c9c4c4c%10c5c5c1c1c6c6c%11c7c2c2c7c8c3c3c8c9c4c4c9c%10c5c5c1c1c6"
      "c6c%11c2c2c7c3c3c8c4c4c9c5c1c1c6c2c3c41",
      "C1CCCCC1.C1CC1.C1CC1.C1CCCCC1C1CC1",
      "OC[C@H]1O[C@@H]2O[C@H]3[C@H](O)[C@@H](O)[C@@H](O[C@H]4[C@H](O)[C@@H](O)[C@@H](O[C@H]1[C@H]("
      "O)"
      "[C@H]2O)O[C@@H]4CO)O[C@@H]3CO",
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
      "[Pb]" + Repeated("(CC)", 200) + "CC",
      Repeated("O.[Na+].C[C@H](F)Cl.", 60) + "C[C@@H](F)Cl",
      Repeated("N[C@@H](Cc1ccccc1)C(=O)", 40) + "O",
      Torus(8, "*"),
      Torus(6, "[C@]"),
  };
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
    }
    ZQMol prepared(mol);
    ZQSuppressHydrogens(prepared);
    ZQFindRingAtomsAndBonds(prepared);
    ZQAssignAromaticFlags(prepared, 2, true, 0, false);
    EXPECT_EQ(ZQMolToCanonicalSmiles(prepared), text) << smiles;
  }
}

// Every way to fill in the configurations, against the number of stereoisomers by hand.
TEST(CanonicalSmiles, TellsStereoisomersApartAndNothingElse) {
  const struct {
    std::string pattern;  // "?" for @ or @@, "!" for / or a backslash
    std::size_t numIsomers;
  } cases[] = {
      {"C[C?H](F)Cl", 2},
      {"C[C?H](O)[C?H](O)C", 3},
      {"C[C?H](O)[C?H](O)[C?H](O)C", 4},  // pseudoasymmetric in the middle
      {"C[C?H](O)[C?H](O)[C?H](O)[C?H](O)C", 10},
      {"C[C?H]1CC[C?H](C)CC1", 2},
      {"C[C?H]1C[C?H](C)C[C?H](C)C1", 2},
      {"O[C?H]1[C?H](O)[C?H](O)[C?H](O)[C?H](O)[C?H]1O", 9},  // the inositols
      {"OC[C?H]1OC(O)[C?H](O)[C?H](O)[C?H]1O", 16},
      {"C[C?H]1C[C?]2(C1)C[C?H](C)C2", 2},
      {"CC!C=C!C=C!CC", 3},
      {"C!C=C!C(O)!C=C!C", 3},
      {"C!C=C!C[C?H](O)C!C=C!C", 4},  // one of the double bonds makes the centre real
      {"C[S?](=O)CC", 2},
      {"C[C?](C)(F)Cl", 1},
      {"C[C?H](C)[C?H](F)C", 2},
      {"C[N?](F)Cl", 1},
      {"C[C?H](F)Cl.C[C?H](F)Cl", 3},
  };
  for (const auto& c : cases) {
    const auto isOpen = [](char ch) { return ch == '?' || ch == '!'; };
    const auto numOpen = std::ranges::count_if(c.pattern, isOpen);
    std::set<std::string> texts;
    for (unsigned int choice = 0; choice >> numOpen == 0; ++choice) {
      std::string smiles;
      unsigned int rest = choice;
      for (const char ch : c.pattern) {
        if (!isOpen(ch)) {
          smiles += ch;
          continue;
        }
        smiles += ch == '?' ? (rest % 2 != 0 ? "@" : "@@") : (rest % 2 != 0 ? "/" : "\\");
        rest /= 2;
      }
      texts.insert(ZQMolToCanonicalSmiles(ReadSmiles(smiles)));
    }
    EXPECT_EQ(texts.size(), c.numIsomers) << c.pattern << " " << *texts.begin();
  }
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
  // Bonds of no order aren't written, and what only they make different isn't either.
  ZQMol complex = "[Cu].N[C@@H](C)O"_mol;
  ZQBondBase* coordination = complex.NewBond(complex.GetAtomAt(0), complex.GetAtomAt(1), 0);
  EXPECT_EQ(ZQMolToCanonicalSmiles(complex), ZQMolToCanonicalSmiles("C[C@H](N)O.[Cu]"_mol));
  complex.DeleteBond(coordination);
  complex.NewBond(complex.GetAtomAt(0), complex.GetAtomAt(2), 0);
  EXPECT_EQ(ZQMolToCanonicalSmiles(complex), "CC(N)O.[Cu]");
}

}  // namespace Quarnel
