#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace Quarnel {

/// By atom, the number of its relevant cycles (saturating) and the length of the shortest, 0 for
/// none.
struct RingCounts {
  std::vector<std::uint32_t> count;
  std::vector<std::uint32_t> smallest;
};

/// Counts the relevant cycles, which are the union of all minimum cycle bases, without listing them
/// (P. Vismara, Electron. J. Combin. 4, R9, 1997). `bonds` are those in rings. Proceeds by ranges
/// of lengths, 3 to 8, 9 to 16 and so on, up to the first with more than 16384 families of
/// candidates, which no molecule has. The time is that of a search from each atom for each range
/// and of the elimination of as many vectors of bonds.
RingCounts CountRelevantCycles(std::uint32_t numAtoms,
                               std::span<const std::pair<std::uint32_t, std::uint32_t>> bonds);

}  // namespace Quarnel
