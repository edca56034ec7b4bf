#include "platform/quarnel/canonical/real_stereo_local.h"

#include <vector>

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "platform/quarnel/canonical/canonical_order_local.h"
#include "platform/quarnel/canonical/smiles_writer_local.h"
#include "platform/quarnel/molecule/workspace_local.h"
#include "platform/quarnel/perception/stereo_local.h"

namespace Quarnel {

namespace {

bool HasConfigurations(const ZQMolBase& mol) {
  for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    const ZQAtomBase* atom = mol.GetAtomAt(i);
    if (atom && atom->GetStereo() != ZQAtomStereo::None) return true;
  }
  for (unsigned int i = 0; i < mol.GetMaxBondIdx(); ++i) {
    const ZQBondBase* bond = mol.GetBondAt(i);
    if (bond && bond->GetStereo() != ZQBondStereo::None) return true;
  }
  return false;
}

// Whether the prepared copy says nothing about the atom's configuration.
bool HasBondWithoutOrder(const ZQAtomBase& atom) {
  const ZQBondBase* b = atom.NextBond(nullptr);
  while (b && b->GetOrder() != 0) b = atom.NextBond(b);
  return b != nullptr;
}

// Clears configurations that the copy has lost: those that aren't real, and those that went with
// hydrogens, as of two on one atom.
void ClearLost(ZQMolBase& mol, const ZQGraphMol& copy) {
  for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    ZQAtomBase* atom = mol.GetAtomAt(i);
    if (!atom || atom->GetStereo() == ZQAtomStereo::None || HasBondWithoutOrder(*atom)) continue;
    const ZQAtomBase* kept = copy.GetAtomAt(i);
    if (!kept || kept->GetStereo() == ZQAtomStereo::None) atom->SetStereo(ZQAtomStereo::None);
  }
  for (unsigned int i = 0; i < mol.GetMaxBondIdx(); ++i) {
    ZQBondBase* bond = mol.GetBondAt(i);
    if (!bond || bond->GetStereo() == ZQBondStereo::None) continue;
    if (HasBondWithoutOrder(*bond->GetBgn()) || HasBondWithoutOrder(*bond->GetEnd())) continue;
    const ZQBondBase* kept = copy.GetBondAt(i);
    if (!kept || kept->GetStereo() == ZQBondStereo::None) bond->SetStereo(ZQBondStereo::None);
  }
}

}  // namespace

bool IsPreparedForOrder(const ZQMolBase& mol) {
  int model = 0;
  return mol.IsPerceived(ZQPerceived::Rings) && mol.IsPerceived(ZQPerceived::Aromaticity) &&
         mol.GetData(ZQAromaticityModelTag, model) && model == 2 && !ZQHasExplicitHydrogens(mol) &&
         !HasBondsWithoutOrder(mol);
}

void PrepareForOrder(ZQMolBase& mol) {
  for (unsigned int b = 0; b < mol.GetMaxBondIdx(); ++b) {
    ZQBondBase* bond = mol.GetBondAt(b);
    if (!bond || bond->GetOrder() != 0) continue;
    DropStereo(*bond->GetBgn());
    DropStereo(*bond->GetEnd());
    mol.DeleteBond(bond);
  }
  ZQSuppressHydrogens(mol);
  ZQFindRingAtomsAndBonds(mol);
  ZQAssignAromaticFlags(mol, 2, true, 0, false);
}

void ClearUnreal(ZQMolBase& mol, const MolView& view, std::span<const StereoCentre> unreal) {
  for (const StereoCentre& centre : unreal) {
    if (centre.IsBond()) {
      mol.GetBondAt(view.bonds[centre.bond].bond->GetIdx())->SetStereo(ZQBondStereo::None);
    } else {
      mol.GetAtomAt(view.atoms[centre.atom].atom->GetIdx())->SetStereo(ZQAtomStereo::None);
    }
  }
}

void ZQClearUnrealStereo(ZQMolBase& mol) {
  if (!HasConfigurations(mol)) return;
  const Workspace<MolView> workspace;
  const Workspace<CanonicalOrder> order;
  ZQGraphMol copy;
  ZQMolBase* current = &mol;
  if (!IsPreparedForOrder(mol)) {
    copy = mol;
    PrepareForOrder(copy);
    current = &copy;
  }
  std::vector<unsigned int> parts;
  while (true) {
    const unsigned int numParts = ZQDetermineComponents(*current, parts);
    const MolView& view = workspace->Read(*current, MolView::Properties);
    if (order->Find(view, parts, numParts)) break;
    ClearUnreal(*current, view, order->Unreal());
    if (ZQHasExplicitHydrogens(*current)) PrepareForOrder(copy);
  }
  if (current == &copy) ClearLost(mol, copy);
}

}  // namespace Quarnel
