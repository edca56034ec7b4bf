#pragma once

#include <cstdint>

namespace Quarnel {

/// Spreads a number over all 64 bits, so that sums of such numbers distinguish multisets (the
/// finisher of splitmix64; G. L. Steele, D. Lea and C. H. Flood, OOPSLA 2014).
constexpr std::uint64_t Mix(std::uint64_t x) {
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
  return x ^ (x >> 31);
}

}  // namespace Quarnel
