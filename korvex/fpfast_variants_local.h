#pragma once

/// The inner loops of the scans, written for several processors. A scan of records in memory is
/// bound by memory, and its loops need only keep up; a row against records in the cache is bound
/// by the AND, count and add of every vector.
///
/// All variants give the same counts and, as every operation on doubles is rounded alike, the
/// same scores. Which one runs is settled once per search.

#include <cstddef>
#include <cstdint>
#include "korvex/measures_local.h"

namespace ZQKorvex {

/// Records that are handled at a time: the scores of a block lie in the nearest cache, and a
/// packed block of 4096-bit fingerprints takes 32 KiB.
inline constexpr std::size_t zqBlockRecords = 64;

/// Scores crowd into few bins, so each bin is counted in this many places: one addition needn't
/// wait for the one before.
inline constexpr std::size_t zqBinLanes = 8;

struct ZQScanVariant {
  /// counts[i]: bits common to the query and record i, for `n` records that start at `words`,
  /// the fingerprint words of the first, and lie `stride` words apart. Asks memory for as many
  /// records from `ahead` on, where the next ones to be scanned lie; it need not be a valid
  /// address.
  void (*scan)(const std::uint64_t* query, const std::uint64_t* words, std::uintptr_t ahead,
               std::size_t stride, std::size_t n, std::size_t numWords, std::uint32_t* counts);
  /// Packs `n` records, at most `zqBlockRecords`: word w of record i goes to
  /// packed[w * zqBlockRecords + i], from an address that is a multiple of 64. Null where packing
  /// doesn't pay: `scan` then serves every row.
  void (*pack)(const std::uint64_t* words, std::size_t stride, std::size_t n, std::size_t numWords,
               std::uint64_t* packed);
  /// What `scan` does, for a whole packed block.
  void (*row)(const std::uint64_t* row, const std::uint64_t* packed, std::size_t numWords,
              std::uint32_t* counts);

  /// scores[i] from `q`, r[i] and counts[i], at the index of a measure less one. False if any isn't
  /// inside 0.0 to 1.0.
  using ScoreLoop = bool (*)(const ZQScoreTerms& terms, double q, const double* r,
                             const std::uint32_t* counts, std::size_t n, double* scores);
  const ScoreLoop* scores;
  /// places[i]: the place that counts values[i]: zqBinLanes * bin + i % zqBinLanes, the bin among
  /// those up to `last`. False if any value isn't inside `lower` to `upper`; the places are then
  /// worthless.
  bool (*bin)(const double* values, std::size_t n, double lower, double upper, double binSize,
              std::uint32_t last, std::uint32_t* places);
  /// Bit i: whether scores[i], of at most 64, is no worse than the bar.
  std::uint64_t (*reaching)(const double* scores, std::size_t n, double bar, bool descending);
  /// Bit i: whether scores[i] isn't below bars[i].
  std::uint64_t (*reachingOwn)(const double* scores, std::size_t n, const double* bars);
};

extern const ZQScanVariant zqScanPortable;
// On x86.
extern const ZQScanVariant zqScanAvx512Vpopcntdq;
extern const ZQScanVariant zqScanAvx512;
extern const ZQScanVariant zqScanAvx2;
extern const ZQScanVariant zqScanPopcnt;

}  // namespace ZQKorvex
