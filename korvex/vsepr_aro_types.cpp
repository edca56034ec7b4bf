#include "korvex/vsepr_aro_types.h"

#include "korvex/vsepr_types_local.h"

namespace ZQKorvex::VSEPRAroType {

namespace {
constexpr ZQVseprTypes types{"VSEPRAroType", Unknown};
}

unsigned int GetAtomicNumber(unsigned int type) {
  return types.GetRow("GetAtomicNumber", type).atomicNumber;
}
int GetCharge(unsigned int type) { return types.GetRow("GetCharge", type).charge; }
unsigned int GetHeavyDegree(unsigned int type) {
  return types.GetRow("GetHeavyDegree", type).heavyDegree;
}
unsigned int GetHeavyValence(unsigned int type) {
  return types.GetRow("GetHeavyValence", type).heavyValence;
}
unsigned int GetHydrogenCount(unsigned int type) {
  return types.GetRow("GetHydrogenCount", type).hydrogenCount;
}
unsigned int GetLPCount(unsigned int type) { return types.GetRow("GetLPCount", type).lonePairs; }
bool GetAromatic(unsigned int type) { return types.GetRow("GetAromatic", type).isAromatic; }
unsigned int GetDegree(unsigned int type) { return GetHeavyDegree(type) + GetHydrogenCount(type); }
unsigned int GetValence(unsigned int type) {
  return GetHeavyValence(type) + GetHydrogenCount(type);
}
std::string GetName(unsigned int type) { return types.GetName(type); }

unsigned int GetType(const std::string& name) { return types.GetType(name); }

unsigned int GetType(const ZQAtomBase& atom) {
  unsigned int row = ZQFindVseprRow(atom);
  if (row != ZQNoVseprRow && atom.IsAromatic()) row = ZQGetAromaticVseprRow(row);
  return row == ZQNoVseprRow ? Unknown : row;
}

ZQUnaryPredicate<ZQAtomBase>* CreatePredicate(unsigned int type) {
  return types.CreatePredicate(type);
}

}  // namespace ZQKorvex::VSEPRAroType
