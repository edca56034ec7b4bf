#include "platform/quarnel/perception/stereo_local.h"

#include <algorithm>
#include <array>

#include "contract/quarnel/perception.h"
#include "platform/quarnel/molecule/workspace_local.h"

namespace Quarnel {
namespace {

constexpr std::uint32_t none = MolView::none;

/// Carbon and the elements below it, which have no lone pair for a configuration of three
/// neighbours.
constexpr bool IsTetravalent(unsigned int element) {
  return element == 6 || element == 14 || element == 32 || element == 50 || element == 82;
}

// ---- Perception

/// Whether the atom has four ligands in a tetrahedron, one of which may be a lone pair, and neither
/// two hydrogens nor a hydrogen and a lone pair. Amines invert too fast to count.
bool IsTetrahedral(const MolView& view, const Partition& partition, std::uint32_t a) {
  const MolView::Atom& atom = view.atoms[a];
  const unsigned int hydrogens = partition.NumHydrogens(a);
  const unsigned int neighbours = partition.Degree(a);
  if (atom.aromatic || !HasFourPlaces(neighbours, hydrogens)) return false;
  unsigned int doubles = 0;
  for (const MolView::Edge& edge : view.Edges(a)) {
    const unsigned int order = view.bonds[edge.bond].order;
    if (order == 0 || order > 2) return false;
    doubles += order == 2;
  }
  const unsigned int ligands = neighbours + hydrogens;
  const int charge = atom.charge;
  if (IsTetravalent(atom.element)) return ligands == 4 && doubles == 0 && charge == 0;
  switch (atom.element) {
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

bool HasTwinCells(const MolView& view, const Partition& partition, std::uint32_t a,
                  std::uint32_t except) {
  return HasTwins(view.Edges(a), except, [&](std::uint32_t one, std::uint32_t other) {
    return !partition.IsFolded(one) && partition.CellOf(one) == partition.CellOf(other);
  });
}

/// Whether the end of a double bond has two distinct ligands: neighbours, a hydrogen, or the lone
/// pair of a nitrogen.
bool IsPerceivedEnd(const MolView& view, const Partition& partition, std::uint32_t a,
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
  return !HasTwinCells(view, partition, a, other);
}

// ---- Canonical order

/// Whether a nitrogen with three bonds keeps its configuration: all three in rings, or two in a
/// ring of three. Others invert.
bool IsLocked(const MolView& view, std::uint32_t a) {
  const std::span<const MolView::Edge> edges = view.Edges(a);
  const auto isRing = [&](const MolView::Edge& edge) { return view.bonds[edge.bond].inRing; };
  if (std::ranges::all_of(edges, isRing)) return true;
  const auto isNeighbour = [&](const MolView::Edge& edge) {
    return std::ranges::find(edges, edge.atom, &MolView::Edge::atom) != edges.end();
  };
  return std::ranges::any_of(edges, [&](const MolView::Edge& edge) {
    return std::ranges::any_of(view.Edges(edge.atom), isNeighbour);
  });
}

/// Whether a neighbour other than `except` is a hydrogen that could be implicit.
bool HasPlainHydrogen(const MolView& view, std::uint32_t a, std::uint32_t except) {
  return std::ranges::any_of(view.Edges(a), [&](const MolView::Edge& edge) {
    const MolView::Atom& neighbour = view.atoms[edge.atom];
    return edge.atom != except &&
           IsPlainHydrogen(neighbour.element, neighbour.isotope, neighbour.charge) &&
           neighbour.atom->GetMapIdx() == 0;
  });
}

bool CanBeEnd(const MolView& view, std::uint32_t a, std::uint32_t other) {
  const MolView::Atom& atom = view.atoms[a];
  if (atom.degree < 2 || atom.degree > 3) return false;
  // An explicit hydrogen is equal to an implicit one.
  if (atom.degree == 2 && atom.implicitH != 0 && HasPlainHydrogen(view, a, other)) return false;
  return std::ranges::none_of(view.Edges(a), [&](const MolView::Edge& edge) {
    const MolView::Bond& bond = view.bonds[edge.bond];
    return edge.atom != other && bond.order == 2 && !bond.aromatic;
  });
}

}  // namespace

Configuration ConfigurationOf(const MolView& view, const Partition& partition, std::uint32_t a) {
  const ZQAtomStereo stereo = view.atoms[a].atom->GetStereo();
  if (stereo == ZQAtomStereo::None) return NoStereo;
  // A hydrogen or lone pair has the cell `none`; an implicit one comes first.
  std::array<std::uint32_t, 4> cells{};
  std::size_t count = 0;
  if (view.atoms[a].degree < 4) cells[count++] = none;
  for (const MolView::Edge& edge : view.Edges(a)) {
    const std::uint32_t cell = partition.CellOf(edge.atom);
    if (count == 4) return Undetermined;
    for (std::size_t i = 0; i < count; ++i) {
      if (cells[i] == cell) return Undetermined;
    }
    cells[count++] = cell;
  }
  return (stereo == ZQAtomStereo::Clockwise) != IsOdd({cells.data(), count}) ? Odd : Even;
}

Configuration ConfigurationOf(const MolView& view, const Partition& partition,
                              const MolView::Bond& bond) {
  const ZQBondStereo stereo = bond.bond->GetStereo();
  if (stereo == ZQBondStereo::None) return NoStereo;
  bool odd = stereo == ZQBondStereo::Trans;
  for (const std::uint32_t end : {bond.bgn, bond.end}) {
    std::uint32_t first = none;  // the cell of the reference atom, once it is known
    bool known = false;
    for (const MolView::Edge& edge : view.Edges(end)) {
      if (edge.atom == bond.Other(end)) continue;
      const std::uint32_t cell = partition.CellOf(edge.atom);
      if (known && cell == first) return Undetermined;
      if (known) odd ^= first > cell;
      if (!known) first = cell;
      known = true;
    }
  }
  return odd ? Odd : Even;
}

void Chirality::Find(const MolView& view, const Partition& partition) {
  atoms.assign(view.atoms.size(), 0);
  bonds.assign(view.bonds.size(), 0);
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    atoms[a] = IsTetrahedral(view, partition, a) && !HasTwinCells(view, partition, a, none);
  }
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    const MolView::Bond& bond = view.bonds[b];
    bonds[b] = bond.order == 2 && !bond.aromatic &&
               IsPerceivedEnd(view, partition, bond.bgn, bond.end) &&
               IsPerceivedEnd(view, partition, bond.end, bond.bgn) &&
               !(bond.inRing && IsInSmallRing(*bond.bond));
  }
}

bool CanHold(const MolView& view, std::uint32_t a) {
  const MolView::Atom& atom = view.atoms[a];
  if (atom.aromatic || !HasFourPlaces(atom.degree, atom.implicitH)) return false;
  if (atom.degree + atom.implicitH == 4) return true;
  // With a lone pair and a hydrogen, implicit or explicit, there is none.
  if (IsTetravalent(atom.element) || HasPlainHydrogen(view, a, none)) return false;
  const auto isSingle = [&](const MolView::Edge& e) { return view.bonds[e.bond].order == 1; };
  return atom.element != 7 ||
         (atom.charge == 0 && std::ranges::all_of(view.Edges(a), isSingle) && IsLocked(view, a));
}

bool CanHold(const MolView& view, const MolView::Bond& bond) {
  return bond.order == 2 && !bond.aromatic && CanBeEnd(view, bond.bgn, bond.end) &&
         CanBeEnd(view, bond.end, bond.bgn) && !(bond.inRing && IsInSmallRing(*bond.bond));
}

// No double bonds except from the third period on, and no amine, which inverts.
bool CanBeDrawn(const DrawnAtom& atom) {
  return HasFourPlaces(atom.numNeighbours, atom.numHydrogens) && !atom.isAromatic &&
         !(atom.hasMultiple && atom.element <= 10) &&
         !(atom.element == 7 && atom.numNeighbours + atom.numHydrogens == 3);
}

bool CanBeDrawnEnd(const DrawnAtom& atom) {
  const unsigned int z = atom.element;
  const bool hasLonePair = (z == 15 || z == 16 || z == 33 || z == 34) && atom.numNeighbours == 2 &&
                           atom.numHydrogens == 0;
  return (z == 6 || z == 7 || z == 14 || z == 32 || hasLonePair) && atom.numDoubles == 1 &&
         (atom.numNeighbours == 2 || atom.numNeighbours == 3);
}

bool IsInSmallRing(const ZQBondBase& bond) {
  constexpr int longestWay = 6;  // bonds from one end to the other around a ring of seven
  std::vector<const ZQAtomBase*> reached{bond.GetBgn()};
  std::size_t next = 0;
  for (int way = 1; way <= longestWay; ++way) {
    for (const std::size_t last = reached.size(); next < last; ++next) {
      const ZQAtomBase* from = reached[next];
      for (const ZQBondBase* b = from->NextBond(nullptr); b; b = from->NextBond(b)) {
        if (b == &bond) continue;
        const ZQAtomBase* to = b->GetNbr(from);
        if (to == bond.GetEnd()) return true;
        if (std::find(reached.begin(), reached.end(), to) == reached.end()) reached.push_back(to);
      }
    }
  }
  return false;
}

// The places of the ligands in the list, in the order of the drawn configuration: the hydrogen or
// lone pair first if there is one, then the neighbours by bond.
unsigned int ZQAtomBase::GetStereo(const std::vector<ZQAtomBase*>& neighbours,
                                   unsigned int stereoClass) const {
  using namespace ZQTetrahedralStereo;
  const ZQAtomStereo drawn = GetStereo();
  const auto listed = static_cast<std::uint32_t>(neighbours.size());
  if (drawn == ZQAtomStereo::None || stereoClass != ZQStereoClass::Tetrahedral) return None;
  if (listed != 3 && listed != 4) return None;
  std::array<std::uint32_t, 4> places{};
  std::size_t count = 0;
  std::uint32_t found = 0;
  for (const ZQBondBase* b = NextBond(nullptr); b; b = NextBond(b)) {
    if (count == places.size()) return None;
    const auto at = std::ranges::find(neighbours, b->GetNbr(this));
    places[count++] = static_cast<std::uint32_t>(at - neighbours.begin());
    found += at != neighbours.end();
  }
  if (found != listed) return None;
  if (count == 3) {
    std::ranges::copy_backward(std::span(places).first(3), places.end());
    places[0] = 3;
  }
  return Turned(drawn, IsOdd(places)) == ZQAtomStereo::Clockwise ? Clockwise : CounterClockwise;
}

void DropSmallRingStereo(ZQMolBase& mol) {
  for (unsigned int i = 0; i < mol.GetMaxBondIdx(); ++i) {
    ZQBondBase* bond = mol.GetBondAt(i);
    if (bond && bond->GetStereo() != ZQBondStereo::None && IsInSmallRing(*bond)) {
      bond->SetStereo(ZQBondStereo::None);
    }
  }
}

void DropStereo(ZQAtomBase& atom) {
  atom.SetStereo(ZQAtomStereo::None);
  for (ZQBondBase* b = atom.NextBond(nullptr); b; b = atom.NextBond(b)) {
    b->SetStereo(ZQBondStereo::None);
  }
}

void ZQPerceiveChiral(ZQMolBase& mol, bool specifiedOnly) {
  if (!specifiedOnly && mol.IsPerceived(ZQPerceived::Chirality)) return;
  mol.SetPerceived(ZQPerceived::Chirality, false);
  struct Scratch {
    Partition partition;
    Chirality chirality;
  };
  const Workspace<MolView> workspace;
  const Workspace<Scratch> scratch;
  auto& [partition, chirality] = *scratch;
  const MolView& view = workspace->Read(mol, MolView::Properties);
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
  // The step includes all that could carry stereo.
  if (!specifiedOnly) mol.SetPerceived(ZQPerceived::Chirality, true);
}

}  // namespace Quarnel
