#pragma once

/// The scan kernels: each goes through the records of a database and computes one score for a
/// record or for a pair of records. A null pointer, or a query of another number of words, is an
/// assertion failure; the kernel then does nothing. A result too large for any memory throws what
/// its container throws. Only `ZQFastFPResult` and `ZQFastFPHitLists` start threads, and join them
/// before they return.

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "korvex/fpdatabaseoptions.h"
#include "korvex/fpfast_scorer_local.h"
#include "korvex/fphistogram.h"
#include "korvex/simsearch_result_impl_local.h"

namespace ZQKorvex {

/// The records that a kernel reads, and the function that counts their bits. It converts from
/// either form of arguments in braces: the records themselves, or the image of a `.fpbin` file,
/// whose header has their number and size.
struct ZQScanRecords : ZQRecords {
  ZQScanRecords(const unsigned long* data, unsigned long numRecords, unsigned long numWords,
                ZQPopCountFunc popcount);
  ZQScanRecords(const unsigned long* image, ZQPopCountFunc popcount);

  /// False after an assertion failure.
  bool AreThere() const;

  ZQPopCountFunc popcount;
};

/// Records that a worker of `ZQFastFPResult` takes at a time.
inline constexpr unsigned long zqResultBatch = 100;

// One query against all records.

/// (id, score) of the scores that are no worse than the cutoff, in file order.
void ZQFastFPSimScore(std::vector<ZQSimScore>& out, const ZQFingerPrint& query,
                      const ZQFPDatabaseOptions& options, const ZQScanRecords& records);

/// Offers the scores to a hit list; its final sort is the caller's.
void ZQFastFPHitList(ZQHitList<ZQSimScore>* list, const ZQFingerPrint& query,
                     const ZQFPDatabaseOptions& options, const ZQScanRecords& records);

/// All scores in file order; none for a number that names no measure.
void ZQFastFPRaw(std::vector<double>& out, const ZQFingerPrint& query,
                 const ZQFPDatabaseOptions& options, const ZQScanRecords& records);

/// Hits and histogram of all scores, on the options' number of threads from 1000 records on.
void ZQFastFPResult(ZQSimSearchResultImpl* result, const ZQFingerPrint& query,
                    const ZQFPDatabaseOptions& options, const ZQScanRecords& records);
/// A worker of `ZQFastFPResult`: takes batches of records from the cursor until none is left,
/// and merges its hits and histogram into the result at the end.
void ZQFastFPResultThread(std::atomic<unsigned long>& cursor, unsigned long batch,
                          ZQSimSearchResultImpl* result, const ZQFingerPrint& query,
                          const ZQFPDatabaseOptions& options, const ZQScanRecords& records);

// Many queries against all records.

/// What `ZQFastFPHitList` does for each query and the list at the same place. Records are read
/// once for many queries; queries are shared out over the options' number of threads, and no
/// list depends on that number.
void ZQFastFPHitLists(const std::vector<std::unique_ptr<ZQHitList<ZQSimScore>>>& lists,
                      const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options,
                      const ZQScanRecords& records);

// All records against all. Tversky, which isn't symmetric, takes every ordered pair.

/// The matrix of scores, row-major.
void ZQFastFPAllScores(std::vector<float>& out, const ZQFPDatabaseOptions& options,
                       const ZQScanRecords& records);

/// The distribution of the scores of all pairs i < j; by Tversky of all n * n.
void ZQFastFPHistogram(ZQFPHistogram& histogram, const ZQFPDatabaseOptions& options,
                       const ZQScanRecords& records);

/// One less the score, and the difference of `values`, one for each record, of all pairs i < j.
/// Tversky, or another number of values, is an assertion failure.
void ZQFastFPVariogram(ZQFPVariogram& variogram, const std::vector<float>& values,
                       const ZQFPDatabaseOptions& options, const ZQScanRecords& records);

/// For each record as row the `k` greatest scores, itself included, best first, among equals
/// the higher id first; with a cutoff only those above it, and those equal to it whose id isn't 0.
/// Appends to `out`.
void ZQFastFPSparseMatrix(std::vector<ZQSimScorePair>& out, const ZQFPDatabaseOptions& options,
                          const ZQScanRecords& records, unsigned long k);
/// The same with the lists of `band` rows kept at once, which changes memory and time alone:
/// scores of rows of one band are used both ways if the band is all rows or whole blocks of 64.
void ZQFastFPSparseMatrixInBands(std::vector<ZQSimScorePair>& out,
                                 const ZQFPDatabaseOptions& options, const ZQScanRecords& records,
                                 unsigned long k, unsigned long band);

}  // namespace ZQKorvex
