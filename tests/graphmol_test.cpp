#include "contract/quarnel/graphmol.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <set>

#include "contract/quarnel/atombondset.h"
#include "contract/quarnel/perception.h"
#include "tests/mol_helpers.h"

namespace Quarnel {
namespace {

using Edge = std::pair<unsigned int, unsigned int>;

// The graph as seen by callers, from the atoms' own bonds; each bond occurs twice.
std::multiset<Edge> EdgesOf(const ZQMolBase& mol) {
  std::multiset<Edge> edges;
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    unsigned int last = 0;
    for (auto bond = atom->GetBonds(); bond; ++bond) {
      EXPECT_LE(last, bond->GetIdx()) << "bonds come by ascending index";
      last = bond->GetIdx();
      const unsigned int nbr = bond->GetNbr(&*atom)->GetIdx();
      edges.insert({std::min(atom->GetIdx(), nbr), std::max(atom->GetIdx(), nbr)});
    }
  }
  return edges;
}

TEST(GraphMol, RandomEditsAgainstAModelAndCopies) {
  std::mt19937 random(11);
  ZQGraphMol mol;
  std::vector<ZQAtomBase*> atoms;  // null: deleted
  std::set<Edge> edges;
  for (int step = 0; step < 3000; ++step) {
    const auto pick = [&] { return static_cast<unsigned int>(random() % atoms.size()); };
    switch (random() % 8) {
      case 0:
      case 1:
      case 2:
        atoms.push_back(mol.NewAtom(6));
        if (atoms.back()->GetIdx() != atoms.size() - 1) atoms.resize(mol.GetMaxAtomIdx());
        atoms[mol.GetMaxAtomIdx() - 1] = mol.GetAtomAt(mol.GetMaxAtomIdx() - 1);
        break;
      case 3:
      case 4:
      case 5: {
        if (atoms.size() < 2) break;
        const auto [a, b] = std::minmax({pick(), pick()});
        if (!atoms[a] || !atoms[b]) break;
        ASSERT_EQ(mol.NewBond(atoms[a], atoms[b], 1) != nullptr,
                  a != b && edges.insert({a, b}).second);
        break;
      }
      case 6: {
        if (atoms.empty() || step % 3 != 0) break;
        const unsigned int a = pick();
        if (!atoms[a]) break;
        ASSERT_TRUE(mol.DeleteAtom(atoms[a]));
        atoms[a] = nullptr;
        std::erase_if(edges, [a](const Edge& e) { return e.first == a || e.second == a; });
        break;
      }
      default: {
        auto bond = mol.GetBonds();
        if (!bond) break;
        edges.erase(std::minmax({bond->GetBgn()->GetIdx(), bond->GetEnd()->GetIdx()}));
        ASSERT_TRUE(mol.DeleteBond(&*bond));
      }
    }
    std::multiset<Edge> twice;
    for (const Edge& edge : edges) twice.insert({edge, edge});
    ASSERT_EQ(EdgesOf(mol), twice);
    ASSERT_EQ(mol.NumBonds(), edges.size());
    if (step % 100 == 0) {
      const ZQMol copy(mol);
      ASSERT_EQ(EdgesOf(copy), twice);
      ASSERT_EQ(copy.GetMaxAtomIdx(), mol.GetMaxAtomIdx());
      ASSERT_EQ(copy.NumAtoms(), mol.NumAtoms());
    }
  }
}

/// The perceived steps, and those for which some atom or bond has a value: rings, aromaticity,
/// hybridization, chirality and symmetry.
std::pair<std::string, std::string> StepsOf(const ZQMolBase& mol) {
  constexpr std::string_view names = "RAHCS";
  std::string perceived;
  for (unsigned int i = 0; i < names.size(); ++i) {
    if (mol.IsPerceived(ZQPerceived::Rings + i)) perceived += names[i];
  }
  std::array<bool, 5> holds{};
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    holds[0] |= atom->IsInRing();
    holds[1] |= atom->IsAromatic();
    holds[2] |= atom->GetHyb() != 0;
    holds[3] |= atom->IsChiral();
    holds[4] |= atom->GetSymmetryClass() != 0;
  }
  for (auto bond = mol.GetBonds(); bond; ++bond) {
    holds[0] |= bond->IsInRing();
    holds[1] |= bond->IsAromatic();
    holds[3] |= bond->IsChiral();
  }
  std::string held;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (holds[i]) held += names[i];
  }
  return {perceived, held};
}

TEST(GraphMol, CopiesHaveTheStepsThatAChangeLeft) {
  const auto perceived = [] {
    ZQMol mol = "C[C@H](F)c1ccccc1"_mol;
    ZQAssignAromaticFlags(mol, 2, true, 0, false);
    ZQPerceiveSymmetry(mol, true, false);
    return mol;
  };
  using Steps = std::pair<std::string, std::string>;
  const struct {
    void (*change)(ZQMol&);
    const char* left;
  } cases[] = {{[](ZQMol&) {}, "RAHCS"},
               {[](ZQMol& mol) { mol.GetAtomAt(1)->SetStereo(ZQAtomStereo::None); }, "RAHC"},
               {[](ZQMol& mol) { mol.SetPerceived(ZQPerceived::Hybridization, false); }, "RACS"},
               {[](ZQMol& mol) { mol.GetAtomAt(0)->SetImplicitHCount(2); }, "R"},
               {[](ZQMol& mol) { mol.DeleteAtom(mol.GetAtomAt(0)); }, ""}};
  for (const auto& c : cases) {
    ZQMol mol = perceived();
    c.change(mol);
    EXPECT_EQ(StepsOf(mol), Steps(c.left, c.left)) << &c - cases;
    EXPECT_EQ(StepsOf(ZQGraphMol(mol)), StepsOf(mol)) << &c - cases;
  }
  ZQMol drawn = perceived();
  ZQPerceiveChiral(drawn, true);
  EXPECT_EQ(StepsOf(drawn), Steps("RAHS", "RAHCS")) << "flags without the step";
  ZQMol marked = "c1ccccc1"_mol;
  marked.NewAtom(17);
  EXPECT_EQ(StepsOf(marked).second, "A") << "marks of the input";
}

TEST(GraphMol, CopiesCarryEverything) {
  ZQMol mol = "[13CH3][O-]"_mol;
  mol.SetTitle("methanol");
  mol.SetData(58, 2);
  mol.GetAtomAt(1)->AddData(70, std::string("on the oxygen"));
  mol.GetBondAt(0)->SetInRing(true);
  mol.SetPerceived(ZQPerceived::Rings, true);
  const ZQGraphMol copy(mol);
  mol.Clear();
  EXPECT_TRUE(mol.IsValid());
  EXPECT_FALSE(static_cast<bool>(mol)) << "valid, yet empty";
  EXPECT_EQ(copy.GetTitle(), "methanol");
  int model = 0;
  EXPECT_TRUE(copy.GetData(58, model) && model == 2);
  EXPECT_EQ(copy.GetAtomAt(0)->GetIsotope(), 13U);
  EXPECT_EQ(copy.GetAtomAt(0)->GetDegree(), 4U);
  EXPECT_EQ(copy.GetAtomAt(1)->GetFormalCharge(), -1);
  std::string note;
  EXPECT_TRUE(copy.GetAtomAt(1)->GetData(70, note));
  EXPECT_TRUE(copy.GetBondAt(0)->IsInRing());
  EXPECT_TRUE(copy.IsPerceived(ZQPerceived::Rings));
}

TEST(AtomBondSet, CopiesAsItIsAndOntoACopyOfTheMolecule) {
  const ZQMol mol = "CCO"_mol;
  ZQAtomBondSet set;
  EXPECT_TRUE(set.AddAtom(mol.GetAtomAt(2)) && set.AddAtom(mol.GetAtomAt(0)));
  EXPECT_FALSE(set.AddAtom(mol.GetAtomAt(2)) || set.AddAtom(nullptr) || set.AddBond(nullptr));
  EXPECT_TRUE(set.AddBond(mol.GetBondAt(1)));
  const ZQGraphMol copy(mol);
  const ZQAtomBondSet moved(set, {copy.GetAtomAt(0), copy.GetAtomAt(1), copy.GetAtomAt(2)},
                            {copy.GetBondAt(0)});
  EXPECT_EQ(moved.GetAtoms(), (std::vector{copy.GetAtomAt(2), copy.GetAtomAt(0)}));
  EXPECT_EQ(moved.NumBonds(), 0U);  // the table ends before it
  const std::unique_ptr<ZQAtomBondSet> same(set.CreateCopy());
  set.ClearAtoms();
  EXPECT_TRUE(set.NumAtoms() == 0 && set.NumBonds() == 1);
  EXPECT_TRUE(set.AddAtom(mol.GetAtomAt(2)));
  set.ClearBonds();
  EXPECT_TRUE(set.NumAtoms() == 1 && set.NumBonds() == 0);
  set = *same;
  EXPECT_TRUE(set.NumAtoms() == 2 && set.NumBonds() == 1);
  set.ClearAtomsAndBonds();
  EXPECT_TRUE(set.NumAtoms() == 0 && set.NumBonds() == 0 && same->NumAtoms() == 2);
}

}  // namespace
}  // namespace Quarnel
