#pragma once

/// Hashed identifiers of connected sets of atoms, independent of how the atoms are numbered: a set
/// counts with all bonds of the molecule between its atoms.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "korvex/subgraph_local.h"

namespace ZQKorvex {

/// The first `count` weights of the hashed identifiers, at least: the 50 of `PATH_PRIMES`, and from
/// there on every fifth prime, 2833, 2861, ... The tables live to process exit; any thread may
/// call. More than 2^22 throw `std::bad_alloc`.
std::span<const unsigned int> ZQCanonicalWeights(std::size_t count);

/// Names sets by the formula that circular.h tells. Made once for a molecule, whose invariants must
/// outlive it, and used for its sets one after another; not shared between threads.
class ZQHashedCanonicalIdGenerator {
 public:
  ZQHashedCanonicalIdGenerator(const std::vector<unsigned int>& atomInvariants,
                               const std::vector<unsigned int>& bondInvariants)
      : atomInvariants_(atomInvariants), bondInvariants_(bondInvariants) {}

  /// Fewer than two atoms are an assertion failure and false.
  bool GetCanonicalID(unsigned int& id, const ZQSubgraph& subgraph);

 private:
  static constexpr std::size_t smallSize = 32;
  static constexpr std::size_t smallDegree = 4;

  /// A set whose values fit two vector registers: a column for each atom, empty beyond the last.
  struct alignas(64) SmallSet {
    std::uint32_t values[smallSize];
    std::uint32_t degrees[smallSize];
    std::uint32_t neighbours[smallDegree][smallSize];  // columns; any beyond the degree
    std::uint32_t bonds[smallDegree][smallSize];       // invariants of the bonds there
  };
  // A bond as seen from one of its ends.
  struct Term {
    unsigned int place;
    unsigned int bondInvariant;
  };
  // Atoms of this many neighbours have a loop of their own, which needs no sorting.
  static constexpr std::size_t unrolledDegrees = 5;

  bool FillSmallSet(const ZQSubgraph& subgraph);
  unsigned int NameSmallSet(std::size_t count);
  void Group(const ZQSubgraph& subgraph);
  void Pass();
  unsigned int Sum();

  SmallSet small_{};
  const std::vector<unsigned int>& atomInvariants_;
  const std::vector<unsigned int>& bondInvariants_;
  // By place; atoms are placed anew, in ascending order of their neighbours in the set.
  std::vector<unsigned int> current_;
  std::vector<unsigned int> next_;
  std::vector<Term> terms_;
  std::vector<std::size_t> firstTerms_;
  std::size_t groupEnds_[unrolledDegrees] = {};  // by degree: the place behind its last atom
  std::vector<unsigned int> degrees_;            // by the subgraph's place
  std::vector<unsigned int> newPlaces_;          // by the subgraph's place
  std::vector<unsigned int> scratch_;
};

}  // namespace ZQKorvex
