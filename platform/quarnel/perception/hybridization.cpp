#include "platform/quarnel/perception/hybridization_local.h"

#include <algorithm>

#include "contract/quarnel/perception.h"
#include "platform/quarnel/molecule/valence_electrons_local.h"
#include "platform/quarnel/molecule/workspace_local.h"

namespace Quarnel {
namespace {

struct Orbitals {
  unsigned int sigma = 0;
  unsigned int lone = 0;  // pairs; a single electron counts as one
};

Orbitals CountOrbitals(const MolView& view, std::uint32_t a) {
  const MolView::Atom& atom = view.atoms[a];
  const unsigned int outer = GetValenceElectrons(atom.element);
  // In the d and f blocks only the neighbours count.
  if (outer == 0) return {atom.implicitH + atom.degree, 0};
  Orbitals orbitals{atom.implicitH, 0};
  unsigned int valence = atom.implicitH;
  for (const MolView::Edge& edge : view.Edges(a)) {
    const unsigned int order = view.bonds[edge.bond].order;
    valence += order;
    orbitals.sigma += order != 0;
  }
  const int left = static_cast<int>(outer) - atom.charge - static_cast<int>(valence);
  orbitals.lone = left > 0 ? static_cast<unsigned int>(left + 1) / 2 : 0;
  return orbitals;
}

/// Whether a neighbour by a single bond has a double, triple or aromatic bond.
bool IsNextToUnsaturation(const MolView& view, std::uint32_t a) {
  for (const MolView::Edge& edge : view.Edges(a)) {
    if (view.bonds[edge.bond].order != 1) continue;
    const unsigned int element = view.atoms[edge.atom].element;
    if (element != 6 && element != 7 && element != 8) continue;
    for (const MolView::Edge& next : view.Edges(edge.atom)) {
      const MolView::Bond& bond = view.bonds[next.bond];
      if (bond.aromatic || bond.order > 1) return true;
    }
  }
  return false;
}

}  // namespace

void FindHybridization(const MolView& view, std::vector<std::uint8_t>& hyb) {
  hyb.assign(view.NumAtoms(), 0);
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    const MolView::Atom& atom = view.atoms[a];
    if (atom.element <= 1) continue;
    if (atom.aromatic) {
      hyb[a] = 2;
      continue;
    }
    const Orbitals orbitals = CountOrbitals(view, a);
    const unsigned int count = orbitals.sigma + orbitals.lone;
    if (count < 2) continue;
    hyb[a] = static_cast<std::uint8_t>(std::min(count - 1, 5U));
    if (count == 4 && orbitals.lone != 0 && orbitals.sigma <= 3 &&
        (atom.element == 7 || atom.element == 8) && IsNextToUnsaturation(view, a)) {
      hyb[a] = 2;
    }
  }
}

void ZQAssignHybridization(ZQMolBase& mol) {
  if (mol.IsPerceived(ZQPerceived::Hybridization)) return;
  const Workspace<MolView> workspace;
  const MolView& view = workspace->Read(mol, MolView::Properties);
  std::vector<std::uint8_t> hyb;
  FindHybridization(view, hyb);
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) view.atoms[a].atom->SetHyb(hyb[a]);
  mol.SetPerceived(ZQPerceived::Hybridization, true);
}

}  // namespace Quarnel
