#pragma once

/// The measures of measuresim.h for Lingo texts with the query's text prepared once, for scans. The
/// query is side A. Counts are those of `ZQGetLingoSimTerms`, with neither as 0; an invalid query
/// warns and scores 0.0. Immutable; one object may be called from many threads.

#include <string>

#include "korvex/lingo.h"
#include "korvex/measuresim.h"

namespace ZQKorvex {

class ZQ_EXPORT ZQLingoSimFunc : public ZQSimFuncBase {
 public:
  /// Always returns 0.0: these objects support only the prepared form.
  float operator()(const ZQFingerPrint& a, const ZQFingerPrint& b) const override;
  virtual float operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const = 0;
};

/// The score of a query by a measure, which must be valid; only Tversky reads alpha and beta.
ZQ_EXPORT float ZQGetSimilarity(unsigned int measure, const ZQLingoSim& query,
                                const ZQFingerPrint& fp, float alpha, float beta);

using ZQTanimotoLingoSim = ZQMeasureSim<ZQLingoSimFunc, ZQLingoSim, ZQSimMeasure::Tanimoto>;
using ZQCosineLingoSim = ZQMeasureSim<ZQLingoSimFunc, ZQLingoSim, ZQSimMeasure::Cosine>;
using ZQDiceLingoSim = ZQMeasureSim<ZQLingoSimFunc, ZQLingoSim, ZQSimMeasure::Dice>;
using ZQEuclidLingoSim = ZQMeasureSim<ZQLingoSimFunc, ZQLingoSim, ZQSimMeasure::Euclid>;
using ZQManhattanLingoSim = ZQMeasureSim<ZQLingoSimFunc, ZQLingoSim, ZQSimMeasure::Manhattan>;
using ZQTverskyLingoSim = ZQWeightedMeasureSim<ZQLingoSimFunc, ZQLingoSim, ZQSimMeasure::Tversky>;

}  // namespace ZQKorvex
