#pragma once

/// The primes up to 65537 and the hash sizes made of them. Pure functions, safe from any thread.

#include "korvex/siblings.h"

namespace ZQKorvex {

/// The largest prime that is at most `n`, for `n` up to 65537, above which it is 65537; a prime
/// answers itself. Below 2 there is none: an assertion failure, and 0.
ZQ_EXPORT unsigned int ZQGetNearestSmallerPrimeNumber(unsigned int n);
/// The same by a linear scan: the reference that the fast form is tested against.
ZQ_EXPORT unsigned int ZQGetNearestSmallerPrimeNumberBruteForce(unsigned int n);

/// The number of bits that identifiers are folded to in a fingerprint of `n` bits: the largest
/// prime that is at most `n`. The usual sizes cost no search.
ZQ_EXPORT unsigned int ZQGetHashSize(unsigned int n);

}  // namespace ZQKorvex
