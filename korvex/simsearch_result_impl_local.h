#pragma once

/// The implementation of a search result, to which the search writes.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "korvex/simsearch_result.h"

namespace ZQKorvex {

class ZQSimSearchResultImpl {
 public:
  ZQSimSearchResultImpl(unsigned long bins, double minValue, double maxValue);

  /// Prepares a search of `numTargets` records. The histogram keeps its content. Without a limit in
  /// the options, more than 2^32 - 1 records are reported as Fatal.
  bool Init(unsigned long numTargets, const ZQFPDatabaseOptions& options);
  void SetSearchStatus(unsigned int status) { status_ = status; }
  /// Adds to the number of searched records; takes no lock.
  void RecordProgress(unsigned long done) { numSearched_ += done; }
  /// Adds one score. For a single writer: takes no lock.
  void UpdateScores(std::uint64_t index, double score);
  /// Merges the results of one worker.
  void UpdateScores(const ZQFPHistogram& histogram, const ZQHitList<ZQSimScore>& list);

  bool IsValid() const { return valid_; }
  unsigned int GetSearchStatus() const { return status_; }
  unsigned long NumTargets() const { return numTargets_; }
  unsigned long NumSearched() const { return numSearched_; }
  /// As passed to the constructor; for 0, `GetHistogram` has one bin.
  unsigned long NumBins() const { return bins_; }
  ZQFPHistogram GetHistogram() const;
  /// An empty histogram of the same bins, for a worker.
  ZQFPHistogram MakeEmptyHistogram() const;
  ZQIter<ZQSimScore> GetSortedScores();

 private:
  unsigned long bins_;
  std::atomic<bool> valid_ = false;
  std::atomic<unsigned long> numTargets_ = 0;
  std::atomic<unsigned long> numSearched_ = 0;
  std::atomic<unsigned int> status_ = ZQSimSearchStatus::Uninitialized;
  ZQFPHistogram histogram_;
  std::unique_ptr<ZQHitList<ZQSimScore>> hitList_;
  mutable std::mutex lock_;  // guards the histogram and the list
};

}  // namespace ZQKorvex
