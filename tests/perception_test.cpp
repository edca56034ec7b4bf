#include "contract/quarnel/perception.h"

#include <gtest/gtest.h>

#include "tests/mol_helpers.h"

namespace Quarnel {
namespace {

void Perceive(ZQMolBase& mol) {
  ZQSuppressHydrogens(mol);
  ZQFindRingAtomsAndBonds(mol);
  ZQAssignAromaticFlags(mol, 2, true, 0, false);
  ZQPerceiveSymmetry(mol, true, false);
}

/// One character per atom, in index order.
template <class Get>
std::string Row(const ZQMolBase& mol, Get get) {
  std::string row;
  for (auto atom = mol.GetAtoms(); atom; ++atom) row += get(*atom);
  return row;
}
std::string Aromatic(const ZQMolBase& mol) {
  return Row(mol, [](const ZQAtomBase& atom) { return atom.IsAromatic() ? 'a' : '-'; });
}
std::string Hybs(const ZQMolBase& mol) {
  return Row(mol, [](const ZQAtomBase& atom) { return static_cast<char>('0' + atom.GetHyb()); });
}
std::string Chiral(const ZQMolBase& mol) {
  std::string row = Row(mol, [](const ZQAtomBase& atom) { return atom.IsChiral() ? '*' : '-'; });
  row += ':';
  for (auto bond = mol.GetBonds(); bond; ++bond) {
    if (bond->IsChiral()) row += std::to_string(bond->GetIdx());
  }
  return row;
}
std::string Classes(const ZQMolBase& mol) {
  return Row(mol, [](const ZQAtomBase& atom) {
    return static_cast<char>('a' - 1 + static_cast<int>(atom.GetSymmetryClass()));
  });
}

/// The row of each molecule after a step, with rings and aromaticity perceived. The table
/// alternates molecules and rows.
template <class Step>
void ExpectRows(const char* table, Step step, std::string (*row)(const ZQMolBase&)) {
  std::istringstream cases(table);
  for (std::string smiles, expected; cases >> smiles;) {
    ASSERT_TRUE(cases >> expected) << smiles;
    ZQMol mol = ReadSmiles(smiles);
    ZQFindRingAtomsAndBonds(mol);
    EXPECT_TRUE(ZQAssignAromaticFlags(mol, 2, true, 0, false));
    step(mol);
    EXPECT_EQ(row(mol), expected) << smiles;
  }
}

TEST(Symmetry, ClassesDoNotDependOnOrderHydrogensOrKekuleStructure) {
  const auto classSizes = [](ZQMol mol) {
    Perceive(mol);
    const std::string classes = Classes(mol);
    std::vector<std::ptrdiff_t> sizes;
    for (const char atom : classes) sizes.push_back(std::ranges::count(classes, atom));
    std::ranges::sort(sizes);
    return sizes;
  };
  for (const std::string& smiles : SampleSmiles()) {
    const ZQMol mol = ReadSmiles(smiles);
    for (unsigned int seed = 0; seed < 8; ++seed) {
      // A shuffled molecule is matched from other atoms: another Kekulé structure.
      ZQMol other = Shuffled(mol, seed);
      ASSERT_TRUE(ZQKekulize(other)) << smiles;
      EXPECT_EQ(classSizes(seed % 2 != 0 ? WithHydrogens(other) : other), classSizes(mol))
          << smiles << " seed " << seed;
    }
  }
}

/// Whether the unmatched atoms from `first` on can be matched: 'C' by exactly one of the bonds, '*'
/// by one or none, 'N' by none.
bool CanBeServed(const std::string& atoms,
                 const std::vector<std::pair<unsigned int, unsigned int>>& bonds,
                 std::vector<bool>& served, std::size_t first) {
  const std::size_t a = atoms.find('C', first);
  if (a == std::string::npos) return true;
  if (served[a]) return CanBeServed(atoms, bonds, served, a + 1);
  for (const auto& [x, y] : bonds) {
    const unsigned int other = x == a ? y : x;
    if ((x != a && y != a) || atoms[other] == 'N' || served[other]) continue;
    served[a] = served[other] = true;
    if (CanBeServed(atoms, bonds, served, a + 1)) return true;
    served[a] = served[other] = false;
  }
  return false;
}

TEST(Kekulize, AgreesWithBruteForceOnRandomGraphs) {
  std::mt19937 random(5);
  int numPossible = 0;
  constexpr int rounds = 3000;
  for (int round = 0; round < rounds; ++round) {
    const unsigned int n = 3 + random() % 9;
    std::string atoms;
    for (unsigned int i = 0; i < n; ++i) atoms += "CCCCCN*"[random() % 7];
    std::vector<std::pair<unsigned int, unsigned int>> bonds;
    ZQMol mol;
    for (const char symbol : atoms) {
      mol.NewAtom(symbol == 'C' ? 6 : symbol == 'N' ? 7 : 0)->SetAromatic(true);
    }
    const auto connect = [&](unsigned int a, unsigned int b) {
      ZQAtomBase* bgn = mol.GetAtomAt(a);
      ZQAtomBase* end = mol.GetAtomAt(b);
      if (bgn->GetDegree() == 3 || end->GetDegree() == 3) return;
      ZQBondBase* bond = mol.NewBond(bgn, end, 1);
      if (!bond) return;
      bond->SetAromatic(true);
      bonds.emplace_back(a, b);
    };
    for (unsigned int i = 0; i < n; ++i) connect(i, (i + 1) % n);
    for (unsigned int i = random() % n; i > 0; --i) connect(random() % n, random() % n);
    // With three sigma bonds a carbon lacks one valence and a nitrogen none.
    for (auto atom = mol.GetAtoms(); atom; ++atom) {
      if (atom->GetAtomicNum() != 0) atom->SetImplicitHCount(3 - atom->GetDegree());
    }
    ZQMol other = Shuffled(mol, static_cast<unsigned int>(round));
    std::vector<bool> served(atoms.size(), false);
    const bool possible = CanBeServed(atoms, bonds, served, 0);
    numPossible += possible;
    unsigned int culprit = 99;
    ASSERT_EQ(ZQKekulize(mol, &culprit), possible) << atoms;
    EXPECT_EQ(culprit < atoms.size(), !possible) << atoms;
    // The choice doesn't depend on the order of atoms, however it differs.
    ASSERT_EQ(ZQKekulize(other), possible);
    const auto text = [possible](const ZQMol& m) {
      return possible ? ZQMolToCanonicalSmiles(m) : std::string();
    };
    ASSERT_EQ(text(other), text(mol));
    for (auto atom = mol.GetAtoms(); atom; ++atom) {
      int doubles = 0;
      for (auto bond = atom->GetBonds(); bond; ++bond) doubles += bond->GetOrder() == 2;
      const char symbol = atoms[atom->GetIdx()];
      EXPECT_LE(doubles, possible && symbol != 'N' ? 1 : 0) << "as before where impossible";
      EXPECT_TRUE(!possible || symbol != 'C' || doubles == 1) << atoms;
    }
  }
  EXPECT_GT(numPossible, rounds / 4);
  EXPECT_LT(numPossible, rounds * 3 / 4);
}

TEST(Rings, AgreeWithCuttingEachBond) {
  // A bond is in a ring if its ends stay connected without it.
  for (const std::string& smiles : SampleSmiles()) {
    ZQMol mol = ReadSmiles(smiles);
    ZQFindRingAtomsAndBonds(mol);
    std::vector<unsigned int> parts;
    const unsigned int whole = ZQDetermineComponents(mol, parts);
    for (auto bond = mol.GetBonds(); bond; ++bond) {
      ZQMol cut(mol);
      cut.DeleteBond(cut.GetBondAt(bond->GetIdx()));
      EXPECT_EQ(ZQDetermineComponents(cut, parts) == whole, bond->IsInRing()) << smiles;
    }
    for (auto atom = mol.GetAtoms(); atom; ++atom) {
      bool any = false;
      for (auto bond = atom->GetBonds(); bond; ++bond) any |= bond->IsInRing();
      EXPECT_EQ(atom->IsInRing(), any) << smiles;
    }
  }
}

TEST(Aromaticity, SystemsAreTheComponentsOfAromaticBonds) {
  for (const std::string& smiles : SampleSmiles()) {
    ZQMol mol = ReadSmiles(smiles);
    ZQAssignAromaticFlags(mol, 2, true, 0, false);
    std::vector<unsigned int> systems;
    const unsigned int count = ZQDetermineAromaticRingSystems(mol, systems);
    ZQMol cut(mol);
    for (unsigned int i = 0; i < cut.GetMaxBondIdx(); ++i) {
      if (!mol.GetBondAt(i)->IsAromatic()) cut.DeleteBond(cut.GetBondAt(i));
    }
    unsigned int alone = 0;
    for (auto atom = cut.GetAtoms(); atom; ++atom) {
      EXPECT_EQ(systems[atom->GetIdx()] == 0, !atom->GetBonds()) << smiles;
      alone += !atom->GetBonds();
    }
    std::vector<unsigned int> parts;
    EXPECT_EQ(count + alone, ZQDetermineComponents(cut, parts)) << smiles;
  }
}

TEST(Aromaticity, Model2) {
  // Kekulé input; aromatic atoms by index. A double bond to carbon breaks a ring; azulene is
  // aromatic by its outline alone, of acenaphthylene naphthalene alone.
  const char* const table = R"t(
      C1=CC=CC=C1 aaaaaa   C1=CC=C1 ----   C1=CC=CC=CC=C1 --------   C1=CC=CN1 aaaaa
      C1=CCC=C1 -----   [CH-]1C=CC=C1 aaaaa   [CH+]1C=CC=C1 -----   [CH+]1C=CC=CC=C1 aaaaaaa
      [CH+]1C=C1 aaa   O1C=CC=C1 aaaaa   [O+]1=CC=CC=C1 aaaaaa   C1=CSC=CS1 ------
      O=S1C=CC=C1 ------   O=C1C=CNC=C1 -aaaaaa   O=C1C=CC(=O)C=C1 --------
      O=C1C=CC=CC=C1 -aaaaaaa   C=C1C=CC(=C)C=C1 --------   N=C1C=CC=CN1 -aaaaaa
      O=[N+]1[CH-]C=CC=N1 -aaaaaa   [O-][N+]1=CC=CC=C1 -aaaaaa   O=N1=CC=CC=C1 -aaaaaa
      B1NBNBN1 aaaaaa   B1C=CC=C1 -----   P1=CC=CC=C1 aaaaaa   CP1(C)=CC=CC=C1 --------
      [AsH]1C=CC=C1 aaaaa   [Se]1C=CC=C1 aaaaa   [SiH]1=CC=CC=C1 aaaaaa   C1#CC=CC=C1 aaaaaa
      *1C=CC=C1 -----   C1=CC2=CC=CC2=CC=C1 aaaaaaaaaa   C1=CC2=CC=CC2=C1 --------
      C1=CN2C=CC=C2C=C1 aaaaaaaaa   C1=CC2=CC=CC3=CC=CC1=C23 --aaaaaaaaaa
      C1=CC=C(C=C1)C1=CC=CC=C1 aaaaaaaaaaaa   C1=CC=CC=CC=CC=CC=CC=CC=CC=C1 aaaaaaaaaaaaaaaaaa)t";
  ExpectRows(
      table, [](ZQMol&) {}, Aromatic);
}

TEST(Aromaticity, BondsArgumentsAndRecord) {
  // The central bond of biphenyl isn't aromatic; the middle bond of azulene is.
  const auto numAromatic = [](const ZQMol& mol) {
    unsigned int count = 0;
    for (auto bond = mol.GetBonds(); bond; ++bond) count += bond->IsAromatic();
    return count;
  };
  ZQMol biphenyl = "c1ccccc1c1ccccc1"_mol;
  ZQAssignAromaticFlags(biphenyl, 2, true, 0, true);
  EXPECT_EQ(numAromatic(biphenyl), 12U);
  int model = 0;
  EXPECT_TRUE(biphenyl.GetData(ZQAromaticityModelTag, model));
  EXPECT_EQ(model, 2);
  ZQMol benzyne = "C1=CC=CC#C1"_mol;
  ZQAssignAromaticFlags(benzyne, 2, true, 0, false);
  EXPECT_EQ(numAromatic(benzyne), 5U);
  EXPECT_FALSE(benzyne.GetBondAt(4)->IsAromatic());
  ZQMol twoTriples = "C1#CC#CC=C1"_mol;
  ZQAssignAromaticFlags(twoTriples, 2, true, 0, false);
  EXPECT_EQ(numAromatic(twoTriples), 4U);
  std::vector<unsigned int> systems;
  EXPECT_EQ(ZQDetermineAromaticRingSystems(twoTriples, systems), 1U);
  ZQMol azulene = "C1=CC2=CC=CC2=CC=C1"_mol;
  ZQAssignAromaticFlags(azulene, 2, true, 0, false);
  EXPECT_EQ(numAromatic(azulene), 11U);

  ZQAssignAromaticFlags(azulene, 2, false, 6, false);
  EXPECT_EQ(numAromatic(azulene), 11U) << "flags are kept without clear";
  ZQAssignAromaticFlags(azulene, 2, true, 9, false);
  EXPECT_EQ(numAromatic(azulene), 0U) << "the outline has ten atoms";

  CapturedReports reports;
  EXPECT_FALSE(ZQAssignAromaticFlags(azulene, 1, true, 0, false));
  EXPECT_EQ(reports.Count(Bostrel::ZQErrorLevel::Warning), 1U);
}

TEST(Hybridization, Table) {
  const char* const table = R"t(
      CC=CC#C 32211   C=C=C 212   CC(=O)NC 32223   CN(C)C 3333   Nc1ccccc1 2222222   COC=C 3222
      CC(=O)OC 32223   OCC 333   c1ccsc1 22222   CSC=C 3322   COc1ccccc1 32222222   CSc1ccccc1 33222222   C[Se]C=C 3322   CS(=O)(=O)NC 332233
      C[N+](=O)[O-] 3222   CC#N 311   FP(F)(F)(F)F 343333   FS(F)(F)(F)(F)F 3533333   CS(C)=O 3332
      [Na+].[Cl-] 03   Cl[Pt](Cl)(Cl)Cl 33333   C[N+](C)(C)C=C 333322   [H][H] 00   ClC=C 322
      CN=[N+]=[N-] 3212)t";
  ExpectRows(
      table, [](ZQMol& mol) { ZQAssignHybridization(mol); }, Hybs);
}

TEST(Chirality, Table) {
  // Atoms by index, then the indices of bonds.
  const char* const table = R"t(
      CC(F)Cl -*--:   CC(C)Cl ----:   CC(N)C(=O)O -*----:   CS(=O)CC -*---:   CS(=O)(=O)CC ------:
      CS(=O)(=N)CC -*----:   C[S+](CC)CCC -*-----:   CN(CC)CCC -------:   C[NH+](CC)CCC -------:
      C[N+](CC)(CCC)CCCC -*---------:   CP(CC)CCC -*-----:   CP(=O)(O)CC -*----:   CC=CC ----:1
      CC=C ---:   CC=C(C)C -----:   CC=C=CC -----:   CC=NO ----:1   CC(C)=NO -----:   CN=NC ----:1
      C1CCC=CCC1 -------:   C1CCC=CCCC1 --------:3   CC1CCC(C)CC1 --------:
      CC1CCCC(C)C1 -*---*--:   C[Si](F)(Cl)Cl -----:   C[SiH](F)Cl -*--:
      c1ccccc1C=Cc1ccccc1 --------------:7   FC(C([2H])([2H])[2H])C -*-----:)t";
  ExpectRows(
      table, [](ZQMol& mol) { ZQPerceiveChiral(mol, false); }, Chiral);
  ZQMol half = "C[C@H](F)CC(F)C=CC/C=C/C"_mol;
  ZQPerceiveChiral(half, true);
  EXPECT_FALSE(half.IsPerceived(ZQPerceived::Chirality));
  EXPECT_EQ(Chiral(half), "-*----------:9");
  ZQPerceiveChiral(half, false);
  EXPECT_EQ(Chiral(half), "-*--*-------:69");
}

TEST(Symmetry, Table) {
  const char* const table = R"t(
      CC(C)Cc1ccccc1 abacdefgfe   CCO.OCC.CCN abccbadef   [H]C([H])[H].C abaac
      C12C3C4C1C5C2C3C45 aaaaaaaa   N1CC(=O)NCC(=O)NCC1=O abcdabcdabcd)t";
  const auto refine = [](ZQMol& mol) { ZQPerceiveSymmetry(mol, false, false); };
  const auto split = [](ZQMol& mol) { ZQPerceiveSymmetry(mol, true, false); };
  ExpectRows(table, refine, Classes);
  ExpectRows(table, split, Classes);
  // All neighbourhoods are equal; the last are a prism and a ring with all its long diagonals.
  ExpectRows("C1CC1.C1CCCCC1 aaaaaaaaa C12C3C1C1C2C31.C12C3C4C1C3C42 aaaaaaaaaaaa", refine,
             Classes);
  ExpectRows("C1CC1.C1CCCCC1 aaabbbbbb C12C3C1C1C2C31.C12C3C4C1C3C42 aaaaaabbbbbb", split, Classes);
}

TEST(Symmetry, KeepsWhatIsPerceivedByOtherRules) {
  ZQMol mol = "CCCC"_mol;
  ZQPerceiveSymmetry(mol, false, false);
  EXPECT_FALSE(mol.IsPerceived(ZQPerceived::Symmetry));
  EXPECT_NE(mol.GetAtomAt(0)->GetSymmetryClass(), 0U);
  mol.GetAtomAt(0)->SetHyb(1);
  mol.GetBondAt(1)->SetChiral(true);
  ZQPerceiveSymmetry(mol, true, false);
  EXPECT_EQ(mol.GetAtomAt(0)->GetHyb(), 1U);
  EXPECT_TRUE(mol.GetBondAt(1)->IsChiral());
  EXPECT_EQ(Classes(mol), "abcd");
}

TEST(Symmetry, OfDrawnStereo) {
  // The first has two centres of the same configuration, from either end.
  std::istringstream cases(R"t(
      C[C@H](F)C[C@@H](F)C abcdbca   C[C@H](F)C[C@H](F)C abcdefg
      F/C=C/CC/C=C/F abcddcba   F/C=C/CC/C=C\F abcdefgh)t");
  for (std::string smiles, expected; cases >> smiles >> expected;) {
    ZQMol mol = ReadSmiles(smiles);
    ZQPerceiveSymmetry(mol, true, true);
    EXPECT_EQ(Classes(mol), expected) << smiles;
    ZQPerceiveSymmetry(mol, true, false);
    EXPECT_EQ(Classes(mol).find('f'), std::string::npos) << smiles;
  }
  EXPECT_TRUE(cases.eof());
}

TEST(Hydrogens, WhichAreKept) {
  // Each case: molecule, remaining atoms by default, remaining atoms with every flag set.
  std::istringstream cases(R"t(
      [H]C([H])([H])O[H] 2 2   [2H]C[H] 2 1   [H:3]C 2 1   [H][H] 2 2   [H+].[Cl-] 2 2
      [H]/N=C/F 4 3   [H]/C(C)=C/F 4 4   [H]N=CF 3 3   B1[H]B[H]1 4 4   [H][Na] 1 1)t");
  unsigned int left = 0;
  unsigned int leftWithFlags = 0;
  for (std::string smiles; cases >> smiles >> left >> leftWithFlags;) {
    ZQMol mol = ReadSmiles(smiles);
    const auto totalH = [](const ZQMol& m) {
      unsigned int count = 0;
      for (auto atom = m.GetAtoms(); atom; ++atom) {
        count += atom->GetImplicitHCount() + atom->IsHydrogen();
      }
      return count;
    };
    const unsigned int before = totalH(mol);
    ZQSuppressHydrogens(mol);
    EXPECT_EQ(mol.NumAtoms(), left) << smiles;
    ZQSuppressHydrogens(mol, true, true, true);
    EXPECT_EQ(mol.NumAtoms(), leftWithFlags) << smiles;
    EXPECT_EQ(totalH(mol), before) << smiles;
    for (auto bond = mol.GetBonds(); bond; ++bond) {
      EXPECT_TRUE(bond->GetStereo() == ZQBondStereo::None || left == leftWithFlags) << smiles;
    }
  }
  EXPECT_TRUE(cases.eof());
}

TEST(Perception, LargeMoleculesTakeNoRecursion) {
  // A chain and a strip of fused rings, too long for recursion on any stack.
  ZQMol strip;
  ZQAtomBase* sides[2] = {nullptr, nullptr};
  constexpr unsigned int length = 30000;
  ZQMol chain = ReadSmiles(Repeated("C", length));
  for (unsigned int i = 0; i < length; ++i) {
    ZQAtomBase* rung[2] = {strip.NewAtom(6), strip.NewAtom(6)};
    for (int side = 0; side < 2; ++side) {
      if (sides[side]) strip.NewBond(sides[side], rung[side], 1)->SetAromatic(true);
      sides[side] = rung[side];
      rung[side]->SetAromatic(true);
      rung[side]->SetImplicitHCount(i % 2 == 0 && i != 0 && i != length - 2 ? 0 : 1);
    }
    if (i % 2 == 0) strip.NewBond(rung[0], rung[1], 1)->SetAromatic(true);
  }
  for (ZQAtomBase* end : sides) strip.DeleteAtom(end);
  ASSERT_TRUE(ZQKekulize(strip));
  Perceive(chain);
  Perceive(strip);
  EXPECT_EQ(chain.GetAtomAt(0)->GetSymmetryClass(),
            chain.GetAtomAt(length - 1)->GetSymmetryClass());
  EXPECT_NE(chain.GetAtomAt(0)->GetSymmetryClass(), chain.GetAtomAt(1)->GetSymmetryClass());
  EXPECT_EQ(Aromatic(strip).find('-'), std::string::npos);
  EXPECT_EQ(strip.GetAtomAt(0)->GetSymmetryClass(), strip.GetAtomAt(1)->GetSymmetryClass());
}

}  // namespace
}  // namespace Quarnel
