#include "contract/quarnel/mol.h"

#include <utility>

namespace Quarnel {

using Bostrel::ZQUnaryPredicate;

namespace {

// Visits the incident bonds of an atom without an allocation.
template <class Visit>
void ForEachBond(const ZQAtomBase& atom, Visit visit) {
  for (ZQBondBase* bond = atom.NextBond(nullptr); bond; bond = atom.NextBond(bond)) visit(*bond);
}

template <class T>
Bostrel::ZQIter<T> MakeIter(std::vector<T*>&& items) {
  return {new Bostrel::ZQPointerIter<T>(std::move(items))};
}

// Atoms or bonds by index, without holes.
template <class T, class GetAt>
std::vector<T*> Collect(unsigned int count, GetAt getAt, const ZQUnaryPredicate<T>* predicate) {
  std::vector<T*> items;
  for (unsigned int i = 0; i < count; ++i) {
    T* item = getAt(i);
    if (item && (!predicate || (*predicate)(*item))) items.push_back(item);
  }
  return items;
}

}  // namespace

unsigned int ZQAtomBase::GetTotalHCount() const {
  unsigned int count = GetImplicitHCount();
  ForEachBond(*this, [&](ZQBondBase& bond) { count += bond.GetNbr(this)->IsHydrogen(); });
  return count;
}

unsigned int ZQAtomBase::GetHvyDegree() const {
  unsigned int count = 0;
  ForEachBond(*this, [&](ZQBondBase& bond) { count += !bond.GetNbr(this)->IsHydrogen(); });
  return count;
}

unsigned int ZQAtomBase::GetHvyValence() const {
  unsigned int sum = 0;
  ForEachBond(*this, [&](ZQBondBase& bond) {
    if (!bond.GetNbr(this)->IsHydrogen()) sum += bond.GetOrder();
  });
  return sum;
}

unsigned int ZQAtomBase::GetDegree() const {
  unsigned int count = GetImplicitHCount();
  ForEachBond(*this, [&](ZQBondBase&) { ++count; });
  return count;
}

unsigned int ZQAtomBase::GetValence() const {
  unsigned int sum = GetImplicitHCount();
  ForEachBond(*this, [&](ZQBondBase& bond) { sum += bond.GetOrder(); });
  return sum;
}

bool ZQAtomBase::IsHalogen() const {
  const unsigned int z = GetAtomicNum();
  return z == 9 || z == 17 || z == 35 || z == 53 || z == 85 || z == 117;
}

Bostrel::ZQIter<ZQAtomBase> ZQAtomBase::GetAtoms() const {
  std::vector<ZQAtomBase*> atoms;
  ForEachBond(*this, [&](ZQBondBase& bond) { atoms.push_back(bond.GetNbr(this)); });
  return MakeIter(std::move(atoms));
}

Bostrel::ZQIter<ZQAtomBase> ZQAtomBase::GetAtoms(
    const ZQUnaryPredicate<ZQAtomBase>& predicate) const {
  std::vector<ZQAtomBase*> atoms;
  ForEachBond(*this, [&](ZQBondBase& bond) {
    ZQAtomBase* atom = bond.GetNbr(this);
    if (predicate(*atom)) atoms.push_back(atom);
  });
  return MakeIter(std::move(atoms));
}

Bostrel::ZQIter<ZQBondBase> ZQAtomBase::GetBonds() const {
  std::vector<ZQBondBase*> bonds;
  ForEachBond(*this, [&](ZQBondBase& bond) { bonds.push_back(&bond); });
  return MakeIter(std::move(bonds));
}

Bostrel::ZQIter<ZQAtomBase> ZQMolBase::GetAtoms() const {
  return MakeIter(Collect<ZQAtomBase>(
      GetMaxAtomIdx(), [this](unsigned int i) { return GetAtomAt(i); }, nullptr));
}

Bostrel::ZQIter<ZQAtomBase> ZQMolBase::GetAtoms(
    const ZQUnaryPredicate<ZQAtomBase>& predicate) const {
  return MakeIter(Collect<ZQAtomBase>(
      GetMaxAtomIdx(), [this](unsigned int i) { return GetAtomAt(i); }, &predicate));
}

Bostrel::ZQIter<ZQBondBase> ZQMolBase::GetBonds() const {
  return MakeIter(Collect<ZQBondBase>(
      GetMaxBondIdx(), [this](unsigned int i) { return GetBondAt(i); }, nullptr));
}

ZQAtomBase* ZQMolBase::GetAtom(const ZQUnaryPredicate<ZQAtomBase>& predicate) const {
  for (unsigned int i = 0; i < GetMaxAtomIdx(); ++i) {
    ZQAtomBase* atom = GetAtomAt(i);
    if (atom && predicate(*atom)) return atom;
  }
  return nullptr;
}

ZQBondBase* ZQMolBase::GetBond(const ZQUnaryPredicate<ZQBondBase>& predicate) const {
  for (unsigned int i = 0; i < GetMaxBondIdx(); ++i) {
    ZQBondBase* bond = GetBondAt(i);
    if (bond && predicate(*bond)) return bond;
  }
  return nullptr;
}

bool ZQHasAlphaBetaUnsat::operator()(const ZQAtomBase& atom) const {
  const auto isUnsaturated = [this](const ZQAtomBase& beta) {
    bool unsaturated = false;
    ForEachBond(beta, [&](ZQBondBase& bond) {
      unsaturated |= bond.IsAromatic() ? orAromatic_ : bond.GetOrder() > 1;
    });
    return unsaturated;
  };
  bool found = false;
  ForEachBond(atom, [&](ZQBondBase& toAlpha) {
    const ZQAtomBase* alpha = toAlpha.GetNbr(&atom);
    if (!alpha->IsCarbon()) return;
    ForEachBond(*alpha, [&](ZQBondBase& toBeta) {
      const ZQAtomBase* beta = toBeta.GetNbr(alpha);
      found |= beta != &atom && beta->IsCarbon() && isUnsaturated(*beta);
    });
  });
  return found;
}

}  // namespace Quarnel
