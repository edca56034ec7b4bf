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

template <class T>
T* Find(const std::vector<T*>& table, const T* item) {
  return item->GetIdx() < table.size() ? table[item->GetIdx()] : nullptr;
}

}  // namespace

ZQAtomBondSet::ZQAtomBondSet(const ZQAtomBondSet& other, const std::vector<ZQAtomBase*>& atoms,
                             const std::vector<ZQBondBase*>& bonds) {
  Reserve(other.atoms_.size(), other.bonds_.size());
  for (const ZQAtomBase* atom : other.atoms_) AddAtom(Find(atoms, atom));
  for (const ZQBondBase* bond : other.bonds_) AddBond(Find(bonds, bond));
}

bool ZQAtomBondSet::AddAtom(ZQAtomBase* atom) { return AddOnce(atoms_, atom); }

bool ZQAtomBondSet::AddBond(ZQBondBase* bond) { return AddOnce(bonds_, bond); }

}  // namespace Quarnel
