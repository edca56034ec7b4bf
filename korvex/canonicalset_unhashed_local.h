#pragma once

/// Text identifiers of connected sets of atoms: the invariants in the order of a canonical
/// depth-first traversal. A set includes all bonds of the molecule between its atoms.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "contract/quarnel/canon.h"
#include "korvex/connectiontable_local.h"

namespace ZQKorvex {

/// The current set, for the comparisons of the refinement. Entries by atom index are valid for the
/// atoms of the set only.
struct ZQCanonSubset {
  // By index: the rank of the invariant among the distinct ones of the molecule.
  std::vector<unsigned int> atomOrders;
  std::vector<unsigned int> bondOrders;

  std::vector<unsigned int> first;  // by atom index: offset of its neighbours
  // The bonds between atoms of the set, those of one atom contiguous. Neighbours are in the order
  // of the connection table; `sortedBonds` and `sortedRanks` ascend, the latter valid for `round`.
  std::vector<ZQConnectionTable::Entry> neighbours;
  std::vector<unsigned int> sortedBonds;
  std::vector<std::int32_t> sortedRanks;
  std::vector<std::uint32_t> round;  // by atom index
};

/// One object serves all sets of a molecule, one after another; not thread safe. The constructor's
/// arguments must outlive it.
///
/// Atoms are ranked by their strings and their degrees within the set. The ranks are then refined,
/// until no class splits, by the sorted ranks of the neighbours and by the sorted bond strings, of
/// which the greater ranks first. The text starts at the first atom of the lowest rank and
/// continues with the unvisited neighbour of the lowest rank, at equal ranks with the lesser bond
/// string. All branches but the last are in parentheses; bonds that close rings are not written.
/// The order of the list and of the bonds breaks ties.
class ZQUnHashedCanonicalIdGenerator {
 public:
  ZQUnHashedCanonicalIdGenerator(const ZQMolBase& mol, const ZQConnectionTable& connections,
                                 const std::vector<std::string>& atomIds,
                                 const std::vector<std::string>& bondIds);

  /// Replaces `id` by the identifier of a connected set of distinct atoms, by index. An assertion
  /// fails and the result is false for fewer than two atoms, an index without an atom, or an atom
  /// with no neighbour or more than 127 neighbours in the set. The time is proportional to the size
  /// of the set times the rounds.
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
  std::vector<unsigned char> pending_;  // by atom index: in the set, not yet written
  std::vector<unsigned int> branched_;  // atoms with an open parenthesis
};

/// Whether no atom has more neighbours than the text of an environment can order. False after
/// reporting an error with the operation's name.
bool ZQHasNameableEnvironments(const ZQMolBase& mol, const char* operation);

}  // namespace ZQKorvex
