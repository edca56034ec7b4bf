#pragma once

/// The queries of the back ends that scan on the CPU. They differ in one thing: where the records
/// are. A file whose header has another number of words than its type is not scanned: each query
/// but that of a record warns "%s fingerprints of %lu words in %s don't fit their type!" and is
/// empty.

#include <cstdint>
#include <string>
#include <vector>

#include "korvex/fpfast_database_implbase_local.h"

namespace ZQKorvex {

class ZQFastFPScanDatabaseImpl : public ZQFastFPDatabaseImplBase {
 public:
  using ZQFastFPDatabaseImplBase::ZQFastFPDatabaseImplBase;

  using ZQFastFPDatabaseImplBase::GetFingerPrint;
  using ZQFastFPDatabaseImplBase::GetRawScores;
  using ZQFastFPDatabaseImplBase::GetScores;
  using ZQFastFPDatabaseImplBase::GetSortedScores;
  using ZQFastFPDatabaseImplBase::SortedSearch;
  ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query,
                               const ZQFPDatabaseOptions& options) const override;
  ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query,
                                     const ZQFPDatabaseOptions& options) const override;
  std::vector<ZQIter<ZQSimScore>> GetSortedScores(
      const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options) const override;
  ZQIter<double> GetRawScores(const ZQFingerPrint& query,
                              const ZQFPDatabaseOptions& options) const override;
  ZQIter<float> GetAllScores(const ZQFPDatabaseOptions& options) const override;
  ZQFPHistogram GetHistogram(const ZQFPDatabaseOptions& options, unsigned long bins) const override;
  ZQFPVariogram GetVariogram(const std::vector<float>& values, const ZQFPDatabaseOptions& options,
                             unsigned long bins) const override;
  ZQIter<ZQSimScorePair> GetSparseMatrix(const ZQFPDatabaseOptions& options) const override;
  unsigned int SortedSearch(ZQSimSearchResult& result, const ZQFingerPrint& query,
                            const ZQFPDatabaseOptions& options) const override;
  bool GetFingerPrint(std::vector<std::uint64_t>& words, std::uint64_t& moleculeIndex,
                      std::uint64_t& popcount, std::uint64_t index) const override;

 protected:
  /// The first record, for a query over all of them. False, after a warning behind `caller`, if
  /// they can't be had.
  virtual bool GetRecords(const std::uint64_t*& records, const char* caller) const = 0;
  /// One record, null if it can't be had.
  virtual const std::uint64_t* GetRecord(std::uint64_t index) const = 0;
  virtual void WarnOfLimit(const char* caller, int limit, int numRecords) const = 0;

  /// Words of a record.
  std::uint64_t Stride() const { return params_.NumWords() + 2; }

 private:
  /// Calls `scan(data, numRecords, numWords, popcount)`; false, after a warning behind `caller`, if
  /// there is nothing to scan.
  template <class Scan>
  bool WithRecords(const char* caller, Scan scan) const;
};

}  // namespace ZQKorvex
