#include "korvex/fpfast_queries_local.h"

#include <algorithm>
#include <utility>

#include "korvex/checked_local.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

ZQIter<ZQSimScore> ZQMakeHitIter(std::unique_ptr<ZQHitList<ZQSimScore>> list) {
  if (!list->SortScores(true)) return {};
  ZQCheckedUnsigned(list->GetItems().size());
  return new ZQHitListIter<ZQSimScore>(std::move(list));
}

ZQIter<ZQSimScore> ZQGetSortedHits(const ZQFingerPrint& query, const ZQFPDatabaseOptions& options,
                                   const ZQScanRecords& records) {
  auto list = ZQInitFPDatabaseHitList(ZQCheckedUnsigned(records.count), options);
  ZQFastFPHitList(list.get(), query, options, records);
  return ZQMakeHitIter(std::move(list));
}

std::vector<ZQIter<ZQSimScore>> ZQGetSortedHits(const std::vector<ZQFingerPrint>& queries,
                                                const ZQFPDatabaseOptions& options,
                                                const ZQScanRecords& records) {
  std::vector<ZQIter<ZQSimScore>> hits(queries.size());
  // Fewer queries than threads are scanned one by one, each by all threads.
  if (queries.size() <= 1 || queries.size() < options.GetNumProcessors()) {
    std::transform(queries.begin(), queries.end(), hits.begin(), [&](const ZQFingerPrint& query) {
      return ZQGetSortedHits(query, options, records);
    });
    return hits;
  }
  const unsigned int count = ZQCheckedUnsigned(records.count);
  std::vector<std::unique_ptr<ZQHitList<ZQSimScore>>> lists(queries.size());
  for (auto& list : lists) list = ZQInitFPDatabaseHitList(count, options);
  ZQFastFPHitLists(lists, queries, options, records);
  std::transform(lists.begin(), lists.end(), hits.begin(),
                 [](auto& list) { return ZQMakeHitIter(std::move(list)); });
  return hits;
}

bool ZQIsKnownMeasure(const ZQFPDatabaseOptions& options, const char* caller) {
  if (ZQSimMeasure::IsValid(options.GetSimFunc())) return true;
  ZQThrow.Warning("%s : unknown similarity measure type %d!", caller,
                  static_cast<int>(options.GetSimFunc()));
  return false;
}

ZQIter<ZQSimScorePair> ZQGetSparseMatrix(const ZQFPDatabaseOptions& options,
                                         const ZQScanRecords& records, const char* caller,
                                         bool isInMemory) {
  std::uint64_t limit = options.GetLimit();
  if (limit > records.count) {
    // The messages have signed numbers of 32 bits; greater ones wrap.
    ZQThrow.Warning(
        isInMemory
            ? "%s : set to retrieve more nearest neighbors (%d) than there are fingerprints (%d)."
            : "%s set to retrieve more nearest neighbors (%d) than there are fingerprints (%d)!",
        caller, static_cast<int>(limit), static_cast<int>(records.count));
    return {};
  }
  if (limit == 0) {
    ZQThrow.Warning("%s : set to retrieve all nxn scores!", caller);
    if (!options.HasCutoff()) {
      ZQThrow.Warning("%s : no cutoff specified, all results will be returned!", caller);
    }
    limit = records.count;
  }
  if (!ZQIsKnownMeasure(options, caller)) return {};
  std::vector<ZQSimScorePair> pairs;
  const bool reserved = ZQCatch(
      [&] {
        pairs.reserve(ZQSaturatedProduct(records.count, limit));
        return true;
      },
      [caller](const std::exception&) {
        ZQThrow.Warning("%s: not enough system memory to store results!", caller);
        return false;
      });
  if (!reserved) return {};
  ZQFastFPSparseMatrix(pairs, options, records, limit);
  return new ZQVectorIter<ZQSimScorePair>(std::move(pairs));
}

}  // namespace ZQKorvex
