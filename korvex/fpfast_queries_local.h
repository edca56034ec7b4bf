#pragma once

/// The queries over records in memory that the fast database and others share: kernels, and the
/// results as iterators. Exceptions pass through.

#include <memory>
#include <vector>

#include "korvex/fpfast_kernels_local.h"

namespace ZQKorvex {

/// The best hits of a list, best first.
ZQIter<ZQSimScore> ZQMakeHitIter(std::unique_ptr<ZQHitList<ZQSimScore>> list);

/// The best hits of a query, or of each of many in one pass on the options' number of threads.
ZQIter<ZQSimScore> ZQGetSortedHits(const ZQFingerPrint& query, const ZQFPDatabaseOptions& options,
                                   const ZQScanRecords& records);
std::vector<ZQIter<ZQSimScore>> ZQGetSortedHits(const std::vector<ZQFingerPrint>& queries,
                                                const ZQFPDatabaseOptions& options,
                                                const ZQScanRecords& records);

/// For queries whose options weren't checked. False after the warning "%s : unknown similarity
/// measure type %d!".
bool ZQIsKnownMeasure(const ZQFPDatabaseOptions& options, const char* caller);

/// The nearest neighbours of each record (`ZQFastFPSparseMatrix`), after checks with warnings that
/// begin with `caller`. The text about too high a limit differs with the place of the records.
ZQIter<ZQSimScorePair> ZQGetSparseMatrix(const ZQFPDatabaseOptions& options,
                                         const ZQScanRecords& records, const char* caller,
                                         bool isInMemory);

}  // namespace ZQKorvex
