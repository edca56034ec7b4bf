#pragma once

/// The database of kinds whose bits are counted: any measure, also one of the caller.

#include <memory>

#include "korvex/fpdatabase_implbase_local.h"

namespace ZQKorvex {

class ZQFPDatabaseImplStd : public ZQFPDatabaseImplBase {
 public:
  /// Any type but Lingo (an assertion).
  explicit ZQFPDatabaseImplStd(const ZQFPTypeBase* type);

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
  /// The score of the query and the fingerprint of an index.
  auto ScoreOf(const ZQFingerPrint& query, const ZQSimFuncBase& func) const {
    return [this, &query, &func](unsigned int i) { return func(query, GetFingerPrint(i)); };
  }

  std::unique_ptr<ZQSimFuncBase> simFunc_;
};

}  // namespace ZQKorvex
