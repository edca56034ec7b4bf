#include "contract/quarnel/perception.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"
#include "platform/quarnel/molecule/workspace_local.h"

namespace Quarnel {

void ZQFindRingAtomsAndBonds(ZQMolBase& mol) {
  if (!mol.IsPerceived(ZQPerceived::Rings)) {
    // These read the flags, which are about to change.
    mol.SetPerceived(ZQPerceived::Chirality, false);
    mol.SetPerceived(ZQPerceived::Symmetry, false);
  }
  const Workspace<MolView> workspace;
  MolView& view = workspace->Read(mol, MolView::Graph);
  view.FindRings();
  for (const MolView::Atom& atom : view.atoms) atom.atom->SetInRing(atom.inRing);
  for (const MolView::Bond& bond : view.bonds) bond.bond->SetInRing(bond.inRing);
  mol.SetPerceived(ZQPerceived::Rings, true);
}

}  // namespace Quarnel
