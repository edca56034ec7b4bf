#include "korvex/measuresim_lingo.h"

#include "korvex/measure_formulae_local.h"

namespace ZQKorvex {

namespace {

ZQCounts CountsOf(const ZQLingoSim& query, const ZQFingerPrint& fp) {
  ZQCounts n;
  n.valid = ZQGetLingoSimTerms(query, fp, &n.onlyA, &n.onlyB, &n.both);
  return n;
}

}  // namespace

float ZQLingoSimFunc::operator()(const ZQFingerPrint& /*a*/, const ZQFingerPrint& /*b*/) const {
  return 0.0F;
}

float ZQTanimotoLingoSim::operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const {
  return ZQTanimotoOf(CountsOf(query, fp));
}
ZQTanimotoLingoSim* ZQTanimotoLingoSim::CreateCopy() const { return new ZQTanimotoLingoSim(*this); }
std::string ZQTanimotoLingoSim::GetSimTypeString() const { return "ZQTanimoto"; }

float ZQCosineLingoSim::operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const {
  return ZQCosineOf(CountsOf(query, fp));
}
ZQCosineLingoSim* ZQCosineLingoSim::CreateCopy() const { return new ZQCosineLingoSim(*this); }
std::string ZQCosineLingoSim::GetSimTypeString() const { return "ZQCosine"; }

float ZQDiceLingoSim::operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const {
  return ZQDiceOf(CountsOf(query, fp));
}
ZQDiceLingoSim* ZQDiceLingoSim::CreateCopy() const { return new ZQDiceLingoSim(*this); }
std::string ZQDiceLingoSim::GetSimTypeString() const { return "ZQDice"; }

float ZQEuclidLingoSim::operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const {
  return ZQEuclidOf(CountsOf(query, fp));
}
ZQEuclidLingoSim* ZQEuclidLingoSim::CreateCopy() const { return new ZQEuclidLingoSim(*this); }
std::string ZQEuclidLingoSim::GetSimTypeString() const { return "ZQEuclid"; }

float ZQManhattanLingoSim::operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const {
  return ZQManhattanOf(CountsOf(query, fp));
}
ZQManhattanLingoSim* ZQManhattanLingoSim::CreateCopy() const {
  return new ZQManhattanLingoSim(*this);
}
std::string ZQManhattanLingoSim::GetSimTypeString() const { return "ZQManhattan"; }

float ZQTverskyLingoSim::operator()(const ZQLingoSim& query, const ZQFingerPrint& fp) const {
  return ZQTverskyOf(CountsOf(query, fp), alpha_, beta_);
}
ZQTverskyLingoSim* ZQTverskyLingoSim::CreateCopy() const { return new ZQTverskyLingoSim(*this); }
std::string ZQTverskyLingoSim::GetSimTypeString() const { return "ZQTversky"; }

}  // namespace ZQKorvex
