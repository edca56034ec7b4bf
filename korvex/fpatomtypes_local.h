#pragma once

/// The chemistry of the invariants: tables of primes, hydrogen bond classes, SMARTS symbols.

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string>

#include "contract/quarnel/mol.h"
#include "korvex/primes_local.h"

namespace ZQKorvex {

/// Class values of the hydrogen bond equivalences, powers of 19.
inline constexpr unsigned int zqDonorAndAcceptor = 19;
inline constexpr unsigned int zqAcceptorOnly = 361;
inline constexpr unsigned int zqDonorOnly = 6859;

/// Carbon's prime, and that of all aromatic atoms if these are equivalent.
inline constexpr unsigned int zqCarbonPrime = 179;

namespace fpatomtypes_local {

// The primes from 181 on, except those of the common elements.
constexpr auto MakeAtomicPrimes() {
  constexpr unsigned int taken[] = {283, 419, 547, 661, 811, 947};
  std::array<unsigned int, 133> primes{};
  const unsigned int* prime = std::find(PRIMES.begin(), PRIMES.end(), 181U);
  for (unsigned int& entry : primes) {
    while (std::find(std::begin(taken), std::end(taken), *prime) != std::end(taken)) ++prime;
    entry = *prime++;
  }
  return primes;
}

}  // namespace fpatomtypes_local

/// Indexed by atomic number; the entries of C, N, O, F, P, S and Cl aren't used.
inline constexpr auto ATOMIC2PRIMES = fpatomtypes_local::MakeAtomicPrimes();
static_assert(ATOMIC2PRIMES.front() == 181 && ATOMIC2PRIMES.back() == 1069);

/// Indexed by bond order.
inline constexpr std::array<unsigned int, 10> ORDER2PRIMES{127, 131, 137, 139, 149,
                                                           151, 157, 163, 167, 173};
inline constexpr unsigned int zqAromaticBondPrime = 151;

/// The element's prime. Atomic numbers beyond the table map to its last entry.
constexpr unsigned int ZQElementPrime(unsigned int atomicNum) {
  switch (atomicNum) {
    case 6:
      return zqCarbonPrime;
    case 7:
      return 283;
    case 8:
      return 947;
    case 9:
      return 419;
    case 15:
      return 547;
    case 16:
      return 811;
    case 17:
      return 661;
    default:
      return ATOMIC2PRIMES[std::min<std::size_t>(atomicNum, ATOMIC2PRIMES.size() - 1)];
  }
}

bool IsHydrogenBondDonor(const Quarnel::ZQAtomBase& atom);
bool IsHydrogenBondAcceptor(const Quarnel::ZQAtomBase& atom);

/// Appends the atom as a SMARTS atom expression: a bare symbol, or an expression in brackets.
void AddSmilesAtomSymbol(std::string& text, const Quarnel::ZQAtomBase& atom, unsigned int atype);

}  // namespace ZQKorvex
