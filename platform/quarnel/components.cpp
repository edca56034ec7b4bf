#include "contract/quarnel/perception.h"
#include "platform/quarnel/molgraph_view_local.h"

namespace Quarnel {

unsigned int ZQDetermineComponents(const ZQMolBase& mol, std::vector<unsigned int>& parts) {
  const MolView& view = MolView::Read(mol, MolView::Graph);
  thread_local std::vector<std::uint32_t> pending;
  parts.assign(mol.GetMaxAtomIdx(), 0);
  const auto partOf = [&](std::uint32_t a) -> unsigned int& {
    return parts[view.atoms[a].atom->GetIdx()];
  };
  unsigned int count = 0;
  for (std::uint32_t start = 0; start < view.NumAtoms(); ++start) {
    if (partOf(start) != 0) continue;
    partOf(start) = ++count;
    pending.assign(1, start);
    while (!pending.empty()) {
      const std::uint32_t a = pending.back();
      pending.pop_back();
      for (const MolView::Edge& edge : view.Edges(a)) {
        if (partOf(edge.atom) != 0) continue;
        partOf(edge.atom) = count;
        pending.push_back(edge.atom);
      }
    }
  }
  return count;
}

}  // namespace Quarnel
