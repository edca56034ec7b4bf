#include "korvex/fpdatabase_unhashed_local.h"

#include <algorithm>
#include <functional>

#include "korvex/fpkinds.h"
#include "korvex/fptext_local.h"

namespace ZQKorvex {

namespace {

constexpr const char* setSimFuncCaller = "ZQFPDatabase::SetSimFunc()";

}  // namespace

ZQFPDatabaseImplUnhashed::ZQFPDatabaseImplUnhashed(const ZQFPTypeBase* type)
    : ZQFPDatabaseImplBase(type), simFunc_(std::make_unique<ZQTanimotoUnhashedSim>()) {
  const ZQFPKind* kind = ZQFindFPKind(type);
  ZQ_ASSERT(kind && kind->IsUnhashed());
}

// Tanimoto is the only measure, so `simFunc_` stays.

void ZQFPDatabaseImplUnhashed::SetSimFunc(unsigned int measure, bool descending) {
  SetDescendingOrder(descending);
  if (measure != ZQSimMeasure::Tanimoto) {
    ZQThrow.Warning("%s unknown similarity measure", setSimFuncCaller);
  }
}

void ZQFPDatabaseImplUnhashed::SetSimFunc(const ZQSimFuncBase& func, bool descending) {
  SetDescendingOrder(descending);
  if (!dynamic_cast<const ZQTanimotoSim*>(&func)) {
    ZQThrow.Warning("%s user defined similarity measure not allowed with unhashed database",
                    setSimFuncCaller);
  }
}

ZQFPDatabaseImplUnhashed::Ids ZQFPDatabaseImplUnhashed::GetIds(const ZQFingerPrint& fp) const {
  const std::vector<std::string_view> tokens = ZQTokensOf(fp);
  Ids ids;
  ids.reserve(tokens.size());
  for (const std::string_view token : tokens) {
    auto found = pool_.find(token);
    if (found == pool_.end()) found = pool_.emplace(token).first;
    ids.push_back(&*found);
  }
  std::sort(ids.begin(), ids.end(), std::less<>());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  return ids;
}

unsigned int ZQFPDatabaseImplUnhashed::AddFP(const ZQFingerPrint& fp) {
  if (!CanAdd(fp)) return ZQFPDatabase::noIndex;
  ids_.resize(NumFingerPrints());  // longer after an addition that ran out of memory
  ids_.push_back(GetIds(fp));
  return ZQFPDatabaseImplBase::AddFP(fp);
}

ZQIter<ZQSimScore> ZQFPDatabaseImplUnhashed::GetScores(const ZQFingerPrint& query,
                                                       unsigned int begin, unsigned int end) const {
  if (!CheckType(query, "ZQFPDatabase::GetScores() ")) return {};
  return FindScores(begin, end, GetFilter(), ScoreOf(GetIds(query)));
}

ZQIter<ZQSimScore> ZQFPDatabaseImplUnhashed::GetSortedScores(const ZQFingerPrint& query,
                                                             unsigned int limit, unsigned int begin,
                                                             unsigned int end) const {
  if (!CheckType(query, "ZQFPDatabase::GetSortedScores() ")) return {};
  return FindSortedScores(limit, begin, end, GetFilter(), ScoreOf(GetIds(query)));
}

ZQIter<ZQSimScore> ZQFPDatabaseImplUnhashed::GetScores(const ZQFingerPrint&,
                                                       const ZQFPDatabaseOptions&) const {
  ZQThrow.Warning("ZQFPDatabase::GetScores() has not been implemented yet!");
  return {};
}

ZQIter<ZQSimScore> ZQFPDatabaseImplUnhashed::GetSortedScores(const ZQFingerPrint&,
                                                             const ZQFPDatabaseOptions&) const {
  ZQThrow.Warning("ZQFPDatabase::GetSortedScores() has not been implemented yet!");
  return {};
}

}  // namespace ZQKorvex
