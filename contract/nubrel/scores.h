#pragma once

/// The arithmetic of scans in double precision, which processors and GPUs share: both compile these
/// lines, and both give the same bits. So everything here is plain C++ without calls of a library,
/// and without fused multiply-adds, which all builds turn off. The order of the arithmetic affects
/// the result and must not change.

namespace Nubrel {

/// The inputs of a score besides the counts.
struct ZQCUScoreTerms {
  double bits = 0.0;  ///< of a fingerprint; for `.fpbin` files those of its words
  double inverseBits = 0.0;
  double alpha = 0.0;  ///< Tversky's weights
  double beta = 0.0;
};

// The score of two fingerprints with `q` and `r` bits, `c` of them common: from 0.0 to 1.0 for
// consistent counts. Others may give any number, infinity and NaN included. Two fingerprints
// without bits score 0.0 by Tanimoto, Cosine, Dice and Tversky. The formulae have no branches:
// instead of dividing by 0, they divide 0 by 1.

[[gnu::always_inline]] inline double ZQCUTanimoto(const ZQCUScoreTerms& /*terms*/, double q,
                                                  double r, double c) {
  return c / (c == 0.0 ? 1.0 : q + r - c);
}
[[gnu::always_inline]] inline double ZQCUCosine(const ZQCUScoreTerms& /*terms*/, double q, double r,
                                                double c) {
  const bool none = q == 0.0 || r == 0.0 || c == 0.0;
  return (none ? 0.0 : c) / __builtin_sqrt(none ? 1.0 : r * q);
}
[[gnu::always_inline]] inline double ZQCUDice(const ZQCUScoreTerms& /*terms*/, double q, double r,
                                              double c) {
  const bool none = q + r == 0.0;
  return (none ? 0.0 : 2.0 * c) / (none ? 1.0 : q + r);
}
[[gnu::always_inline]] inline double ZQCUEuclid(const ZQCUScoreTerms& terms, double q, double r,
                                                double c) {
  return __builtin_sqrt((terms.bits - q - r + 2.0 * c) * terms.inverseBits);
}
[[gnu::always_inline]] inline double ZQCUTversky(const ZQCUScoreTerms& terms, double q, double r,
                                                 double c) {
  const double weighted = (q - c) * terms.alpha + (r - c) * terms.beta + c;
  return (weighted == 0.0 ? 0.0 : c) / (weighted == 0.0 ? 1.0 : weighted);
}
[[gnu::always_inline]] inline double ZQCUManhattan(const ZQCUScoreTerms& terms, double q, double r,
                                                   double c) {
  return (q + r - 2.0 * c) * terms.inverseBits;
}

/// The measures have the numbers from 1 to this, as in `ZQSimMeasure`.
inline constexpr unsigned int zqCUNumMeasures = 6;

/// The score by a measure's number; 0.0 for any other number.
[[gnu::always_inline]] inline double ZQCUScoreOf(unsigned int measure, const ZQCUScoreTerms& terms,
                                                 double q, double r, double c) {
  switch (measure) {
    case 1:
      return ZQCUTanimoto(terms, q, r, c);
    case 2:
      return ZQCUCosine(terms, q, r, c);
    case 3:
      return ZQCUDice(terms, q, r, c);
    case 4:
      return ZQCUEuclid(terms, q, r, c);
    case 5:
      return ZQCUTversky(terms, q, r, c);
    case zqCUNumMeasures:
      return ZQCUManhattan(terms, q, r, c);
    default:
      return 0.0;
  }
}

/// Within 0.0 to 1.0, a NaN as 0.0.
inline double ZQCUClamp(double score) {
  const double notNegative = 0.0 < score ? score : 0.0;
  return notNegative < 1.0 ? notNegative : 1.0;
}

/// The bin of a score from 0.0 to 1.0 in a histogram over this range, in either precision.
template <class Real>
[[gnu::always_inline]] inline unsigned int ZQCUBinOf(Real score, Real binSize,
                                                     unsigned int numBins) {
  if (score >= Real{1}) return numBins - 1;
  const auto bin = static_cast<unsigned int>(score / binSize);
  return bin < numBins ? bin : numBins - 1;
}

}  // namespace Nubrel
