#include <algorithm>
#include <vector>

#include "platform/quarnel/perception/small_ring_local.h"

namespace Quarnel {

bool IsInSmallRing(const ZQBondBase& bond) {
  constexpr int longestWay = 6;  // bonds from one end to the other around a ring of seven
  thread_local std::vector<const ZQAtomBase*> reached;
  reached.assign(1, bond.GetBgn());
  std::size_t next = 0;
  for (int way = 1; way <= longestWay; ++way) {
    for (const std::size_t last = reached.size(); next < last; ++next) {
      const ZQAtomBase* from = reached[next];
      for (const ZQBondBase* b = from->NextBond(nullptr); b; b = from->NextBond(b)) {
        if (b == &bond) continue;
        const ZQAtomBase* to = b->GetNbr(from);
        if (to == bond.GetEnd()) return true;
        if (std::find(reached.begin(), reached.end(), to) == reached.end()) reached.push_back(to);
      }
    }
  }
  return false;
}

void DropSmallRingStereo(ZQMolBase& mol) {
  for (unsigned int i = 0; i < mol.GetMaxBondIdx(); ++i) {
    ZQBondBase* bond = mol.GetBondAt(i);
    if (bond && bond->GetStereo() != ZQBondStereo::None && IsInSmallRing(*bond)) {
      bond->SetStereo(ZQBondStereo::None);
    }
  }
}

}  // namespace Quarnel
