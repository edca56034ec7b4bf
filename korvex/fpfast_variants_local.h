#pragma once

/// The inner loops of the scans, written for several processors. A scan of records in memory is
/// bound by memory, and its loops only need to keep up; a row against records in the cache is bound
/// by the AND, count and add of every vector.
///
/// All variants give the same counts and, since all operations on doubles round alike, the same
/// scores. The variant is chosen once per search.

#include <cstddef>
#include <cstdint>
#include "korvex/measures_local.h"

namespace ZQKorvex {

/// Records per block: the scores of a block fit in the L1 cache, and a packed block of 4096-bit
/// fingerprints takes 32 KiB.
inline constexpr std::size_t zqBlockRecords = 64;

/// Counters per bin. Most scores fall into few bins; with several counters an addition needn't wait
/// for the previous one.
inline constexpr std::size_t zqBinLanes = 8;

/// The numbers of bits of two fingerprints, and of common ones.
struct ZQBitTerms {
  std::uint32_t a = 0;
  std::uint32_t b = 0;
  std::uint32_t both = 0;

  /// Adds those of one more word. Inlined, so that the caller's instructions count.
  [[gnu::always_inline]] void Add(std::uint64_t wordA, std::uint64_t wordB) {
    a += static_cast<std::uint32_t>(__builtin_popcountll(wordA));
    b += static_cast<std::uint32_t>(__builtin_popcountll(wordB));
    both += static_cast<std::uint32_t>(__builtin_popcountll(wordA & wordB));
  }
};

struct ZQScanVariant {
  /// Sets counts[i] to the number of bits common to the query and record i. `words` is the first
  /// fingerprint word of the first of `n` records, which are `stride` words apart. Prefetches `n`
  /// records from `ahead` on, the next to be scanned; it need not be a valid address.
  void (*scan)(const std::uint64_t* query, const std::uint64_t* words, std::uintptr_t ahead,
               std::size_t stride, std::size_t n, std::size_t numWords, std::uint32_t* counts);
  /// Packs `n` records, at most `zqBlockRecords`, into `packed`, which is aligned to 64 bytes:
  /// packed[w * zqBlockRecords + i] is word w of record i. Null where packing doesn't pay: all rows
  /// then use `scan`.
  void (*pack)(const std::uint64_t* words, std::size_t stride, std::size_t n, std::size_t numWords,
               std::uint64_t* packed);
  /// Like `scan`, for a whole packed block.
  void (*row)(const std::uint64_t* row, const std::uint64_t* packed, std::size_t numWords,
              std::uint32_t* counts);

  /// Computes scores[i] from `q`, r[i] and counts[i]; the loop of a measure is at its number less
  /// 1. False if any score isn't within 0.0 to 1.0.
  using ScoreLoop = bool (*)(const ZQScoreTerms& terms, double q, const double* r,
                             const std::uint32_t* counts, std::size_t n, double* scores);
  const ScoreLoop* scores;
  /// Sets places[i] to the counter of values[i], zqBinLanes * bin + i % zqBinLanes, with a bin of
  /// at most `last`. False if any value isn't within `lower` to `upper`; the places are then
  /// undefined.
  bool (*bin)(const double* values, std::size_t n, double lower, double upper, double binSize,
              std::uint32_t last, std::uint32_t* places);
  /// Bit i: whether scores[i], of at most 64, is no worse than the bar.
  std::uint64_t (*reaching)(const double* scores, std::size_t n, double bar, bool descending);
  /// Bit i: whether scores[i] isn't below bars[i].
  std::uint64_t (*reachingOwn)(const double* scores, std::size_t n, const double* bars);

  /// Counts the bits of `a`, of `b` and of both, of any number of words, for single pairs of
  /// fingerprints.
  ZQBitTerms (*count)(const std::uint64_t* a, const std::uint64_t* b, std::size_t numWords);
};

extern const ZQScanVariant zqScanPortable;
// On x86.
extern const ZQScanVariant zqScanAvx512Vpopcntdq;
extern const ZQScanVariant zqScanAvx512;
extern const ZQScanVariant zqScanAvx2;
extern const ZQScanVariant zqScanPopcnt;

}  // namespace ZQKorvex
