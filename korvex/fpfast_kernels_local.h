#pragma once

/// The scan kernels: each iterates over the records of a database and computes one score for each
/// record or pair of records. A null pointer, or a query with a different number of words, is an
/// assertion failure; the kernel then does nothing. A result too large for memory throws the
/// exception of its container. Only `ZQFastFPResult` and `ZQFastFPHitLists` start threads, and join
/// them before they return.

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "korvex/fpdatabaseoptions.h"
#include "korvex/fpfast_scorer_local.h"
#include "korvex/fphistogram.h"
#include "korvex/simsearch_result_impl_local.h"

namespace ZQKorvex {

/// The records that a kernel reads, and the function that counts their bits. Converts from either
/// list of arguments in braces: the records themselves, or the image of a `.fpbin` file, whose
/// header contains their number and size.
struct ZQScanRecords : ZQRecords {
  ZQScanRecords(const unsigned long* data, unsigned long numRecords, unsigned long numWords,
                ZQPopCountFunc popcount);
  ZQScanRecords(const unsigned long* image, ZQPopCountFunc popcount);

  /// False after an assertion failure.
  bool AreThere() const;

  ZQPopCountFunc popcount;
};

// One query against all records.

/// (id, score) of each record whose score is no worse than the cutoff, in file order.
void ZQFastFPSimScore(std::vector<ZQSimScore>& out, const ZQFingerPrint& query,
                      const ZQFPDatabaseOptions& options, const ZQScanRecords& records);

/// Adds the scores to a hit list, on the options' number of threads for 1000 records or more; the
/// caller does its final sort.
void ZQFastFPHitList(ZQHitList<ZQSimScore>* list, const ZQFingerPrint& query,
                     const ZQFPDatabaseOptions& options, const ZQScanRecords& records);

/// All scores in file order; none for an unknown measure.
void ZQFastFPRaw(std::vector<double>& out, const ZQFingerPrint& query,
                 const ZQFPDatabaseOptions& options, const ZQScanRecords& records);

/// Hits and histogram of all scores, on that number of threads too.
void ZQFastFPResult(ZQSimSearchResultImpl* result, const ZQFingerPrint& query,
                    const ZQFPDatabaseOptions& options, const ZQScanRecords& records);
/// A worker of `ZQFastFPResult`: takes batches of records from the cursor until none is left,
/// and merges its hits and histogram into the result at the end.
void ZQFastFPResultThread(std::atomic<unsigned long>& cursor, unsigned long batch,
                          ZQSimSearchResultImpl* result, const ZQFingerPrint& query,
                          const ZQFPDatabaseOptions& options, const ZQScanRecords& records);

// Many queries against all records.

/// Like `ZQFastFPHitList`, for each query and the list at the same index. Reads the records once
/// for many queries and divides the queries among the options' number of threads; no list depends
/// on that number.
void ZQFastFPHitLists(const std::vector<std::unique_ptr<ZQHitList<ZQSimScore>>>& lists,
                      const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options,
                      const ZQScanRecords& records);

// All pairs of records; for Tversky, which isn't symmetric, all ordered pairs. Those without a word
// of threads run on the calling one.

/// The matrix of scores, row-major, on the options' number of threads for 1000 records or more.
void ZQFastFPAllScores(std::vector<float>& out, const ZQFPDatabaseOptions& options,
                       const ZQScanRecords& records);

/// Adds the scores of all pairs i < j; for Tversky, of all n * n. Threads likewise.
void ZQFastFPHistogram(ZQFPHistogram& histogram, const ZQFPDatabaseOptions& options,
                       const ZQScanRecords& records);

/// Samples 1 - score and the difference of `values`, one for each record, for all pairs i < j.
/// Tversky, or another number of values, is an assertion failure.
void ZQFastFPVariogram(ZQFPVariogram& variogram, const std::vector<float>& values,
                       const ZQFPDatabaseOptions& options, const ZQScanRecords& records);

/// For each record the `k` greatest scores, itself included, best first, ties by descending id.
/// With a cutoff, only those above it, and those equal to it whose id isn't 0. Appends to `out`.
void ZQFastFPSparseMatrix(std::vector<ZQSimScorePair>& out, const ZQFPDatabaseOptions& options,
                          const ZQScanRecords& records, unsigned long k);
/// The same, with the lists of `band` rows in memory at once, which affects only memory and time:
/// each score within a band is used for both its rows if the band is all rows or whole blocks of
/// 64.
void ZQFastFPSparseMatrixInBands(std::vector<ZQSimScorePair>& out,
                                 const ZQFPDatabaseOptions& options, const ZQScanRecords& records,
                                 unsigned long k, unsigned long band);
/// Sorts the (score, id) entries of a row as the sparse matrix has them, best first, and appends
/// those that pass the cutoff.
void ZQAppendNeighbors(std::vector<ZQSimScorePair>& out, std::uint64_t rowId,
                       std::vector<std::pair<float, std::uint64_t>>& entries,
                       const ZQFPDatabaseOptions& options);

}  // namespace ZQKorvex
