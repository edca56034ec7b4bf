#include "korvex/fpfast_database_implbase_local.h"

#include "korvex/fpfast_local.h"
#include "korvex/simsearch_result_impl_local.h"

namespace ZQKorvex {

ZQFastFPDatabaseImplBase::ZQFastFPDatabaseImplBase(const std::string& filename)
    : filename_(filename), in_(filename), params_(in_, filename) {
  const char* caller = "ZQFastFPDatabase::ZQFastFPDatabase()";
  valid_ = params_.IsValid();
  if (!valid_) ZQThrow.Warning("%s : cannot initialize object!", caller);
  popcountMethod_ = ZQGetPopCountMethod();
  valid_ = valid_ && popcountMethod_ != 0;
  // A bad header is reported by this line, too.
  if (!valid_) ZQThrow.Warning("%s : no pop count support!", caller);
}

const ZQFPTypeBase* ZQFastFPDatabaseImplBase::GetFPTypeBase() const {
  ZQ_ASSERT(IsValid() && params_.IsValid());
  return params_.GetFPTypeBase();
}

std::uint64_t ZQFastFPDatabaseImplBase::NumFingerPrints() const {
  ZQ_ASSERT(IsValid() && params_.IsValid());
  return params_.NumFingerPrints();
}

bool ZQFastFPDatabaseImplBase::GetFingerPrint(ZQFingerPrint& fp, std::uint64_t index) const {
  std::vector<std::uint64_t> words;
  std::uint64_t moleculeIndex = 0;
  std::uint64_t popcount = 0;
  if (GetFingerPrint(words, moleculeIndex, popcount, index) &&
      ZQConvertFP(fp, GetFPTypeBase(), words)) {
    return true;
  }
  ZQThrow.Warning("%s : cannot access fingerprint!", "ZQFastFPDatabase::GetFingerPrint()");
  return false;
}

bool ZQFastFPDatabaseImplBase::MakeQuery(ZQFingerPrint& fp, const ZQMolBase& mol,
                                         const char* caller) const {
  // A header may name a type of which no fingerprint can be made.
  const ZQFPTypeBase* type = GetFPTypeBase();
  if (ZQCanMakeFP(type) && ZQMakeFP(fp, mol, type)) return true;
  ZQThrow.Warning("%s cannot generate fingerprint!", caller);
  return false;
}

bool ZQFastFPDatabaseImplBase::MakeQuery(ZQFingerPrint& fp, std::uint64_t index,
                                         const char* caller) const {
  if (!ZQ_ASSERT(index < NumFingerPrints())) return false;
  if (GetFingerPrint(fp, index)) return true;
  ZQThrow.Warning("%s cannot generate fingerprint!", caller);
  return false;
}

// The callers' names carry the blank and colon of their messages, which two of them lack.

ZQIter<ZQSimScore> ZQFastFPDatabaseImplBase::GetScores(const ZQMolBase& query,
                                                       const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(fp, query, "ZQFastFPDatabase::GetScores() :")) return {};
  return GetScores(fp, options);
}

ZQIter<ZQSimScore> ZQFastFPDatabaseImplBase::GetScores(std::uint64_t index,
                                                       const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(fp, index, "ZQFastFPDatabase::GetScores() :")) return {};
  return GetScores(fp, options);
}

ZQIter<ZQSimScore> ZQFastFPDatabaseImplBase::GetSortedScores(
    const ZQMolBase& query, const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(fp, query, "ZQFastFPDatabase::GetSortedScores() :")) return {};
  return GetSortedScores(fp, options);
}

ZQIter<ZQSimScore> ZQFastFPDatabaseImplBase::GetSortedScores(
    std::uint64_t index, const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(fp, index, "ZQFastFPDatabase::GetSortedScores() :")) return {};
  return GetSortedScores(fp, options);
}

ZQIter<double> ZQFastFPDatabaseImplBase::GetRawScores(const ZQMolBase& query,
                                                      const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(fp, query, "ZQFastFPDatabase::GetRawScores()")) return {};
  return GetRawScores(fp, options);
}

ZQIter<double> ZQFastFPDatabaseImplBase::GetRawScores(std::uint64_t index,
                                                      const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(fp, index, "ZQFastFPDatabase::GetRawScores() :")) return {};
  return GetRawScores(fp, options);
}

unsigned int ZQFastFPDatabaseImplBase::SortedSearch(ZQSimSearchResult& result,
                                                    const ZQMolBase& query,
                                                    const ZQFPDatabaseOptions& options) const {
  result.GetImpl().SetSearchStatus(ZQSimSearchStatus::Uninitialized);
  ZQFingerPrint fp;
  if (!MakeQuery(fp, query, "ZQFastFPDatabase::SortedSearch()")) return result.GetSearchStatus();
  return SortedSearch(result, fp, options);
}

}  // namespace ZQKorvex
