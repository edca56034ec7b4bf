#pragma once

/// The nearest other records of each record of a database.

#include <cstdint>
#include <functional>

#include "korvex/fpfast_database.h"
#include "korvex/fps_database.h"

namespace ZQKorvex {

/// Calls `visit` for each pair of a record and one of its nearest others, records ascending, the
/// others by descending score: for each record at most the options' limit, 0 for all, and with a
/// cutoff none that scores below it. Unlike `GetSparseMatrix`, without the record itself, with any
/// limit, and with the same rule at the cutoff for all records. Returns the number of pairs: none
/// after a warning, as of `GetSparseMatrix`. The time grows with the square of the number of
/// records, the memory with limit and records, 24 bytes for each pair.
ZQ_EXPORT std::uint64_t ZQVisitNeighbors(const ZQFastFPDatabase& database,
                                         const ZQFPDatabaseOptions& options,
                                         const std::function<void(const ZQSimScorePair&)>& visit);
ZQ_EXPORT std::uint64_t ZQVisitNeighbors(const ZQFPSDatabase& database,
                                         const ZQFPDatabaseOptions& options,
                                         const std::function<void(const ZQSimScorePair&)>& visit);

}  // namespace ZQKorvex
