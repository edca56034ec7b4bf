#include "korvex/fpfast_kernels_local.h"

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <limits>
#include <mutex>
#include <utility>

#include "korvex/checked_local.h"
#include "korvex/fpfast_local.h"
#include "korvex/pairtracer_local.h"
#include "korvex/threads_local.h"

namespace ZQKorvex {

namespace {

struct alignas(64) Scores : std::array<double, zqBlockRecords> {};

/// Calls `visit(begin, n)` for each block of the records from `begin` to `end`.
template <class Visit>
void ForBlocks(std::uint64_t begin, std::uint64_t end, Visit visit) {
  for (; begin < end; begin += zqBlockRecords) {
    visit(begin, static_cast<std::size_t>(std::min<std::uint64_t>(zqBlockRecords, end - begin)));
  }
}

/// Calls `visit(i)` for each set bit i, lowest first.
template <class Visit>
void ForBits(std::uint64_t bits, Visit visit) {
  for (; bits != 0; bits &= bits - 1) visit(static_cast<std::size_t>(std::countr_zero(bits)));
}

/// The words and the count of a query.
class Query {
 public:
  Query(const ZQFingerPrint& fp, const ZQScanRecords& records) {
    // The number of words is checked before counting: the function takes whole units only.
    ZQConvertFP(words_, fp);
    valid_ = ZQ_ASSERT(words_.size() == records.numWords);
    if (valid_) count_ = records.popcount(words_.data(), words_.size());
  }

  bool IsValid() const { return valid_; }
  ZQScoredRow Row() const { return {words_.data(), count_}; }

 private:
  std::vector<std::uint64_t> words_;
  std::uint64_t count_ = 0;
  bool valid_ = false;
};

/// Adds the scores of the records from `begin` on to a list. The bar excludes nearly all.
void Offer(ZQHitList<ZQSimScore>& list, const ZQScorer& scorer, const ZQRecords& records,
           std::uint64_t begin, std::size_t n, const Scores& scores, bool descending) {
  const double bar = list.GetBar().GetScore();
  ForBits(scorer.Variant().reaching(scores.data(), n, bar, descending),
          [&](std::size_t i) { list.UpdateScores(ZQSimScore(records.Id(begin + i), scores[i])); });
}

/// Counts scores into the bins of a histogram, a block at a time.
class BinCounter {
 public:
  BinCounter(ZQFPHistogram& histogram, const ZQScanVariant& variant)
      : histogram_(histogram),
        variant_(variant),
        bins_(histogram.NumBins()),
        fast_(bins_ > 0 && bins_ <= maxBins && histogram.GetBinSize() > 0.0),
        counts_(fast_ ? zqBinLanes * bins_ : 0) {}
  BinCounter(const BinCounter&) = delete;
  BinCounter& operator=(const BinCounter&) = delete;

  void Add(const double* scores, std::size_t n) {
    std::array<std::uint32_t, zqBlockRecords> places;
    if (fast_ && variant_.bin(scores, n, histogram_.GetMinValue(), histogram_.GetMaxValue(),
                              histogram_.GetBinSize(), static_cast<std::uint32_t>(bins_ - 1),
                              places.data())) {
#pragma GCC unroll 8
      for (std::size_t i = 0; i < n; ++i) ++counts_[places[i]];
    } else {
      for (std::size_t i = 0; i < n; ++i) histogram_.AddSample(scores[i]);
    }
  }

  /// Adds the counts to the histogram.
  void Finish() {
    if (!fast_) return;
    std::vector<unsigned long> totals(bins_);
    for (std::size_t i = 0; i < counts_.size(); ++i) totals[i / zqBinLanes] += counts_[i];
    histogram_ += ZQFPHistogram(totals, histogram_.GetMinValue(), histogram_.GetMaxValue());
  }

 private:
  static constexpr std::size_t maxBins = std::size_t{1} << 16;

  ZQFPHistogram& histogram_;
  const ZQScanVariant& variant_;
  std::size_t bins_;
  bool fast_;
  std::vector<unsigned long> counts_;
};

}  // namespace

ZQScanRecords::ZQScanRecords(const unsigned long* first, unsigned long numRecords,
                             unsigned long wordsOfEach, ZQPopCountFunc function)
    : ZQRecords{first, numRecords, wordsOfEach}, popcount(function) {}

// Without an image there is one record, at a null address, which `AreThere` rejects.
ZQScanRecords::ZQScanRecords(const unsigned long* image, ZQPopCountFunc function)
    : ZQScanRecords(image ? image + zqHeaderWords : nullptr,
                    image ? image[zqNumRecordsPosition] : 1, image ? image[zqNumWordsPosition] : 0,
                    function) {}

bool ZQScanRecords::AreThere() const { return ZQ_ASSERT((data || count == 0) && popcount); }

// One query against all records.

void ZQFastFPSimScore(std::vector<ZQSimScore>& out, const ZQFingerPrint& query,
                      const ZQFPDatabaseOptions& options, const ZQScanRecords& records) {
  out.clear();
  if (!records.AreThere()) return;
  const Query converted(query, records);
  if (!converted.IsValid()) return;
  out.reserve(records.count);
  ZQScorer scorer(options, records, records.popcount);
  const double cutoff = options.GetCutoff();
  Scores scores;
  ForBlocks(0, records.count, [&](std::uint64_t begin, std::size_t n) {
    scorer.Scan(converted.Row(), begin, n, scores.data());
    for (std::size_t i = 0; i < n; ++i) {
      const double score = scores[i];
      if (options.HasCutoff() &&
          !(options.GetDescendingOrder() ? score >= cutoff : cutoff >= score)) {
        continue;
      }
      out.emplace_back(records.Id(begin + i), score);
    }
  });
}

namespace {

constexpr unsigned long minRecordsForThreads = 1000;

unsigned int NumScanThreads(const ZQFPDatabaseOptions& options, const ZQScanRecords& records) {
  return records.count < minRecordsForThreads ? 1 : options.GetNumProcessors();
}

/// Records that a thread takes at a time: few enough that all threads end together.
unsigned long BatchOf(const ZQScanRecords& records, unsigned int numThreads) {
  constexpr unsigned long least = 2 * zqBlockRecords;
  constexpr unsigned long most = 64 * zqBlockRecords;
  constexpr unsigned long batchesOfThread = 32;
  const unsigned long batch = records.count / (batchesOfThread * numThreads);
  return std::clamp(batch - batch % zqBlockRecords, least, most);
}

/// Scores batches of records from the cursor until none is left: calls `visit(begin, n, scores)`
/// for each block, and `endBatch(n)`.
template <class Visit, class EndBatch>
void ScanBatches(std::atomic<unsigned long>& cursor, unsigned long batch, const Query& query,
                 ZQScorer& scorer, const ZQScanRecords& records, Visit visit, EndBatch endBatch) {
  Scores scores;
  // The next batch is taken before the current one is scanned, so that its records are prefetched
  // in time, and never those of another worker.
  unsigned long nextBatch = cursor.fetch_add(batch);
  while (nextBatch < records.count) {
    const unsigned long batchBegin = nextBatch;
    const unsigned long batchEnd = batchBegin + std::min(batch, records.count - batchBegin);
    nextBatch = cursor.fetch_add(batch);
    ForBlocks(batchBegin, batchEnd, [&](std::uint64_t begin, std::size_t n) {
      scorer.Scan(query.Row(), begin, n, scorer.NextOf(begin, batchEnd, nextBatch), scores.data());
      visit(begin, n, scores);
    });
    endBatch(batchEnd - batchBegin);
  }
}

}  // namespace

void ZQFastFPHitList(ZQHitList<ZQSimScore>* list, const ZQFingerPrint& query,
                     const ZQFPDatabaseOptions& options, const ZQScanRecords& records) {
  if (!ZQ_ASSERT(list) || !records.AreThere()) return;
  const Query converted(query, records);
  if (!converted.IsValid()) return;
  const bool descending = options.GetDescendingOrder();
  const unsigned int numThreads = NumScanThreads(options, records);
  if (numThreads == 1) {
    ZQScorer scorer(options, records, records.popcount);
    Scores scores;
    ForBlocks(0, records.count, [&](std::uint64_t begin, std::size_t n) {
      scorer.Scan(converted.Row(), begin, n, scores.data());
      Offer(*list, scorer, records, begin, n, scores, descending);
    });
    return;
  }
  std::atomic<unsigned long> cursor = 0;
  std::mutex mutex;
  ZQRunOnThreads(numThreads, [&] {
    const auto own = ZQInitFPDatabaseHitList(ZQCheckedUnsigned(records.count), options);
    ZQScorer scorer(options, records, records.popcount);
    ScanBatches(
        cursor, BatchOf(records, numThreads), converted, scorer, records,
        [&](std::uint64_t begin, std::size_t n, const Scores& scores) {
          Offer(*own, scorer, records, begin, n, scores, descending);
        },
        [](unsigned long) {});
    const std::lock_guard lock(mutex);
    list->Merge(*own);
  });
}

void ZQFastFPRaw(std::vector<double>& out, const ZQFingerPrint& query,
                 const ZQFPDatabaseOptions& options, const ZQScanRecords& records) {
  out.clear();
  if (!records.AreThere()) return;
  const Query converted(query, records);
  if (!converted.IsValid() || !ZQSimMeasure::IsValid(options.GetSimFunc())) return;
  out.resize(records.count);
  ZQScorer scorer(options, records, records.popcount);
  ForBlocks(0, records.count, [&](std::uint64_t begin, std::size_t n) {
    scorer.Scan(converted.Row(), begin, n, &out[begin]);
  });
}

void ZQFastFPResultThread(std::atomic<unsigned long>& cursor, unsigned long batch,
                          ZQSimSearchResultImpl* result, const ZQFingerPrint& query,
                          const ZQFPDatabaseOptions& options, const ZQScanRecords& records) {
  const auto list = ZQInitFPDatabaseHitList(ZQCheckedUnsigned(records.count), options);
  ZQFPHistogram histogram = result->MakeEmptyHistogram();
  const Query converted(query, records);
  if (!converted.IsValid()) return;
  ZQScorer scorer(options, records, records.popcount);
  BinCounter counter(histogram, scorer.Variant());
  ScanBatches(
      cursor, batch, converted, scorer, records,
      [&](std::uint64_t begin, std::size_t n, const Scores& scores) {
        counter.Add(scores.data(), n);
        Offer(*list, scorer, records, begin, n, scores, options.GetDescendingOrder());
      },
      [&](unsigned long n) { result->RecordProgress(n); });
  counter.Finish();
  result->UpdateScores(histogram, *list);
}

void ZQFastFPResult(ZQSimSearchResultImpl* result, const ZQFingerPrint& query,
                    const ZQFPDatabaseOptions& options, const ZQScanRecords& records) {
  const unsigned int numThreads = NumScanThreads(options, records);
  if (!ZQ_ASSERT(result) || !ZQ_ASSERT(numThreads > 0)) return;
  if (!records.AreThere()) return;
  std::atomic<unsigned long> cursor = 0;
  ZQRunOnThreads(numThreads, [&] {
    ZQFastFPResultThread(cursor, BatchOf(records, numThreads), result, query, options, records);
  });
}

// Many queries against all records.

void ZQFastFPHitLists(const std::vector<std::unique_ptr<ZQHitList<ZQSimScore>>>& lists,
                      const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options,
                      const ZQScanRecords& records) {
  if (!ZQ_ASSERT(lists.size() == queries.size()) || !records.AreThere()) return;
  if (queries.empty()) return;
  // The words of a share of queries stay in the cache together with a block of records.
  constexpr std::size_t maxShare = 256;
  const std::size_t numThreads = std::max(options.GetNumProcessors(), 1U);
  const std::size_t share = std::min(maxShare, (queries.size() + numThreads - 1) / numThreads);
  const std::size_t numShares = (queries.size() + share - 1) / share;
  std::atomic<std::size_t> nextShare = 0;
  ZQRunOnThreads(static_cast<unsigned int>(std::min(numThreads, numShares)), [&] {
    ZQScorer scorer(options, records, records.popcount);
    Scores scores;
    for (;;) {
      const std::size_t first = nextShare.fetch_add(1) * share;
      if (first >= queries.size()) break;
      std::vector<std::pair<Query, ZQHitList<ZQSimScore>*>> rows;
      for (std::size_t i = first; i < std::min(first + share, queries.size()); ++i) {
        Query converted(queries[i], records);
        if (converted.IsValid()) rows.emplace_back(std::move(converted), lists[i].get());
      }
      ForBlocks(0, records.count, [&](std::uint64_t begin, std::size_t n) {
        scorer.SetColumns(begin, n);
        for (const auto& [row, list] : rows) {
          scorer.ScoreColumns(row.Row(), scores.data());
          Offer(*list, scorer, records, begin, n, scores, options.GetDescendingOrder());
        }
      });
    }
  });
}

// All pairs of records. A block of records is loaded as columns once for all rows; for a symmetric
// measure only rows up to the block's last record are scored.

namespace {

/// The pairs of a block of columns.
std::uint64_t NumPairsOf(std::uint64_t columns, std::size_t n, const ZQScanRecords& records,
                         bool symmetric) {
  return symmetric ? ZQNumPairs(columns + n) - ZQNumPairs(columns) : n * records.count;
}

/// Runs `work(forBlocks)` on threads. `forBlocks(scorer, visit)` loads blocks of columns until no
/// thread finds one any more, those with most rows first, and calls `visit(columns, n, rows)`: with
/// the numbers of columns and, from record 0 on, of rows.
template <class Work>
void ForColumnsOnThreads(const ZQFPDatabaseOptions& options, const ZQScanRecords& records,
                         Work work) {
  const bool symmetric = ZQIsSymmetric(options.GetSimFunc());
  const std::uint64_t numBlocks = (records.count + zqBlockRecords - 1) / zqBlockRecords;
  ZQPairTracer tracer(options, ZQNumPairs(records.count, symmetric));
  std::atomic<std::uint64_t> next = 0;
  const auto forBlocks = [&](ZQScorer& scorer, auto visit) {
    for (std::uint64_t i = next++; i < numBlocks; i = next++) {
      const std::uint64_t columns = (numBlocks - 1 - i) * zqBlockRecords;
      const std::size_t n = std::min<std::uint64_t>(zqBlockRecords, records.count - columns);
      scorer.SetColumns(columns, n);
      visit(columns, n, symmetric ? columns + n : records.count);
      tracer.Count(NumPairsOf(columns, n, records, symmetric));
    }
  };
  ZQRunOnThreads(NumScanThreads(options, records), [&] { work(forBlocks); });
  tracer.Finish();
}

}  // namespace

void ZQFastFPAllScores(std::vector<float>& out, const ZQFPDatabaseOptions& options,
                       const ZQScanRecords& records) {
  if (!records.AreThere()) return;
  out.resize(ZQSaturatedProduct(records.count, records.count));
  const bool symmetric = ZQIsSymmetric(options.GetSimFunc());
  ForColumnsOnThreads(options, records, [&](auto forBlocks) {
    ZQScorer scorer(options, records, records.popcount);
    // A few rows at a time, so that the transposed scores are written in whole cache lines.
    constexpr std::size_t tileRows = 16;
    std::array<std::array<float, zqBlockRecords>, tileRows> tile;
    Scores scores;
    forBlocks(scorer, [&](std::uint64_t columns, std::size_t n, std::uint64_t end) {
      for (std::uint64_t rows = 0; rows < end; rows += tileRows) {
        const std::size_t m = std::min<std::uint64_t>(tileRows, end - rows);
        for (std::size_t r = 0; r < m; ++r) {
          scorer.ScoreColumns(scorer.RowOf(rows + r), scores.data());
          std::transform(scores.begin(), scores.begin() + n, tile[r].begin(),
                         [](double score) { return ZQCheckedFloat(score); });
          std::copy_n(tile[r].begin(), n, &out[(rows + r) * records.count + columns]);
        }
        if (!symmetric) continue;
        for (std::size_t c = 0; c < n; ++c) {
          float* mirrored = &out[(columns + c) * records.count + rows];
          for (std::size_t r = 0; r < m; ++r) mirrored[r] = tile[r][c];
        }
      }
    });
  });
}

void ZQFastFPHistogram(ZQFPHistogram& histogram, const ZQFPDatabaseOptions& options,
                       const ZQScanRecords& records) {
  if (!records.AreThere()) return;
  const bool symmetric = ZQIsSymmetric(options.GetSimFunc());
  std::mutex mutex;
  ForColumnsOnThreads(options, records, [&](auto forBlocks) {
    ZQFPHistogram own(histogram.NumBins(), histogram.GetMinValue(), histogram.GetMaxValue());
    ZQScorer scorer(options, records, records.popcount);
    BinCounter counter(own, scorer.Variant());
    Scores scores;
    forBlocks(scorer, [&](std::uint64_t columns, std::size_t n, std::uint64_t end) {
      for (std::uint64_t row = 0; row < end; ++row) {
        scorer.ScoreColumns(scorer.RowOf(row), scores.data());
        const std::size_t skip = symmetric && row >= columns ? row + 1 - columns : 0;
        counter.Add(scores.data() + skip, n - skip);
      }
    });
    counter.Finish();
    const std::lock_guard lock(mutex);
    histogram += own;
  });
}

void ZQFastFPVariogram(ZQFPVariogram& variogram, const std::vector<float>& values,
                       const ZQFPDatabaseOptions& options, const ZQScanRecords& records) {
  if (!ZQ_ASSERT(ZQIsSymmetric(options.GetSimFunc()))) return;
  if (!ZQ_ASSERT(values.size() == records.count) || !records.AreThere()) return;
  ZQScorer scorer(options, records, records.popcount);
  Scores scores;
  ZQPairTracer tracer(options, ZQNumPairs(records.count));
  // Row by row: the sums of a variogram depend on the order of its samples.
  for (std::uint64_t row = 0; row < records.count; ++row) {
    ForBlocks(row + 1, records.count, [&](std::uint64_t begin, std::size_t n) {
      scorer.Scan(scorer.RowOf(row), begin, n, scores.data());
      for (std::size_t i = 0; i < n; ++i) {
        variogram.AddSample(1.0F - ZQCheckedFloat(scores[i]), values[row] - values[begin + i]);
      }
    });
    tracer.Count(records.count - row - 1);
  }
  tracer.Finish();
}

namespace {

constexpr std::uint32_t signBit = 0x80000000;

/// The bits of a float as an integer in the same order, which also includes NaNs.
std::uint32_t OrderOf(float score) {
  const auto bits = std::bit_cast<std::uint32_t>(score);
  return (bits & signBit) != 0 ? ~bits : bits | signBit;
}

bool IsGreater(const std::pair<float, std::uint64_t>& a, const std::pair<float, std::uint64_t>& b) {
  return std::pair(OrderOf(a.first), a.second) > std::pair(OrderOf(b.first), b.second);
}

/// The `k` greatest scores of each row of a band. A row has `k` slots. The high bits of a key are a
/// score, ordered like unsigned numbers, and its low bits are the slot of its entry. Once all slots
/// are used, the keys are a heap with the lowest on top: of equal scores, that of the first slot.
class NearestLists {
 public:
  NearestLists(std::size_t numRows, std::size_t k)
      : k_(k),
        keys_(ZQSaturatedProduct(numRows, k)),
        ids_(keys_.size()),
        sizes_(numRows),
        bars_(numRows) {}
  static constexpr std::size_t bytesPerSlot = 16;

  void Clear() {
    std::fill(sizes_.begin(), sizes_.end(), 0);
    std::fill(bars_.begin(), bars_.end(), -std::numeric_limits<double>::infinity());
  }

  bool IsFull(std::size_t row) const { return sizes_[row] == k_; }
  /// The bars of this row and those after it: a row accepts only scores above its bar.
  const double* Bars(std::size_t row) const { return &bars_[row]; }

  /// `id` is the record's id and `column` its position: entries contain the id until the row is
  /// full, then the position.
  void Offer(std::size_t row, double score, std::uint64_t id, std::uint64_t column) {
    const float narrow = ZQCheckedFloat(score);
    std::uint64_t* keys = &keys_[row * k_];
    std::uint64_t* ids = &ids_[row * k_];
    if (!IsFull(row)) {
      const std::size_t slot = sizes_[row]++;
      keys[slot] = MakeKey(narrow, slot);
      ids[slot] = id;
      if (!IsFull(row)) return;
      std::make_heap(keys, keys + k_, std::greater<>());
    } else {
      if (!(narrow > ScoreOf(keys[0]))) return;
      const std::uint64_t slot = keys[0] & slotMask;
      ids[slot] = column;
      ReplaceLowest(keys, MakeKey(narrow, slot));
    }
    bars_[row] = ScoreOf(keys[0]);
  }

  /// The (score, id) entries of a row.
  std::vector<std::pair<float, std::uint64_t>>& Entries(std::size_t row) {
    entries_.resize(sizes_[row]);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      const std::uint64_t key = keys_[row * k_ + i];
      entries_[i] = {ScoreOf(key), ids_[row * k_ + (key & slotMask)]};
    }
    return entries_;
  }

 private:
  static constexpr std::uint64_t slotMask = 0xFFFFFFFF;
  static std::uint64_t MakeKey(float score, std::uint64_t slot) {
    return std::uint64_t{OrderOf(score)} << 32 | slot;
  }
  static float ScoreOf(std::uint64_t key) {
    const auto order = static_cast<std::uint32_t>(key >> 32);
    return std::bit_cast<float>((order & signBit) != 0 ? order & ~signBit : ~order);
  }

  /// Replaces the lowest key by a greater one, and sifts it down the heap.
  void ReplaceLowest(std::uint64_t* keys, std::uint64_t key) const {
    std::size_t hole = 0;
    for (std::size_t child = 1; child < k_; child = 2 * hole + 1) {
      if (child + 1 < k_) child += static_cast<std::size_t>(keys[child + 1] < keys[child]);
      if (key < keys[child]) break;
      keys[hole] = keys[child];
      hole = child;
    }
    keys[hole] = key;
  }

  std::size_t k_;
  std::vector<std::uint64_t> keys_;
  std::vector<std::uint64_t> ids_;
  std::vector<std::uint32_t> sizes_;
  std::vector<double> bars_;
  std::vector<std::pair<float, std::uint64_t>> entries_;
};

}  // namespace

void ZQFastFPSparseMatrix(std::vector<ZQSimScorePair>& out, const ZQFPDatabaseOptions& options,
                          const ZQScanRecords& records, unsigned long k) {
  // The lists of all rows at once if they don't take much memory: then each pair is scored once.
  // Otherwise those of a few rows, which fit in the cache: whole blocks, or a part of one.
  constexpr std::size_t maxSlots = (std::size_t{40} << 20) / NearestLists::bytesPerSlot;
  constexpr std::size_t slotsInCache = (std::size_t{1} << 20) / NearestLists::bytesPerSlot;
  constexpr std::size_t minBand = 16;
  k = std::min(k, records.count);
  if (k == 0) return;
  std::size_t band = std::max(slotsInCache / k, minBand);
  if (band > zqBlockRecords) band -= band % zqBlockRecords;
  if (records.count <= maxSlots / k) band = records.count;
  ZQFastFPSparseMatrixInBands(out, options, records, k, band);
}

void ZQFastFPSparseMatrixInBands(std::vector<ZQSimScorePair>& out,
                                 const ZQFPDatabaseOptions& options, const ZQScanRecords& records,
                                 unsigned long k, unsigned long band) {
  if (!records.AreThere()) return;
  k = std::min(k, records.count);
  band = std::min(band, records.count);
  if (k == 0 || !ZQ_ASSERT(band > 0)) return;
  // A score can be used for both its rows if every block of columns is inside one band or outside
  // of it.
  const bool symmetric = ZQIsSymmetric(options.GetSimFunc());
  const bool mirrored = symmetric && (band % zqBlockRecords == 0 || band == records.count);
  ZQScorer scorer(options, records, records.popcount);
  const ZQScanVariant& variant = scorer.Variant();
  NearestLists lists(band, k);
  Scores scores;
  const bool once = mirrored && band == records.count;  // each pair
  ZQPairTracer tracer(options, ZQNumPairs(records.count, once));

  for (std::uint64_t bandBegin = 0; bandBegin < records.count; bandBegin += band) {
    const std::uint64_t bandEnd = std::min<std::uint64_t>(bandBegin + band, records.count);
    lists.Clear();
    // Every row gets its columns in ascending order. For a block inside the band, each score of an
    // earlier row also serves the block's record as row; rows after the block get its records as
    // columns in the same way, with their own blocks.
    ForBlocks(0, records.count, [&](std::uint64_t columns, std::size_t n) {
      scorer.SetColumns(columns, n);
      const bool mirror = mirrored && columns >= bandBegin && columns < bandEnd;
      const std::uint64_t end = mirror ? columns + n : bandEnd;
      for (std::uint64_t row = bandBegin; row < end; ++row) {
        scorer.ScoreColumns(scorer.RowOf(row), scores.data());
        const std::size_t listed = row - bandBegin;
        const std::uint64_t all = ~std::uint64_t{0} >> (64 - n);
        ForBits(lists.IsFull(listed) ? variant.reaching(scores.data(), n, *lists.Bars(listed), true)
                                     : all,
                [&](std::size_t i) {
                  lists.Offer(listed, scores[i], records.Id(columns + i), columns + i);
                });
        if (!mirror || row >= columns) continue;
        const std::size_t first = columns - bandBegin;
        ForBits(variant.reachingOwn(scores.data(), n, lists.Bars(first)),
                [&](std::size_t i) { lists.Offer(first + i, scores[i], records.Id(row), row); });
      }
      if (once) {
        tracer.Count(NumPairsOf(columns, n, records, true));
      } else {
        tracer.Count(n * (bandEnd - bandBegin));
      }
    });

    for (std::uint64_t row = bandBegin; row < bandEnd; ++row) {
      ZQAppendNeighbors(out, records.Id(row), lists.Entries(row - bandBegin), options);
    }
  }
  tracer.Finish();
}

void ZQAppendNeighbors(std::vector<ZQSimScorePair>& out, std::uint64_t rowId,
                       std::vector<std::pair<float, std::uint64_t>>& entries,
                       const ZQFPDatabaseOptions& options) {
  std::sort(entries.begin(), entries.end(), IsGreater);
  const auto end =
      options.HasCutoff()
          ? std::lower_bound(entries.begin(), entries.end(),
                             std::pair(options.GetCutoff() + 0.0F, std::uint64_t{0}), IsGreater)
          : entries.end();
  for (auto entry = entries.begin(); entry != end; ++entry) {
    out.emplace_back(rowId, entry->second, double{entry->first});
  }
}

}  // namespace ZQKorvex
