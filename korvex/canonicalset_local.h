#pragma once

/// Hashed identifiers of connected sets of atoms, independent of how the atoms are numbered: a set
/// counts with all bonds of the molecule between its atoms.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "korvex/primes_local.h"
#include "korvex/subgraph_local.h"

namespace ZQKorvex {

/// The first `count` weights of the hashed identifiers, at least: the 50 of `PATH_PRIMES`, and from
/// there on every fifth prime, 2833, 2861, ... The tables live to process exit; any thread may
/// call. More than 2^22 throw `std::bad_alloc`.
std::span<const unsigned int> ZQCanonicalWeights(std::size_t count);

/// Those of the terms of an atom, up to a degree of 50.
inline constexpr const unsigned int* zqWeightsOfTerms = &PATH_PRIMES[1];
/// The last sum begins with this weight.
inline constexpr std::size_t zqFirstWeightOfSum = 2;

// Small sets: two registers of 16 atoms or four of 8. More registers would no longer hold all of a
// round, and of carbon's degree or less are nearly all atoms.
inline constexpr std::size_t zqSmallSetSize = 32;
inline constexpr std::size_t zqSmallSetDegree = 4;

/// A small set: a column for each atom, empty beyond the last.
struct alignas(64) ZQSmallSet {
  std::uint32_t values[zqSmallSetSize];
  std::uint32_t degrees[zqSmallSetSize];
  std::uint32_t neighbours[zqSmallSetDegree][zqSmallSetSize];  // columns; any beyond the degree
  std::uint32_t bonds[zqSmallSetDegree][zqSmallSetSize];       // invariants of the bonds there
};

// Names a small set of `count` atoms; for the table of processors, on x86.
unsigned int ZQNameSmallSetAvx512(const ZQSmallSet& set, std::size_t count);
unsigned int ZQNameSmallSetAvx2(const ZQSmallSet& set, std::size_t count);

/// Names sets by the formula that circular.h tells. Made once for a molecule, whose invariants must
/// outlive it, and used for its sets one after another; not shared between threads.
class ZQHashedCanonicalIdGenerator {
 public:
  ZQHashedCanonicalIdGenerator(const std::vector<unsigned int>& atomInvariants,
                               const std::vector<unsigned int>& bondInvariants);

  /// Fewer than two atoms are an assertion failure and false.
  bool GetCanonicalID(unsigned int& id, const ZQSubgraph& subgraph);

 private:
  // A bond as seen from one of its ends.
  struct Term {
    unsigned int place;
    unsigned int bondInvariant;
  };
  // Atoms of this many neighbours have a loop of their own, which needs no sorting.
  static constexpr std::size_t unrolledDegrees = 5;

  bool FillSmallSet(const ZQSubgraph& subgraph);
  void Group(const ZQSubgraph& subgraph);
  void Pass();
  unsigned int Sum();

  unsigned int (*const nameSmallSet_)(const ZQSmallSet& set, std::size_t count);
  ZQSmallSet small_{};
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
