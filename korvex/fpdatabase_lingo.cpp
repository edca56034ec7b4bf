#include "korvex/fpdatabase_lingo_local.h"

#include <string>

#include "korvex/fptext_local.h"

namespace ZQKorvex {

namespace {

constexpr const char* setSimFuncCaller = "ZQFPDatabase::SetSimFunc()";
constexpr const char* scoresCaller = "ZQFPDatabase::GetScores()";
constexpr const char* sortedScoresCaller = "ZQFPDatabase::GetSortedScores()";

std::unique_ptr<ZQLingoSimFunc> MakeSimFunc(unsigned int measure) {
  return ZQMakeSimFunc<ZQLingoSimFunc, ZQLingoSim>(measure, zqDatabaseAlpha, zqDatabaseBeta,
                                                   setSimFuncCaller);
}

ZQLingoSim PrepareQuery(const ZQFingerPrint& query, const char* caller) {
  ZQLingoSim prepared(std::string(ZQTextOf(query)).c_str(), 1);
  if (!prepared.IsValid()) ZQThrow.Warning("%s cannot initialize lingo similarity!", caller);
  return prepared;
}

}  // namespace

ZQFPDatabaseImplLingo::ZQFPDatabaseImplLingo(const ZQFPTypeBase* type)
    : ZQFPDatabaseImplBase(type), simFunc_(std::make_unique<ZQTanimotoLingoSim>()) {
  ZQ_ASSERT(type->GetFPType() == ZQFPType::Lingo);
}

void ZQFPDatabaseImplLingo::SetSimFunc(unsigned int measure, bool descending) {
  SetDescendingOrder(descending);
  simFunc_ = MakeSimFunc(measure);
}

void ZQFPDatabaseImplLingo::SetSimFunc(const ZQSimFuncBase& func, bool descending) {
  SetDescendingOrder(descending);
  unsigned int measure = ZQSimMeasure::Tanimoto;
  if (dynamic_cast<const ZQTverskySim*>(&func)) {
    measure = ZQSimMeasure::Tversky;
  } else if (!dynamic_cast<const ZQTanimotoSim*>(&func)) {
    ZQThrow.Warning("%s user defined similarity measure not allowed with Lingo database",
                    setSimFuncCaller);
  }
  simFunc_ = MakeSimFunc(measure);
}

ZQIter<ZQSimScore> ZQFPDatabaseImplLingo::Find(const ZQFingerPrint& query, unsigned int begin,
                                               unsigned int end,
                                               const ZQScoreFilter& filter) const {
  const ZQLingoSim prepared = PrepareQuery(query, scoresCaller);
  if (!prepared.IsValid()) return {};
  return FindScores(begin, end, filter, ScoreOf(prepared));
}

ZQIter<ZQSimScore> ZQFPDatabaseImplLingo::FindSorted(const ZQFingerPrint& query, unsigned int limit,
                                                     unsigned int begin, unsigned int end,
                                                     const ZQScoreFilter& filter) const {
  const ZQLingoSim prepared = PrepareQuery(query, sortedScoresCaller);
  if (!prepared.IsValid()) return {};
  return FindSortedScores(limit, begin, end, filter, ScoreOf(prepared));
}

// One of the four texts of the warning has no blank, which scripts may compare.

ZQIter<ZQSimScore> ZQFPDatabaseImplLingo::GetScores(const ZQFingerPrint& query, unsigned int begin,
                                                    unsigned int end) const {
  if (!CheckType(query, "ZQFPDatabase::GetScores() ")) return {};
  return Find(query, begin, end, GetFilter());
}

ZQIter<ZQSimScore> ZQFPDatabaseImplLingo::GetSortedScores(const ZQFingerPrint& query,
                                                          unsigned int limit, unsigned int begin,
                                                          unsigned int end) const {
  if (!CheckType(query, "ZQFPDatabase::GetSortedScores()")) return {};
  return FindSorted(query, limit, begin, end, GetFilter());
}

ZQIter<ZQSimScore> ZQFPDatabaseImplLingo::GetScores(const ZQFingerPrint& query,
                                                    const ZQFPDatabaseOptions& options) const {
  if (!CheckType(query, "ZQFPDatabase::GetScores() ")) return {};
  return Find(query, 0, NumFingerPrints(), ZQScoreFilter(options));
}

ZQIter<ZQSimScore> ZQFPDatabaseImplLingo::GetSortedScores(
    const ZQFingerPrint& query, const ZQFPDatabaseOptions& options) const {
  if (!CheckType(query, "ZQFPDatabase::GetSortedScores() ")) return {};
  return FindSorted(query, options.GetLimit(), 0, NumFingerPrints(), ZQScoreFilter(options));
}

}  // namespace ZQKorvex
