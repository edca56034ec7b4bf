#pragma once

/// The scores of the fast database: one routine for all of its kernels. It works in double
/// precision from three counts, and differs from the functions of measuresim.h: two empty
/// fingerprints score 0.0 by Tanimoto, Cosine, Dice and Tversky, and Cosine's root is exact.

#include <cmath>
#include <cstdint>

#include "korvex/checked_local.h"
#include "korvex/fpdatabaseoptions.h"

namespace ZQKorvex {

/// What a score depends on besides the counts.
struct ZQScoreTerms {
  ZQScoreTerms(const ZQFPDatabaseOptions& options, std::uint64_t numWords)
      : bits(ZQCheckedDouble(64 * numWords)),
        inverseBits(1.0 / bits),
        alpha(options.GetTverskyAlpha()),
        beta(options.GetTverskyBeta()) {}

  double bits;  ///< of the words, padding included
  double inverseBits;
  double alpha;
  double beta;
};

/// The score of two fingerprints with `q` and `r` bits, `c` of them common, by a measure: from 0.0
/// to 1.0 if the counts are true. Others may give any number, infinity and NaN included.
template <unsigned int measure>
[[gnu::always_inline]] inline double ZQScoreOf(const ZQScoreTerms& terms, double q, double r,
                                               double c) {
  // Where a denominator is 0, 0 is divided by 1 instead: loops over this stay free of branches.
  if constexpr (measure == ZQSimMeasure::Tanimoto) {
    return c / (c == 0.0 ? 1.0 : q + r - c);
  } else if constexpr (measure == ZQSimMeasure::Cosine) {
    const bool none = q == 0.0 || r == 0.0 || c == 0.0;
    return (none ? 0.0 : c) / std::sqrt(none ? 1.0 : r * q);
  } else if constexpr (measure == ZQSimMeasure::Dice) {
    const bool none = q + r == 0.0;
    return (none ? 0.0 : 2.0 * c) / (none ? 1.0 : q + r);
  } else if constexpr (measure == ZQSimMeasure::Euclid) {
    return std::sqrt((terms.bits - q - r + 2.0 * c) * terms.inverseBits);
  } else if constexpr (measure == ZQSimMeasure::Tversky) {
    const double weighted = (q - c) * terms.alpha + (r - c) * terms.beta + c;
    return (weighted == 0.0 ? 0.0 : c) / (weighted == 0.0 ? 1.0 : weighted);
  } else {
    static_assert(measure == ZQSimMeasure::Manhattan);
    return (q + r - 2.0 * c) * terms.inverseBits;
  }
}

}  // namespace ZQKorvex
