#pragma once

/// Loops shared by the files of several processors. They are always inlined, so that each is
/// compiled for the instruction set of the function that calls it.

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "korvex/fpfast_variants_local.h"

namespace ZQKorvex {

/// Prefetches a cache line into the L2 cache.
[[gnu::always_inline]] inline void ZQPrefetch(std::uintptr_t address) {
  // Past the last record the address isn't a valid pointer, only a hint.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  __builtin_prefetch(reinterpret_cast<const void*>(address), 0, 2);
}

// Loops over doubles, which the compiler vectorizes for the instruction set of the calling
// function.

template <std::size_t measure>
[[gnu::always_inline]] inline bool ZQScoreLoop(const ZQScoreTerms& terms, double q,
                                               const double* __restrict r,
                                               const std::uint32_t* __restrict counts,
                                               std::size_t n, double* __restrict scores) {
  const ZQScoreTerms local = terms;
  // From 0.0 to 1.0 the sign bit is clear, and stays clear when this is added to the bits.
  constexpr std::uint64_t fromOne =
      (std::uint64_t{1} << 63) - 1 - std::bit_cast<std::uint64_t>(1.0);
  std::uint64_t outside = 0;
  for (std::size_t i = 0; i < n; ++i) {
    scores[i] = zqMeasures[measure].ofTerms(local, q, r[i], static_cast<std::int32_t>(counts[i]));
    const auto bits = std::bit_cast<std::uint64_t>(scores[i]);
    outside |= bits | (bits + fromOne);
  }
  return outside >> 63 == 0;
}

[[gnu::always_inline]] inline bool ZQBinLoop(const double* __restrict values, std::size_t n,
                                             double lower, double upper, double binSize,
                                             std::uint32_t last, std::uint32_t* __restrict places) {
  constexpr auto lanes = static_cast<std::int32_t>(zqBinLanes);
  const auto lastBin = static_cast<std::int32_t>(last);
  std::int32_t outside = 0;
  for (std::size_t i = 0; i < n; ++i) {
    outside |= static_cast<std::int32_t>(!(values[i] >= lower)) |
               static_cast<std::int32_t>(!(values[i] <= upper));
    const auto bin = static_cast<std::int32_t>((values[i] - lower) / binSize);
    const std::int32_t place =
        lanes * (bin < lastBin ? bin : lastBin) + static_cast<std::int32_t>(i) % lanes;
    places[i] = static_cast<std::uint32_t>(place);
  }
  return outside == 0;
}

// For processors whose registers are no wider than the compiler's default.
extern const std::array<ZQScanVariant::ScoreLoop, zqMeasures.size()> zqPortableScores;
bool ZQPortableBins(const double* values, std::size_t n, double lower, double upper, double binSize,
                    std::uint32_t last, std::uint32_t* places);
std::uint64_t ZQPortableReaching(const double* scores, std::size_t n, double bar, bool descending);
std::uint64_t ZQPortableReachingOwn(const double* scores, std::size_t n, const double* bars);

/// A variant with its own counts, and the portable form of all other loops.
consteval ZQScanVariant ZQPortableBut(decltype(ZQScanVariant::scan) scan,
                                      decltype(ZQScanVariant::count) count) {
  return {.scan = scan,
          .pack = nullptr,
          .row = nullptr,
          .scores = zqPortableScores.data(),
          .bin = ZQPortableBins,
          .reaching = ZQPortableReaching,
          .reachingOwn = ZQPortableReachingOwn,
          .count = count};
}

}  // namespace ZQKorvex
