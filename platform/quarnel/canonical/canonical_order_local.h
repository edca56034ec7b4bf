#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/quarnel/canonical/automorphism_local.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"
#include "platform/quarnel/perception/partition_local.h"
#include "platform/quarnel/perception/stereo_local.h"

namespace Quarnel {

/// Ranks the atoms of a molecule independently of the order of atoms and bonds, except among atoms
/// that an automorphism maps onto each other, configurations included.
///
/// A partition is refined; then, repeatedly, an atom of the first cell with several is
/// individualised and the partition refined further (B. D. McKay, Congr. Numer. 30, 45-87, 1981).
/// The choice of the atom makes no difference if automorphisms map it onto all others of its cell.
/// These are searched for, and reused for later cells if they fix the individualised atoms. The
/// search branches only if a cell has several orbits, to those whose refined partition comes first
/// by a hash of its structure. Of several complete orders, the one with the least list of bonds and
/// configurations is used. Connected components are ordered one by one.
///
/// The search visits at most 2^24 bonds plus 10,000 per atom; a trial refinement counts as 8 bonds
/// per atom, a partition stored for a branch as 64. Beyond that, which no known molecule reaches,
/// it takes atoms in input order.
class CanonicalOrder {
 public:
  /// Orders the atoms of the view, which has no bonds of order 0 and must remain valid for later
  /// calls. `parts` numbers its components from 1 by atom index. Returns false if there are
  /// configurations that aren't real; ranks are then not usable. Reported are all that the ligands
  /// of the atom or bond exclude; if there are none, all whose opposite gives the same molecule
  /// with every other centre in its place; if there are none, one, the first by rank, since without
  /// it others may become real.
  bool Find(const MolView& view, std::span<const unsigned int> parts, unsigned int numParts);
  std::span<const StereoCentre> Unreal() const { return unreal_; }
  std::uint32_t RankOf(std::uint32_t atom) const { return node_.partition.CellOf(atom); }

 private:
  struct Node {
    Partition partition;
    std::vector<StereoCentre> undetermined;  // centres not yet determined by the cells
  };
  using Automorphism = std::vector<AutomorphismSearch::Move>;

  void FindCentres();
  bool HasLeafTwins(std::uint32_t atom) const;
  void FindUnrealAlone();
  void FindUnreal(Node& root);
  void OrderParts(std::span<const std::uint32_t> sizes);
  void SplitByLargeValues();
  void SplitByStereo();
  void Label(const StereoCentre& centre, Configuration configuration);
  void SplitByDetermined();
  bool SplitByDetermined(bool bonds);
  bool IsReal(const StereoCentre& centre);
  bool CanTurn(const StereoCentre& centre);
  bool CanTurn(std::uint32_t around, std::uint32_t except);
  void SetApart(const StereoCentre& centre);
  void SetApart(std::uint32_t atom);
  void OrderPart(std::uint32_t begin, std::uint32_t end);
  void GoDown(std::uint32_t begin, std::uint32_t end);
  bool IsOneOrbit(std::uint32_t cell);
  bool IsMapped(std::uint32_t from, std::uint32_t to, std::uint32_t cell);
  void Branch(std::uint32_t cell, std::uint32_t begin, std::uint32_t end);
  void Keep(std::span<const AutomorphismSearch::Move> moves);
  void JoinMoved(const Automorphism& automorphism, std::uint32_t cell);
  std::uint32_t LeastMoved(std::uint32_t cell);
  std::uint32_t OrbitOf(std::uint32_t atom) {
    while (parent_[atom] != atom) atom = parent_[atom] = parent_[parent_[atom]];
    return atom;
  }
  std::uint64_t ColourWithStereo(std::uint32_t bond) const;
  std::uint64_t Hash(std::uint32_t begin, std::uint32_t end) const;
  std::vector<std::uint64_t> Certificate(std::uint32_t begin, std::uint32_t end) const;

  const MolView* view_ = nullptr;
  Node node_;
  std::vector<StereoCentre> unreal_;
  AutomorphismSearch search_;  // over node_'s partition
  std::vector<Partition::Keyed> labels_;
  std::vector<Node> waiting_;            // branches to be searched
  std::vector<Automorphism> known_;      // those that fix the individualised atoms
  std::vector<std::uint32_t> parent_;    // by atom, of the trees of a cell's orbits
  std::vector<std::uint32_t> numMoves_;  // by atom
};

}  // namespace Quarnel
