#include "korvex/measuresim_lingo.h"

#include "korvex/measures_local.h"

namespace ZQKorvex {

float ZQLingoSimFunc::operator()(const ZQFingerPrint& /*a*/, const ZQFingerPrint& /*b*/) const {
  return 0.0F;
}

float ZQGetSimilarity(unsigned int measure, const ZQLingoSim& query, const ZQFingerPrint& fp,
                      float alpha, float beta) {
  const ZQMeasure* row = ZQFindMeasure(measure);
  if (!ZQ_ASSERT(row)) return 0.0F;
  ZQCounts n;
  if (!ZQGetLingoSimTerms(query, fp, &n.onlyA, &n.onlyB, &n.both)) return 0.0F;
  return ZQScoreOf(*row, n, alpha, beta);
}

}  // namespace ZQKorvex
