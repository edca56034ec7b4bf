#include "korvex/fpdatabaseoptions.h"

#include <algorithm>
#include <limits>

namespace ZQKorvex {

ZQFPDatabaseOptions::ZQFPDatabaseOptions(unsigned int limit, unsigned int simFunc) : limit_(limit) {
  if (ZQSimMeasure::IsValid(simFunc)) {
    simFunc_ = simFunc;
  } else {
    ZQThrow.Warning("%s unknown similarity function type %d ignored!",
                    "ZQFPDatabaseOptions::ZQFPDatabaseOptions()", static_cast<int>(simFunc));
  }
}

void ZQFPDatabaseOptions::SetSimFunc(unsigned int simFunc) {
  if (ZQSimMeasure::IsValid(simFunc)) {
    simFunc_ = simFunc;
  } else {
    ZQThrow.Warning("%s unknown similarity function type %u ignored!",
                    "ZQFPDatabaseOptions::SetSimFunc()", simFunc);
  }
}

void ZQFPDatabaseOptions::SetTverskyCoeffs(float alpha, float beta) {
  if (alpha < 0.0F || alpha > 1.0F || beta < 0.0F || beta > 1.0F) {
    ZQThrow.Warning("%s illegal alpha/beta values for Tversky similarity function are ignored!",
                    "ZQFPDatabaseOptions::SetTverskyCoeffs()");
    return;
  }
  tverskyAlpha_ = alpha;
  tverskyBeta_ = beta;
}

unsigned int ZQFPDatabaseOptions::GetNumProcessors() const {
  const unsigned int available = ZQGetNumProcessors();
  return numProcessors_ == 0 ? available : std::min(numProcessors_, 2 * available);
}

bool CompScoreBiggerIsBetter(const ZQSimScore& a, const ZQSimScore& b) {
  return a.GetScore() > b.GetScore();
}

bool CompScoreSmallerIsBetter(const ZQSimScore& a, const ZQSimScore& b) {
  return b.GetScore() > a.GetScore();
}

namespace {

std::unique_ptr<ZQHitList<ZQSimScore>> InitHitList(unsigned int limit, bool descending,
                                                   bool hasCutoff, float cutoff,
                                                   std::size_t expected) {
  const double threshold = hasCutoff    ? double{cutoff}
                           : descending ? std::numeric_limits<double>::min()
                                        : std::numeric_limits<double>::max();
  return std::make_unique<ZQHitList<ZQSimScore>>(
      limit, descending ? CompScoreBiggerIsBetter : CompScoreSmallerIsBetter,
      ZQSimScore(0xFFFFFFFF, threshold), expected);
}

}  // namespace

std::unique_ptr<ZQHitList<ZQSimScore>> ZQInitFPDatabaseHitList(unsigned int limit, bool descending,
                                                               bool hasCutoff, float cutoff) {
  // The number of scores is unknown here; a long list grows on demand.
  constexpr std::size_t expected = 65536;
  return InitHitList(limit, descending, hasCutoff, cutoff, expected);
}

std::unique_ptr<ZQHitList<ZQSimScore>> ZQInitFPDatabaseHitList(unsigned int defaultLimit,
                                                               const ZQFPDatabaseOptions& options) {
  const unsigned int limit = options.GetLimit() == 0 ? defaultLimit : options.GetLimit();
  return InitHitList(limit, options.GetDescendingOrder(), options.HasCutoff(), options.GetCutoff(),
                     defaultLimit);
}

}  // namespace ZQKorvex
