#include "korvex/measuresim_unhashed.h"

#include "korvex/measure_formulae_local.h"

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
std::string ZQTanimotoUnhashedSim::GetSimTypeString() const { return "ZQTanimoto"; }

}  // namespace ZQKorvex
