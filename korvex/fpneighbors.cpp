#include "korvex/fpneighbors.h"

#include <algorithm>
#include <cmath>

namespace ZQKorvex {

namespace {

template <class Database>
std::uint64_t VisitNeighbors(const Database& database, ZQFPDatabaseOptions options,
                             const std::function<void(const ZQSimScorePair&)>& visit) {
  const std::uint64_t records = database.NumFingerPrints();
  if (records == 0) return 0;
  const std::uint64_t limit = options.GetLimit() == 0 ? records : options.GetLimit();
  // A record is one of its own neighbours in the matrix.
  options.SetLimit(static_cast<unsigned int>(std::min(limit + 1, records)));
  // The matrix excludes record 0 at the cutoff itself.
  const float cutoff = options.GetCutoff();
  const bool hasCutoff = options.HasCutoff();
  if (hasCutoff) options.SetCutoff(std::nextafter(cutoff, -1.0F));
  std::uint64_t row = 0;
  std::uint64_t numOfRow = 0;
  std::uint64_t numVisited = 0;
  for (auto pair = database.GetSparseMatrix(options); pair; ++pair) {
    if (pair->GetIdx1() != row) numOfRow = 0;
    row = pair->GetIdx1();
    if (pair->GetIdx2() == row || numOfRow == limit) continue;
    if (hasCutoff && pair->GetScore() < double{cutoff}) continue;
    visit(*pair);
    ++numOfRow;
    ++numVisited;
  }
  return numVisited;
}

}  // namespace

std::uint64_t ZQVisitNeighbors(const ZQFastFPDatabase& database, const ZQFPDatabaseOptions& options,
                               const std::function<void(const ZQSimScorePair&)>& visit) {
  return VisitNeighbors(database, options, visit);
}

std::uint64_t ZQVisitNeighbors(const ZQFPSDatabase& database, const ZQFPDatabaseOptions& options,
                               const std::function<void(const ZQSimScorePair&)>& visit) {
  return VisitNeighbors(database, options, visit);
}

}  // namespace ZQKorvex
