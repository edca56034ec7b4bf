#include "korvex/measuresim_unhashed.h"

#include "korvex/multiset_local.h"

namespace ZQKorvex {

float ZQUnhashedSimFunc::operator()(const ZQFingerPrint& /*a*/, const ZQFingerPrint& /*b*/) const {
  return 0.0F;
}

float ZQTanimotoUnhashedSim::operator()(const std::vector<const std::string*>& a,
                                        const std::vector<const std::string*>& b) const {
  return ZQMultisetTanimotoOf(a, b);
}
ZQTanimotoUnhashedSim* ZQTanimotoUnhashedSim::CreateCopy() const {
  return new ZQTanimotoUnhashedSim(*this);
}
std::string ZQTanimotoUnhashedSim::GetSimTypeString() const {
  return "ZQ" + ZQGetSimilarityMeasureName(ZQSimMeasure::Tanimoto);
}

}  // namespace ZQKorvex
