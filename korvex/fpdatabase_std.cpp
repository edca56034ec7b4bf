#include "korvex/fpdatabase_std_local.h"

namespace ZQKorvex {

namespace {

constexpr const char* scoresCaller = "ZQFPDatabase::GetScores() ";
constexpr const char* sortedScoresCaller = "ZQFPDatabase::GetSortedScores() ";

std::unique_ptr<ZQSimFuncBase> MakeSimFunc(unsigned int measure, float alpha, float beta,
                                           const char* caller) {
  return ZQMakeSimFunc<ZQSimFuncBase, ZQFingerPrint>(measure, alpha, beta, caller);
}

std::unique_ptr<ZQSimFuncBase> GetSimFunc(const ZQFPDatabaseOptions& options) {
  return MakeSimFunc(options.GetSimFunc(), options.GetTverskyAlpha(), options.GetTverskyBeta(),
                     "ZQFPDatabase::GetSimFunc()");
}

}  // namespace

ZQFPDatabaseImplStd::ZQFPDatabaseImplStd(const ZQFPTypeBase* type)
    : ZQFPDatabaseImplBase(type), simFunc_(std::make_unique<ZQTanimotoSim>()) {
  ZQ_ASSERT(type->GetFPType() != ZQFPType::Lingo);
}

void ZQFPDatabaseImplStd::SetSimFunc(unsigned int measure, bool descending) {
  SetDescendingOrder(descending);
  simFunc_ = MakeSimFunc(measure, zqDatabaseAlpha, zqDatabaseBeta, "ZQFPDatabase::SetSimFunc()");
}

void ZQFPDatabaseImplStd::SetSimFunc(const ZQSimFuncBase& func, bool descending) {
  SetDescendingOrder(descending);
  std::unique_ptr<ZQSimFuncBase> copy(func.CreateCopy());
  if (ZQ_ASSERT(copy)) simFunc_ = std::move(copy);
}

ZQIter<ZQSimScore> ZQFPDatabaseImplStd::GetScores(const ZQFingerPrint& query, unsigned int begin,
                                                  unsigned int end) const {
  if (!CheckType(query, scoresCaller)) return {};
  return FindScores(begin, end, GetFilter(), ScoreOf(query, *simFunc_));
}

ZQIter<ZQSimScore> ZQFPDatabaseImplStd::GetSortedScores(const ZQFingerPrint& query,
                                                        unsigned int limit, unsigned int begin,
                                                        unsigned int end) const {
  if (!CheckType(query, sortedScoresCaller)) return {};
  return FindSortedScores(limit, begin, end, GetFilter(), ScoreOf(query, *simFunc_));
}

ZQIter<ZQSimScore> ZQFPDatabaseImplStd::GetScores(const ZQFingerPrint& query,
                                                  const ZQFPDatabaseOptions& options) const {
  if (!CheckType(query, scoresCaller)) return {};
  const auto func = GetSimFunc(options);
  return FindScores(0, NumFingerPrints(), ZQScoreFilter(options), ScoreOf(query, *func));
}

ZQIter<ZQSimScore> ZQFPDatabaseImplStd::GetSortedScores(const ZQFingerPrint& query,
                                                        const ZQFPDatabaseOptions& options) const {
  if (!CheckType(query, sortedScoresCaller)) return {};
  const auto func = GetSimFunc(options);
  return FindSortedScores(options.GetLimit(), 0, NumFingerPrints(), ZQScoreFilter(options),
                          ScoreOf(query, *func));
}

}  // namespace ZQKorvex
