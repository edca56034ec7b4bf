#include "korvex/maccs.h"

#include <gtest/gtest.h>

#include "contract/quarnel/moldatabase.h"
#include "korvex/fpatomtyper.h"
#include "tests/mol_helpers.h"

namespace ZQKorvex {
namespace {

ZQFingerPrint Keys(const ZQMolBase& mol) {
  ZQFingerPrint fp;
  EXPECT_TRUE(ZQMakeMACCS166FP(fp, mol));
  return fp;
}

bool Has(const ZQFingerPrint& fp, unsigned int key) { return fp.IsBitOn(key - 1); }

// A key, a molecule that has it, and a similar one that doesn't.
constexpr const char* examples = R"(
1 [13CH4] C  2 [Rf] [U]  3 C[AsH2] CCC  4 [U] [Rf]  5 [Sc+3] [V]  6 [Eu+3] [La+3]  7 [Mn+2] [Fe+2]
8 C1COC1 C1CCC1  9 [Fe+2] [Mn+2]  10 [Ca+2] [Na+]  11 C1CNC1 C1CC1  12 [Zn+2] [Fe+2]  13 CN(C)O CNO
14 CSSC CSCSC  15 OC(=O)OC OC(=O)CC  16 C1CO1 C1CC1  17 CC#CC CC#N  18 OB(O)O OC(O)O
19 C1CCCCCC1 C1CCCCC1  20 C[SiH3] CC  21 CC=C(O)N CC=CO  22 C1CC1 C1CCC1  23 NC(=O)O NC(=O)C
24 CNO CN=O  25 NC(N)=N NC(C)=N  26 C1CC2=CCCC2C1 C1CC=CC1  27 CI CBr  28 CCO CO  29 CP CS
30 C[Si](C)(C)O C[Si](C)O  31 NCl CCl  32 CSN CNS  33 NS NCS  34 C=C CC  35 [Na+] [Ca+2]
36 C1CCSC1 CSC  37 NC(=O)N NC(=O)O  38 CC(=N)N CC(=N)O  39 OS(=O)(=O)C CS(=O)(=O)C  40 CSO CS=O
41 CC#N CC=N  42 CF CCl  43 OCO OCOC  45 C=CN CCN  46 CBr CCl  47 SCN SCCN  48 OP(=O)(O)C OP(=O)C
49 C[NH3+] CN  50 CC=C(C)C CC=CC  51 CS=O OS=O  52 NN NCN  53 OCCCO OCCO  54 OCCO OCO  55 OS=O CS=O
56 CN(=O)=O ON=O  57 C1CCOC1 COC  58 OSO OSC  59 Sc1ccccc1 SC1CCCCC1  60 CS(C)=O CSO  61 CS(=O)C CSC
62 C1CCC1C1CCC1 C1CCC1CC  63 CN=O CNO  64 SC1CCC1 SCC  65 n1ccccc1 N1CCCCC1  66 CC(C)(C)O CC(C)O
67 CSO CSC  68 OO OOC  69 COO COOC  70 ONO ONC  71 ON OCN  72 OCCO OCO  73 CS(C)=O CSC  74 CCC CC
75 CN1CCCC1 N1CCCC1  76 CC(C)=C CC=C  77 NCN NCCN  78 CC=N CCN  79 NCCN NCN  80 NCCCN NCCN
81 SC(C)C SCC  82 CCO CC(C)OC  83 C1CCOC1 C1CCCC1  84 CN CNC  85 CN(C)C CNC  86 CCOCC COCC
87 ClC1CCC1 CCCl  88 CS CO  89 OCCCO OCCO  90 CCCCO CCCO  91 CCCCCO CCCCO  92 CC(N)=O CC(O)=O
93 CO CCO  94 NN NC  95 NCCO NCO  96 C1CCCC1 C1CCCCC1  97 NCCCO NCCO  98 C1CCOCC1 C1CCCCC1
99 C=C CC  100 CCN CN  101 C1CCCCCCC1 C1CCCCCC1  102 OO OC  103 CCl CBr  104 CCCO CCO
105 C1CC2CC2C1 C1CCCC1  106 OC(O)O OC(O)C  107 CC(C)F CCF  108 CCCCCC CCCCC  109 CCO CO
110 NCO NCCO  111 NCCC NCC  112 C C=O  113 Oc1ccccc1 OC1CCCCC1  114 CCC CC  115 CCCC CCC
116 CCCCC CCCC  117 NCO NCCO  118 CCCCC CCC=C  119 CC=N CCN  120 C1CNC1 C1CCC1  121 C1CNC1 CN
122 CN(C)C C=N  123 OCO OCCO  124 NO NC  125 c1ccccc1-c1ccccc1 c1ccc2ccccc2c1  126 C1CCOC1 COC
127 OC1CC1 OCC  128 CCCCCCCC CCCCCC  129 CCCCCC CCCCC  130 NON NO  131 OCO OC  132 OCCC OCC
133 NC1CC1 NCC  134 CF CO  135 Nc1ccccc1 NC1CCCCC1  136 C=O CO  137 C1CNC1 CN  138 OCCO CCO
139 CO COC  140 OCOC(O)O OCOCO  141 CC(C)C CCC  142 NCN CN  143 OC1CC1 OCC
144 Cc1ccccc1C Cc1cccc(C)c1  145 C1CCCC2C1CCCC2 C1CCCCC1  146 OCO OC  147 CCC=C CCCC  148 CN(C)C COC
149 CC CO  150 CC1CC1C CC1CC1  151 CNC CN(C)C  152 C[O+](C)C COC  153 CCO CO  154 CC=O CCO
155 CCC CC  156 CN(C)C C=N  157 CO C=O  158 CN C=N  159 OCO OC  160 CC C=C  161 CN CO
162 c1ccccc1 C1CCCCC1  163 C1CCCCC1 C1CCCC1  164 CO CN  165 C1CC1 CCC  166 C.C CC
)";

TEST(MACCSTest, EachKeyTellsTwoMoleculesApart) {
  std::istringstream text(examples);
  unsigned int number = 0;
  unsigned int count = 0;
  for (std::string with, without; text >> number >> with >> without; ++count) {
    EXPECT_TRUE(Has(Keys(ReadSmiles(with)), number)) << number << ' ' << with;
    EXPECT_FALSE(Has(Keys(ReadSmiles(without)), number)) << number << ' ' << without;
  }
  EXPECT_EQ(count, 165U);  // all but 44
}

TEST(MACCSTest, EmptyInvalidAndOddMolecules) {
  ZQMol none;
  ZQMol ununoctium;
  ununoctium.NewAtom(118);
  ZQFingerPrint fp;
  for (const ZQMol& mol : {none, "*"_mol, "[H][H]"_mol, ununoctium}) {
    fp.SetSize(4000);
    fp.SetBitOn(3999);
    ASSERT_TRUE(ZQMakeMACCS166FP(fp, mol));
    EXPECT_EQ(fp.GetFPTypeBase(), ZQGetFPType(ZQFPType::MACCS166));
    EXPECT_EQ(fp.GetSize(), 166U);
    EXPECT_EQ(fp.CountBits(), 0U);
  }
  none.SetValid(false);
  EXPECT_FALSE(ZQMakeMACCS166FP(fp, none));
  EXPECT_EQ(fp.GetFPTypeBase(), nullptr);
}

TEST(MACCSTest, ATripleBondInAnAromaticRing) {
  EXPECT_TRUE(Has(Keys("C1=CC=CC#C1"_mol), 17));
  EXPECT_FALSE(Has(Keys("C1#CC#CC=C1"_mol), 125));
}

TEST(MACCSTest, HoldsOverManyMolecules) {
  ZQMolDatabase drugs;
  ASSERT_TRUE(drugs.Open(KORVEX_SOURCE_DIR "/data/drugs.smi"));
  std::vector<ZQMol> mols(drugs.GetMaxMolIdx());
  for (unsigned int i = 0; i < mols.size(); ++i) ASSERT_TRUE(drugs.GetMolecule(mols[i], i));
  for (const std::string& smiles : SampleSmiles()) mols.push_back(ReadSmiles(smiles));
  // A second match implies a first, and some keys are equivalent.
  const unsigned int implied[][2] = {{130, 124}, {120, 137}, {127, 143}, {118, 147}, {138, 153},
                                     {149, 160}, {145, 163}, {125, 162}, {122, 156}, {156, 122},
                                     {146, 159}, {159, 146}, {162, 165}};
  std::vector<ZQFingerPrint> fps;
  for (std::size_t i = 0; i < mols.size(); ++i) {
    const ZQFingerPrint fp = fps.emplace_back(Keys(mols[i]));
    EXPECT_EQ(Keys(Shuffled(mols[i], static_cast<unsigned int>(i))), fp) << i;
    EXPECT_EQ(Keys(WithHydrogens(mols[i])), fp) << i;
    ZQGraphMol prepared(mols[i]);
    ZQPrepareForFingerprinting(prepared, ZQFPType::MACCS166);
    ASSERT_TRUE(ZQIsPreparedForFingerprinting(prepared, ZQFPType::MACCS166));
    EXPECT_EQ(Keys(prepared), fp) << i;
    EXPECT_FALSE(Has(fp, 44));
    for (const auto& [key, other] : implied) EXPECT_TRUE(!Has(fp, key) || Has(fp, other)) << i;
  }
  OnThreads(4, [&](unsigned int t) {
    for (std::size_t i = t; i < mols.size(); i += 2) EXPECT_EQ(Keys(mols[i]), fps[i]);
  });
}

}  // namespace
}  // namespace ZQKorvex
