#include "platform/quarnel/molecule/molgraph_view_local.h"

#include <algorithm>

namespace Quarnel {

MolView& MolView::Read(const ZQMolBase& mol, Depth depth) {
  const unsigned int atomSlots = mol.GetMaxAtomIdx();
  const unsigned int bondSlots = mol.GetMaxBondIdx();
  atoms.clear();
  bonds.clear();
  dense_.resize(atomSlots);
  for (unsigned int idx = 0; idx < atomSlots; ++idx) {
    ZQAtomBase* atom = mol.GetAtomAt(idx);
    if (!atom) continue;
    dense_[idx] = NumAtoms();
    Atom& entry = atoms.emplace_back();
    entry.atom = atom;
    if (depth == Graph) continue;
    entry.element = atom->GetAtomicNum();
    entry.isotope = atom->GetIsotope();
    entry.charge = atom->GetFormalCharge();
    entry.implicitH = atom->GetImplicitHCount();
    entry.aromatic = atom->IsAromatic();
    entry.inRing = atom->IsInRing();
  }
  for (unsigned int idx = 0; idx < bondSlots; ++idx) {
    ZQBondBase* bond = mol.GetBondAt(idx);
    if (!bond) continue;
    Bond& entry = bonds.emplace_back();
    entry.bond = bond;
    entry.bgn = dense_[bond->GetBgn()->GetIdx()];
    entry.end = dense_[bond->GetEnd()->GetIdx()];
    ++atoms[entry.bgn].degree;
    ++atoms[entry.end].degree;
    if (depth == Graph) continue;
    entry.order = bond->GetOrder();
    entry.aromatic = bond->IsAromatic();
    entry.inRing = bond->IsInRing();
  }
  LinkBonds(atoms, bonds, edges);
  return *this;
}

// A tree bond of a depth-first search is a bridge if nothing below it reaches above it; every other
// bond is in a ring (Tarjan 1974).
void MolView::FindRings() {
  for (Atom& atom : atoms) atom.inRing = false;
  for (Bond& bond : bonds) bond.inRing = true;
  order_.assign(atoms.size(), 0);
  low_.resize(atoms.size());
  std::uint32_t visited = 0;
  for (std::uint32_t root = 0; root < NumAtoms(); ++root) {
    if (order_[root] != 0) continue;
    order_[root] = low_[root] = ++visited;
    stack_.clear();
    stack_.push_back({root, none, 0});
    while (!stack_.empty()) {
      Visit& visit = stack_.back();
      const std::uint32_t from = visit.atom;
      if (visit.nextEdge < atoms[from].degree) {
        const Edge edge = edges[atoms[from].firstEdge + visit.nextEdge++];
        if (edge.bond == visit.parentBond) continue;
        if (order_[edge.atom] == 0) {
          order_[edge.atom] = low_[edge.atom] = ++visited;
          stack_.push_back({edge.atom, edge.bond, 0});
        } else {
          low_[from] = std::min(low_[from], order_[edge.atom]);
        }
        continue;
      }
      const std::uint32_t parentBond = visit.parentBond;
      stack_.pop_back();
      if (stack_.empty()) break;
      const std::uint32_t parent = stack_.back().atom;
      low_[parent] = std::min(low_[parent], low_[from]);
      if (low_[from] > order_[parent]) bonds[parentBond].inRing = false;
    }
  }
  for (const Bond& bond : bonds) {
    if (bond.inRing) atoms[bond.bgn].inRing = atoms[bond.end].inRing = true;
  }
}

}  // namespace Quarnel
