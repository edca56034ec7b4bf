#include "korvex/lingo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>

#include "korvex/measuresim_lingo.h"
#include "korvex/measuresim_unhashed.h"
#include "tests/generator_helpers.h"

namespace ZQKorvex {

namespace {

std::string LingoText(const ZQMolBase& mol) {
  std::string text;
  ZQLingoMap().CreateString(text, mol);
  return text;
}

ZQFingerPrint Lingo(const std::string& text) {
  return FingerPrintOfText(text + '\0', ZQFPType::Lingo);
}

using Counts = std::vector<unsigned int>;

Counts CompareTexts(const std::string& a, const std::string& b, unsigned int step = 1) {
  Counts counts(3, 7);
  ZQLingoSim(a.c_str(), step).GetImpl()->Compare(b.c_str(), &counts[0], &counts[1], &counts[2]);
  return counts;
}

std::map<std::string, unsigned int> Substrings(const std::string& text, std::size_t step) {
  std::map<std::string, unsigned int> found;
  for (std::size_t i = 0; i + 4 <= text.size(); i += step) ++found[text.substr(i, 4)];
  return found;
}

}  // namespace

TEST(LingoMap, WritesRingClosuresAndElementsAsOneCharacter) {
  std::istringstream cases(R"t(
      Clc1ccccc1 Lc0ccccc0   BrC1CC1 RC0CC0   [13CH3]N [13CH3]N   [CH3:12]Cl [CH3:12]L
      [Ca+2].[Cl-].[Br-] [R-].[Q+2].[L-]   [Fe+2].[U].[Sc] [M+2].[M].[U]   c1cc[se]c1 c0ccc[e]0
      C[Si](C)(C)C C[T](C)(C)C   C[C@@H](Cl)O C[C@H](O)L   [2H]O[235U] [2H]O[235U])t");
  for (std::string smiles, expected; cases >> smiles >> expected;) {
    EXPECT_EQ(LingoText(ReadSmiles(smiles)), expected) << smiles;
  }
  EXPECT_TRUE(cases.eof());
  EXPECT_EQ(LingoText(ZQMol()), "");
  // A complete graph, with more than 99 closures open at once.
  std::string smiles;
  for (int i = 0; i < 24; ++i) {
    smiles += i == 0 ? "*" : ".*";
    for (int j = 0; j < 24; ++j) {
      if (j != i) smiles += "%(" + std::to_string(24 * std::min(i, j) + std::max(i, j)) + ")";
    }
  }
  const ZQMol complete = ReadSmiles(smiles);
  EXPECT_NE(ZQMolToCanonicalSmiles(complete).find("%(1"), std::string::npos);
  EXPECT_EQ(LingoText(complete).find_first_not_of("*0"), std::string::npos);
  EXPECT_EQ(LingoText(complete).size(), 24U + 2U * (24U * 23U / 2U - 23U));
}

TEST(LingoSim, CountsSubstringsAsMultisets) {
  EXPECT_EQ(CompareTexts("CCCCC", "CCCC"), (Counts{1, 0, 1}));
  EXPECT_EQ(CompareTexts("CCCCO", "OCCCC"), (Counts{1, 1, 1}));
  EXPECT_EQ(CompareTexts("c0ccccc0", "c0ccccc0"), (Counts{0, 0, 5}));
  EXPECT_EQ(CompareTexts("CCCC", "CC"), (Counts{1, 0, 0}));
  EXPECT_FALSE(ZQLingoSim("CCC", 1).IsValid());
  EXPECT_FALSE(ZQLingoSim("CCCCC", 0).IsValid());
  std::mt19937 random(5);
  for (int round = 0; round < 400; ++round) {
    std::string texts[2];
    for (std::string& text : texts) {
      for (unsigned int i = 4 + random() % 200; i != 0; --i) text += "CNO\xFF"[random() % 4];
    }
    const unsigned int step = 1 + random() % 3;
    Counts expected(3, 0);
    auto ofB = Substrings(texts[1], step);
    for (const auto& [lingo, count] : Substrings(texts[0], step)) {
      const unsigned int both = std::min(count, ofB[lingo]);
      expected[0] += count - both;
      expected[2] += both;
      ofB[lingo] -= both;
    }
    for (const auto& [lingo, count] : ofB) expected[1] += count;
    EXPECT_EQ(CompareTexts(texts[0], texts[1], step), expected);
  }
}

TEST(LingoFP, HoldsTheTextOfThePreparedMolecule) {
  std::istringstream cases(R"t(
      OCC CCO   *CCO [CH2]CO   [2H]C([2H])Cl CL   CCCl.[Na+] CCL.[A+]   C[C@]([2H])(O)F C[C@H](O)F
      [2H][C@](C)(O)F C[C@@H](O)F   [2H]/C(F)=C/Cl F/C=C\L   F/C([2H])=C/Cl F/C=C/L
      */C(F)=C/Cl F[C]=CL   *[P@](C)(N)=O C[P](N)=O   CCCCCCC CCCCCCC   CCCCCCCC CCCCCCCC)t");
  for (std::string smiles, expected; cases >> smiles >> expected;) {
    ZQFingerPrint fp;
    fp.SetBitOn(700);
    ASSERT_TRUE(ZQMakeLingoFP(fp, ReadSmiles(smiles)));
    EXPECT_EQ(fp, Lingo(expected)) << smiles;
    EXPECT_EQ(fp.GetFPTypeBase()->GetFPTypeString().substr(0, 10), "Lingo,ver=");
    ZQMol prepared = ReadSmiles(smiles);
    ZQPrepareForFingerprinting(prepared, ZQFPType::Lingo);
    ASSERT_TRUE(ZQMakeLingoFP(fp, prepared));
    EXPECT_EQ(fp, Lingo(expected)) << smiles;
  }
  EXPECT_TRUE(cases.eof());
  for (const char* none : {"", "[H][H]", "*"}) {
    ZQFingerPrint fp;
    fp.SetBitOn(0);
    ASSERT_TRUE(ZQMakeLingoFP(fp, *none == 0 ? ZQMol() : ReadSmiles(none)));
    EXPECT_EQ(fp.GetSize(), 1U);
    EXPECT_EQ(fp.CountBits(), 0U);
    EXPECT_EQ(fp.GetFPTypeBase(), ZQGetFPType(ZQFPType::Lingo));
    EXPECT_EQ(ZQTanimoto(fp, fp), 1.0F);
    EXPECT_EQ(ZQManhattan(fp, fp), 0.0F);
  }
  ZQMol invalid;
  invalid.SetValid(false);
  ZQFingerPrint fp = Lingo("CCCC");
  EXPECT_FALSE(ZQMakeLingoFP(fp, invalid));
  EXPECT_FALSE(fp);
  EXPECT_EQ(fp.GetSize(), 40U);
  EXPECT_NE(ZQGetLingoFPType(0), ZQGetFPType(ZQFPType::Lingo));
}

TEST(LingoSimTerms, TakeShortTextsWhole) {
  const struct {
    std::string a, b;
    Counts counts;
    bool answer;
  } cases[] = {{"CCO", "CCO", {0, 0, 3}, true},
               {"CCO", "CCN", {3, 3, 0}, false},
               {"CCO", "CCCCCCCCCO", {3, 10, 0}, false},
               {"", "", {0, 0, 0}, true},
               {"CCCCCCCC", "CCCC", {4, 0, 1}, true}};
  for (const auto& c : cases) {
    Counts counts(3, 7);
    EXPECT_EQ(ZQGetLingoSimTerms(Lingo(c.a), Lingo(c.b), &counts[0], &counts[1], &counts[2]),
              c.answer);
    EXPECT_EQ(counts, c.counts) << c.a << " " << c.b;
  }
  // A text without a terminator ends with the vector.
  ZQFingerPrint open = Lingo("CCCCCCC");
  open.SetSize(64);
  std::memset(open.Words(), 'C', 8);
  Counts counts(3, 7);
  EXPECT_TRUE(ZQGetLingoSimTerms(open, Lingo("CCCC"), &counts[0], &counts[1], &counts[2]));
  EXPECT_EQ(counts, (Counts{4, 0, 1}));
}

TEST(LingoMeasures, ScoreByTheFormulaeWithoutNeither) {
  const ZQTanimotoLingoSim tanimoto;
  const ZQCosineLingoSim cosine;
  const ZQDiceLingoSim dice;
  const ZQEuclidLingoSim euclid;
  const ZQTverskyLingoSim tversky(0.75F, 0.25F);
  const ZQManhattanLingoSim manhattan;
  const ZQLingoSimFunc* const measures[] = {&tanimoto, &cosine,  &dice,
                                            &euclid,   &tversky, &manhattan};
  const struct {
    std::string query, text;
    float scores[6];
  } cases[] = {
      {"CCCCNO",
       "CCCCN",
       {2 / 3.0F, std::sqrt(2 / 3.0F), 0.8F, std::sqrt(2 / 3.0F), 2 / 2.75F, 1 / 3.0F}},
      {"CCCCN", "CCCCN", {1, 1, 1, 1, 1, 0}},
      {"CCCCN", "NOOOO", {0, 0, 0, 0, 0, 1}},
      {"CCCCN", "CCC", {0, 0, 0, 0, 0, 1}},
      {"CCC", "CCC", {0, 0, 0, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    const ZQFingerPrint query = Lingo(c.query);
    const ZQFingerPrint fp = Lingo(c.text);
    const ZQLingoSim sim(c.query.c_str(), 1);
    const bool isLong = c.query.size() >= 4 && c.text.size() >= 4;
    const float direct[] = {ZQTanimoto(query, fp),
                            ZQCosine(query, fp),
                            ZQDice(query, fp),
                            ZQEuclid(query, fp),
                            ZQTversky(query, fp, 0.75F, 0.25F),
                            ZQManhattan(query, fp)};
    for (unsigned int i = 0; i < std::size(measures); ++i) {
      const std::unique_ptr<ZQSimFuncBase> copy(measures[i]->CreateCopy());
      CapturedReports reports;
      const float score = dynamic_cast<const ZQLingoSimFunc&>(*copy)(sim, fp);
      EXPECT_NEAR(score, c.scores[i], 1e-6) << i << " " << c.query << " " << c.text;
      EXPECT_EQ(reports.Take(), sim.IsValid() ? Texts{} : Texts{"lingo is not initialized"});
      EXPECT_TRUE(!isLong || score == direct[i]);
      EXPECT_EQ((*copy)(query, query), 0.0F);
      EXPECT_EQ(copy->GetSimTypeString(), "ZQ" + ZQGetSimilarityMeasureName(i + 1));
    }
  }
  EXPECT_EQ(ZQManhattan(Lingo("CCC"), Lingo("CCO")), 0.0F);
  EXPECT_EQ(ZQTanimoto(Lingo("CCC"), Lingo("CCC")), 1.0F);
}

TEST(UnhashedMeasure, WalksSortedPointers) {
  const std::vector<std::string> tokens{"a", "b", "c"};  // in one block, so that pointers ascend
  const std::string *a = &tokens[0], *b = &tokens[1], *c = &tokens[2];
  const ZQTanimotoUnhashedSim sim;
  const std::unique_ptr<ZQTanimotoUnhashedSim> copy(sim.CreateCopy());
  EXPECT_EQ((*copy)({a, a, b}, {a, b, b}), 0.5F);
  EXPECT_EQ(sim({a, b, c}, {a, b, c}), 1.0F);
  EXPECT_EQ(sim({a, c}, {b}), 0.0F);
  EXPECT_EQ(sim({a}, {}), 0.0F);
  EXPECT_TRUE(std::isnan(sim(std::vector<const std::string*>{}, {})));
  EXPECT_EQ(sim(Lingo("CCCC"), Lingo("CCCC")), 0.0F);
  EXPECT_EQ(sim.GetSimTypeString(), "ZQTanimoto");
}

}  // namespace ZQKorvex
