#pragma once

/// Tables of primes, computed when the library is compiled.

#include <array>
#include <cstddef>

namespace ZQKorvex {

inline constexpr unsigned int zqLargestPrime = 65537;
inline constexpr std::size_t zqNumPrimes = 6543;

namespace primes_local {

// The primes from 2 to 65537 and a closing 0, by a sieve over the odd numbers.
constexpr auto MakePrimes() {
  constexpr unsigned int half = zqLargestPrime / 2;
  bool composite[half + 1] = {};  // composite[i] tells of 2 i + 1
  std::array<unsigned int, zqNumPrimes + 1> primes{};
  std::size_t count = 0;
  primes[count++] = 2;
  for (unsigned int i = 1; i <= half; ++i) {
    if (composite[i]) continue;
    const unsigned int prime = 2 * i + 1;
    primes[count++] = prime;
    if (prime > 255) continue;  // its multiples have a smaller factor
    for (unsigned int multiple = prime * prime / 2; multiple <= half; multiple += prime) {
      composite[multiple] = true;
    }
  }
  return primes;
}

}  // namespace primes_local

/// All primes from 2 to 65537, ascending, closed by a 0.
inline constexpr auto PRIMES = primes_local::MakePrimes();
static_assert(PRIMES[zqNumPrimes - 1] == zqLargestPrime && PRIMES[zqNumPrimes] == 0);

}  // namespace ZQKorvex
