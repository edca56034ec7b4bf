#include "korvex/measuresim.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/generator_helpers.h"

namespace ZQKorvex {

namespace {

ZQFingerPrint Bits(const std::vector<unsigned int>& bits, unsigned int size = 16) {
  ZQFingerPrint fp;
  fp.SetSize(size);
  fp.SetFPTypeBase(ZQGetFPType(ZQFPType::Path));
  for (const unsigned int bit : bits) fp.SetBitOn(bit);
  return fp;
}

ZQFingerPrint Text(const std::string& text, unsigned int kind = ZQFPType::UnhashedPath) {
  return FingerPrintOfText(text, kind);
}

using Measure = float (*)(const ZQFingerPrint&, const ZQFingerPrint&);
constexpr Measure measures[] = {ZQTanimoto, ZQCosine, ZQDice, ZQEuclid, ZQManhattan};

}  // namespace

TEST(MeasureSim, ScoresByTheFormulae) {
  const struct {
    std::vector<unsigned int> a, b;
    float tanimoto, cosine, dice, euclid, manhattan, tversky;  // Tversky with 0.75 and 0.25
  } cases[] = {{{}, {}, 1, 1, 1, 1, 0, 1},
               {{1, 5}, {1, 5}, 1, 1, 1, 1, 0, 1},
               {{1}, {2, 3}, 0, 0, 0, std::sqrt(13 / 16.0F), 3 / 16.0F, 0},
               {{}, {2}, 0, 0, 0, std::sqrt(15 / 16.0F), 1 / 16.0F, 0},
               {{0, 1, 2},
                {2, 15},
                0.25F,
                1 / std::sqrt(6.0F),
                0.4F,
                std::sqrt(13 / 16.0F),
                3 / 16.0F,
                1 / 2.75F},
               {{0, 1, 2, 3, 4, 5, 6, 7}, {8, 9, 10, 11, 12, 13, 14, 15}, 0, 0, 0, 0, 1, 0}};
  for (const auto& c : cases) {
    const ZQFingerPrint a = Bits(c.a);
    const ZQFingerPrint b = Bits(c.b);
    EXPECT_EQ(ZQTanimoto(a, b), c.tanimoto);
    EXPECT_NEAR(ZQCosine(a, b), c.cosine, 1e-6);
    EXPECT_EQ(ZQDice(a, b), c.dice);
    EXPECT_EQ(ZQEuclid(a, b), c.euclid);
    EXPECT_EQ(ZQManhattan(a, b), c.manhattan);
    EXPECT_EQ(ZQTversky(a, b, 0.75F, 0.25F), c.tversky);
    EXPECT_EQ(ZQTversky(a, b, 1, 1), ZQTanimoto(a, b));
    EXPECT_EQ(ZQTversky(a, b, 0.5F, 0.5F), ZQDice(a, b));
  }
  EXPECT_EQ(ZQTversky(Bits({0, 1}), Bits({1}), 0, 0), 1.0F);
}

TEST(MeasureSim, ObjectsForwardToTheFunctions) {
  const ZQFingerPrint a = Bits({0, 1, 2});
  const ZQFingerPrint b = Bits({2, 15});
  const ZQTanimotoSim tanimoto;
  const ZQCosineSim cosine;
  const ZQDiceSim dice;
  const ZQEuclidSim euclid;
  const ZQManhattanSim manhattan;
  const ZQTverskySim tversky(0.25F, 0.75F);
  const struct {
    const ZQSimFuncBase& object;
    float score;
    unsigned int number;
  } cases[] = {{tanimoto, ZQTanimoto(a, b), 1}, {cosine, ZQCosine(a, b), 2},
               {dice, ZQDice(a, b), 3},         {euclid, ZQEuclid(a, b), 4},
               {tversky, 1 / 2.25F, 5},         {manhattan, ZQManhattan(a, b), 6}};
  for (const auto& c : cases) {
    const std::unique_ptr<ZQSimFuncBase> copy(c.object.CreateCopy());
    EXPECT_EQ((*copy)(a, b), c.score);
    EXPECT_EQ(ZQGetSimilarity(c.number, a, b, 0.25F, 0.75F), c.score);
    EXPECT_EQ(copy->GetSimTypeString(), "ZQ" + ZQGetSimilarityMeasureName(c.number));
  }
  CapturedReports reports;
  for (const unsigned int none : {0U, 7U}) {
    EXPECT_EQ(ZQGetSimilarityMeasureName(none), "unknown");
    EXPECT_EQ(ZQGetSimilarity(none, a, b, 1, 1), 0.0F);
  }
  EXPECT_EQ(reports.Take(), Texts(2, "Assertion"));
}

TEST(MeasureSim, TypesThatDifferScoreZeroWithOneError) {
  const ZQFingerPrint a = Bits({1});
  ZQFingerPrint b = a;
  b.SetFPTypeBase(ZQGetFPType(ZQFPType::Tree));
  CapturedReports reports;
  for (const Measure measure : measures) {
    EXPECT_EQ(measure(a, b), 0.0F);
    EXPECT_EQ(reports.Count(ZQErrorLevel::Error), 1U);
    EXPECT_EQ(reports.Take(),
              Texts{measure == ZQTanimoto ? "ZQTanimoto() fingerprint type mismatch!"
                                          : "fingerprint type mismatch!"});
  }
  unsigned int counts[3] = {7, 7, 7};
  EXPECT_FALSE(ZQGetBitCounts(a, b, counts, counts + 1, counts + 2, nullptr));
  EXPECT_EQ(counts[0] + counts[1] + counts[2], 21U);
}

TEST(MeasureSim, UnhashedTextsCompareAsMultisetsOfTokens) {
  const struct {
    std::string a, b;
    float score;
  } cases[] = {{"a b c", "c a b", 1},
               {"a a b", "a b b", 0.5F},
               {"C-C N", std::string("N\tC-O\n\0 C-C", 11), 1 / 3.0F},
               {"", "", 0},
               {" \t ", "a", 0},
               {"\xC3 a", "a \xC3", 1}};
  for (const auto& c : cases) {
    EXPECT_EQ(ZQTanimoto(Text(c.a), Text(c.b)), c.score) << c.a;
    EXPECT_EQ(ZQTanimoto(Text(c.b), Text(c.a)), c.score) << c.a;
  }
  CapturedReports reports;
  ZQDice(Text("a"), Text("b"));
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
  ZQDice(Text("a", ZQFPType::UnhashedCircular), Text("b", ZQFPType::UnhashedCircular));
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
  const unsigned int tree = ZQFPType::UnhashedTree;
  EXPECT_EQ(ZQDice(Text("a", tree), Text("c", tree)), 6 / 7.0F);  // bits of the letters
  EXPECT_EQ(reports.Take(), Texts{});
}

TEST(MeasureSim, CountsBeyondTheExactFloatsAreReported) {
  ZQFingerPrint a = Bits({}, (1U << 24) + 1);
  ZQFingerPrint b = a;
  for (unsigned int i = 0; i < a.NumWords(); ++i) a.Words()[i] = ~std::uint64_t{0};
  a.SetSize(a.GetSize());
  CapturedReports reports;
  EXPECT_EQ(ZQManhattan(a, b), 1.0F);
  const std::string text =
      "(unsigned int)16777217 is greater than the maximum allowed(float)16777216.000000 when "
      "performing conversions between integers and floating point types\n";
  ASSERT_EQ(reports.Count(ZQErrorLevel::Fatal), 2U);
  EXPECT_EQ(reports.Reports()[0].text, text + "Assertion failed at line 0 of (unknown).");
  reports.Take();
  b.SetSize(1U << 24);
  a.SetSize(1U << 24);
  EXPECT_EQ(ZQManhattan(a, b), 1.0F);
  EXPECT_EQ(reports.Take(), Texts{});
}

TEST(PopCount, RefusesWhatIsNoScan) {
  EXPECT_EQ(ZQGetPopCountFunc(1), &ZQPopCountBitCount);
  EXPECT_EQ(ZQGetPopCountFunc(2), &ZQPopCountPOPCNT);
  EXPECT_EQ(ZQGetPopCountFingerprintSizeUnit(), 256U);
  const unsigned long words[8] = {1, 1, 1, 1, 1, 1, 1, 1};
  CapturedReports reports;
  EXPECT_EQ(ZQGetPopCountFunc(0), nullptr);
  EXPECT_EQ(reports.Take().size(), 2U);
  EXPECT_EQ(ZQGetPopCountFunc(3), nullptr);
  EXPECT_EQ(ZQPopCountPOPCNT(words, 3), 0U);
  EXPECT_EQ(ZQPopCountBitCount(words, 6), 0U);
  EXPECT_EQ(ZQPopCountARM(words, 4) + ZQPopCountMM(words, 4), 0U);
  EXPECT_EQ(reports.Take(), Texts(5, "Assertion"));
}

}  // namespace ZQKorvex
