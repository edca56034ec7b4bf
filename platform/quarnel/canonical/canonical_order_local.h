#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/quarnel/canonical/automorphism_local.h"
#include "platform/quarnel/canonical/partition_local.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"
#include "platform/quarnel/perception/configuration_local.h"

namespace Quarnel {

/// Ranks the atoms of a molecule so that the order of atoms and bonds makes no difference but among
/// atoms that an automorphism takes into each other, configurations included.
///
/// A partition is refined; then, again and again, an atom of the first cell that has several is set
/// apart and the partition refined further (B. D. McKay, Congr. Numer. 30, 45-87, 1981). It makes
/// no difference which atom if automorphisms take it to all others of its cell. These are searched
/// for, and serve later cells, too, if they leave in place what was set apart. Only where a cell
/// has several orbits does the search branch, to those whose refined partition comes first by a
/// hash of its structure. Of several complete orders, the one with the least list of bonds and
/// configurations is taken. Connected parts are ordered one by one.
///
/// The search may look at 2^24 bonds and 10,000 more an atom; a refinement tried counts as 8 bonds
/// an atom, a partition kept for a branch as 64. Beyond that, where no known molecule leads, it
/// takes atoms as they come.
class CanonicalOrder {
 public:
  /// Orders the atoms of the view, which has no bonds of order 0 and stays for later calls. Its
  /// parts are numbered from 1 by atom index. False if there are configurations that aren't real;
  /// ranks are of no use then. Such are, all at once, those that can't be for what stands at the
  /// atom or bond; else one, the first by rank, since without it others may become real.
  bool Find(const MolView& view, std::span<const unsigned int> parts, unsigned int numParts);
  std::span<const StereoCentre> Unreal() const { return unreal_; }
  std::uint32_t RankOf(std::uint32_t atom) const { return node_.partition.CellOf(atom); }

 private:
  struct Node {
    Partition partition;
    std::vector<StereoCentre> untold;  // centres whose configuration the cells don't tell yet
  };
  using Automorphism = std::vector<AutomorphismSearch::Move>;

  void FindCentres();
  bool HasTwins(std::uint32_t atom) const;
  void FindUnreal(Node& root);
  void OrderParts(std::span<const std::uint32_t> sizes);
  void SplitByLargeValues();
  void SplitByStereo();
  bool SplitByToldOf(bool bonds);
  bool IsReal(const StereoCentre& centre);
  bool CanTurn(std::uint32_t around, std::uint32_t except);
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
  std::uint64_t Tell(std::uint32_t bond) const;
  std::uint64_t Hash(std::uint32_t begin, std::uint32_t end) const;
  std::vector<std::uint64_t> Certificate(std::uint32_t begin, std::uint32_t end) const;

  const MolView* view_ = nullptr;
  Node node_;
  std::vector<StereoCentre> unreal_;
  AutomorphismSearch search_;  // over node_'s partition
  std::vector<Partition::Keyed> labels_;
  std::vector<Node> waiting_;            // branches to be gone down
  std::vector<Automorphism> known_;      // those that leave in place what was set apart
  std::vector<std::uint32_t> parent_;    // by atom, of the trees of a cell's orbits
  std::vector<std::uint32_t> numMoves_;  // by atom
};

}  // namespace Quarnel
