#pragma once

/// A flat copy of a molecule, which every perception step reads once, computes on and writes back.
/// Atoms and bonds are numbered densely, without holes, in ascending index order, so that the edges
/// of an atom also ascend by bond index.

#include <cstdint>
#include <span>
#include <vector>

#include "contract/quarnel/mol.h"
#include "platform/quarnel/molecule/adjacency_local.h"

namespace Quarnel {

struct MolView {
  static constexpr std::uint32_t none = 0xFFFFFFFFU;

  struct Atom {
    ZQAtomBase* atom;
    std::uint32_t firstEdge;
    std::uint32_t degree;  // bonds, including those to explicit hydrogens
    // Properties.
    std::uint32_t element;
    std::uint32_t isotope;
    std::int32_t charge;
    std::uint32_t implicitH;
    bool aromatic;
    bool inRing;
  };
  struct Bond {
    ZQBondBase* bond;
    std::uint32_t bgn;
    std::uint32_t end;
    // Properties.
    std::uint32_t order;
    bool aromatic;
    bool inRing;

    std::uint32_t Other(std::uint32_t atom) const { return atom == bgn ? end : bgn; }
  };
  using Edge = Quarnel::Edge;
  enum Depth {
    Graph,      ///< atoms, bonds and edges, no properties
    Properties  ///< everything
  };

  /// Fills the view from the molecule, replacing its content; returns it.
  MolView& Read(const ZQMolBase& mol, Depth depth);

  std::uint32_t NumAtoms() const { return static_cast<std::uint32_t>(atoms.size()); }
  std::uint32_t NumBonds() const { return static_cast<std::uint32_t>(bonds.size()); }
  std::span<const Edge> Edges(std::uint32_t atom) const { return EdgesOf(atoms[atom], edges); }
  /// Marks every bond that isn't a bridge, and its ends, as being in a ring.
  void FindRings();

  std::vector<Atom> atoms;
  std::vector<Bond> bonds;
  std::vector<Edge> edges;

 private:
  struct Visit {
    std::uint32_t atom;
    std::uint32_t parentBond;
    std::uint32_t nextEdge;
  };
  std::vector<std::uint32_t> dense_;  // by atom index
  std::vector<std::uint32_t> order_;  // by atom, for the depth-first search
  std::vector<std::uint32_t> low_;
  std::vector<Visit> stack_;
};

}  // namespace Quarnel
