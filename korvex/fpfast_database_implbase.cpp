#include "korvex/fpfast_database_implbase_local.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "korvex/checked_local.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

namespace {

template <class T>
ZQIter<T> MakeIter(std::vector<T>&& values) {
  return new ZQVectorIter<T>(std::move(values));
}

}  // namespace

ZQFastFPDatabaseImplBase::ZQFastFPDatabaseImplBase(const std::string& filename)
    : filename_(filename), in_(filename), params_(in_, filename) {
  const char* caller = "ZQFastFPDatabase::ZQFastFPDatabase()";
  valid_ = params_.IsValid();
  if (!valid_) ZQThrow.Warning("%s : cannot initialize object!", caller);
  popcountMethod_ = ZQGetPopCountMethod();
  valid_ = valid_ && popcountMethod_ != 0;
  // A bad header also causes this warning.
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

// Records and query fingerprints.

bool ZQFastFPDatabaseImplBase::GetFingerPrint(std::vector<std::uint64_t>& words,
                                              std::uint64_t& moleculeIndex, std::uint64_t& popcount,
                                              std::uint64_t index) const {
  words.clear();
  if (!ZQ_ASSERT(IsValid())) return false;
  if (index >= params_.NumFingerPrints()) {
    ZQThrow.Warning("%s : fingerprint index out of range!", "ZQFastFPDatabase::GetFingerPrint()");
    return false;
  }
  const std::uint64_t* record = GetRecord(index);
  if (!record) return false;
  moleculeIndex = record[0];
  popcount = record[1];
  words.assign(record + zqRecordPrefixWords, record + Stride());
  return true;
}

bool ZQFastFPDatabaseImplBase::GetFingerPrint(ZQFingerPrint& fp, std::uint64_t& moleculeIndex,
                                              std::uint64_t index) const {
  std::vector<std::uint64_t> words;
  std::uint64_t popcount = 0;
  if (GetFingerPrint(words, moleculeIndex, popcount, index) &&
      ZQConvertFP(fp, GetFPTypeBase(), words)) {
    return true;
  }
  ZQThrow.Warning("%s : cannot access fingerprint!", "ZQFastFPDatabase::GetFingerPrint()");
  return false;
}

bool ZQFastFPDatabaseImplBase::MakeQuery(ZQFingerPrint& fp, const ZQMolBase& mol,
                                         const std::string& caller) const {
  // A header may contain a type of which no fingerprint can be made.
  const ZQFPTypeBase* type = GetFPTypeBase();
  if (ZQCanMakeFP(type) && ZQMakeFP(fp, mol, type)) return true;
  ZQThrow.Warning("%s cannot generate fingerprint!", caller.c_str());
  return false;
}

bool ZQFastFPDatabaseImplBase::MakeQuery(ZQFingerPrint& fp, std::uint64_t index,
                                         const std::string& caller) const {
  if (!ZQ_ASSERT(index < NumFingerPrints())) return false;
  std::uint64_t moleculeIndex = 0;
  if (GetFingerPrint(fp, moleculeIndex, index)) return true;
  ZQThrow.Warning("%s cannot generate fingerprint!", caller.c_str());
  return false;
}

// The scans. The callers' names include the blank and colon of their messages, which one of them
// lacks.

std::optional<ZQScanRecords> ZQFastFPDatabaseImplBase::GetScanRecords(const char* caller) const {
  if (!ZQ_ASSERT(IsValid())) return {};
  if (!params_.FitsType()) {
    ZQThrow.Warning("%s fingerprints of %lu words in %s don't fit their type!", caller,
                    params_.NumWords(), filename_.c_str());
    return {};
  }
  const std::uint64_t* records = GetRecords(caller);
  if (!records) return {};
  const ZQPopCountFunc popcount = ZQGetPopCountFunc(popcountMethod_);
  if (!ZQ_ASSERT(popcount)) return {};
  return ZQScanRecords(records, params_.NumFingerPrints(), params_.NumWords(), popcount);
}

ZQIter<ZQSimScore> ZQFastFPDatabaseImplBase::MakeHitIter(
    std::unique_ptr<ZQHitList<ZQSimScore>> list) {
  if (!list->SortScores(true)) return {};
  ZQCheckedUnsigned(list->GetItems().size());
  return new ZQHitListIter<ZQSimScore>(std::move(list));
}

bool ZQFastFPDatabaseImplBase::IsKnownMeasure(const ZQFPDatabaseOptions& options,
                                              const char* caller) {
  if (ZQSimMeasure::IsValid(options.GetSimFunc())) return true;
  ZQThrow.Warning("%s : unknown similarity measure type %d!", caller,
                  static_cast<int>(options.GetSimFunc()));
  return false;
}

ZQIter<ZQSimScore> ZQFastFPDatabaseImplBase::GetScores(const ZQFingerPrint& query,
                                                       const ZQFPDatabaseOptions& options) const {
  const auto records = GetScanRecords("ZQFastFPDatabase::GetScores() :");
  if (!records) return {};
  std::vector<ZQSimScore> scores;
  ZQFastFPSimScore(scores, query, options, *records);
  if (scores.empty()) return {};
  return MakeIter(std::move(scores));
}

ZQIter<ZQSimScore> ZQFastFPDatabaseImplBase::GetSortedScores(
    const ZQFingerPrint& query, const ZQFPDatabaseOptions& options) const {
  const auto records = GetScanRecords("ZQFastFPDatabase::GetSortedScores() :");
  if (!records) return {};
  auto list = ZQInitFPDatabaseHitList(ZQCheckedUnsigned(NumFingerPrints()), options);
  ZQFastFPHitList(list.get(), query, options, *records);
  return MakeHitIter(std::move(list));
}

std::vector<ZQIter<ZQSimScore>> ZQFastFPDatabaseImplBase::GetSortedScores(
    const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options) const {
  std::vector<ZQIter<ZQSimScore>> hits(queries.size());
  const auto records = GetScanRecords("ZQFastFPDatabase::GetSortedScores() :");
  if (!records) return hits;
  const unsigned int count = ZQCheckedUnsigned(NumFingerPrints());
  std::vector<std::unique_ptr<ZQHitList<ZQSimScore>>> lists(queries.size());
  for (auto& list : lists) list = ZQInitFPDatabaseHitList(count, options);
  ZQFastFPHitLists(lists, queries, options, *records);
  std::transform(lists.begin(), lists.end(), hits.begin(),
                 [](auto& list) { return MakeHitIter(std::move(list)); });
  return hits;
}

ZQIter<double> ZQFastFPDatabaseImplBase::GetRawScores(const ZQFingerPrint& query,
                                                      const ZQFPDatabaseOptions& options) const {
  const auto records = GetScanRecords("ZQFastFPDatabase::GetRawScores() :");
  if (!records) return {};
  std::vector<double> scores;
  ZQFastFPRaw(scores, query, options, *records);
  return MakeIter(std::move(scores));
}

ZQIter<float> ZQFastFPDatabaseImplBase::GetAllScores(const ZQFPDatabaseOptions& options) const {
  const auto records = GetScanRecords("ZQFastFPDatabase::GetAllScores()");
  if (!records) return {};
  std::vector<float> scores;
  ZQFastFPAllScores(scores, options, *records);
  return MakeIter(std::move(scores));
}

ZQFPHistogram ZQFastFPDatabaseImplBase::GetHistogram(const ZQFPDatabaseOptions& options,
                                                     unsigned long bins) const {
  ZQFPHistogram histogram(bins, 0.0, 1.0);
  const auto records = GetScanRecords("ZQFastFPDatabase::GetHistogram() :");
  if (records) ZQFastFPHistogram(histogram, options, *records);
  return histogram;
}

ZQFPVariogram ZQFastFPDatabaseImplBase::GetVariogram(const std::vector<float>& values,
                                                     const ZQFPDatabaseOptions& options,
                                                     unsigned long bins) const {
  ZQFPVariogram variogram(bins, 0.0, 1.0);
  const auto records = GetScanRecords("ZQFastFPDatabase::GetVariogram() :");
  if (records) ZQFastFPVariogram(variogram, values, options, *records);
  return variogram;
}

ZQIter<ZQSimScorePair> ZQFastFPDatabaseImplBase::GetSparseMatrix(
    const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetSparseMatrix()";
  const auto records = GetScanRecords("ZQFastFPDatabase::GetSparseMatrix() :");
  if (!records) return {};
  std::uint64_t limit = options.GetLimit();
  if (limit > records->count) {
    // The messages have signed numbers of 32 bits; greater ones wrap.
    ZQThrow.Warning(
        GetMemoryType() == ZQFastFPDatabaseMemoryType::InMemory
            ? "%s : set to retrieve more nearest neighbors (%d) than there are fingerprints (%d)."
            : "%s set to retrieve more nearest neighbors (%d) than there are fingerprints (%d)!",
        caller, static_cast<int>(limit), static_cast<int>(records->count));
    return {};
  }
  if (limit == 0) {
    ZQThrow.Warning("%s : set to retrieve all nxn scores!", caller);
    if (!options.HasCutoff()) {
      ZQThrow.Warning("%s : no cutoff specified, all results will be returned!", caller);
    }
    limit = records->count;
  }
  if (!IsKnownMeasure(options, caller)) return {};
  std::vector<ZQSimScorePair> pairs;
  const bool reserved = ZQCatch(
      [&] {
        pairs.reserve(ZQSaturatedProduct(records->count, limit));
        return true;
      },
      [caller](const std::exception&) {
        ZQThrow.Warning("%s: not enough system memory to store results!", caller);
        return false;
      });
  if (!reserved) return {};
  ZQFastFPSparseMatrix(pairs, options, *records, limit);
  return MakeIter(std::move(pairs));
}

unsigned int ZQFastFPDatabaseImplBase::SortedSearch(ZQSimSearchResult& result,
                                                    const ZQFingerPrint& query,
                                                    const ZQFPDatabaseOptions& options) const {
  ZQSimSearchResultImpl& impl = result.GetImpl();
  if (!ZQ_ASSERT(IsValid()) ||
      !ZQ_ASSERT(impl.GetSearchStatus() == ZQSimSearchStatus::Uninitialized)) {
    return impl.GetSearchStatus();
  }
  const auto records = GetScanRecords("ZQFastFPDatabase::Search() :");
  if (!records || !impl.Init(NumFingerPrints(), options)) return impl.GetSearchStatus();
  impl.SetSearchStatus(ZQSimSearchStatus::InProgress);
  // After an exception the result is uninitialized.
  const struct Reset {
    ZQSimSearchResultImpl& impl;
    ~Reset() {
      if (impl.GetSearchStatus() == ZQSimSearchStatus::InProgress) {
        impl.SetSearchStatus(ZQSimSearchStatus::Uninitialized);
      }
    }
  } reset{impl};
  ZQFastFPResult(&impl, query, options, *records);
  impl.SetSearchStatus(ZQSimSearchStatus::Finished);
  return impl.GetSearchStatus();
}

}  // namespace ZQKorvex
