#pragma once

/// Partition refinement with the caller's comparison: a list of atoms is sorted into partitions,
/// which are split until the atoms of each compare equal. Ties are kept, so that ranks depend only
/// on the graph and not on the order of the list.

#include <cstdint>
#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// One refinement: the atoms and the partition of each. It keeps its scratch, so that one state can
/// be reused for many lists without allocations; refining a fragment is so fast that looking up
/// scratch elsewhere would cost 2 % of a UHTree fingerprint. Distinct states may be used by
/// distinct threads.
struct CanonState {
  /// The rank of an atom that is in no partition.
  static constexpr std::int32_t noRank = -9999;

  struct AtomRecord {
    std::int32_t rank = noRank;  ///< the number of atoms in the partitions before its own
    std::int8_t degree = 0;      ///< within the list; set by the caller for its comparison
  };
  /// Atoms of one rank, as positions in the list.
  struct Partition {
    std::uint32_t begin;
    std::uint32_t end;
  };

  std::vector<AtomRecord> atomRecords;   ///< by atom index, for every atom of the list
  std::vector<const ZQAtomBase*> atoms;  ///< the list; by ascending rank after a refinement
  void* userData = nullptr;              ///< for the comparison
  std::uint32_t round = 0;               ///< incremented whenever ranks may have changed

  std::vector<Partition> active;  ///< of two or more atoms, subject to the next refinement
  std::vector<Partition> split;   ///< scratch
  std::vector<Partition> moved;   ///< scratch
};

/// Negative if `a` comes first, 0 if the two are equal. Must be a weak order on the atoms of a
/// partition: no cycles, and equality is transitive.
using ZQCanonComparison = int (*)(const CanonState& state, const ZQAtomBase& a,
                                  const ZQAtomBase& b);

/// Puts all atoms of the list into one active partition.
ZQ_EXPORT void ZQCanonSinglePartition(CanonState& state);
/// Sorts and splits the active partitions by the comparison, which sees the ranks as they were when
/// a round began: a round's splits take effect together. Atoms of one partition keep their order in
/// the list. With `untilStable`, rounds repeat until one splits nothing; otherwise there is one
/// round. No partition is active afterwards. A round costs n log n comparisons for the n atoms that
/// share their rank.
ZQ_EXPORT void ZQCanonRefinePartitions(CanonState& state, bool untilStable,
                                       ZQCanonComparison compare);
/// Makes all partitions of more than one atom subject to the next refinement.
ZQ_EXPORT void ZQCanonActivatePartitions(CanonState& state);

}  // namespace Quarnel
