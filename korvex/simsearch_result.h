#pragma once

/// The result of a sorted search: the best hits and, from the same pass, a histogram of all scores.
/// Other threads may read it while the search is running.

#include <memory>
#include <string>

#include "korvex/fpdatabaseoptions.h"
#include "korvex/fphistogram.h"

namespace ZQKorvex {

namespace ZQSimSearchStatus {
inline constexpr unsigned int Uninitialized = 0;
inline constexpr unsigned int InProgress = 1;
inline constexpr unsigned int Finished = 2;
}  // namespace ZQSimSearchStatus

/// "Uninitialized", "InProgress", "Finished"; "Invalid" for any other number.
ZQ_EXPORT std::string ZQSimSearchStatusToName(unsigned int status);

class ZQSimSearchResultImpl;

class ZQ_EXPORT ZQSimSearchResult {
 public:
  /// Takes the histogram's number of bins (0 makes one bin) and range.
  explicit ZQSimSearchResult(unsigned long bins = 200, double minValue = 0.0,
                             double maxValue = 1.0);
  ~ZQSimSearchResult();
  ZQSimSearchResult(const ZQSimSearchResult&) = delete;
  ZQSimSearchResult& operator=(const ZQSimSearchResult&) = delete;

  /// Whether a search has begun.
  bool IsValid() const;
  /// A constant of `ZQSimSearchStatus`.
  unsigned int GetSearchStatus() const;
  /// Records to search, and records searched so far.
  unsigned long NumTargets() const;
  unsigned long NumSearched() const;
  /// The histogram of the scores so far. Before any search, warns "%s : result object is
  /// uninitialized!" and returns 200 empty bins from 0.0 to 1.0.
  ZQFPHistogram GetHistogram() const;
  /// The hits, best first, once the search has finished. Before that, an unsorted snapshot of up to
  /// twice the limit of the hits merged by finished threads. Before any search, an assertion
  /// failure and an empty iterator.
  ZQIter<ZQSimScore> GetSortedScores();

  /// The object that a search writes to.
  ZQSimSearchResultImpl& GetImpl() { return *impl_; }

 private:
  std::unique_ptr<ZQSimSearchResultImpl> impl_;
};

}  // namespace ZQKorvex
