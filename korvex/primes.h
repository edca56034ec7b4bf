#pragma once

/// The primes up to 65537 and the hash sizes derived from them. Pure functions, safe from any
/// thread.

#include "korvex/siblings.h"

namespace ZQKorvex {

/// The largest prime that is at most `n` and at most 65537. Below 2 there is none: an assertion
/// failure, and 0.
ZQ_EXPORT unsigned int ZQGetNearestSmallerPrimeNumber(unsigned int n);
/// The same by a linear scan: the reference for tests of the fast form.
ZQ_EXPORT unsigned int ZQGetNearestSmallerPrimeNumberBruteForce(unsigned int n);

/// The number of bits to which identifiers are folded in a fingerprint of `n` bits: the largest
/// prime that is at most `n`. The usual sizes need no search.
ZQ_EXPORT unsigned int ZQGetHashSize(unsigned int n);

}  // namespace ZQKorvex
