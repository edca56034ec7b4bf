#pragma once

/// Configurations of atoms and double bonds: their conversion to another order of neighbours, which
/// atoms and bonds can have one, and which neighbours are equal. All readers, writers and searches
/// use these.
///
/// There are three rules for having a configuration. Perception (`Chirality`) follows a table of
/// elements, so that invariants are the same everywhere. The canonical order (`CanHold`) accepts a
/// drawn configuration unless it can't be real. A molfile (`CanBeDrawn`, `CanBeDrawnEnd`) requires
/// the interpretation of a drawing, in which wedges also start at atoms without a configuration.

#include <cstdint>
#include <span>
#include <vector>

#include "platform/quarnel/molecule/molgraph_view_local.h"
#include "platform/quarnel/perception/partition_local.h"

namespace Quarnel {

// ---- Conversion to another order

/// Whether an odd number of swaps sorts the keys.
constexpr bool IsOdd(std::span<const std::uint32_t> keys) {
  bool odd = false;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    for (std::size_t j = i + 1; j < keys.size(); ++j) odd ^= keys[i] > keys[j];
  }
  return odd;
}

/// The opposite configuration if `odd`; none for none.
constexpr ZQAtomStereo Turned(ZQAtomStereo stereo, bool odd) {
  if (!odd || stereo == ZQAtomStereo::None) return stereo;
  return stereo == ZQAtomStereo::Clockwise ? ZQAtomStereo::CounterClockwise
                                           : ZQAtomStereo::Clockwise;
}
constexpr ZQBondStereo Turned(ZQBondStereo stereo, bool odd) {
  if (!odd || stereo == ZQBondStereo::None) return stereo;
  return stereo == ZQBondStereo::Cis ? ZQBondStereo::Trans : ZQBondStereo::Cis;
}

/// The reference atom at the end of a double bond opposite to `other`. `edges` ascend by bond, at
/// least two.
template <class AnyEdge>
std::uint32_t ReferenceOf(const AnyEdge* edges, std::uint32_t other) {
  return edges[edges[0].atom == other ? 1 : 0].atom;
}

/// A configuration with the neighbours in the order of their cells. Undetermined: two of them share
/// a cell.
enum Configuration : std::uint8_t { NoStereo, Even, Odd, Undetermined };

Configuration ConfigurationOf(const MolView& view, const Partition& partition, std::uint32_t atom);
Configuration ConfigurationOf(const MolView& view, const Partition& partition,
                              const MolView::Bond& bond);

// ---- Atoms and bonds that can have a configuration

/// Whether neighbours and hydrogens, or three neighbours and a lone pair, fill the four positions
/// of a tetrahedron, and at most one of them isn't a neighbour.
constexpr bool HasFourPlaces(unsigned int numNeighbours, unsigned int numHydrogens) {
  return numNeighbours == 3 ? numHydrogens <= 1 : numNeighbours == 4 && numHydrogens == 0;
}

constexpr bool IsPlainHydrogen(unsigned int element, unsigned int isotope, int charge) {
  return element == 1 && isotope == 0 && charge == 0;
}

/// Whether two of the edges, without that to `except`, lead to equal atoms (twins). Each pair is
/// compared once, in the order of the edges.
template <class AreEqual>
bool HasTwins(std::span<const Edge> edges, std::uint32_t except, AreEqual areEqual) {
  for (std::size_t i = 0; i < edges.size(); ++i) {
    if (edges[i].atom == except) continue;
    for (std::size_t j = i + 1; j < edges.size(); ++j) {
      if (edges[j].atom != except && areEqual(edges[i].atom, edges[j].atom)) return true;
    }
  }
  return false;
}

/// Which atoms and bonds of the view could carry stereo, as `ZQPerceiveChiral` finds it.
struct Chirality {
  void Find(const MolView& view, const Partition& partition);

  std::vector<char> atoms;
  std::vector<char> bonds;
};

/// Whether the ligands of the atom or bond allow a real configuration. Needs the view's ring
/// membership.
bool CanHold(const MolView& view, std::uint32_t atom);
bool CanHold(const MolView& view, const MolView::Bond& bond);

/// The properties of an atom used by the rules for drawings. Bonds of no order count as neighbours.
struct DrawnAtom {
  unsigned int element;
  unsigned int numNeighbours;
  unsigned int numHydrogens;  // not drawn
  unsigned int numDoubles;
  bool hasMultiple;  // a double or triple bond
  bool isAromatic;
};

/// Whether an atom without twins can have a configuration in a drawing.
bool CanBeDrawn(const DrawnAtom& atom);
/// Whether the atom can be an end of a double bond with a configuration in a drawing.
bool CanBeDrawnEnd(const DrawnAtom& atom);

/// Whether the bond is in a ring of up to seven atoms, where a double bond can only be cis. Reads
/// only the neighbourhood and needs no perception.
bool IsInSmallRing(const ZQBondBase& bond);

// ---- Removing configurations

/// Removes those of double bonds in small rings, for readers.
void DropSmallRingStereo(ZQMolBase& mol);

/// Removes those of the atom and its bonds.
void DropStereo(ZQAtomBase& atom);

}  // namespace Quarnel
