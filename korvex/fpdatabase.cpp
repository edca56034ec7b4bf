#include "korvex/fpdatabase.h"

#include "korvex/fpdatabase_lingo_local.h"
#include "korvex/fpdatabase_std_local.h"
#include "korvex/fpdatabase_unhashed_local.h"
#include "korvex/fpkinds.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

namespace {

constexpr const char* addName = "ZQFPDatabase::AddFP()";
constexpr const char* setSimFuncName = "ZQFPDatabase::SetSimFunc()";
constexpr const char* scoresName = "ZQFPDatabase::GetScores()";
constexpr const char* sortedScoresName = "ZQFPDatabase::GetSortedScores()";

std::unique_ptr<ZQFPDatabaseImplBase> MakeImpl(const ZQFPKind* kind, const ZQFPTypeBase* type) {
  if (!kind) {
    ZQThrow.Error("ZQFPDatabase::ZQFPDatabase() unknown fingerprint type");
    return nullptr;
  }
  if (kind->IsUnhashed()) return std::make_unique<ZQFPDatabaseImplUnhashed>(type);
  if (kind->measures == ZQFPMeasures::Lingos) return std::make_unique<ZQFPDatabaseImplLingo>(type);
  return std::make_unique<ZQFPDatabaseImplStd>(type);
}

std::unique_ptr<ZQFPDatabaseImplBase> MakeImpl(unsigned int fptype) {
  const ZQFPKind* kind = ZQFindFPKind(fptype);
  return MakeImpl(kind, kind ? ZQGetFPType(fptype) : nullptr);
}

std::unique_ptr<ZQFPDatabaseImplBase> MakeImpl(const ZQFPTypeBase* type) {
  if (!ZQ_ASSERT(type)) return nullptr;
  return MakeImpl(ZQFindFPKind(type), type);
}

/// Returns the result of `call`, or `none` for an invalid database and after an exception.
template <class Call, class Result>
Result Run(const std::unique_ptr<ZQFPDatabaseImplBase>& impl, const char* caller, Call call,
           const Result& none) {
  if (!ZQ_ASSERT(impl)) return none;
  return ZQWarnOnFailure(
      caller, [&]() -> Result { return call(*impl); }, [&none] { return none; });
}

/// The same for a search.
template <class Search>
ZQIter<ZQSimScore> RunSearch(const std::unique_ptr<ZQFPDatabaseImplBase>& impl, const char* caller,
                             Search search) {
  return Run(impl, caller, search, ZQIter<ZQSimScore>());
}

/// The fingerprint of a query; it has no type if none can be made.
ZQFingerPrint MakeQuery(const std::unique_ptr<ZQFPDatabaseImplBase>& impl, const char* caller,
                        const ZQMolBase& mol) {
  return Run(
      impl, caller,
      [&mol](auto& base) {
        ZQFingerPrint fp;
        return ZQMakeFP(fp, mol, base.GetFPTypeBase()) ? fp : ZQFingerPrint();
      },
      ZQFingerPrint());
}

/// 0 stands for all fingerprints.
unsigned int AllIfZero(const ZQFPDatabaseImplBase& impl, unsigned int number) {
  return number == 0 ? impl.NumFingerPrints() : number;
}

ZQFPDatabaseOptions AllIfZero(const ZQFPDatabaseImplBase& impl, ZQFPDatabaseOptions options) {
  options.SetLimit(AllIfZero(impl, options.GetLimit()));
  return options;
}

}  // namespace

ZQFPDatabase::ZQFPDatabase(unsigned int fptype) : impl_(MakeImpl(fptype)) {}
ZQFPDatabase::ZQFPDatabase(const ZQFPTypeBase* type) : impl_(MakeImpl(type)) {}
ZQFPDatabase::~ZQFPDatabase() = default;

const ZQFPTypeBase* ZQFPDatabase::GetFPTypeBase() const {
  return ZQ_ASSERT(impl_) ? impl_->GetFPTypeBase() : nullptr;
}

unsigned int ZQFPDatabase::AddFP(const ZQFingerPrint& fp) {
  return Run(
      impl_, addName, [&](auto& impl) { return impl.AddFP(fp); }, noIndex);
}

unsigned int ZQFPDatabase::AddFP(const ZQMolBase& mol) {
  const ZQFingerPrint fp = MakeQuery(impl_, addName, mol);
  return fp ? AddFP(fp) : noIndex;
}

unsigned int ZQFPDatabase::NumFingerPrints() const {
  return ZQ_ASSERT(impl_) ? impl_->NumFingerPrints() : 0;
}

ZQIter<const ZQFingerPrint> ZQFPDatabase::GetFingerPrints() const {
  return Run(
      impl_, "ZQFPDatabase::GetFingerPrints()", [](auto& impl) { return impl.GetFingerPrints(); },
      ZQIter<const ZQFingerPrint>());
}

void ZQFPDatabase::SetSimFunc(unsigned int measure, bool descending) {
  Run(
      impl_, setSimFuncName,
      [&](auto& impl) {
        impl.SetSimFunc(measure, descending);
        return true;
      },
      false);
}

void ZQFPDatabase::SetSimFunc(const ZQSimFuncBase& func, bool descending) {
  Run(
      impl_, setSimFuncName,
      [&](auto& impl) {
        impl.SetSimFunc(func, descending);
        return true;
      },
      false);
}

void ZQFPDatabase::SetCutoff(float cutoff) {
  if (ZQ_ASSERT(impl_)) impl_->SetCutoff(cutoff);
}

void ZQFPDatabase::ClearCutoff() {
  if (ZQ_ASSERT(impl_)) impl_->ClearCutoff();
}

bool ZQFPDatabase::HasCutoff() const { return ZQ_ASSERT(impl_) && impl_->HasCutoff(); }

float ZQFPDatabase::GetCutoff() const { return ZQ_ASSERT(impl_) ? impl_->GetCutoff() : 0; }

void ZQFPDatabase::SetDescendingOrder(bool descending) {
  if (ZQ_ASSERT(impl_)) impl_->SetDescendingOrder(descending);
}

bool ZQFPDatabase::GetDescendingOrder() const {
  return ZQ_ASSERT(impl_) && impl_->GetDescendingOrder();
}

ZQIter<ZQSimScore> ZQFPDatabase::GetScores(const ZQFingerPrint& query, unsigned int begin,
                                           unsigned int end) const {
  return RunSearch(impl_, scoresName, [&](const auto& impl) {
    return impl.GetScores(query, begin, AllIfZero(impl, end));
  });
}

ZQIter<ZQSimScore> ZQFPDatabase::GetScores(const ZQMolBase& query, unsigned int begin,
                                           unsigned int end) const {
  const ZQFingerPrint fp = MakeQuery(impl_, scoresName, query);
  if (!fp) return {};
  return GetScores(fp, begin, end);
}

ZQIter<ZQSimScore> ZQFPDatabase::GetSortedScores(const ZQFingerPrint& query, unsigned int limit,
                                                 unsigned int begin, unsigned int end) const {
  return RunSearch(impl_, sortedScoresName, [&](const auto& impl) {
    return impl.GetSortedScores(query, AllIfZero(impl, limit), begin, AllIfZero(impl, end));
  });
}

ZQIter<ZQSimScore> ZQFPDatabase::GetSortedScores(const ZQMolBase& query, unsigned int limit,
                                                 unsigned int begin, unsigned int end) const {
  const ZQFingerPrint fp = MakeQuery(impl_, sortedScoresName, query);
  if (!fp) return {};
  return GetSortedScores(fp, limit, begin, end);
}

ZQIter<ZQSimScore> ZQFPDatabase::GetScores(const ZQFingerPrint& query,
                                           const ZQFPDatabaseOptions& options) const {
  return RunSearch(impl_, scoresName,
                   [&](const auto& impl) { return impl.GetScores(query, options); });
}

ZQIter<ZQSimScore> ZQFPDatabase::GetScores(const ZQMolBase& query,
                                           const ZQFPDatabaseOptions& options) const {
  const ZQFingerPrint fp = MakeQuery(impl_, scoresName, query);
  if (!fp) return {};
  return GetScores(fp, options);
}

ZQIter<ZQSimScore> ZQFPDatabase::GetSortedScores(const ZQFingerPrint& query,
                                                 const ZQFPDatabaseOptions& options) const {
  return RunSearch(impl_, sortedScoresName, [&](const auto& impl) {
    return impl.GetSortedScores(query, AllIfZero(impl, options));
  });
}

ZQIter<ZQSimScore> ZQFPDatabase::GetSortedScores(const ZQMolBase& query,
                                                 const ZQFPDatabaseOptions& options) const {
  const ZQFingerPrint fp = MakeQuery(impl_, sortedScoresName, query);
  if (!fp) return {};
  return GetSortedScores(fp, options);
}

}  // namespace ZQKorvex
