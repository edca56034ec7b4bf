// The requirements for every implementation of the abstract molecule: the built-in ones, and one of
// another toolkit. A toolkit that passes has the same fingerprints as the built-in molecule.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <numeric>
#include <tuple>

#include "contract/quarnel/perception.h"
#include "korvex/fingerprint.h"
#include "korvex/fingerprint_params.h"
#include "korvex/fpkinds.h"
#include "tests/foreign_mol.h"
#include "tests/mol_helpers.h"

namespace Quarnel {
namespace {

using Bostrel::ZQNot;

template <class Mol>
class MolConformanceTest : public testing::Test {};
using Implementations = testing::Types<ZQMol, ZQGraphMol, ForeignMol>;
TYPED_TEST_SUITE(MolConformanceTest, Implementations);

constexpr unsigned int numSteps = ZQPerceived::Symmetry;

void SetAllPerceived(ZQMolBase& mol) {
  for (unsigned int step = 1; step <= numSteps; ++step) mol.SetPerceived(step, true);
}

// The perceived steps, as digits.
std::string PerceivedSteps(const ZQMolBase& mol) {
  std::string steps;
  for (unsigned int step = 0; step <= numSteps + 1; ++step) {
    if (mol.IsPerceived(step)) steps += std::to_string(step);
  }
  return steps;
}

std::vector<unsigned int> BondIndices(const ZQAtomBase& atom) {
  std::vector<unsigned int> indices;
  for (ZQBondBase* bond = atom.NextBond(nullptr); bond; bond = atom.NextBond(bond)) {
    indices.push_back(bond->GetIdx());
  }
  return indices;
}

TYPED_TEST(MolConformanceTest, IndicesAndEdits) {
  TypeParam mol;
  TypeParam other;
  ZQAtomBase* stranger = other.NewAtom(6);
  for (int round = 0; round < 2; ++round) {
    EXPECT_FALSE(mol);
    EXPECT_EQ(mol.GetMaxAtomIdx() + mol.GetMaxBondIdx() + mol.NumAtoms() + mol.NumBonds(), 0U);
    EXPECT_EQ(mol.GetTitle(), "");
    EXPECT_FALSE(mol.FindData(7));
    EXPECT_EQ(mol.GetAtomAt(0), nullptr);
    // More atoms than a block of any implementation.
    std::vector<ZQAtomBase*> ring;
    for (unsigned int i = 0; i < 131; ++i) ring.push_back(mol.NewAtom(6));
    for (unsigned int i = 0; i < 131; ++i) {
      EXPECT_EQ(mol.NewBond(ring[i], ring[(i + 1) % 131], 1)->GetIdx(), i);
    }
    EXPECT_TRUE(mol);
    EXPECT_EQ(ring[130]->GetIdx(), 130U);
    EXPECT_EQ(mol.GetAtomAt(77), ring[77]);
    EXPECT_EQ(mol.GetBondAt(77)->GetNbr(ring[77]), ring[78]);
    EXPECT_EQ(mol.GetBondAt(77)->GetNbr(ring[76]), nullptr);
    EXPECT_EQ(BondIndices(*ring[0]), (std::vector<unsigned int>{0, 130}));

    EXPECT_EQ(mol.NewBond(ring[3], ring[3], 1), nullptr);
    EXPECT_EQ(mol.NewBond(ring[4], ring[3], 2), nullptr);
    EXPECT_EQ(mol.NewBond(ring[0], stranger, 1), nullptr);
    EXPECT_EQ(mol.NewBond(nullptr, ring[0], 1), nullptr);
    EXPECT_FALSE(mol.DeleteAtom(stranger));
    EXPECT_FALSE(mol.DeleteAtom(nullptr));
    EXPECT_FALSE(mol.DeleteBond(nullptr));
    EXPECT_EQ(mol.NumBonds(), 131U);

    // Holes in the middle remain; those at the end don't count.
    EXPECT_TRUE(mol.DeleteAtom(ring[64]));
    EXPECT_TRUE(mol.DeleteBond(mol.GetBondAt(20)));
    EXPECT_EQ(mol.NumAtoms(), 130U);
    EXPECT_EQ(mol.NumBonds(), 128U);
    EXPECT_EQ(mol.GetMaxAtomIdx(), 131U);
    EXPECT_EQ(mol.GetAtomAt(64), nullptr);
    EXPECT_EQ(mol.GetBondAt(63), nullptr);
    EXPECT_EQ(BondIndices(*ring[65]), (std::vector<unsigned int>{65}));
    EXPECT_TRUE(mol.DeleteAtom(ring[130]));
    EXPECT_EQ(mol.GetMaxAtomIdx(), 130U);
    EXPECT_EQ(mol.GetMaxBondIdx(), 129U);
    EXPECT_EQ(mol.NewAtom(7)->GetIdx(), 130U);
    EXPECT_EQ(mol.NewBond(mol.GetAtomAt(130), ring[0], 1)->GetIdx(), 129U);
    // A bond index between others of an atom: bonds are ordered by index, not by neighbour.
    EXPECT_NE(mol.NewBond(ring[0], ring[70], 1), nullptr);
    EXPECT_EQ(BondIndices(*ring[0]), (std::vector<unsigned int>{0, 129, 130}));

    mol.SetTitle("title");
    mol.SetData(7, std::string("datum"));
    mol.SetValid(false);
    EXPECT_FALSE(mol);
    mol.Clear();
    EXPECT_TRUE(mol.IsValid());
  }
}

TYPED_TEST(MolConformanceTest, ParentsAndNeighbours) {
  TypeParam mol;
  Fill(mol, "[H]C(=O)N(C)->[Cu]"_mol, true);
  TypeParam other;
  Fill(other, mol, false);
  for (const ZQMolBase* parent : std::initializer_list<const ZQMolBase*>{&mol, &other}) {
    for (auto atom = parent->GetAtoms(); atom; ++atom) EXPECT_EQ(atom->GetParent(), parent);
    for (auto bond = parent->GetBonds(); bond; ++bond) EXPECT_EQ(bond->GetParent(), parent);
  }
  std::vector<unsigned int> valences;
  std::vector<unsigned int> neighbours;
  for (auto atom = mol.GetAtoms(ZQNot(ZQIsHydrogen())); atom; ++atom) {
    valences.push_back(atom->GetHvyValence());
    for (auto heavy = atom->GetAtoms(ZQNot(ZQIsHydrogen())); heavy; ++heavy) {
      neighbours.push_back(heavy->GetAtomicNum());
    }
  }
  EXPECT_EQ(valences, (std::vector<unsigned int>{3, 2, 2, 1, 0}));
  EXPECT_EQ(neighbours, (std::vector<unsigned int>{8, 7, 6, 6, 6, 29, 7, 7}));
}

TYPED_TEST(MolConformanceTest, AConfigurationInAnyOrderOfNeighbours) {
  // Seen from the first atom of the text, the others turn counterclockwise.
  for (const char* smiles :
       {"F[C@](Cl)(Br)I", "[H][C@](Cl)(Br)I", "[C@H](Cl)(Br)I", "[S@](F)(=O)C"}) {
    TypeParam mol;
    Fill(mol, ReadSmiles(smiles), true);
    ZQAtomBase* centre = nullptr;
    for (auto atom = mol.GetAtoms(); atom; ++atom) {
      if (atom->GetStereo() != ZQAtomStereo::None) centre = &*atom;
    }
    std::vector<ZQAtomBase*> list;
    for (auto atom = centre->GetAtoms(); atom; ++atom) list.push_back(&*atom);
    const bool isComplete = list.size() == 4;
    std::vector<std::size_t> order(list.size());
    std::iota(order.begin(), order.end(), 0);
    do {
      std::vector<ZQAtomBase*> ordered;
      ordered.reserve(order.size());
      for (const std::size_t i : order) ordered.push_back(list[i]);
      unsigned int swaps = isComplete ? 0 : 1;  // a missing first ligand is moved to the end
      for (std::size_t i = 0; i < order.size(); ++i) {
        swaps += static_cast<unsigned int>(
            std::count_if(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(i),
                          [&](std::size_t earlier) { return earlier > order[i]; }));
      }
      const unsigned int expected = swaps % 2 == 0 ? 3 : 2;
      EXPECT_EQ(centre->GetStereo(ordered, 57), expected) << smiles;
      EXPECT_EQ(centre->GetStereo(ordered, 58), 0U);
      ordered.pop_back();
      EXPECT_EQ(centre->GetStereo(ordered, 57), isComplete ? expected : 0U) << smiles;
      ordered.push_back(ordered.front());
      EXPECT_EQ(centre->GetStereo(ordered, 57), 0U) << smiles;
      ordered.back() = centre;
      EXPECT_EQ(centre->GetStereo(ordered, 57), 0U) << smiles;
    } while (std::ranges::next_permutation(order).found);
    EXPECT_EQ(list[0]->GetStereo({centre}, 57), 0U);
    centre->SetStereo(ZQAtomStereo::None);
    EXPECT_EQ(centre->GetStereo(list, 57), 0U);
  }
}

TYPED_TEST(MolConformanceTest, ChangesUndoTheStepsThatReadThem) {
  TypeParam mol;
  Fill(mol, "CC(=O)[O-]"_mol, true);
  ZQAtomBase& atom = *mol.GetAtoms();
  ZQBondBase& bond = *mol.GetBonds();
  const std::vector<std::tuple<const char*, std::function<void()>, const char*>> changes = {
      {"charge", [&] { atom.SetFormalCharge(atom.GetFormalCharge() + 1); }, "1"},
      {"hydrogens", [&] { atom.SetImplicitHCount(atom.GetImplicitHCount() - 1); }, "1"},
      {"isotope", [&] { atom.SetIsotope(atom.GetIsotope() + 1); }, "123"},
      {"order", [&] { bond.SetOrder(bond.GetOrder() + 1); }, "1"},
      {"atom stereo", [&] { atom.SetStereo(ZQAtomStereo::Clockwise); }, "1234"},
      {"bond stereo", [&] { bond.SetStereo(ZQBondStereo::Cis); }, "1234"},
      {"map index", [&] { atom.SetMapIdx(9); }, "12345"},
      {"the same charge", [&] { atom.SetFormalCharge(atom.GetFormalCharge()); }, "12345"},
      {"an order as it is", [&] { bond.SetOrder(bond.GetOrder()); }, "12345"},
      {"new bond", [&] { mol.NewBond(mol.NewAtom(6), &atom, 1); }, ""},
      {"deleted bond", [&] { mol.DeleteBond(mol.GetBondAt(mol.GetMaxBondIdx() - 1)); }, ""},
      {"deleted atom", [&] { mol.DeleteAtom(mol.GetAtomAt(mol.GetMaxAtomIdx() - 1)); }, ""},
  };
  const auto findings = [&] {
    return std::to_string(atom.IsInRing()) + std::to_string(atom.IsAromatic()) +
           std::to_string(atom.GetHyb()) + std::to_string(atom.IsChiral()) +
           std::to_string(atom.GetSymmetryClass()) + std::to_string(bond.IsInRing()) +
           std::to_string(bond.IsAromatic()) + std::to_string(bond.IsChiral());
  };
  for (const auto& [name, change, left] : changes) {
    SetAllPerceived(mol);
    EXPECT_EQ(PerceivedSteps(mol), "12345") << name;
    atom.SetInRing(true);
    atom.SetAromatic(true);
    atom.SetHyb(3);
    atom.SetChiral(true);
    atom.SetSymmetryClass(4);
    bond.SetInRing(true);
    bond.SetAromatic(true);
    bond.SetChiral(true);
    change();
    EXPECT_EQ(PerceivedSteps(mol), left) << name;
    const auto kept = [&, steps = std::string(left)](char step, char value) {
      return steps.find(step) == std::string::npos ? '0' : value;
    };
    EXPECT_EQ(findings(),
              (std::string{kept('1', '1'), kept('2', '1'), kept('3', '3'), kept('4', '1'),
                           kept('5', '4'), kept('1', '1'), kept('2', '1'), kept('4', '1')}))
        << name;
  }
  // Marks of the input, set while their steps aren't done, survive a change.
  for (unsigned int step = 1; step <= numSteps; ++step) mol.SetPerceived(step, false);
  atom.SetAromatic(true);
  bond.SetChiral(true);
  mol.NewAtom(8);
  EXPECT_TRUE(atom.IsAromatic() && bond.IsChiral());
}

// Varied molecules: charges, isotopes, stereo, explicit hydrogens, several components, large rings,
// metals, and the two without anything to enumerate.
const std::vector<std::string>& Table() {
  static const std::vector<std::string> table = [] {
    std::vector<std::string> smiles = SampleSmiles();
    for (const char* more :
         {"", "[HH]", "[H]OC([H])([H])C", "[13CH3][C@@H](N)C(=O)O", "C/C(F)=C(\\Cl)/C=C/Br",
          "C1CCCCCCCCCCCCCCCCCCC1", "O=C1CCCCCCCCCCCCCC/C=C\\1", "[K+].[Cl-].O.[235U]",
          "N[Pt](N)(Cl)Cl", "C[Hg]C", "[O-][Cl+3]([O-])([O-])[O-]", "[CH3:7][S@](=O)CC",
          "c1ccc2ccccc2c1.OC(=O)C(O)C(O)C(=O)O", "CC(C)(C)[Si](C)(C)O[C@H]1CC[NH2+]C1"}) {
      smiles.emplace_back(more);
    }
    return smiles;
  }();
  return table;
}

void ExpectSameFingerPrints(const ZQMolBase& mol, const ZQMolBase& expected,
                            const std::string& what) {
  EXPECT_EQ(ZQMolToSmiles(mol), ZQMolToSmiles(expected)) << what;
  EXPECT_EQ(ZQMolToCanonicalSmiles(mol), ZQMolToCanonicalSmiles(expected)) << what;
  for (const ZQKorvex::ZQFPKind& kind : ZQKorvex::ZQGetFPKinds()) {
    ZQKorvex::ZQFingerPrint fp;
    ZQKorvex::ZQFingerPrint other;
    EXPECT_EQ(ZQKorvex::ZQMakeFP(fp, mol, kind.number),
              ZQKorvex::ZQMakeFP(other, expected, kind.number))
        << what;
    ASSERT_TRUE(fp && other) << what;
    EXPECT_TRUE(fp == other) << what << " kind " << kind.name;
  }
}

TYPED_TEST(MolConformanceTest, AllKindsGiveTheSameAsOverTheBuiltIn) {
  TypeParam mol;  // reused, as by an application that reads a file
  for (const std::string& smiles : Table()) {
    const ZQMol expected = ReadSmiles(smiles);
    ASSERT_TRUE(ZQSmilesToMol(mol, smiles));
    ExpectSameFingerPrints(mol, expected, smiles);
    for (const bool holes : {false, true}) {
      Fill(mol, expected, holes);
      ASSERT_EQ(mol.GetMaxAtomIdx() != mol.NumAtoms(), holes && mol.NumAtoms() != 0);
      ExpectSameFingerPrints(mol, expected, smiles);
    }
  }
}

// A chain grows from the first atom that has a hydrogen to spare, which becomes an isotope.
void Edit(ZQMolBase& mol) {
  ZQAtomBase* first = nullptr;
  for (auto atom = mol.GetAtoms(); atom && !first; ++atom) {
    if (atom->GetImplicitHCount() != 0 && !atom->IsAromatic()) first = &*atom;
  }
  if (!first) first = mol.NewAtom(14);
  mol.BeginEdit();
  if (first->GetImplicitHCount() != 0) first->SetImplicitHCount(first->GetImplicitHCount() - 1);
  first->SetIsotope(100);
  ZQAtomBase* oxygen = mol.NewAtom(8);
  ZQAtomBase* nitrogen = mol.NewAtom(7);
  mol.NewBond(oxygen, first, 1);
  mol.NewBond(oxygen, nitrogen, 1);
  nitrogen->SetImplicitHCount(3);
  nitrogen->SetFormalCharge(1);
  mol.EndEdit();
}

TYPED_TEST(MolConformanceTest, EditsShowInTheFingerPrints) {
  TypeParam mol;
  for (const std::string& smiles : Table()) {
    ZQMol expected = ReadSmiles(smiles);
    ZQKorvex::ZQFingerPrint before;
    ZQKorvex::ZQFingerPrint after;
    Fill(mol, expected, true);
    ZQKorvex::ZQMakeFP(before, mol, 102);
    for (ZQMolBase* edited : std::initializer_list<ZQMolBase*>{&mol, &expected}) {
      ZQPerceiveSymmetry(*edited, true, true);  // what an application may have perceived
      Edit(*edited);
    }
    ZQKorvex::ZQMakeFP(after, mol, 102);
    EXPECT_FALSE(before == after) << smiles;
    ExpectSameFingerPrints(mol, expected, "edited " + smiles);
    // The added atoms are deleted again, and the first bond with them.
    for (ZQMolBase* edited : std::initializer_list<ZQMolBase*>{&mol, &expected}) {
      edited->DeleteAtom(edited->GetAtomAt(edited->GetMaxAtomIdx() - 1));
      edited->DeleteAtom(edited->GetAtomAt(edited->GetMaxAtomIdx() - 1));
      if (auto bond = edited->GetBonds()) edited->DeleteBond(&*bond);
    }
    ExpectSameFingerPrints(mol, expected, "cut " + smiles);
  }
}

}  // namespace
}  // namespace Quarnel
