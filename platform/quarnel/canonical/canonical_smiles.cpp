#include <algorithm>
#include <string>
#include <vector>

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "contract/quarnel/readers.h"
#include "platform/quarnel/canonical/canonical_order_local.h"
#include "platform/quarnel/canonical/smiles_writer_local.h"
#include "platform/quarnel/molecule/workspace_local.h"
#include "platform/quarnel/perception/stereo_local.h"

namespace Quarnel {

namespace {

bool IsPrepared(const ZQMolBase& mol) {
  int model = 0;
  return mol.IsPerceived(ZQPerceived::Rings) && mol.IsPerceived(ZQPerceived::Aromaticity) &&
         mol.GetData(ZQAromaticityModelTag, model) && model == 2 && !ZQHasExplicitHydrogens(mol) &&
         !HasBondsWithoutOrder(mol);
}

void Prepare(ZQMolBase& mol) {
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

}  // namespace

// If a configuration proves not to be real, or can't be written, the work restarts without it, so
// that reading the text gives the molecule that was written.
std::string ZQMolToCanonicalSmiles(const ZQMolBase& mol) {
  const Workspace<MolView> workspace;
  const Workspace<CanonicalOrder> order;
  ZQGraphMol copy;
  const ZQMolBase* current = &mol;
  if (!IsPrepared(mol)) {
    copy = mol;
    Prepare(copy);
    current = &copy;
  }
  std::vector<unsigned int> parts;
  std::vector<unsigned int> ranks;
  std::vector<ZQBondBase*> lost;
  while (true) {
    const unsigned int numParts = ZQDetermineComponents(*current, parts);
    const MolView& view = workspace->Read(*current, MolView::Properties);
    const bool isReal = order->Find(view, parts, numParts);
    if (isReal) {
      ranks.assign(current->GetMaxAtomIdx(), 0);
      for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
        ranks[view.atoms[a].atom->GetIdx()] = order->RankOf(a);
      }
      std::vector<std::string> texts = WriteSmilesParts(*current, ranks, &lost);
      if (lost.empty()) {
        std::ranges::sort(texts);
        return JoinSmilesParts(texts);
      }
    }
    if (current == &mol) copy = mol;
    current = &copy;
    for (const ZQBondBase* bond : lost) {
      copy.GetBondAt(bond->GetIdx())->SetStereo(ZQBondStereo::None);
    }
    if (!isReal) {
      for (const StereoCentre& centre : order->Unreal()) {
        if (centre.IsBond()) {
          copy.GetBondAt(view.bonds[centre.bond].bond->GetIdx())->SetStereo(ZQBondStereo::None);
        } else {
          copy.GetAtomAt(view.atoms[centre.atom].atom->GetIdx())->SetStereo(ZQAtomStereo::None);
        }
      }
    }
    lost.clear();
    if (ZQHasExplicitHydrogens(copy)) Prepare(copy);
  }
}

}  // namespace Quarnel
