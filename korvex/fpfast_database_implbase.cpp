#include "korvex/fpfast_database_implbase_local.h"

#include <utility>

#include "korvex/fpfast_queries_local.h"

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
  return ZQGetSortedHits(query, options, *records);
}

std::vector<ZQIter<ZQSimScore>> ZQFastFPDatabaseImplBase::GetSortedScores(
    const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options) const {
  const auto records = GetScanRecords("ZQFastFPDatabase::GetSortedScores() :");
  if (!records) return std::vector<ZQIter<ZQSimScore>>(queries.size());
  return ZQGetSortedHits(queries, options, *records);
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
  const auto records = GetScanRecords("ZQFastFPDatabase::GetSparseMatrix() :");
  if (!records) return {};
  return ZQGetSparseMatrix(options, *records, "ZQFastFPDatabase::GetSparseMatrix()",
                           GetMemoryType() == ZQFastFPDatabaseMemoryType::InMemory);
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
