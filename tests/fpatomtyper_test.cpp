#include "korvex/fpatomtyper.h"

#include <gtest/gtest.h>

#include <functional>

#include "contract/quarnel/perception.h"
#include "korvex/fingerprint.h"
#include "korvex/fpatomtypes_local.h"
#include "tests/description_helpers.h"

namespace ZQKorvex {

namespace {

// Both forms of the invariants of every atom or bond, with the values that the test has set.
struct Invariants {
  std::vector<unsigned int> atoms, bonds;
  std::vector<std::string> atomTexts, bondTexts;

  Invariants(ZQMolBase& mol, unsigned int atype, unsigned int btype) {
    for (const unsigned int step : {ZQPerceived::Hybridization, ZQPerceived::Chirality}) {
      mol.SetPerceived(step, true);
    }
    ZQGetFingerprintAtomTypes(atoms, bonds, mol, atype, btype);
    ZQGetFingerprintAtomTypes(atomTexts, bondTexts, mol, atype, btype);
  }
};

// Charge, heavy degree, hybridization, ring, aromaticity, chirality and hydrogens.
constexpr unsigned int decorations = ZQFPAtomType::FCharge | ZQFPAtomType::HvyDeg |
                                     ZQFPAtomType::Hyb | ZQFPAtomType::InRing | ZQFPAtomType::Arom |
                                     ZQFPAtomType::Chiral | ZQFPAtomType::HCount;

}  // namespace

TEST(AtomInvariant, MultipliesWhatTheFlagsAskFor) {
  using Atom = ZQAtomBase;
  using Change = std::function<void(Atom&)>;
  namespace T = ZQFPAtomType;
  const Change asIs = [](Atom&) {};
  const auto charged = [](int charge) { return [charge](Atom& a) { a.SetFormalCharge(charge); }; };
  const auto hybrid = [](unsigned int hyb) { return [hyb](Atom& a) { a.SetHyb(hyb); }; };
  const auto hydrogens = [](unsigned int n) { return [n](Atom& a) { a.SetImplicitHCount(n); }; };
  const Change aromatic = [](Atom& a) { a.SetAromatic(true); };
  const struct {
    unsigned int atomicNum;
    Change change;
    unsigned int atype;
    unsigned int value;
    const char* text;
  } cases[] = {{6, asIs, T::None, 1, "*"},
               {6, asIs, T::AtmNum, 179, "[#6]"},
               {7, asIs, T::AtmNum, 283, "[#7]"},
               {8, asIs, T::AtmNum | T::Arom, 947, "O"},
               {17, asIs, T::AtmNum | T::Arom, 661, "[Cl]"},
               {1, asIs, T::AtmNum, 191, "[#1]"},
               {34, aromatic, T::AtmNum | T::Arom, 389 * 11, "[se]"},
               {118, asIs, T::AtmNum, 983, "[#118]"},
               {6, aromatic, T::Arom, 11, "a"},
               {6, asIs, T::Arom, 1, "A"},
               {6, charged(-4), T::FCharge, 128, "[*-4]"},
               {6, charged(-3), T::FCharge, 32, "[*-3]"},
               {6, charged(-2), T::FCharge, 8, "[*-2]"},
               {6, charged(-1), T::FCharge, 2, "[*-]"},
               {6, charged(1), T::FCharge, 4, "[*+]"},
               {6, charged(2), T::FCharge, 16, "[*+2]"},
               {6, charged(3), T::FCharge, 64, "[*+3]"},
               {6, charged(4), T::FCharge, 256, "[*+4]"},
               {6, charged(5), T::FCharge, 512, "[*+5]"},
               {6, charged(-5), T::FCharge, 512, "[*-5]"},
               {6, hybrid(0), T::Hyb, 1, "*"},
               {6, hybrid(3), T::Hyb, 125, "[*;^3]"},
               {6, hybrid(6), T::Hyb, 15625, "*"},
               {6, hybrid(9), T::Hyb, 15625, "*"},
               {6, [](Atom& a) { a.SetInRing(true); }, T::InRing, 7, "[*;R]"},
               {6, asIs, T::InRing, 1, "[*;R0]"},
               {6, [](Atom& a) { a.SetChiral(true); }, T::Chiral, 13, "*"},
               {6, hydrogens(0), T::HCount, 1, "[*;h0]"},
               {6, hydrogens(3), T::HCount, 4913, "[*;h3]"},
               {6, hydrogens(7), T::HCount, 83521, "*"},
               {6, asIs, T::HvyDeg, 1, "[*;D0]"},
               {35, asIs, T::AtmNum | T::EqHalo, 419, "[F,Cl,Br,I]"},
               {85, asIs, T::AtmNum | T::EqHalo, 739, "[#85]"},
               {7, aromatic, T::AtmNum | T::EqArom, 179, "[c,n,s]"},
               {8, aromatic, T::AtmNum | T::EqArom, 179, "[#8]"},
               {8, aromatic, T::AtmNum | T::EqArom | T::Arom, 179 * 11, "o"},
               {9, asIs, T::EqHalo, 1, "*"},
               {6, asIs, T::AtmNum | T::EqHBAcc | T::EqHBDon, 179, "[#6]"},
               {8, hydrogens(2), T::AtmNum | T::EqHBAcc | T::EqHBDon | T::HCount, 19 * 289,
                "[#7,#8,#16;!h0,!$([o,s,nX3,#7v5,#16v4,*+1])]"},
               {8, hydrogens(2), T::AtmNum | T::EqHBDon, 6859, "[#7,#8,#16;!h0]"},
               {8, hydrogens(2), T::AtmNum | T::EqHBAcc | T::HCount, 361 * 289,
                "[#7,#8,#16;!$([o,s,nX3,#7v5,#16v4,*+1]);h2]"},
               {8, charged(1), T::AtmNum | T::EqHBAcc | T::FCharge, 947 * 4, "[#8+]"},
               {53, asIs, T::AtmNum | T::EqHalo | T::EqHBAcc, 419, "[F,Cl,Br,I]"}};
  for (const auto& c : cases) {
    ZQMol mol;
    ZQAtomBase* const before = mol.NewAtom(6);
    c.change(*mol.NewAtom(c.atomicNum));
    mol.DeleteAtom(before);
    const Invariants found(mol, c.atype, 0);
    ASSERT_EQ(found.atoms.size(), 2U);
    EXPECT_EQ(found.atoms[1], c.value) << c.atomicNum << " " << c.atype;
    EXPECT_EQ(found.atomTexts[1], c.text);
    EXPECT_EQ(found.atoms[0], 0U);
  }
}

TEST(AtomInvariant, WrapsAndCountsHeavyNeighbours) {
  for (const auto& [neighbours, factor] : {std::pair(2U, 9U), {5U, 243U}, {6U, 729U}, {8U, 729U}}) {
    ZQMol mol;
    ZQAtomBase* const hub = mol.NewAtom(16);
    hub->SetFormalCharge(7);
    hub->SetImplicitHCount(9);
    mol.NewBond(hub, mol.NewAtom(1), 1);  // a hydrogen isn't a heavy neighbour
    for (unsigned int i = 0; i < neighbours; ++i) mol.NewBond(hub, mol.NewAtom(6), 1);
    hub->SetHyb(6);
    hub->SetInRing(true);
    hub->SetAromatic(true);
    hub->SetChiral(true);
    const Invariants found(mol, ZQFPAtomType::AtmNum | decorations, 0);
    EXPECT_EQ(found.atoms[0], 811U * 512 * factor * 15625 * 7 * 11 * 13 * 83521);
    EXPECT_EQ(found.atomTexts[0], "[s+7;R;D" + std::to_string(neighbours) + "]");
  }
}

TEST(AtomInvariant, TableOfElementPrimes) {
  const unsigned int first[] = {181, 191, 193, 197, 199, 211, 223, 227, 229, 233, 239};
  const unsigned int last[] = {1049, 1051, 1061, 1063, 1069};
  EXPECT_TRUE(std::equal(std::begin(first), std::end(first), ATOMIC2PRIMES.begin()));
  EXPECT_TRUE(std::equal(std::begin(last), std::end(last), ATOMIC2PRIMES.end() - 5));
  std::set<unsigned int> distinct;
  for (unsigned int z = 0; z <= 132; ++z) distinct.insert(ZQElementPrime(z));
  EXPECT_EQ(distinct.size(), 133U);
  EXPECT_EQ(ZQElementPrime(4000), 1069U);
}

TEST(BondInvariant, MultipliesWhatTheFlagsAskFor) {
  namespace T = ZQFPBondType;
  const struct {
    unsigned int order;
    bool aromatic, inRing, chiral;
    unsigned int btype, value;
    const char* text;
  } cases[] = {{1, false, false, false, T::None, 1, "~"},
               {0, false, false, false, T::Order, 127, ""},
               {1, false, false, false, T::Order, 131, "-"},
               {2, false, true, true, T::Order, 137, "="},
               {3, false, false, false, T::Order, 139, "#"},
               {4, false, false, false, T::Order, 149, "$"},
               {5, false, false, false, T::Order, 151, ""},
               {9, false, false, false, T::Order, 173, ""},
               {200, false, false, false, T::Order, 173, ""},
               {1, true, false, false, T::Order, 151, ":"},
               {2, true, true, false, T::Order | T::InRing, 151 * 73, ":@"},
               {2, false, true, true, T::Chiral | T::InRing, 73 * 79, "~@"},
               {1, false, false, false, T::InRing, 1, "~!@"}};
  for (const auto& c : cases) {
    ZQMol mol;
    ZQBondBase* const bond = mol.NewBond(mol.NewAtom(6), mol.NewAtom(6), 1);
    bond->SetOrder(c.order);
    bond->SetAromatic(c.aromatic);
    bond->SetInRing(c.inRing);
    bond->SetChiral(c.chiral);
    const Invariants found(mol, 0, c.btype);
    EXPECT_EQ(found.bonds, std::vector<unsigned int>{c.value});
    EXPECT_EQ(found.bondTexts[0], c.text);
  }
}

TEST(AtomInvariant, HydrogenBondClasses) {
  // The first atom that isn't a carbon is an acceptor, a donor, both or neither.
  std::istringstream cases(R"t(
      CO B   C[O-] A   C[OH2+] D   COC A   COCC=C -   OCC=C D   o1cccc1 -   O=CC A   N B   NCC=C D
      C[NH3+] D   CN(C)C A   C[NH-] B   n1ccccc1 A   [nH]1cccc1 D   [nH+]1ccccc1 D   S=CC A
      CSC -   CS D   s1cccc1 -   S(=O)(C)C -   N(=O)(=O)C -   [N+](=O)([O-])CC -   CF -)t");
  char expected = '?';
  for (std::string smiles; cases >> smiles >> expected;) {
    const ZQMol mol = ReadSmiles(smiles);
    for (const bool explicitHydrogens : {false, true}) {
      ZQMol form = explicitHydrogens ? WithHydrogens(mol) : ZQMol(mol);
      auto atom = form.GetAtoms();
      while (atom->IsCarbon()) ++atom;
      const bool acceptor =
          Invariants(form, ZQFPAtomType::AtmNum | ZQFPAtomType::EqHBAcc, 0).atoms[atom->GetIdx()] ==
          zqAcceptorOnly;
      const bool donor =
          Invariants(form, ZQFPAtomType::AtmNum | ZQFPAtomType::EqHBDon, 0).atoms[atom->GetIdx()] ==
          zqDonorOnly;
      EXPECT_EQ(acceptor ? (donor ? 'B' : 'A') : donor ? 'D' : '-', expected) << smiles;
    }
  }
  EXPECT_TRUE(cases.eof());
}

TEST(Preparation, LeavesHeavyAtomsWithHydrogenCounts) {
  // Each case: molecule, remaining atoms, bonds and hydrogens.
  std::istringstream cases(R"t(
      [2H]C([2H])([2H])[2H] 1 0 4   [H][H] 0 0 0   [H+] 0 0 0   *CC* 2 1 4
      [H][B]1([H])[H][B]([H])([H])[H]1 2 0 8   [1H]Cl 1 0 1   C[C@H](F)[2H] 3 2 5)t");
  unsigned int atoms = 0, bonds = 0, left = 0;
  for (std::string smiles; cases >> smiles >> atoms >> bonds >> left;) {
    ZQMol mol = ReadSmiles(smiles);
    ZQPrepareForFingerprinting(mol, ZQFPType::Path);
    EXPECT_EQ(mol.NumAtoms(), atoms) << smiles;
    EXPECT_EQ(mol.NumBonds(), bonds) << smiles;
    unsigned int hydrogens = 0;
    for (auto atom = mol.GetAtoms(); atom; ++atom) hydrogens += atom->GetImplicitHCount();
    EXPECT_EQ(hydrogens, left) << smiles;
  }
  EXPECT_TRUE(cases.eof());
}

TEST(Preparation, RestatesConfigurationsForTheAtomsThatAreLeft) {
  // Each case: molecule, and its SMILES without hydrogens and dummy atoms.
  std::istringstream cases(R"t(
      [2H]/[C:1]([F:2])=[C:3]([CH3:5])/[Cl:4] [F:2]/[CH:1]=[C:3]([CH3:5])\[Cl:4]
      [F:2]/[C:1]([2H])=[CH:3]/[Cl:4] [F:2]/[CH:1]=[CH:3]/[Cl:4]
      [2H]/[C:1]([F:2])=[C:3]([Cl:4])/[3H] [F:2]/[CH:1]=[CH:3]/[Cl:4]
      [2H]/[C:1]([3H])=[CH:3]/[Cl:4] [CH2:1]=[CH:3][Cl:4]
      [2H]/[N:1]=[CH:3]/[Cl:4] [NH:1]=[CH:3][Cl:4]
      [2H][C@:1]([F:2])([Cl:3])[Br:4] [C@H:1]([F:2])([Cl:3])[Br:4]
      [F:2][C@:1]([2H])([Cl:3])[Br:4] [F:2][C@H:1]([Cl:3])[Br:4]
      [F:2][C@:1]([Cl:3])([2H])[Br:4] [F:2][C@@H:1]([Cl:3])[Br:4]
      [F:2][C@:1]([Cl:3])([Br:4])[H+] [F:2][C@H:1]([Cl:3])[Br:4]
      [F:2][C@:1]([2H])([3H])[Br:4] [F:2][CH2:1][Br:4]
      [2H][C@H:1]([F:2])[Br:4] [F:2][CH2:1][Br:4]
      [2H][S@+:1]([F:2])[Br:4] [F:2][SH+:1][Br:4]
      [F:2][C@:1]([Cl:3])([Br:4])* [F:2][C:1]([Cl:3])[Br:4]
      */[C:1]([F:2])=[CH:3]/[Cl:4] [F:2][C:1]=[CH:3][Cl:4]
      [F:2][C@:1]([Cl:3])([Br:4])[2H][C@:5]([F:6])([Cl:7])[Br:8]
          [F:2][C@H:1]([Cl:3])[Br:4].[C@H:5]([F:6])([Cl:7])[Br:8])t");
  for (std::string smiles, expected; cases >> smiles >> expected;) {
    ZQMol mol = ReadSmiles(smiles);
    ZQPrepareForFingerprinting(mol, ZQFPType::Circular);
    EXPECT_EQ(Told(mol), Told(ReadSmiles(expected))) << smiles;
  }
  EXPECT_TRUE(cases.eof());
}

TEST(Preparation, TakesTimeInProportionToTheNeighboursOfAnAtom) {
  for (const unsigned int atomicNum : {0U, 1U}) {
    ZQMol star = "[U]"_mol;
    for (unsigned int i = 0; i < 300000; ++i) {
      star.NewBond(star.GetAtomAt(0), star.NewAtom(atomicNum), 1);
    }
    ZQPrepareForFingerprinting(star, ZQFPType::Path);
    EXPECT_EQ(star.NumAtoms(), 1U);
    EXPECT_EQ(star.GetAtomAt(0)->GetImplicitHCount(), 300000 * atomicNum);
  }
}

TEST(Preparation, RemovesOnlyTheMoleculesOwnAtoms) {
  ZQMol mol = "CO"_mol;
  ZQMol other = "CO"_mol;
  ZQRemoveAtom(mol, other.GetAtomAt(1), true);
  ZQRemoveAtom(mol, nullptr, true);
  EXPECT_EQ(mol.NumAtoms(), 2U);
  EXPECT_EQ(other.GetAtomAt(0)->GetImplicitHCount(), 3U);
}

TEST(Preparation, IsAskedForOnlyByKindsThatTakeMoleculesAsTheyStand) {
  ZQMol mol = "c1ccccc1"_mol;
  EXPECT_FALSE(ZQIsPreparedForFingerprinting(mol, ZQFPType::MACCS166));
  ZQPrepareForFingerprinting(mol, ZQFPType::MACCS166);
  EXPECT_TRUE(ZQIsPreparedForFingerprinting(mol, ZQFPType::MACCS166));
  EXPECT_TRUE(ZQIsPreparedForFingerprinting(mol, ZQFPType::Lingo));
  EXPECT_FALSE(ZQIsPreparedForFingerprinting(mol, ZQFPType::Path));
  CapturedReports reports;
  mol.SetData(ZQAromaticityModelTag, std::string("2"));
  EXPECT_FALSE(ZQIsPreparedForFingerprinting(mol, ZQFPType::Lingo));
  EXPECT_EQ(reports.Take().size(), 1U);
  mol.SetData(ZQAromaticityModelTag, 1);
  EXPECT_FALSE(ZQIsPreparedForFingerprinting(mol, ZQFPType::Lingo));
}

TEST(FlagNames, ReadAndWrite) {
  const struct {
    const char* name;
    bool atomValid, bondValid;
    unsigned int atom, bond;
  } cases[] = {{"None", true, true, 0, 0},
               {"DefaultAtom", true, false, 191, 0},
               {"DefaultCircularAtom", true, false, 4239, 0},
               {"DefaultTreeAtom", true, false, 63, 0},
               {"DefaultPathBond", false, true, 0, 3},
               {"DefaultTreeBond", false, true, 0, 1},
               {"InRing|Chiral", true, true, 68, 6},
               {"EqHBDon|AtmNum", true, false, 1025, 0},
               {"None|AtmNum", false, false, 0, 0},
               {"DefaultAtom|Hyb", false, false, 0, 0},
               {"atmnum", false, false, 0, 0},
               {"", false, false, 0, 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(ZQIsValidFPAtomType(c.name), c.atomValid) << c.name;
    EXPECT_EQ(ZQIsValidFPBondType(c.name), c.bondValid) << c.name;
    EXPECT_EQ(ZQGetFPAtomType(c.name), c.atom) << c.name;
    EXPECT_EQ(ZQGetFPBondType(c.name), c.bond) << c.name;
  }
  EXPECT_EQ(ZQGetFPAtomType(0U), "None");
  EXPECT_EQ(ZQGetFPAtomType(191U), "AtmNum|Arom|Chiral|FCharge|HvyDeg|Hyb|EqHalo");
  EXPECT_EQ(ZQGetFPAtomType(2048U | 1U), "invalid");
  EXPECT_EQ(ZQGetFPBondType(7U), "Order|Chiral|InRing");
  EXPECT_EQ(ZQGetFPBondType(8U), "invalid");
}

}  // namespace ZQKorvex
