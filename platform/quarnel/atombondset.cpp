#include "contract/quarnel/atombondset.h"

#include <algorithm>

namespace Quarnel {

namespace {

template <class T>
bool AddOnce(std::vector<T*>& items, T* item) {
  if (!item || std::find(items.begin(), items.end(), item) != items.end()) return false;
  items.push_back(item);
  return true;
}

}  // namespace

bool ZQAtomBondSet::AddAtom(ZQAtomBase* atom) { return AddOnce(atoms_, atom); }

bool ZQAtomBondSet::AddBond(ZQBondBase* bond) { return AddOnce(bonds_, bond); }

}  // namespace Quarnel
