#pragma once

/// The database of unhashed kinds. Each token of its fingerprints is one string for the life of the
/// database, and a fingerprint is compared as the list of pointers to its distinct tokens
/// (measuresim_unhashed.h). Memory grows with the number of distinct tokens, queries' included.

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "korvex/fpdatabase_implbase_local.h"
#include "korvex/measuresim_unhashed.h"

namespace ZQKorvex {

class ZQFPDatabaseImplUnhashed : public ZQFPDatabaseImplBase {
 public:
  /// A type of an unhashed kind (an assertion).
  explicit ZQFPDatabaseImplUnhashed(const ZQFPTypeBase* type);

  void SetSimFunc(unsigned int measure, bool descending) override;
  void SetSimFunc(const ZQSimFuncBase& func, bool descending) override;
  unsigned int AddFP(const ZQFingerPrint& fp) override;
  ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query, unsigned int begin,
                               unsigned int end) const override;
  ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query, unsigned int limit,
                                     unsigned int begin, unsigned int end) const override;
  ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query,
                               const ZQFPDatabaseOptions& options) const override;
  ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query,
                                     const ZQFPDatabaseOptions& options) const override;

 private:
  /// Sorted by pointer.
  using Ids = std::vector<const std::string*>;

  /// The distinct tokens of a fingerprint. Adds new ones to the pool.
  Ids GetIds(const ZQFingerPrint& fp) const;
  /// The score of the query and the fingerprint of an index.
  auto ScoreOf(const Ids& query) const {
    return [this, &query](unsigned int i) { return (*simFunc_)(query, ids_[i]); };
  }

  mutable std::set<std::string, std::less<>> pool_;
  std::vector<Ids> ids_;  // of each fingerprint
  std::unique_ptr<ZQUnhashedSimFunc> simFunc_;
};

}  // namespace ZQKorvex
