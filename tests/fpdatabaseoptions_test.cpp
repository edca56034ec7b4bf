#include "korvex/fpdatabaseoptions.h"

#include <gtest/gtest.h>

#include <limits>

#include "mol_helpers.h"

using namespace ZQKorvex;

namespace {

std::vector<double> ScoresOf(const ZQHitList<ZQSimScore>& list) {
  std::vector<double> scores;
  for (const ZQSimScore& item : list.GetItems()) scores.push_back(item.GetScore());
  return scores;
}

}  // namespace

TEST(Options, RefuseWhatNamesNothing) {
  CapturedReports reports;
  EXPECT_EQ(ZQFPDatabaseOptions(5, 7).GetSimFunc(), ZQSimMeasure::Tanimoto);
  EXPECT_EQ(reports.Take(),
            Texts{"ZQFPDatabaseOptions::ZQFPDatabaseOptions() unknown similarity function type 7 "
                  "ignored!"});
  ZQFPDatabaseOptions options(5, ZQSimMeasure::Manhattan);
  EXPECT_EQ(options.GetLimit(), 5U);
  for (const unsigned int bad : {0U, 7U, ~0U}) {
    options.SetSimFunc(bad);
    EXPECT_EQ(options.GetSimFunc(), ZQSimMeasure::Manhattan);
    EXPECT_EQ(reports.Take(),
              Texts{"ZQFPDatabaseOptions::SetSimFunc() unknown similarity function type " +
                    std::to_string(bad) + " ignored!"});
  }
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const auto& [alpha, beta, accepted] :
       {std::tuple(1.5F, 0.5F, false), std::tuple(0.5F, -0.1F, false), std::tuple(0.0F, 1.0F, true),
        std::tuple(nan, 0.5F, true)}) {
    ZQFPDatabaseOptions tversky;
    tversky.SetTverskyCoeffs(alpha, beta);
    EXPECT_EQ(tversky.GetTverskyBeta() == beta, accepted);
    EXPECT_EQ(tversky.GetTverskyAlpha() == 0.95F, !accepted);
    EXPECT_EQ(reports.Take().empty(), accepted);
  }
}

TEST(Options, ProcessorsAreAtMostTwiceTheMachines) {
  const unsigned int machine = ZQGetNumProcessors();
  ZQFPDatabaseOptions options;
  EXPECT_EQ(options.GetNumProcessors(), 1U);
  for (const auto& [asked, expected] : {std::pair(0U, machine), std::pair(2 * machine, 2 * machine),
                                        std::pair(1000 * machine, 2 * machine)}) {
    options.SetNumProcessors(asked);
    EXPECT_EQ(options.GetNumProcessors(), expected);
  }
}

TEST(HitList, WhatTheBarLetsIn) {
  struct Case {
    bool descending;
    bool hasCutoff;
    std::vector<double> offered;
    std::vector<double> kept;  // of a limit of 3
  };
  for (const Case& c : std::vector<Case>{
           {true, false, {0.5, 0.9, 0.7, 0.9}, {0.9, 0.9, 0.7}},
           {true, false, {0.0, 0.0}, {}},
           {true, false, {0.0, 1e-300}, {1e-300}},
           {true, true, {0.5, 0.500001, 0.4}, {0.500001}},
           {false, true, {0.5, 0.499999, 0.6}, {0.499999}},
           {false, false, {1.0, 0.0, 0.5, 0.7}, {0.0, 0.5, 0.7}},
           {true, false, {std::numeric_limits<double>::quiet_NaN(), 0.1}, {0.1}},
       }) {
    const auto list = ZQInitFPDatabaseHitList(3, c.descending, c.hasCutoff, 0.5F);
    for (const double score : c.offered) list->UpdateScores(ZQSimScore(1, score));
    EXPECT_EQ(list->SortScores(true), !c.kept.empty());
    EXPECT_EQ(ScoresOf(*list), c.kept);
  }
}

TEST(HitList, TheBarRisesAtCompactionsOnly) {
  const auto list = ZQInitFPDatabaseHitList(1, true, false, 0.0F);
  std::vector<double> bars;
  for (const double score : {0.1, 0.2, 0.3, 0.25, 0.4, 0.5}) {
    list->UpdateScores(ZQSimScore(0, score));
    bars.push_back(list->GetBar().GetScore());
  }
  const double none = std::numeric_limits<double>::min();
  EXPECT_EQ(bars, (std::vector<double>{none, none, 0.3, 0.3, 0.3, 0.5}));
  EXPECT_TRUE(list->SortScores(true));
  EXPECT_EQ(ScoresOf(*list), std::vector<double>{0.5});
  EXPECT_TRUE(list->UpdateScores(ZQSimScore(0, 0.6)));  // a sorted list accepts more
}

TEST(HitList, IsTheSortedStartOfWhatItWasOffered) {
  std::mt19937 random(1);
  for (const unsigned int limit : {1U, 2U, 10U, 100U, 1U << 31, ~0U}) {
    for (const bool descending : {true, false}) {
      const auto list = ZQInitFPDatabaseHitList(limit, descending, false, 0.0F);
      std::vector<double> offered;
      for (int i = 0; i < 5000; ++i) {
        offered.push_back(1.0 + random() % 700);
        list->UpdateScores(ZQSimScore(i, offered.back()));
        EXPECT_LE(list->GetItems().size(), 2 * std::size_t{limit});
      }
      std::sort(offered.begin(), offered.end());
      if (descending) std::reverse(offered.begin(), offered.end());
      offered.resize(std::min<std::size_t>(limit, offered.size()));
      list->SortScores(true);
      EXPECT_EQ(ScoresOf(*list), offered) << limit;
    }
  }
}

TEST(HitList, ReservesNoMoreThanItCanHold) {
  ZQFPDatabaseOptions options(1U << 31, ZQSimMeasure::Tanimoto);
  EXPECT_EQ(ZQInitFPDatabaseHitList(10, options)->GetItems().capacity(), 10U);
  options.SetLimit(3);
  EXPECT_EQ(ZQInitFPDatabaseHitList(1000, options)->GetItems().capacity(), 6U);
  options.SetLimit(0);
  EXPECT_EQ(ZQInitFPDatabaseHitList(1000, options)->GetLimit(), 1000U);
  CapturedReports reports;
  const auto nothing = ZQInitFPDatabaseHitList(0, true, false, 0.0F);
  nothing->UpdateScores(ZQSimScore(0, 0.5));
  EXPECT_TRUE(nothing->GetItems().empty());
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
}

TEST(HitList, IteratorCopiesAreDeep) {
  auto list = ZQInitFPDatabaseHitList(5, true, false, 0.0F);
  for (const double score : {0.1, 0.3, 0.2}) list->UpdateScores(ZQSimScore(7, score));
  list->SortScores(true);
  ZQIter<ZQSimScore> copy;
  {
    ZQIter<ZQSimScore> iter(new ZQHitListIter<ZQSimScore>(std::move(list)));
    ++iter;
    copy = iter;
    *iter = ZQSimScore(1, 9.0);
  }
  EXPECT_EQ(copy->GetScore(), 0.2);
  ++copy;
  EXPECT_EQ(copy->GetScore(), 0.1);
  EXPECT_FALSE(++copy);
}
