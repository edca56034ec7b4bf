#include "contract/quarnel/canon.h"

#include <algorithm>
#include <utility>

namespace Quarnel {
namespace {

CanonState::AtomRecord& RecordOf(CanonState& state, std::uint32_t place) {
  return state.atomRecords[state.atoms[place]->GetIdx()];
}

// A stable sort. The usual partition has a handful of atoms, for which insertion takes fewer steps
// and no scratch.
void Sort(CanonState& state, const CanonState::Partition& partition, ZQCanonComparison compare) {
  constexpr std::uint32_t few = 16;  // above about this size n log n comparisons are fewer
  const auto begin = state.atoms.begin() + partition.begin;
  const auto end = state.atoms.begin() + partition.end;
  const auto isBefore = [&](const ZQAtomBase* a, const ZQAtomBase* b) {
    return compare(state, *a, *b) < 0;
  };
  if (partition.end - partition.begin > few) {
    std::stable_sort(begin, end, isBefore);
    return;
  }
  for (auto next = begin + 1; next != end; ++next) {
    const ZQAtomBase* atom = *next;
    auto place = next;
    for (; place != begin && isBefore(atom, place[-1]); --place) *place = place[-1];
    *place = atom;
  }
}

}  // namespace

void ZQCanonSinglePartition(CanonState& state) {
  for (std::uint32_t i = 0; i < state.atoms.size(); ++i) RecordOf(state, i).rank = 0;
  ++state.round;
  ZQCanonActivatePartitions(state);
}

void ZQCanonRefinePartitions(CanonState& state, bool untilStable, ZQCanonComparison compare) {
  do {
    state.split.clear();
    state.moved.clear();
    for (const CanonState::Partition& partition : state.active) {
      Sort(state, partition, compare);
      for (std::uint32_t begin = partition.begin; begin != partition.end;) {
        std::uint32_t end = begin + 1;
        while (end != partition.end &&
               compare(state, *state.atoms[end - 1], *state.atoms[end]) == 0) {
          ++end;
        }
        if (end - begin > 1) state.split.push_back({begin, end});
        if (begin != partition.begin) state.moved.push_back({begin, end});
        begin = end;
      }
    }
    for (const CanonState::Partition& partition : state.moved) {
      for (std::uint32_t i = partition.begin; i != partition.end; ++i) {
        RecordOf(state, i).rank = static_cast<std::int32_t>(partition.begin);
      }
    }
    ++state.round;
    std::swap(state.active, state.split);
  } while (untilStable && !state.moved.empty());
  state.active.clear();
}

void ZQCanonActivatePartitions(CanonState& state) {
  state.active.clear();
  const auto size = static_cast<std::uint32_t>(state.atoms.size());
  for (std::uint32_t begin = 0; begin != size;) {
    std::uint32_t end = begin + 1;
    while (end != size && RecordOf(state, end).rank == RecordOf(state, begin).rank) ++end;
    if (end - begin > 1) state.active.push_back({begin, end});
    begin = end;
  }
}

}  // namespace Quarnel
