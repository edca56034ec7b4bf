#include "korvex/fpfast_database_scan_impl_local.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <utility>

#include "korvex/checked_local.h"
#include "korvex/fpfast_kernels_local.h"

namespace ZQKorvex {

namespace {

template <class T>
ZQIter<T> MakeIter(std::vector<T>&& values) {
  return new ZQVectorIter<T>(std::move(values));
}

/// The best hits, best first.
ZQIter<ZQSimScore> MakeIter(std::unique_ptr<ZQHitList<ZQSimScore>> list) {
  if (!list->SortScores(true)) return {};
  ZQCheckedUnsigned(list->GetItems().size());
  return new ZQHitListIter<ZQSimScore>(std::move(list));
}

}  // namespace

// The callers' names carry the blank and colon of their messages, which one of them lacks.

template <class Scan>
bool ZQFastFPScanDatabaseImpl::WithRecords(const char* caller, Scan scan) const {
  if (!ZQ_ASSERT(IsValid())) return false;
  if (!params_.FitsType()) {
    ZQThrow.Warning("%s fingerprints of %lu words in %s don't fit their type!", caller,
                    params_.NumWords(), filename_.c_str());
    return false;
  }
  const std::uint64_t* records = nullptr;
  if (!GetRecords(records, caller)) return false;
  const ZQPopCountFunc popcount = ZQGetPopCountFunc(popcountMethod_);
  if (!ZQ_ASSERT(popcount)) return false;
  scan(records, params_.NumFingerPrints(), params_.NumWords(), popcount);
  return true;
}

ZQIter<ZQSimScore> ZQFastFPScanDatabaseImpl::GetScores(const ZQFingerPrint& query,
                                                       const ZQFPDatabaseOptions& options) const {
  std::vector<ZQSimScore> scores;
  WithRecords("ZQFastFPDatabase::GetScores() :",
              [&](auto... records) { ZQFastFPSimScore(scores, query, options, records...); });
  if (scores.empty()) return {};
  return MakeIter(std::move(scores));
}

ZQIter<ZQSimScore> ZQFastFPScanDatabaseImpl::GetSortedScores(
    const ZQFingerPrint& query, const ZQFPDatabaseOptions& options) const {
  ZQIter<ZQSimScore> hits;
  WithRecords("ZQFastFPDatabase::GetSortedScores() :", [&](auto... records) {
    auto list = ZQInitFPDatabaseHitList(ZQCheckedUnsigned(NumFingerPrints()), options);
    ZQFastFPHitList(list.get(), query, options, records...);
    hits = MakeIter(std::move(list));
  });
  return hits;
}

std::vector<ZQIter<ZQSimScore>> ZQFastFPScanDatabaseImpl::GetSortedScores(
    const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options) const {
  std::vector<ZQIter<ZQSimScore>> hits(queries.size());
  WithRecords("ZQFastFPDatabase::GetSortedScores() :", [&](auto... records) {
    const unsigned int count = ZQCheckedUnsigned(NumFingerPrints());
    std::vector<std::unique_ptr<ZQHitList<ZQSimScore>>> lists(queries.size());
    for (auto& list : lists) list = ZQInitFPDatabaseHitList(count, options);
    ZQFastFPHitLists(lists, queries, options, records...);
    std::transform(lists.begin(), lists.end(), hits.begin(),
                   [](auto& list) { return MakeIter(std::move(list)); });
  });
  return hits;
}

ZQIter<double> ZQFastFPScanDatabaseImpl::GetRawScores(const ZQFingerPrint& query,
                                                      const ZQFPDatabaseOptions& options) const {
  std::vector<double> scores;
  if (!WithRecords("ZQFastFPDatabase::GetRawScores() :",
                   [&](auto... records) { ZQFastFPRaw(scores, query, options, records...); })) {
    return {};
  }
  return MakeIter(std::move(scores));
}

ZQIter<float> ZQFastFPScanDatabaseImpl::GetAllScores(const ZQFPDatabaseOptions& options) const {
  std::vector<float> scores;
  if (!WithRecords("ZQFastFPDatabase::GetAllScores()",
                   [&](auto... records) { ZQFastFPAllScores(scores, options, records...); })) {
    return {};
  }
  return MakeIter(std::move(scores));
}

ZQFPHistogram ZQFastFPScanDatabaseImpl::GetHistogram(const ZQFPDatabaseOptions& options,
                                                     unsigned long bins) const {
  ZQFPHistogram histogram(bins, 0.0, 1.0);
  WithRecords("ZQFastFPDatabase::GetHistogram() :",
              [&](auto... records) { ZQFastFPHistogram(histogram, options, records...); });
  return histogram;
}

ZQFPVariogram ZQFastFPScanDatabaseImpl::GetVariogram(const std::vector<float>& values,
                                                     const ZQFPDatabaseOptions& options,
                                                     unsigned long bins) const {
  ZQFPVariogram variogram(bins, 0.0, 1.0);
  WithRecords("ZQFastFPDatabase::GetVariogram() :",
              [&](auto... records) { ZQFastFPVariogram(variogram, values, options, records...); });
  return variogram;
}

ZQIter<ZQSimScorePair> ZQFastFPScanDatabaseImpl::GetSparseMatrix(
    const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetSparseMatrix()";
  const char* callerColon = "ZQFastFPDatabase::GetSparseMatrix() :";
  ZQIter<ZQSimScorePair> result;
  WithRecords(callerColon, [&](const std::uint64_t* data, std::uint64_t numRecords,
                               std::uint64_t numWords, ZQPopCountFunc popcount) {
    std::uint64_t limit = options.GetLimit();
    if (limit > numRecords) {
      // The message has numbers of 32 bits with a sign; greater ones come out wrapped.
      WarnOfLimit(caller, static_cast<int>(limit), static_cast<int>(numRecords));
      return;
    }
    if (limit == 0) {
      ZQThrow.Warning("%s : set to retrieve all nxn scores!", caller);
      if (!options.HasCutoff()) {
        ZQThrow.Warning("%s : no cutoff specified, all results will be returned!", caller);
      }
      limit = numRecords;
    }
    if (!ZQSimMeasure::IsValid(options.GetSimFunc())) {
      ZQThrow.Warning("%s : unknown similarity measure type %d!", caller,
                      static_cast<int>(options.GetSimFunc()));
      return;
    }
    std::vector<ZQSimScorePair> pairs;
    try {
      pairs.reserve(ZQSaturatedProduct(numRecords, limit));
    } catch (const std::exception&) {
      ZQThrow.Warning("%s: not enough system memory to store results!", caller);
      return;
    }
    ZQFastFPSparseMatrix(pairs, options, data, numRecords, numWords, popcount, limit);
    result = MakeIter(std::move(pairs));
  });
  return result;
}

unsigned int ZQFastFPScanDatabaseImpl::SortedSearch(ZQSimSearchResult& result,
                                                    const ZQFingerPrint& query,
                                                    const ZQFPDatabaseOptions& options) const {
  if (!ZQ_ASSERT(IsValid()) ||
      !ZQ_ASSERT(result.GetSearchStatus() == ZQSimSearchStatus::Uninitialized)) {
    return result.GetSearchStatus();
  }
  ZQSimSearchResultImpl& impl = result.GetImpl();
  WithRecords("ZQFastFPDatabase::Search() :", [&](auto... records) {
    if (!impl.Init(NumFingerPrints(), options)) return;
    impl.SetSearchStatus(ZQSimSearchStatus::InProgress);
    try {
      ZQFastFPResult(&impl, query, options, records...);
    } catch (...) {
      impl.SetSearchStatus(ZQSimSearchStatus::Uninitialized);
      throw;
    }
    impl.SetSearchStatus(ZQSimSearchStatus::Finished);
  });
  return result.GetSearchStatus();
}

bool ZQFastFPScanDatabaseImpl::GetFingerPrint(std::vector<std::uint64_t>& words,
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
  words.assign(record + 2, record + Stride());
  return true;
}

}  // namespace ZQKorvex
