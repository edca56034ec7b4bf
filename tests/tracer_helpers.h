#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "korvex/fpfast_database.h"
#include "mol_helpers.h"

/// Each query over all pairs shows all of its progress to an observer, and ends at once where the
/// observer says so, with a warning and an empty result.
inline void ExpectQueriesEndByTheirTracer(const ZQKorvex::ZQFastFPDatabase& database) {
  using namespace ZQKorvex;
  const std::uint64_t n = database.NumFingerPrints();
  const struct {
    std::string name;
    std::function<bool(const ZQFPDatabaseOptions&)> isEmpty;
  } queries[] = {{"GetSparseMatrix", [&](const auto& o) { return !database.GetSparseMatrix(o); }},
                 {"GetAllScores", [&](const auto& o) { return !database.GetAllScores(o); }},
                 {"GetHistogram",
                  [&](const auto& o) { return database.GetHistogram(o, 9).NumSamples() == 0; }},
                 {"GetVariogram", [&](const auto& o) {
                    return database.GetVariogram(std::vector<float>(n), o, 9).NumSamples() == 0;
                  }}};
  for (const auto& query : queries) {
    SCOPED_TRACE(query.name);
    std::uint64_t numCalls = 0;
    for (std::uint64_t last = n * n; last > 0; last = std::min(last, numCalls) / 2) {
      std::uint64_t reached = 0;
      std::uint64_t ofAll = 0;
      numCalls = 0;
      ZQFPDatabaseOptions options(5, ZQSimMeasure::Tanimoto);
      options.SetTracer(ZQDots([&](std::uint64_t count, std::uint64_t total) {
        EXPECT_GE(count, reached);
        EXPECT_LE(count, total);
        reached = count;
        ofAll = total;
        return ++numCalls < last;
      }));
      CapturedReports reports;
      const bool isEmpty = query.isEmpty(options);
      const bool isStopped = numCalls >= last;
      EXPECT_EQ(isEmpty, isStopped);
      EXPECT_EQ(reached == ofAll, !isStopped);
      const Texts texts = reports.Take();
      EXPECT_EQ(std::count_if(texts.begin(), texts.end(),
                              [&](const std::string& text) {
                                return text.ends_with(query.name + "() : stopped!");
                              }),
                isStopped);
      EXPECT_LE(numCalls, last);
    }
  }
}
