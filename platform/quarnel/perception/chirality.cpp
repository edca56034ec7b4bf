#include "platform/quarnel/perception/chirality_local.h"

#include "contract/quarnel/perception.h"
#include "platform/quarnel/perception/small_ring_local.h"

namespace Quarnel {
namespace {

/// Whether the atom holds four things in a tetrahedron, one of which may be a lone pair, and
/// neither two hydrogens nor a hydrogen and a lone pair. Amines turn over too fast to count.
bool IsTetrahedral(const MolView& view, const Partition& partition, std::uint32_t a) {
  const MolView::Atom& atom = view.atoms[a];
  const unsigned int hydrogens = partition.NumHydrogens(a);
  const unsigned int neighbours = partition.Degree(a);
  if (atom.aromatic || hydrogens > 1 || neighbours < 3 || neighbours + hydrogens > 4) return false;
  unsigned int doubles = 0;
  for (const MolView::Edge& edge : view.Edges(a)) {
    const unsigned int order = view.bonds[edge.bond].order;
    if (order == 0 || order > 2) return false;
    doubles += order == 2;
  }
  const unsigned int ligands = neighbours + hydrogens;
  const int charge = atom.charge;
  switch (atom.element) {
    case 6:
    case 14:
    case 32:
    case 50:
    case 82:
      return ligands == 4 && doubles == 0 && charge == 0;
    case 5:
      return ligands == 4 && doubles == 0 && charge == -1;
    case 7:
      return neighbours == 4 && doubles == 0 && charge == 1;
    case 15:
    case 33:
      if (ligands == 4) return charge == 1 ? doubles == 0 : charge == 0 && doubles == 1;
      return doubles == 0 && charge == 0;
    case 16:
    case 34:
    case 52:
      if (hydrogens != 0) return false;
      if (neighbours == 4) return charge >= 0 && doubles + static_cast<unsigned int>(charge) == 2;
      return charge == 1 ? doubles == 0 : charge == 0 && doubles == 1;
    default:
      return false;
  }
}

/// Whether no two neighbours, `except` aside, share a cell.
bool HaveDistinctCells(const MolView& view, const Partition& partition, std::uint32_t a,
                       std::uint32_t except) {
  const auto edges = view.Edges(a);
  for (std::size_t i = 0; i < edges.size(); ++i) {
    if (edges[i].atom == except || partition.IsFolded(edges[i].atom)) continue;
    const std::uint32_t cell = partition.CellOf(edges[i].atom);
    for (std::size_t j = i + 1; j < edges.size(); ++j) {
      if (edges[j].atom != except && partition.CellOf(edges[j].atom) == cell) return false;
    }
  }
  return true;
}

/// Whether the end of a double bond holds two distinct things: neighbours, a hydrogen, or the lone
/// pair of a nitrogen.
bool IsStereoEnd(const MolView& view, const Partition& partition, std::uint32_t a,
                 std::uint32_t other) {
  const MolView::Atom& atom = view.atoms[a];
  const unsigned int hydrogens = partition.NumHydrogens(a);
  const unsigned int substituents = partition.Degree(a) - 1 + hydrogens;
  if (hydrogens > 1 || substituents == 0 || substituents > 2) return false;
  if (atom.element == 6) {
    if (substituents != 2 || atom.charge != 0) return false;
  } else if (atom.element == 7) {
    if (atom.charge != (substituents == 2 ? 1 : 0)) return false;
  } else {
    return false;
  }
  for (const MolView::Edge& edge : view.Edges(a)) {
    if (edge.atom != other && view.bonds[edge.bond].order != 1) return false;
  }
  return HaveDistinctCells(view, partition, a, other);
}

}  // namespace

void Chirality::Find(const MolView& view, const Partition& partition) {
  atoms.assign(view.atoms.size(), 0);
  bonds.assign(view.bonds.size(), 0);
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    atoms[a] =
        IsTetrahedral(view, partition, a) && HaveDistinctCells(view, partition, a, MolView::none);
  }
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    const MolView::Bond& bond = view.bonds[b];
    bonds[b] = bond.order == 2 && !bond.aromatic &&
               IsStereoEnd(view, partition, bond.bgn, bond.end) &&
               IsStereoEnd(view, partition, bond.end, bond.bgn) &&
               !(bond.inRing && IsInSmallRing(*bond.bond));
  }
}

void ZQPerceiveChiral(ZQMolBase& mol, bool specifiedOnly) {
  if (!specifiedOnly && mol.IsPerceived(ZQPerceived::Chirality)) return;
  mol.SetPerceived(ZQPerceived::Chirality, false);
  thread_local Partition partition;
  thread_local Chirality chirality;
  const MolView& view = MolView::Read(mol, MolView::Properties);
  partition.Build(view);
  chirality.Find(view, partition);
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    ZQAtomBase& atom = *view.atoms[a].atom;
    atom.SetChiral(chirality.atoms[a] != 0 &&
                   (!specifiedOnly || atom.GetStereo() != ZQAtomStereo::None));
  }
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    ZQBondBase& bond = *view.bonds[b].bond;
    bond.SetChiral(chirality.bonds[b] != 0 &&
                   (!specifiedOnly || bond.GetStereo() != ZQBondStereo::None));
  }
  // The step stands for all that could carry stereo.
  if (!specifiedOnly) mol.SetPerceived(ZQPerceived::Chirality, true);
}

}  // namespace Quarnel
