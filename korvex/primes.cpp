#include "korvex/primes.h"

#include <algorithm>

#include "korvex/primes_local.h"

namespace ZQKorvex {

namespace {

constexpr const unsigned int* firstPrime = PRIMES.data();
constexpr const unsigned int* endOfPrimes = firstPrime + zqNumPrimes;

}  // namespace

unsigned int ZQGetNearestSmallerPrimeNumber(unsigned int n) {
  const unsigned int* above = std::upper_bound(firstPrime, endOfPrimes, n);
  return ZQ_ASSERT(above != firstPrime) ? above[-1] : 0;
}

unsigned int ZQGetNearestSmallerPrimeNumberBruteForce(unsigned int n) {
  unsigned int nearest = 0;
  for (const unsigned int* prime = firstPrime; *prime != 0 && *prime <= n; ++prime) {
    nearest = *prime;
  }
  ZQ_ASSERT(nearest != 0);
  return nearest;
}

unsigned int ZQGetHashSize(unsigned int n) {
  switch (n) {
    case 64:
      return 61;
    case 128:
      return 127;
    case 256:
      return 251;
    case 512:
      return 509;
    case 1024:
      return 1021;
    case 2048:
      return 2039;
    case 4096:
      return 4093;
    case 8192:
      return 8191;
    case 16384:
      return 16381;
    default:
      return ZQGetNearestSmallerPrimeNumber(n);
  }
}

}  // namespace ZQKorvex
