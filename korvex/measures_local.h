#pragma once

/// The measures of similarity, a row each: a new one is a constant of `ZQSimMeasure`, its formulae
/// and its row, and without the row nothing compiles. The order of the arithmetic is part of a
/// score.
///
/// Each has two formulae. Single precision, of the four counts of measuresim.h, serves
/// fingerprints, Lingo texts among them, whose neither is 0. Double precision, of three counts,
/// serves the scans of the fast database: there two empty fingerprints score 0.0 by Tanimoto,
/// Cosine, Dice and Tversky, and Cosine's root is exact.

#include <array>
#include <cmath>
#include <cstdint>

#include "korvex/checked_local.h"
#include "korvex/fpdatabaseoptions.h"
#include "korvex/processor_local.h"

namespace ZQKorvex {

/// The counts of two fingerprints, as in measuresim.h; not valid where there are none to compare.
struct ZQCounts {
  unsigned int onlyA = 0;
  unsigned int onlyB = 0;
  unsigned int both = 0;
  unsigned int neither = 0;
  bool valid = false;
};

/// What a score of a scan depends on besides the counts.
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

struct ZQMeasure {
  unsigned int number;
  const char* name;
  bool isSymmetric;
  bool isDistance;     ///< equal fingerprints have 0.0, not 1.0
  bool countsNeither;  ///< whether `neither` is counted
  /// The score of two fingerprints that differ; `ZQScoreOf` is for all.
  float (*ofCounts)(const ZQCounts& n, float alpha, float beta);
  /// The score of two fingerprints with `q` and `r` bits, `c` of them common: from 0.0 to 1.0 if
  /// the counts are true. Others may give any number, infinity and NaN included.
  double (*ofTerms)(const ZQScoreTerms& terms, double q, double r, double c);
};

// The formulae over doubles are inlined into loops, which stay free of branches: where a
// denominator is 0, 0 is divided by 1 instead.

inline float ZQTanimotoOf(const ZQCounts& n, float /*alpha*/, float /*beta*/) {
  if (n.both == 0) return 0.0F;
  return ZQCheckedFloat(n.both) / ZQCheckedFloat(n.onlyA + n.onlyB + n.both);
}
[[gnu::always_inline]] inline double ZQTanimotoOf(const ZQScoreTerms& /*terms*/, double q, double r,
                                                  double c) {
  return c / (c == 0.0 ? 1.0 : q + r - c);
}

inline float ZQCosineOf(const ZQCounts& n, float /*alpha*/, float /*beta*/) {
  if (n.both == 0) return 0.0F;
  const float x = ZQCheckedFloat(n.onlyB + n.both) * ZQCheckedFloat(n.onlyA + n.both);
  const float r = ZQReciprocalRootEstimate(x);
  return ((((x * r) * r) + -3.0F) * (r * -0.5F)) * ZQCheckedFloat(n.both);
}
[[gnu::always_inline]] inline double ZQCosineOf(const ZQScoreTerms& /*terms*/, double q, double r,
                                                double c) {
  const bool none = q == 0.0 || r == 0.0 || c == 0.0;
  return (none ? 0.0 : c) / std::sqrt(none ? 1.0 : r * q);
}

inline float ZQDiceOf(const ZQCounts& n, float /*alpha*/, float /*beta*/) {
  if (n.both == 0) return 0.0F;
  const float both = ZQCheckedFloat(n.both);
  const double sum = 2.0 * static_cast<double>(n.both) + static_cast<double>(n.onlyA + n.onlyB);
  return (both + both) / static_cast<float>(sum);
}
[[gnu::always_inline]] inline double ZQDiceOf(const ZQScoreTerms& /*terms*/, double q, double r,
                                              double c) {
  const bool none = q + r == 0.0;
  return (none ? 0.0 : 2.0 * c) / (none ? 1.0 : q + r);
}

inline float ZQEuclidOf(const ZQCounts& n, float /*alpha*/, float /*beta*/) {
  const unsigned int equal = n.both + n.neither;
  if (equal == 0) return 0.0F;
  return std::sqrt(ZQCheckedFloat(equal) / ZQCheckedFloat(n.onlyA + n.onlyB + equal));
}
[[gnu::always_inline]] inline double ZQEuclidOf(const ZQScoreTerms& terms, double q, double r,
                                                double c) {
  return std::sqrt((terms.bits - q - r + 2.0 * c) * terms.inverseBits);
}

inline float ZQTverskyOf(const ZQCounts& n, float alpha, float beta) {
  if (n.both == 0) return 0.0F;
  const float both = ZQCheckedFloat(n.both);
  return both / ((alpha * ZQCheckedFloat(n.onlyA) + beta * ZQCheckedFloat(n.onlyB)) + both);
}
[[gnu::always_inline]] inline double ZQTverskyOf(const ZQScoreTerms& terms, double q, double r,
                                                 double c) {
  const double weighted = (q - c) * terms.alpha + (r - c) * terms.beta + c;
  return (weighted == 0.0 ? 0.0 : c) / (weighted == 0.0 ? 1.0 : weighted);
}

inline float ZQManhattanOf(const ZQCounts& n, float /*alpha*/, float /*beta*/) {
  const unsigned int unequal = n.onlyA + n.onlyB;
  return ZQCheckedFloat(unequal) / ZQCheckedFloat(unequal + n.both + n.neither);
}
[[gnu::always_inline]] inline double ZQManhattanOf(const ZQScoreTerms& terms, double q, double r,
                                                   double c) {
  return (q + r - 2.0 * c) * terms.inverseBits;
}

/// By number: name, symmetric, a distance, counts neither, formulae.
inline constexpr auto zqMeasures = std::to_array<ZQMeasure>({
    {ZQSimMeasure::Tanimoto, "Tanimoto", true, false, false, ZQTanimotoOf, ZQTanimotoOf},
    {ZQSimMeasure::Cosine, "Cosine", true, false, false, ZQCosineOf, ZQCosineOf},
    {ZQSimMeasure::Dice, "Dice", true, false, true, ZQDiceOf, ZQDiceOf},
    {ZQSimMeasure::Euclid, "Euclid", true, false, true, ZQEuclidOf, ZQEuclidOf},
    {ZQSimMeasure::Tversky, "Tversky", false, false, false, ZQTverskyOf, ZQTverskyOf},
    {ZQSimMeasure::Manhattan, "Manhattan", true, true, true, ZQManhattanOf, ZQManhattanOf},
});
static_assert(
    [] {
      for (std::size_t i = 0; i < zqMeasures.size(); ++i) {
        if (zqMeasures[i].number != i + 1) return false;
      }
      return zqMeasures.size() == ZQSimMeasure::Number::End - 1;
    }(),
    "each measure has its row");

/// The row of a measure; null for a number that names none.
inline const ZQMeasure* ZQFindMeasure(unsigned int measure) {
  return ZQSimMeasure::IsValid(measure) ? &zqMeasures[measure - 1] : nullptr;
}

/// Whether a measure takes two fingerprints in either order. A number that names none does, as it
/// scores 0.0.
inline bool ZQIsSymmetric(unsigned int measure) {
  const ZQMeasure* row = ZQFindMeasure(measure);
  return !row || row->isSymmetric;
}

/// The score of the counts by a measure; 0.0 where they aren't valid.
inline float ZQScoreOf(const ZQMeasure& measure, const ZQCounts& n, float alpha, float beta) {
  if (!n.valid) return 0.0F;
  if (n.onlyA + n.onlyB == 0) return measure.isDistance ? 0.0F : 1.0F;
  return measure.ofCounts(n, alpha, beta);
}

}  // namespace ZQKorvex
