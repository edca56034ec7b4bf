#include "korvex/vsepr_aro_stereo_types.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "korvex/vsepr_types_local.h"

namespace ZQKorvex::VSEPRAroStereoType {

namespace {
constexpr ZQVseprTypes types{"VSEPRAroStereoType", Unknown};
constexpr std::size_t usualDegree = 4;
}  // namespace

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
unsigned int GetStereo(unsigned int type) { return types.GetRow("GetStereo", type).stereo; }
unsigned int GetDegree(unsigned int type) { return GetHeavyDegree(type) + GetHydrogenCount(type); }
unsigned int GetValence(unsigned int type) {
  return GetHeavyValence(type) + GetHydrogenCount(type);
}
std::string GetName(unsigned int type) { return types.GetName(type); }

unsigned int GetType(const std::string& name) { return types.GetType(name); }

unsigned int GetType(const ZQAtomBase& atom) {
  unsigned int row = ZQFindVseprRow(atom);
  if (row == ZQNoVseprRow) return Unknown;
  // The neighbours by ascending type; equal ones in the order of their bonds.
  using Typed = std::pair<unsigned int, ZQAtomBase*>;
  std::vector<Typed> typed;
  typed.reserve(usualDegree);
  for (const ZQBondBase* b = atom.NextBond(nullptr); b; b = atom.NextBond(b)) {
    ZQAtomBase* neighbour = b->GetNbr(&atom);
    const unsigned int type = VSEPRAroType::GetType(*neighbour);
    typed.emplace(std::ranges::upper_bound(typed, type, {}, &Typed::first), type, neighbour);
  }
  std::vector<ZQAtomBase*> neighbours;
  neighbours.reserve(typed.size());
  for (const auto& [type, neighbour] : typed) neighbours.push_back(neighbour);
  const unsigned int stereo = atom.GetStereo(neighbours, ZQStereoClass::Tetrahedral);
  const bool isAromatic = atom.IsAromatic();
  if (stereo != 0 && (isAromatic || stereo < 2 || stereo > 3)) return Unknown;
  if (isAromatic) row = ZQGetAromaticVseprRow(row);
  if (stereo != 0) row = ZQGetStereoVseprRow(row, stereo);
  return row == ZQNoVseprRow ? Unknown : row;
}

ZQUnaryPredicate<ZQAtomBase>* CreatePredicate(unsigned int type) {
  return types.CreatePredicate(type);
}

}  // namespace ZQKorvex::VSEPRAroStereoType
