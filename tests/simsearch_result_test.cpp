#include "korvex/simsearch_result.h"

#include <gtest/gtest.h>

#include "korvex/simsearch_result_impl_local.h"
#include "mol_helpers.h"

using namespace ZQKorvex;

namespace {

std::vector<double> SortedScores(ZQSimSearchResult& result) {
  std::vector<double> scores;
  for (auto hit = result.GetSortedScores(); hit; ++hit) scores.push_back(hit->GetScore());
  return scores;
}

}  // namespace

TEST(SearchResult, BeforeAnySearch) {
  ZQSimSearchResult result(0);
  CapturedReports reports;
  EXPECT_FALSE(result.IsValid());
  EXPECT_EQ(result.GetSearchStatus(), ZQSimSearchStatus::Uninitialized);
  EXPECT_EQ(ZQSimSearchStatusToName(result.GetSearchStatus()), "Uninitialized");
  EXPECT_EQ(ZQSimSearchStatusToName(3), "Invalid");
  EXPECT_FALSE(result.GetSortedScores());
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
  EXPECT_EQ(result.GetHistogram().NumBins(), 200U);
  EXPECT_EQ(reports.Take(),
            Texts{"ZQSimSearchResult::GetHistogram() : result object is uninitialized!"});
  result.GetImpl().Init(10, {});
  EXPECT_FALSE(result.GetSortedScores());  // no hits, no warning
  EXPECT_TRUE(reports.Take().empty());
  result.GetImpl().UpdateScores(3, 0.5);
  EXPECT_FALSE(result.GetSortedScores());
  EXPECT_EQ(reports.Take(),
            Texts{"ZQSimSearchResult::GetSortedScores() : result object is uninitialized!"});
  result.GetImpl().SetSearchStatus(ZQSimSearchStatus::InProgress);
  EXPECT_EQ(result.GetHistogram().NumBins(), 1U);  // a request for none makes one
  EXPECT_EQ(result.GetHistogram().NumSamples(), 1U);
}

TEST(SearchResult, SnapshotsWhileRunningAndTheBestAtTheEnd) {
  ZQSimSearchResult result(10);
  ZQSimSearchResultImpl& impl = result.GetImpl();
  const ZQFPDatabaseOptions options(3, ZQSimMeasure::Tanimoto);
  EXPECT_TRUE(impl.Init(6, options));
  EXPECT_TRUE(result.IsValid());
  impl.SetSearchStatus(ZQSimSearchStatus::InProgress);
  for (const double score : {0.1, 0.6, 0.3, 0.2, 0.5, 0.4}) impl.UpdateScores(1, score);
  EXPECT_EQ(result.NumSearched(), 6U);
  EXPECT_EQ(result.NumTargets(), 6U);
  EXPECT_EQ(SortedScores(result).size(), 6U);  // twice the limit, in order of arrival
  impl.SetSearchStatus(ZQSimSearchStatus::Finished);
  const std::vector<double> best{0.6, 0.5, 0.4};
  EXPECT_EQ(SortedScores(result), best);
  EXPECT_EQ(SortedScores(result), best);
  // A second search starts with a new list and adds to the histogram.
  impl.Init(1, options);
  impl.UpdateScores(1, 0.05);
  EXPECT_EQ(SortedScores(result), std::vector<double>{0.05});
  EXPECT_EQ(result.NumSearched(), 1U);
  EXPECT_EQ(result.GetHistogram().NumSamples(), 7U);
}

TEST(SearchResult, OnlyWithoutALimitMustTheTargetsFit32Bits) {
  ZQSimSearchResultImpl impl(10, 0.0, 1.0);
  CapturedReports reports;
  constexpr unsigned long targets = (1UL << 32) + 1;
  EXPECT_TRUE(impl.Init(targets, ZQFPDatabaseOptions(10, ZQSimMeasure::Tanimoto)));
  EXPECT_EQ(impl.NumTargets(), targets);
  EXPECT_TRUE(reports.Take().empty());
  impl.Init(targets, ZQFPDatabaseOptions(0, ZQSimMeasure::Tanimoto));
  EXPECT_EQ(reports.Count(ZQErrorLevel::Fatal), 1U);
}

TEST(SearchResult, AHistogramOfOtherBinsIsRefused) {
  ZQSimSearchResultImpl impl(10, 0.0, 1.0);
  impl.Init(10, {});
  impl.SetSearchStatus(ZQSimSearchStatus::InProgress);
  CapturedReports reports;
  impl.UpdateScores(ZQFPHistogram(5, 0.0, 1.0), *ZQInitFPDatabaseHitList(10, {}));
  EXPECT_EQ(reports.Take().front(), "Assertion");
  EXPECT_EQ(impl.GetHistogram().NumBins(), 10U);
}

TEST(SearchResult, IsReadWhileThreadsMerge) {
  constexpr unsigned int threads = 4;
  constexpr unsigned int perThread = 500;
  ZQSimSearchResult result(50);
  ZQSimSearchResultImpl& impl = result.GetImpl();
  const ZQFPDatabaseOptions options(20, ZQSimMeasure::Tanimoto);
  impl.Init(threads * perThread, options);
  impl.SetSearchStatus(ZQSimSearchStatus::InProgress);
  OnThreads(threads + 1, [&](unsigned int t) {
    if (t == threads) {
      while (result.NumSearched() < result.NumTargets()) {
        EXPECT_LE(SortedScores(result).size(), 40U);
        EXPECT_LE(result.GetHistogram().NumSamples(), threads * perThread);
      }
      return;
    }
    const auto list = ZQInitFPDatabaseHitList(threads * perThread, options);
    ZQFPHistogram histogram = impl.MakeEmptyHistogram();
    for (unsigned int i = 0; i < perThread; ++i) {
      const double score = (i * threads + t + 1) / double{threads * perThread};
      histogram.AddSample(score);
      list->UpdateScores(ZQSimScore(i, score));
      impl.RecordProgress(1);
    }
    impl.UpdateScores(histogram, *list);
  });
  impl.SetSearchStatus(ZQSimSearchStatus::Finished);
  std::vector<double> best;
  for (unsigned int i = 0; i < 20; ++i) best.push_back((2000 - i) / 2000.0);
  EXPECT_EQ(SortedScores(result), best);
  EXPECT_EQ(result.GetHistogram().NumSamples(), 2000U);
}
