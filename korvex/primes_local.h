#pragma once

/// Tables of primes: all up to 65537, computed at compile time, and the multipliers of identifiers.

#include <array>
#include <cstddef>

namespace ZQKorvex {

inline constexpr unsigned int zqLargestPrime = 65537;
inline constexpr std::size_t zqNumPrimes = 6543;

namespace primes_local {

// The primes from 2 to 65537 and a terminating 0, by a sieve over the odd numbers.
constexpr auto MakePrimes() {
  constexpr unsigned int half = zqLargestPrime / 2;
  bool composite[half + 1] = {};  // composite[i] is for 2 i + 1
  std::array<unsigned int, zqNumPrimes + 1> primes{};
  std::size_t count = 0;
  primes[count++] = 2;
  for (unsigned int i = 1; i <= half; ++i) {
    if (composite[i]) continue;
    const unsigned int prime = 2 * i + 1;
    primes[count++] = prime;
    if (prime > 255) continue;  // its multiples have a smaller prime factor
    for (unsigned int multiple = prime * prime / 2; multiple <= half; multiple += prime) {
      composite[multiple] = true;
    }
  }
  return primes;
}

}  // namespace primes_local

/// All primes from 2 to 65537, ascending, terminated by a 0.
inline constexpr auto PRIMES = primes_local::MakePrimes();
static_assert(PRIMES[zqNumPrimes - 1] == zqLargestPrime && PRIMES[zqNumPrimes] == 0);

/// The multipliers of path, circular and tree identifiers, after a 0. They are hash input and
/// follow no rule: most are five primes apart, nine aren't. A path reads entry 2 i for its i-th
/// bond and 2 i + 1 for its i-th atom; its start has no bond, hence the 0. Identifiers of atom sets
/// read from entry 1 on (`ZQCanonicalWeights`).
inline constexpr std::array<unsigned int, 51> PATH_PRIMES{
    0,    947,  983,  1019, 1049, 1087, 1109, 1153, 1193, 1229, 1277, 1297, 1321,
    1381, 1429, 1453, 1487, 1523, 1559, 1597, 1619, 1663, 1699, 1741, 1783, 1823,
    1871, 1901, 1949, 1993, 2017, 2063, 2089, 2131, 2161, 2221, 2267, 2293, 2339,
    2371, 2399, 2441, 2477, 2543, 2591, 2633, 2671, 2693, 2719, 2749, 2791};

}  // namespace ZQKorvex
