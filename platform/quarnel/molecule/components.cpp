#include "contract/quarnel/perception.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"
#include "platform/quarnel/molecule/workspace_local.h"

namespace Quarnel {

namespace {

// Numbers from 1 up the components connected by bonds for which `crosses` is true; an atom without
// such bonds is labelled only if `aloneCounts`. Returns the number of components.
template <class Crosses>
unsigned int LabelConnected(const ZQMolBase& mol, const MolView& view, bool aloneCounts,
                            std::vector<unsigned int>& labels, Crosses crosses) {
  std::vector<std::uint32_t> pending;
  labels.assign(mol.GetMaxAtomIdx(), 0);
  const auto labelOf = [&](std::uint32_t a) -> unsigned int& {
    return labels[view.atoms[a].atom->GetIdx()];
  };
  unsigned int count = 0;
  for (std::uint32_t start = 0; start < view.NumAtoms(); ++start) {
    if (labelOf(start) != 0) continue;
    labelOf(start) = ++count;
    pending.assign(1, start);
    bool alone = true;
    while (!pending.empty()) {
      const std::uint32_t a = pending.back();
      pending.pop_back();
      for (const MolView::Edge& edge : view.Edges(a)) {
        if (labelOf(edge.atom) != 0 || !crosses(view.bonds[edge.bond])) continue;
        alone = false;
        labelOf(edge.atom) = count;
        pending.push_back(edge.atom);
      }
    }
    if (alone && !aloneCounts) {
      labelOf(start) = 0;
      --count;
    }
  }
  return count;
}

}  // namespace

unsigned int ZQDetermineComponents(const ZQMolBase& mol, std::vector<unsigned int>& parts) {
  const Workspace<MolView> view;
  return LabelConnected(mol, view->Read(mol, MolView::Graph), true, parts,
                        [](const MolView::Bond&) { return true; });
}

unsigned int ZQDetermineAromaticRingSystems(const ZQMolBase& mol,
                                            std::vector<unsigned int>& systems) {
  const Workspace<MolView> workspace;
  const MolView& view = workspace->Read(mol, MolView::Properties);
  // A triple bond has no flag of its own.
  return LabelConnected(mol, view, false, systems, [&view](const MolView::Bond& bond) {
    return bond.aromatic ||
           (bond.order == 3 && view.atoms[bond.bgn].aromatic && view.atoms[bond.end].aromatic);
  });
}

}  // namespace Quarnel
