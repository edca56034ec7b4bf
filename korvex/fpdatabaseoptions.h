#pragma once

/// Common parts of all searches: the options, the record of a hit, and the bounded list of the best
/// hits. Not synchronised.

#include <cstdint>
#include <memory>
#include <optional>

#include "contract/bostrel/dots.h"
#include "contract/bostrel/hitlist.h"
#include "contract/bostrel/iter.h"
#include "korvex/measuresim.h"

namespace ZQKorvex {

/// The options of a search, a copyable value.
class ZQ_EXPORT ZQFPDatabaseOptions {
 public:
  ZQFPDatabaseOptions() = default;
  /// Warns about a measure outside 1 to 6 and keeps Tanimoto.
  ZQFPDatabaseOptions(unsigned int limit, unsigned int simFunc);

  /// Score threshold: inclusive in unsorted searches, exclusive in sorted ones.
  void SetCutoff(float cutoff) {
    cutoff_ = cutoff;
    hasCutoff_ = true;
  }
  float GetCutoff() const { return cutoff_; }
  bool HasCutoff() const { return hasCutoff_; }
  /// A constant of `ZQSimMeasure`; for any other number it warns and keeps the old value.
  void SetSimFunc(unsigned int simFunc);
  unsigned int GetSimFunc() const { return simFunc_; }
  /// Both in 0 to 1; otherwise it warns and keeps both old values. Defaults 0.95 and 0.05.
  void SetTverskyCoeffs(float alpha, float beta);
  float GetTverskyAlpha() const { return tverskyAlpha_; }
  float GetTverskyBeta() const { return tverskyBeta_; }
  /// True (the default): greater scores are better and come first.
  void SetDescendingOrder(bool descending) { descending_ = descending; }
  bool GetDescendingOrder() const { return descending_; }
  /// Greatest number of results, 1000 by default; 0 means all.
  void SetLimit(unsigned int limit) { limit_ = limit; }
  unsigned int GetLimit() const { return limit_; }
  /// Threads of a sorted search, 1 by default; 0 means the number of processors.
  void SetNumProcessors(unsigned int numProcessors) { numProcessors_ = numProcessors; }
  /// The effective number, at most twice the number of processors.
  unsigned int GetNumProcessors() const;
  /// Copies the tracer; a query over all pairs of records counts the pairs by a copy of it. A query
  /// that the tracer ends warns "%s : stopped!" and returns an empty result.
  void SetTracer(const ZQDots& tracer) { tracer_ = tracer; }
  const std::optional<ZQDots>& GetTracer() const { return tracer_; }

 private:
  float cutoff_ = 0.0F;
  bool hasCutoff_ = false;
  unsigned int simFunc_ = ZQSimMeasure::Tanimoto;
  float tverskyAlpha_ = 0.95F;
  float tverskyBeta_ = 0.05F;
  bool descending_ = true;
  unsigned int limit_ = 1000;
  unsigned int numProcessors_ = 1;
  std::optional<ZQDots> tracer_;
};

/// One hit: the fingerprint's index and its score.
class ZQSimScore {
 public:
  ZQSimScore() = default;
  ZQSimScore(std::uint64_t idx, double score) : idx_(idx), score_(score) {}
  std::uint64_t GetIdx() const { return idx_; }
  double GetScore() const { return score_; }

 private:
  std::uint64_t idx_ = 0;
  double score_ = 0.0;
};

/// One entry of a sparse similarity matrix.
class ZQSimScorePair {
 public:
  ZQSimScorePair() = default;
  ZQSimScorePair(std::uint64_t idx1, std::uint64_t idx2, double score)
      : idx1_(idx1), idx2_(idx2), score_(score) {}
  std::uint64_t GetIdx1() const { return idx1_; }
  std::uint64_t GetIdx2() const { return idx2_; }
  double GetScore() const { return score_; }

 private:
  std::uint64_t idx1_ = 0;
  std::uint64_t idx2_ = 0;
  double score_ = 0.0;
};

/// Strict orders of scores, both false for equal scores.
ZQ_EXPORT bool CompScoreBiggerIsBetter(const ZQSimScore& a, const ZQSimScore& b);
ZQ_EXPORT bool CompScoreSmallerIsBetter(const ZQSimScore& a, const ZQSimScore& b);

/// A hit list for the best `limit` scores, of equal ones those of lower index. It accepts only
/// scores strictly better than the cutoff. Without a cutoff a descending list still rejects 0.0.
ZQ_EXPORT std::unique_ptr<ZQHitList<ZQSimScore>> ZQInitFPDatabaseHitList(unsigned int limit,
                                                                         bool descending,
                                                                         bool hasCutoff,
                                                                         float cutoff);
/// The same from options, whose limit of 0 means `defaultLimit`, the number of fingerprints
/// searched. Never reserves memory for more than `defaultLimit` entries.
ZQ_EXPORT std::unique_ptr<ZQHitList<ZQSimScore>> ZQInitFPDatabaseHitList(
    unsigned int defaultLimit, const ZQFPDatabaseOptions& options);

}  // namespace ZQKorvex
