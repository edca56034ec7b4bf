#pragma once

/// Text identifiers of connected sets of atoms: the invariants in the order of a walk that the
/// graph determines. A set counts with all bonds of the molecule between its atoms.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "contract/quarnel/canon.h"
#include "korvex/connectiontable_local.h"

namespace ZQKorvex {

/// The set that is being named, as the comparisons of the refinement see it. What is by atom index
/// holds for the atoms of the set.
struct ZQCanonSubset {
  // By index: the place of the invariant among the distinct ones of the molecule.
  std::vector<unsigned int> atomOrders;
  std::vector<unsigned int> bondOrders;

  std::vector<unsigned int> first;  // by atom index: of its neighbours below
  // The bonds between atoms of the set, those of an atom behind one another. Bond orders ascend;
  // neighbours are in the order of the connection table, their ranks ascend and are of `round`.
  std::vector<ZQConnectionTable::Entry> neighbours;
  std::vector<unsigned int> sortedBonds;
  std::vector<std::int32_t> sortedRanks;
  std::vector<std::uint32_t> round;  // by atom index
};

/// Made once for a molecule and used for its sets one after another; not shared between threads.
/// Everything that it is given must outlive it.
///
/// Atoms are ranked by their strings and their degrees within the set, then until nothing more
/// splits by the ranks of their neighbours in ascending order and by their bond strings in
/// ascending order, of which the greater comes first. The text starts at the first atom of the
/// lowest rank and goes on to the unvisited neighbour of the lowest rank, at equal ranks by the
/// lesser bond string; all branches but the last are in parentheses, and nothing is written of
/// bonds that close rings. Ties fall to the order of the list and of the bonds.
class ZQUnHashedCanonicalIdGenerator {
 public:
  ZQUnHashedCanonicalIdGenerator(const ZQMolBase& mol, const ZQConnectionTable& connections,
                                 const std::vector<std::string>& atomIds,
                                 const std::vector<std::string>& bondIds);

  /// Replaces `id` by the identifier of a connected set of distinct atoms, by index. An assertion
  /// failure and false: fewer than two atoms, an index without an atom, an atom without a neighbour
  /// in the set or with more than 127. Costs time in proportion to the set, times the rounds.
  bool GetCanonicalID(std::string& id, std::span<const unsigned int> atoms);

 private:
  bool ListAtoms(std::span<const unsigned int> atoms);
  bool ListNeighbours(unsigned int atom);
  void WriteOut(std::string& id);

  const ZQMolBase& mol_;
  const ZQConnectionTable& connections_;
  const std::vector<std::string>& atomIds_;
  const std::vector<std::string>& bondIds_;
  ZQCanonSubset subset_;
  CanonState state_;
  std::vector<unsigned char> pending_;  // by atom index: in the set and not written yet
  std::vector<unsigned int> branched_;  // atoms with an open parenthesis
};

}  // namespace ZQKorvex
