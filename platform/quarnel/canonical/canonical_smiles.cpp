#include <algorithm>
#include <string>
#include <vector>

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "contract/quarnel/readers.h"
#include "platform/quarnel/canonical/canonical_order_local.h"
#include "platform/quarnel/canonical/real_stereo_local.h"
#include "platform/quarnel/canonical/smiles_writer_local.h"
#include "platform/quarnel/molecule/workspace_local.h"
#include "platform/quarnel/perception/stereo_local.h"

namespace Quarnel {

// If a configuration proves not to be real, or can't be written, the work restarts without it, so
// that reading the text gives the molecule that was written.
std::string ZQMolToCanonicalSmiles(const ZQMolBase& mol) {
  const Workspace<MolView> workspace;
  const Workspace<CanonicalOrder> order;
  ZQGraphMol copy;
  const ZQMolBase* current = &mol;
  if (!IsPreparedForOrder(mol)) {
    copy = mol;
    PrepareForOrder(copy);
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
    if (!isReal) ClearUnreal(copy, view, order->Unreal());
    lost.clear();
    if (ZQHasExplicitHydrogens(copy)) PrepareForOrder(copy);
  }
}

}  // namespace Quarnel
