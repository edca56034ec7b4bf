#pragma once

/// The database of Lingo texts. The query's text is prepared once for a search. All searches use
/// the database's own measure, whatever the options say.

#include <memory>

#include "korvex/fpdatabase_implbase_local.h"
#include "korvex/measuresim_lingo.h"

namespace ZQKorvex {

class ZQFPDatabaseImplLingo : public ZQFPDatabaseImplBase {
 public:
  /// A Lingo type (an assertion).
  explicit ZQFPDatabaseImplLingo(const ZQFPTypeBase* type);

  void SetSimFunc(unsigned int measure, bool descending) override;
  void SetSimFunc(const ZQSimFuncBase& func, bool descending) override;
  ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query, unsigned int begin,
                               unsigned int end) const override;
  ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query, unsigned int limit,
                                     unsigned int begin, unsigned int end) const override;
  ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query,
                               const ZQFPDatabaseOptions& options) const override;
  ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query,
                                     const ZQFPDatabaseOptions& options) const override;

 private:
  ZQIter<ZQSimScore> Find(const ZQFingerPrint& query, unsigned int begin, unsigned int end,
                          const ZQScoreFilter& filter) const;
  ZQIter<ZQSimScore> FindSorted(const ZQFingerPrint& query, unsigned int limit, unsigned int begin,
                                unsigned int end, const ZQScoreFilter& filter) const;
  /// The score of the query and the fingerprint of an index.
  auto ScoreOf(const ZQLingoSim& query) const {
    return [this, &query](unsigned int i) { return (*simFunc_)(query, GetFingerPrint(i)); };
  }

  std::unique_ptr<ZQLingoSimFunc> simFunc_;
};

}  // namespace ZQKorvex
