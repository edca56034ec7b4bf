#pragma once

/// The similarity measures, one row each. A new one needs a constant of `ZQSimMeasure`, its
/// formulae and its row; without the row nothing compiles. The order of the arithmetic affects the
/// score and must not change.
///
/// Each has two formulae. The single-precision one takes the four counts of measuresim.h and is
/// used for fingerprints, including Lingo texts, whose neither is 0. The double-precision one takes
/// three counts and is used for the scans of the fast database, on a GPU too
/// (contract/nubrel/scores.h): there two empty fingerprints score 0.0 by Tanimoto, Cosine, Dice and
/// Tversky, and Cosine's root is exact.

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

#include "contract/nubrel/scores.h"
#include "korvex/checked_local.h"
#include "korvex/fpdatabaseoptions.h"
#include "korvex/processor_local.h"

namespace ZQKorvex {

using namespace Nubrel;

/// The counts of two fingerprints, as in measuresim.h. Passed by value, in two registers: a scan of
/// single pairs waits for each score.
struct ZQCounts {
  unsigned int onlyA = 0;
  unsigned int onlyB = 0;
  unsigned int both = 0;
  unsigned int neither = 0;
};

/// The inputs of a scan's score besides the counts.
struct ZQScoreTerms : ZQCUScoreTerms {
  ZQScoreTerms(const ZQFPDatabaseOptions& options, std::uint64_t numBits)
      : ZQCUScoreTerms{.bits = ZQCheckedDouble(numBits),
                       .inverseBits = 1.0 / ZQCheckedDouble(numBits),
                       .alpha = options.GetTverskyAlpha(),
                       .beta = options.GetTverskyBeta()} {}
};

struct ZQMeasure {
  unsigned int number;
  const char* name;
  bool isSymmetric;
  bool isDistance;  ///< equal fingerprints have 0.0, not 1.0
  /// The score of two different fingerprints; `ZQScoreOf` also handles equal ones.
  float (*ofCounts)(ZQCounts n, float alpha, float beta);
  /// The score of two fingerprints with `q` and `r` bits, `c` of them common: from 0.0 to 1.0 for
  /// consistent counts. Others may give any number, infinity and NaN included.
  double (*ofTerms)(const ZQCUScoreTerms& terms, double q, double r, double c);
};

// Usually without a branch for no common bits, which a scan of sparse fingerprints would
// mispredict.
inline float ZQTanimotoOf(ZQCounts n, float /*alpha*/, float /*beta*/) {
  const unsigned int any = n.onlyA + n.onlyB + n.both;
  if (any > 1U << std::numeric_limits<float>::digits) [[unlikely]] {
    if (n.both == 0) return 0.0F;
  }
  return ZQCheckedFloat(n.both) / ZQCheckedFloat(any);
}

inline float ZQCosineOf(ZQCounts n, float /*alpha*/, float /*beta*/) {
  if (n.both == 0) return 0.0F;
  const float x = ZQCheckedFloat(n.onlyB + n.both) * ZQCheckedFloat(n.onlyA + n.both);
  const float r = ZQReciprocalRootEstimate(x);
  return ((((x * r) * r) + -3.0F) * (r * -0.5F)) * ZQCheckedFloat(n.both);
}

inline float ZQDiceOf(ZQCounts n, float /*alpha*/, float /*beta*/) {
  if (n.both == 0) return 0.0F;
  const float both = ZQCheckedFloat(n.both);
  const double sum = 2.0 * static_cast<double>(n.both) + static_cast<double>(n.onlyA + n.onlyB);
  return (both + both) / static_cast<float>(sum);
}

inline float ZQEuclidOf(ZQCounts n, float /*alpha*/, float /*beta*/) {
  const unsigned int equal = n.both + n.neither;
  if (equal == 0) return 0.0F;
  return std::sqrt(ZQCheckedFloat(equal) / ZQCheckedFloat(n.onlyA + n.onlyB + equal));
}

inline float ZQTverskyOf(ZQCounts n, float alpha, float beta) {
  if (n.both == 0) return 0.0F;
  const float both = ZQCheckedFloat(n.both);
  return both / ((alpha * ZQCheckedFloat(n.onlyA) + beta * ZQCheckedFloat(n.onlyB)) + both);
}

inline float ZQManhattanOf(ZQCounts n, float /*alpha*/, float /*beta*/) {
  const unsigned int unequal = n.onlyA + n.onlyB;
  return ZQCheckedFloat(unequal) / ZQCheckedFloat(unequal + n.both + n.neither);
}

/// By number: name, symmetric, a distance, formulae.
inline constexpr auto zqMeasures = std::to_array<ZQMeasure>({
    {ZQSimMeasure::Tanimoto, "Tanimoto", true, false, ZQTanimotoOf, ZQCUTanimoto},
    {ZQSimMeasure::Cosine, "Cosine", true, false, ZQCosineOf, ZQCUCosine},
    {ZQSimMeasure::Dice, "Dice", true, false, ZQDiceOf, ZQCUDice},
    {ZQSimMeasure::Euclid, "Euclid", true, false, ZQEuclidOf, ZQCUEuclid},
    {ZQSimMeasure::Tversky, "Tversky", false, false, ZQTverskyOf, ZQCUTversky},
    {ZQSimMeasure::Manhattan, "Manhattan", true, true, ZQManhattanOf, ZQCUManhattan},
});
static_assert(
    [] {
      for (std::size_t i = 0; i < zqMeasures.size(); ++i) {
        if (zqMeasures[i].number != i + 1) return false;
      }
      return zqMeasures.size() == ZQSimMeasure::Number::End - 1 &&
             zqMeasures.size() == zqCUNumMeasures;
    }(),
    "each measure has its row");

/// The row of a measure; null for an unknown number.
inline const ZQMeasure* ZQFindMeasure(unsigned int measure) {
  return ZQSimMeasure::IsValid(measure) ? &zqMeasures[measure - 1] : nullptr;
}

/// Whether a measure is symmetric in the two fingerprints. True for an unknown number, which scores
/// 0.0.
inline bool ZQIsSymmetric(unsigned int measure) {
  const ZQMeasure* row = ZQFindMeasure(measure);
  return !row || row->isSymmetric;
}

/// The counts of what Tanimoto compares: bits, substrings of Lingo texts or tokens of unhashed
/// ones.
ZQCounts ZQCountItems(const ZQFingerPrint& a, const ZQFingerPrint& b);

/// The score of the counts by a measure.
inline float ZQScoreOf(const ZQMeasure& measure, ZQCounts n, float alpha, float beta) {
  if (n.onlyA + n.onlyB == 0) return measure.isDistance ? 0.0F : 1.0F;
  return measure.ofCounts(n, alpha, beta);
}

}  // namespace ZQKorvex
