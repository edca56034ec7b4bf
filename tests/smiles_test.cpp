#include <gtest/gtest.h>

#include "tests/description_helpers.h"

namespace Quarnel {

namespace {

/// Every atom as symbol, hydrogens and charge, then every bond: "CH3 CH2 OH | 0-1 1-2".
std::string Summary(const ZQMolBase& mol) {
  std::string text;
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    if (!text.empty()) text += ' ';
    if (atom->GetIsotope() != 0) text += std::to_string(atom->GetIsotope());
    text += ZQGetAtomicSymbol(atom->GetAtomicNum());
    if (atom->GetImplicitHCount() != 0) text += 'H';
    if (atom->GetImplicitHCount() > 1) text += std::to_string(atom->GetImplicitHCount());
    const int charge = atom->GetFormalCharge();
    if (charge != 0) text += (charge > 0 ? "+" : "") + std::to_string(charge);
    if (atom->GetMapIdx() != 0) text += ":" + std::to_string(atom->GetMapIdx());
  }
  text += " |";
  for (auto bond = mol.GetBonds(); bond; ++bond) {
    text += ' ' + std::to_string(bond->GetBgn()->GetIdx()) +
            (bond->IsAromatic() ? ':' : "~-=#$"[bond->GetOrder()]) +
            std::to_string(bond->GetEnd()->GetIdx());
  }
  return text;
}

}  // namespace

TEST(Elements, SymbolsAndNumbersMatch) {
  for (unsigned int z = 1; z <= 118; ++z) EXPECT_EQ(ZQGetAtomicNum(ZQGetAtomicSymbol(z)), z);
  EXPECT_STREQ(ZQGetAtomicSymbol(0), "*");
  EXPECT_STREQ(ZQGetAtomicSymbol(119), "?");
  EXPECT_EQ(ZQGetAtomicNum("Cl"), 17U);
  EXPECT_EQ(ZQGetAtomicNum("Og"), 118U);
  for (const char* none : {"", "*", "c", "CL", "Xx", "Clx", "C1", "\xff"}) {
    EXPECT_EQ(ZQGetAtomicNum(none), 0U) << none;
  }
}

TEST(Elements, DefaultHydrogensFollowTheValence) {
  struct Case {
    const char* symbol;
    int charge;
    unsigned int bonds, hydrogens;
  };
  for (const Case& c :
       {Case{"C", 0, 0, 4}, {"C", 0, 3, 1},  {"C", 0, 5, 0},  {"C", -1, 1, 2}, {"C", 1, 1, 2},
        {"N", 0, 3, 0},     {"N", 0, 4, 1},  {"N", 1, 3, 1},  {"N", 1, 5, 0},  {"N", -1, 1, 1},
        {"O", 0, 1, 1},     {"O", 1, 1, 2},  {"O", -1, 0, 1}, {"S", 0, 3, 1},  {"S", 0, 5, 1},
        {"S", 1, 2, 1},     {"P", 0, 4, 1},  {"P", 1, 3, 1},  {"B", -1, 2, 2}, {"Cl", 0, 2, 0},
        {"Br", -1, 0, 0},   {"Fe", 0, 0, 0}, {"*", 0, 0, 0},  {"H", 1, 0, 0}}) {
    EXPECT_EQ(ZQDefaultHCount(ZQGetAtomicNum(c.symbol), c.charge, c.bonds), c.hydrogens)
        << c.symbol << c.charge << " with " << c.bonds;
  }
}

TEST(SmilesReader, ReadsWhatTheLanguageHas) {
  struct Case {
    const char *smiles, *summary;
  };
  const Case cases[] = {
      {"", " |"},
      {"CCO", "CH3 CH2 OH | 0-1 1-2"},
      {"ClCBr", "Cl CH2 Br | 0-1 1-2"},
      {"C=C.C#N.C$C", "CH2 CH2 CH N C C | 0=1 2#3 4$5"},
      {"C(F)(Cl)(Br)I", "C F Cl Br I | 0-1 0-2 0-3 0-4"},
      {"B.P.S.F.*", "BH3 PH3 SH2 FH * |"},
      {"[Og].[Sc].[Co].C[Si](C)C", "Og Sc Co CH3 Si CH3 CH3 | 3-4 4-5 4-6"},
      {"[13CH3:7][H].[HH].[2H+]", "13CH3:7 H HH 2H+1 | 0-1"},
      {"[Fe+2].[Fe++].[Fe+++].[O-2].[O--].[NH4+]", "Fe+2 Fe+2 Fe+3 O-2 O-2 NH4+1 |"},
      {"C1CC1", "CH2 CH2 CH2 | 0-1 1-2 0-2"},
      {"C12CC1C2", "CH CH2 CH CH2 | 0-1 1-2 0-2 2-3 0-3"},
      {"C=1CC1.C2CC=2.C=3CC=3",
       "CH CH2 CH CH CH2 CH CH CH2 CH | 0-1 1-2 0=2 3-4 4-5 3=5 6-7 7-8 6=8"},
      {"C%10CC%10.C0CC0.C%(123)CC%(123)",
       "CH2 CH2 CH2 CH2 CH2 CH2 CH2 CH2 CH2 | 0-1 1-2 0-2 3-4 4-5 3-5 6-7 7-8 6-8"},
      {"C1.C1", "CH3 CH3 | 0-1"},
      {"C(C)1CC1", "CH CH3 CH2 CH2 | 0-1 0-2 2-3 0-3"},
      {"C(.O)N", "CH3 OH2 NH2 | 0-2"},
      {"c1ccccc1-c1ccccc1O",
       "CH CH CH CH CH C C CH CH CH CH C OH | 0:1 1:2 2:3 3:4 4:5 0:5 5-6 6:7 7:8 8:9 9:10 10:11 "
       "6:11 11-12"},
      {"c1ccccc1c1ccccc1",
       "CH CH CH CH CH C C CH CH CH CH CH | 0:1 1:2 2:3 3:4 4:5 0:5 5-6 6:7 7:8 8:9 9:10 10:11 "
       "6:11"},
      {"C1:C:C:C:C:C1", "CH CH CH CH CH CH | 0:1 1:2 2:3 3:4 4:5 0:5"},
      {" CC\tignored", "CH3 CH3 | 0-1"},
      // Coordination bonds have no order and replace no hydrogen.
      {"N->[Fe](<-O)(->C)Cl", "NH3 Fe OH2 CH4 Cl | 0~1 1~2 1~3 1-4"},
      {"c1ccccn1->[Cu-2]<-[NH3]", "CH CH CH CH CH N Cu-2 NH3 | 0:1 1:2 2:3 3:4 4:5 0:5 5~6 6~7"},
      {"N->1CCN->2.[Cu]12.N3CC[Cu]<-3.O<-4C[Cu]->4.O->%12C[Cu]<-%12",
       "NH2 CH2 CH2 NH2 Cu NH2 CH2 CH2 Cu OH CH2 Cu OH CH2 Cu | 0-1 1-2 2-3 0~4 3~4 5-6 6-7 7-8 "
       "5~8 9-10 10-11 9~11 12-13 13-14 12~14"},
      {"[CH4:00012][C@TH1H2][C@SP3][C@OH30]", "CH4:12 CH2 C C | 0-1 1-2 2-3"},
  };
  for (const Case& c : cases) {
    const ZQMol mol = ReadSmiles(c.smiles);
    EXPECT_TRUE(mol.IsValid());
    EXPECT_EQ(Summary(mol), c.summary) << c.smiles;
  }
}

TEST(SmilesReader, AromaticRingsGetTheirDoubleBonds) {
  const std::string fullerene =
      "c12c3c4c5c1c6c7c8c2c9c1c3c2c3c4c4c%10c5c5c6c6c7c7c%11c8c9c8c9c1c2c1c2c3c4c3c4c%10c5c5c6c6c7"
      "c7c%11c8c8c9c1c1c2c3c2c4c5c6c3c7c8c1c23";
  // Each case: molecule, number of its double bonds.
  std::istringstream cases(R"t(
      c1ccccc1 3   c1cc[nH]c1 2   c1ccoc1 2   Cn1cccc1 2   c1ccc2ccccc2c1 5   c1ccc[n+](C)c1 3
      O=c1cc[nH]cc1 3   O=n1ccccc1 4   [O-][n+]1ccccc1 3   c1cc[cH-]c1 2   [cH+]1cccccc1 3
      c1ccc2c(c1)-c1ccccc1-2 6   c1cc*cc1 3   [se]1cccc1 2   c1c[te]cc1.c1c[as]ccc1 5
      b1ccccc1 3   C=c1ccc(=C)cc1 4   c1cc[o+]cc1 3   p1ccccc1 3   CS1(=O)cccc1 3
      C[s]1ccccc1 3   [c]1ccccc1 3   [c]1[nH]cc[nH]1 1   *1cccc1 2   c1ccc(cc1)c1ccccc1 6
      c1cc2ccc3cccc4ccc(c1)c2c34 8
      )t" + fullerene + " 30");
  unsigned int expected = 0;
  for (std::string smiles; cases >> smiles >> expected;) {
    const ZQMol mol = ReadSmiles(smiles);
    unsigned int count = 0;
    for (auto bond = mol.GetBonds(); bond; ++bond) count += bond->GetOrder() == 2;
    EXPECT_EQ(count, expected) << smiles;
  }
  EXPECT_TRUE(cases.eof());
}

// Each line is one molecule, in several possible notations.
TEST(SmilesReader, OneConfigurationHasManyNotations) {
  const std::vector<std::vector<const char*>> same{
      {"[NH2:1][C@:2]([Br:3])([OH:4])[CH3:5]", "[Br:3][C@:2]([OH:4])([NH2:1])[CH3:5]",
       "[OH:4][C@:2]([Br:3])([CH3:5])[NH2:1]", "[CH3:5][C@@:2]([Br:3])([OH:4])[NH2:1]",
       "[C@@:2]([CH3:5])([Br:3])([OH:4])[NH2:1]", "[Br:3][C@TH1:2]([NH2:1])([CH3:5])[OH:4]"},
      {"[NH2:1][C@@H:2]([CH3:3])[Cl:4]", "[C@H:2]([NH2:1])([CH3:3])[Cl:4]",
       "[Cl:4][C@@H:2]([NH2:1])[CH3:3]", "[CH3:3][C@TH1H:2]([NH2:1])[Cl:4]"},
      // A ring closure's position is that of its digit.
      {"[F:1][C@:2]1([Cl:3])[CH2:4][O:5]1", "[F:1][C@:2]12[Cl:3].[CH2:4]1[O:5]2",
       "[CH2:4]1[O:5][C@@:2]1([F:1])[Cl:3]", "[O:5]1[CH2:4][C@:2]1([F:1])[Cl:3]"},
      {"[CH3:1][S@:2](=[O:3])[F:4]", "[O:3]=[S@@:2]([CH3:1])[F:4]", "[F:4][S@@:2](=[O:3])[CH3:1]"},
      {"[F:1]/[CH:2]=[CH:3]/[F:4]", "[F:1]\\[CH:2]=[CH:3]\\[F:4]", "[CH:2](\\[F:1])=[CH:3]/[F:4]",
       "[CH:3](=[CH:2]\\[F:1])/[F:4]", "[F:4]/[CH:3]=[CH:2]/[F:1]",
       "[CH:2]\\1=[CH:3]/[F:4].[F:1]/1", "[CH:2]1=[CH:3]/[F:4].[F:1]/1"},
      {"[F:1]/[C:2]([Cl:3])=[N:4]/[OH:5]", "[F:1][C:2](/[Cl:3])=[N:4]/[OH:5]",
       "[F:1]/[C:2](/[Cl:3])=[N:4]/[OH:5]", "[Cl:3]\\[C:2]([F:1])=[N:4]/[OH:5]"},
  };
  for (const auto& notations : same) {
    const std::vector<std::string> told = Told(ReadSmiles(notations[0]));
    EXPECT_TRUE(std::any_of(told.begin(), told.end(), [](const std::string& line) {
      return line.ends_with("turn 1") || line.ends_with("turn -1") || line.ends_with("sides -1");
    })) << notations[0];
    for (const char* notation : notations) {
      EXPECT_EQ(Told(ReadSmiles(notation)), told) << notation;
    }
  }
}

TEST(SmilesReader, KeepsNoConfigurationThatIsNone) {
  for (const char* smiles :
       {"C[C@H2]C", "N[C@@](C)(C)(C)C", "OC=[C@]=CO", "F/C=CF", "F/C=CC=C/F", "F/C(\\Cl)=C/F",
        "F/C=C=C/F", "C1CC/C=C/C1", "F/C(F)C/F", "c1ccccc1/C"}) {
    ZQMol mol = ReadSmiles(smiles);
    unsigned int drawn = 0;
    for (auto atom = mol.GetAtoms(); atom; ++atom) drawn += atom->GetStereo() != ZQAtomStereo::None;
    for (auto bond = mol.GetBonds(); bond; ++bond) drawn += bond->GetStereo() != ZQBondStereo::None;
    EXPECT_EQ(drawn, 0U) << smiles;
  }
}

TEST(SmilesReader, ReportsPlaceFindingAndExpectation) {
  const std::string tenMegabytes(10'000'000, 'C');  // NOLINT(bugprone-string-constructor)
  const struct {
    std::string smiles;
    int column;
    const char *found, *expected;
  } cases[] = {
      {"CQ", 2, "\"Q\"", "an atom (other than B C N O P S F Cl Br I b c n o p s in brackets)"},
      {"#CC", 1, "\"#CC\"", "an atom"},
      {"CC=", 4, "the end", "an atom or a ring closure"},
      {"C(", 3, "the end", "an atom or a bond of the branch"},
      {"C()C", 3, "\")C\"", "an atom or a bond of the branch"},
      {"C)C", 2, "\")C\"", "an atom or a bond, as no branch is open"},
      {"CC(C(C)", 3, "a branch that isn't closed", "its \")\""},
      {"1CC1", 1, "\"1CC1\"", "an atom"},
      {"C1CC2C", 2, "ring closure 1 left open", "the same number at a second atom"},
      {"C11", 3, "ring closure 1 from an atom to itself", "another atom"},
      {"C1C1", 4, "a ring closure between atoms that are bonded already", "two other atoms"},
      {"C=1CC#1", 7, "ring closure 1 with the bond \"#\"",
       "the bond \"=\" to match its opening at column 3"},
      {"F/C=C/1CCCCCCC/1", 16, "ring closure 1 with the bond \"/\"",
       "the bond \"\\\" to match its opening at column 7"},
      {"C%1C", 3, "\"1C\"", "two digits or \"(\" behind \"%\""},
      {"C%()", 4, "\")\"", "a ring closure number"},
      {"C%(123456)", 4, "\"123456)\"", "a ring closure number of up to five digits"},
      {"C[]", 3, "\"]\"", "an element symbol"},
      {"[Xx]", 2, "\"Xx]\"", "an element symbol"},
      {"[CH12]", 5, "\"2]\"", "\"]\""},
      {"[C+1000000000]", 3, "\"+1000000000]\"", "a charge of up to nine digits"},
      {"[C@TB21]", 6, "\"21]\"", "the number of a chirality class"},
      {"[4294967297C]", 2, "\"4294967297C]\"", "an isotope of up to nine digits"},
      {"CC>>C", 3, "\">>C\"", "an atom, a bond, a branch, a ring closure or a dot"},
      {"C->>C", 4, "\">C\"", "an atom or a ring closure"},
      {"C-->C", 3, "\"->C\"", "an atom or a ring closure"},
      {"C<C", 2, "\"<C\"", "an atom, a bond, a branch, a ring closure or a dot"},
      {"<-C", 1, "\"<-C\"", "an atom"},
      {"C(->", 5, "the end", "an atom or a ring closure"},
      {"C->1CC=1", 8, "ring closure 1 with the bond \"=\"",
       "the bond \"<-\" to match its opening at column 4"},
      {"C->1CC->1", 9, "ring closure 1 with the bond \"->\"",
       "the bond \"<-\" to match its opening at column 4"},
      {"[C", 3, "the end", "\"]\""},
      {std::string("C\x1b\0~C", 5), 2, "\"\\x1b\\x00~C\"",
       "an atom, a bond, a branch, a ring closure or a dot"},
      {"C!" + tenMegabytes, 2, "\"!CCCCCCCCCCCCCCC...\"",
       "an atom, a bond, a branch, a ring closure or a dot"},
  };
  CapturedReports reports;
  ZQMol mol;
  for (const auto& [smiles, column, found, expected] : cases) {
    ASSERT_TRUE(ZQSmilesToMol(mol, "C1CC1"));
    EXPECT_FALSE(ZQSmilesToMol(mol, smiles, "line 7"));
    EXPECT_EQ(reports.Take(), Texts{"line 7: SMILES column " + Finding(column, found, expected)});
    EXPECT_FALSE(mol.IsValid());
    EXPECT_EQ(mol.NumAtoms() + mol.NumBonds(), 0U);
  }
  for (const char* smiles : {"cc", "c1cccc1", "Cn1ccccc1", "c1ccccc1c"}) {
    EXPECT_FALSE(ZQSmilesToMol(mol, smiles));
    const Texts texts = reports.Take();
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_NE(texts[0].find(", an aromatic atom in no such ring, expected rings of alternating "),
              std::string::npos)
        << texts[0];
  }
}

TEST(SmilesReader, TakesAnyDepthAndLength) {
  for (const std::size_t depth : {1000, 100000}) {
    ZQMol mol;
    ASSERT_TRUE(ZQSmilesToMol(mol, Repeated("C(", depth) + "O" + std::string(depth, ')')));
    EXPECT_EQ(mol.NumBonds(), depth);
    EXPECT_EQ(ZQMolToSmiles(mol), std::string(depth, 'C') + "O");
  }
  const ZQMol mol = ReadSmiles(Repeated("c1ccccc1-", 100000) + "C");
  EXPECT_EQ(mol.NumAtoms(), 600001U);
}

TEST(SmilesWriter, WritesWhatReadsBackInAnyOrder) {
  std::vector<std::string> all = SampleSmiles();
  for (const char* more :
       {"F/C=C/C=C/C=C\\F", "F/C=C/C(C)=C(C)/C=C/F", "C/C(F)=C(/Cl)\\C(\\Br)=C(/C)I",
        "C[C@H]1CCCC[C@@H]1[S@](C)=O", "C[N@+](F)(Cl)C=C", "C/N=c1/scc(C)n1C", "C1CCCCCCC/C=C/1",
        "c1cc*cc1.*c1ccccc1", "[CH2]c1cc[n+]([O-])cc1", "[13cH]1[cH-]ccc1", "[2H][C@](F)(Cl)Br",
        "C1=CC=C1.[H][H].[OH3+].O=N(=O)C", "C$C.[U+6].[*H2]"}) {
    all.emplace_back(more);
  }
  // A cage with more than 9 and more than 99 ring closures open at once.
  std::string dense = "C";
  for (int i = 0; i < 120; ++i) dense += "C%(" + std::to_string(i) + ")";
  for (int i = 0; i < 120; ++i) dense += "C%(" + std::to_string(i) + ")";
  all.push_back(dense);
  for (const std::string& smiles : all) {
    ZQMol mol = ReadSmiles(smiles);
    EXPECT_EQ(ZQMolToSmiles(ReadSmiles(ZQMolToSmiles(mol))), ZQMolToSmiles(mol)) << smiles;
    NumberAtoms(mol);
    for (unsigned int seed = 0; seed < 20; ++seed) {
      const std::string written = ZQMolToSmiles(ShuffledWithStereo(mol, seed));
      EXPECT_EQ(Told(ReadSmiles(written)), Told(mol)) << smiles << " as " << written;
    }
  }
}

TEST(SmilesWriter, RingsOfUnwrittenBondsAreNotAromatic) {
  for (const char* smiles : {"c1ccccc->1", "[pH]1cc->cc1", "Cc1ccccc->1.c1ccccc1"}) {
    const ZQMol mol = ReadSmiles(smiles);
    const ZQMol back = ReadSmiles(ZQMolToSmiles(mol));
    EXPECT_EQ(ZQMolToCanonicalSmiles(back), ZQMolToCanonicalSmiles(mol)) << smiles;
  }
}

TEST(SmilesWriter, WritesExtremeValuesThatReadBack) {
  for (const unsigned int hydrogens : {0U, 1U, 9U, 10U, 11U, 255U}) {
    for (const int charge : {0, 1, -15, 16, -128, 999999999, -999999999}) {
      for (const unsigned int mass : {0U, 3U, 65536U, 999999999U}) {
        // A chain of a hydride, another in a ring, and an end.
        ZQMol mol = "[UH][CH]1(CC)C[U]1"_mol;
        for (const unsigned int idx : {0U, 1U, 5U}) {
          mol.GetAtomAt(idx)->SetImplicitHCount(hydrogens);
          mol.GetAtomAt(idx)->SetFormalCharge(charge);
          mol.GetAtomAt(idx)->SetIsotope(mass);
        }
        NumberAtoms(mol);
        mol.GetAtomAt(0)->SetMapIdx(999999999);
        for (const std::string& text : {ZQMolToSmiles(mol), ZQMolToCanonicalSmiles(mol)}) {
          ZQMol back = ReadSmiles(text);
          ZQSuppressHydrogens(back);
          EXPECT_EQ(Told(back), Told(mol)) << text;
          EXPECT_EQ(ZQMolToCanonicalSmiles(back), ZQMolToCanonicalSmiles(mol));
        }
      }
    }
  }
}

TEST(SmilesWriter, WritesThePlainFormWhereItCan) {
  for (const char* smiles :
       {"CC(=O)Oc1ccccc1C(=O)O", "F/C=C/F", "N[C@@H](C)C(=O)O", "C[S@](=O)CC", "[NH4+].[Cl-]",
        "c1ccc(-c2ccccc2)cc1", "C1CC12CC2", "[13CH4].[OH2:3].[Fe+2]", "O=[N+]([O-])c1cc[nH]c1"}) {
    EXPECT_EQ(ZQMolToSmiles(ReadSmiles(smiles)), smiles);
  }
  // A bond of no order has no symbol: its ends are in separate parts.
  ZQMol complex;
  ZQAtomBase* water = complex.NewAtom(8);
  water->SetImplicitHCount(2);
  complex.NewBond(complex.NewAtom(26), water, 0);
  EXPECT_EQ(ZQMolToSmiles(complex), "O.[Fe]");
  EXPECT_EQ(ZQMolToSmiles(ZQMol()), "");
}

// A conjugated ring whose configurations no set of marks can describe, since every single bond is
// shared, is written without them, rather than with wrong ones.
TEST(SmilesWriter, WritesNoMarkThatWouldTellAWrongConfiguration) {
  for (const unsigned int cis : {0U, 1U, 2U, 9U}) {
    ZQMol ring;
    std::vector<ZQAtomBase*> atoms;
    for (int i = 0; i < 18; ++i) {
      atoms.push_back(ring.NewAtom(6));
      atoms.back()->SetImplicitHCount(1);
    }
    for (unsigned int i = 0; i < 18; ++i) {
      ZQBondBase* bond = ring.NewBond(atoms[i], atoms[(i + 1) % 18], 1 + i % 2);
      if (i % 2 != 0) bond->SetStereo(i / 2 < cis ? ZQBondStereo::Cis : ZQBondStereo::Trans);
    }
    NumberAtoms(ring);
    const std::string written = ZQMolToSmiles(ring);
    const ZQMol back = ReadSmiles(written);
    if (written.find('/') != std::string::npos) {
      EXPECT_EQ(Told(back), Told(ring)) << cis;
    }
    EXPECT_EQ(written.find('/') == std::string::npos, cis % 2 != 0);
  }
  // The middle bond has no configuration, but both its neighbours would mark it.
  ZQMol triene = "F/C=C/C=C/C=C/F"_mol;
  triene.GetBondAt(3)->SetStereo(ZQBondStereo::None);
  const ZQMol back = ReadSmiles(ZQMolToSmiles(triene));
  EXPECT_EQ(back.GetBondAt(3)->GetStereo(), ZQBondStereo::None);
}

}  // namespace Quarnel
