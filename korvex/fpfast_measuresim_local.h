#pragma once

/// The scores of the fast database: one routine for all of its kernels. It works in double
/// precision from three counts, and differs from the functions of measuresim.h: two empty
/// fingerprints score 0.0 by Tanimoto, Cosine, Dice and Tversky, and Cosine's root is exact.

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "korvex/checked_local.h"
#include "korvex/fpdatabaseoptions.h"

namespace ZQKorvex {

/// What a score depends on besides the counts.
struct ZQScoreTerms {
  ZQScoreTerms(const ZQFPDatabaseOptions& options, std::uint64_t numWords)
      : bits(64 * numWords),
        inverseBits(1.0 / ZQCheckedDouble(bits)),
        alpha(options.GetTverskyAlpha()),
        beta(options.GetTverskyBeta()) {}

  std::uint64_t bits;  ///< of the words, padding included
  double inverseBits;
  double alpha;
  double beta;
};

/// The score of two fingerprints with `q` and `r` bits, `c` of them common. Counts are either
/// integers, whose conversion is checked, or doubles, exact up to 2^53: their sums and products
/// are then the same numbers. 0.0 for a number that names no measure.
template <unsigned int measure, class Count>
[[gnu::always_inline]] inline double ZQScoreOf(const ZQScoreTerms& terms, Count q, Count r,
                                               Count c) {
  const auto real = [](Count count) {
    if constexpr (std::is_floating_point_v<Count>) {
      return count;
    } else {
      return ZQCheckedDouble(count);
    }
  };
  // Where a denominator is 0, 0 is divided by 1 instead: loops over this stay free of branches.
  if constexpr (measure == ZQSimMeasure::Tanimoto) {
    return real(c) / (c == 0 ? 1.0 : real(q + r - c));
  } else if constexpr (measure == ZQSimMeasure::Cosine) {
    const bool none = q == 0 || r == 0 || c == 0;
    return (none ? 0.0 : real(c)) / std::sqrt(none ? 1.0 : real(r * q));
  } else if constexpr (measure == ZQSimMeasure::Dice) {
    const bool none = q + r == 0;
    return (none ? 0.0 : real(2 * c)) / (none ? 1.0 : real(q + r));
  } else if constexpr (measure == ZQSimMeasure::Euclid) {
    const auto bits = static_cast<Count>(terms.bits);
    return std::sqrt(real(bits - q - r + 2 * c) * terms.inverseBits);
  } else if constexpr (measure == ZQSimMeasure::Tversky) {
    const double weighted = real(q - c) * terms.alpha + real(r - c) * terms.beta + real(c);
    return (weighted == 0.0 ? 0.0 : real(c)) / (weighted == 0.0 ? 1.0 : weighted);
  } else if constexpr (measure == ZQSimMeasure::Manhattan) {
    return real(q + r - 2 * c) * terms.inverseBits;
  } else {
    return 0.0;
  }
}

}  // namespace ZQKorvex
