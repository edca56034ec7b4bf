#include "contract/quarnel/perception.h"
#include "platform/quarnel/perception/stereo_local.h"

namespace Quarnel {
namespace {

/// A configuration has at most four bonds.
constexpr unsigned int mostBonds = 4;

/// The number of bonds, or any number above `mostBonds`: an atom may have thousands.
unsigned int NumBonds(const ZQAtomBase& atom) {
  unsigned int count = 0;
  const ZQBondBase* b = atom.NextBond(nullptr);
  for (; b && count <= mostBonds; b = atom.NextBond(b)) ++count;
  return count;
}

/// If the configuration was given by four explicit neighbours including the hydrogen, it is kept,
/// with the hydrogen now first in the order of neighbours. With three and a lone pair it is lost.
void MoveToFront(ZQAtomBase& centre, const ZQBondBase& toHydrogen) {
  unsigned int position = 0;
  for (const ZQBondBase* b = centre.NextBond(nullptr); b != &toHydrogen; b = centre.NextBond(b)) {
    ++position;
  }
  centre.SetStereo(Turned(centre.GetStereo(), position % 2 != 0));
}

/// The bond of the lowest index that is neither `doubleBond` nor `left`.
const ZQBondBase* FirstOther(const ZQAtomBase& end, const ZQBondBase& doubleBond,
                             const ZQBondBase* left) {
  const ZQBondBase* b = end.NextBond(nullptr);
  while (b && (b == &doubleBond || b == left)) b = end.NextBond(b);
  return b;
}

/// Whether stereo of the parent or of a double bond at it can't be described without the hydrogen.
bool HasStereoRole(const ZQAtomBase& parent, const ZQBondBase& toHydrogen) {
  const unsigned int numBonds = NumBonds(parent);
  if (numBonds == 3) {
    return parent.GetStereo() != ZQAtomStereo::None && parent.GetImplicitHCount() == 0;
  }
  const ZQBondBase* other = FirstOther(parent, toHydrogen, nullptr);
  return numBonds == 2 && other->GetStereo() != ZQBondStereo::None;
}

/// Restates the configurations around the parent for the graph in which the bond's other atom is
/// one more implicit hydrogen, or deleted without replacement; clears those that can't be restated.
void ReleaseStereo(ZQAtomBase& parent, const ZQBondBase& toLeaving, bool becomesHydrogen) {
  const unsigned int numBonds = NumBonds(parent);
  if (parent.GetStereo() != ZQAtomStereo::None) {
    if (becomesHydrogen && parent.GetImplicitHCount() == 0 && numBonds == 4) {
      MoveToFront(parent, toLeaving);
    } else {
      parent.SetStereo(ZQAtomStereo::None);
    }
  }
  if (numBonds > mostBonds) return;
  for (ZQBondBase* b = parent.NextBond(nullptr); b; b = parent.NextBond(b)) {
    if (b->GetStereo() == ZQBondStereo::None) continue;
    if (!becomesHydrogen || !FirstOther(parent, *b, &toLeaving)) {
      b->SetStereo(ZQBondStereo::None);
    } else if (FirstOther(parent, *b, nullptr) == &toLeaving) {
      b->SetStereo(Turned(b->GetStereo(), true));
    }
  }
}

}  // namespace

void ZQRemoveAtom(ZQMolBase& mol, ZQAtomBase* atom, bool becomesHydrogen) {
  const bool isOwn =
      atom && atom->GetIdx() < mol.GetMaxAtomIdx() && mol.GetAtomAt(atom->GetIdx()) == atom;
  if (!isOwn) return;
  for (const ZQBondBase* b = atom->NextBond(nullptr); b; b = atom->NextBond(b)) {
    ZQAtomBase* parent = b->GetNbr(atom);
    ReleaseStereo(*parent, *b, becomesHydrogen);
    if (becomesHydrogen) parent->SetImplicitHCount(parent->GetImplicitHCount() + 1);
  }
  mol.DeleteAtom(atom);
}

bool ZQHasExplicitHydrogens(const ZQMolBase& mol) {
  for (unsigned int idx = 0; idx < mol.GetMaxAtomIdx(); ++idx) {
    const ZQAtomBase* atom = mol.GetAtomAt(idx);
    if (atom && atom->IsHydrogen()) return true;
  }
  return false;
}

void ZQSuppressHydrogens(ZQMolBase& mol, bool deleteIsotopes, bool deleteMapped,
                         bool deleteStereo) {
  if (!ZQHasExplicitHydrogens(mol)) return;
  mol.BeginEdit();
  for (unsigned int idx = 0; idx < mol.GetMaxAtomIdx(); ++idx) {
    ZQAtomBase* hydrogen = mol.GetAtomAt(idx);
    if (!hydrogen || !hydrogen->IsHydrogen()) continue;
    if (hydrogen->GetFormalCharge() != 0 || hydrogen->GetImplicitHCount() != 0) continue;
    if (!deleteIsotopes && hydrogen->GetIsotope() != 0) continue;
    if (!deleteMapped && hydrogen->GetMapIdx() != 0) continue;
    const ZQBondBase* bond = hydrogen->NextBond(nullptr);
    if (!bond || hydrogen->NextBond(bond) || bond->GetOrder() != 1) continue;
    ZQAtomBase* parent = bond->GetNbr(hydrogen);
    if (parent->IsHydrogen()) continue;
    if (!deleteStereo && HasStereoRole(*parent, *bond)) continue;
    ZQRemoveAtom(mol, hydrogen, true);
  }
  mol.EndEdit();
}

}  // namespace Quarnel
