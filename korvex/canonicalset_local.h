#pragma once

/// Hashed identifiers of connected sets of atoms, independent of atom order. A set includes all
/// bonds of the molecule between its atoms.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "korvex/primes_local.h"
#include "korvex/subgraph_local.h"

namespace ZQKorvex {

/// At least the first `count` weights of the hashed identifiers: the 50 of `PATH_PRIMES`, then
/// every fifth prime, 2833, 2861, ... The tables exist until process exit. Thread safe. Throws
/// `std::bad_alloc` for more than 2^22.
std::span<const unsigned int> ZQCanonicalWeights(std::size_t count);

/// The weights of an atom's terms, up to degree 50.
inline constexpr const unsigned int* zqWeightsOfTerms = &PATH_PRIMES[1];
/// Index of the first weight of the final sum.
inline constexpr std::size_t zqFirstWeightOfSum = 2;

// Limits of small sets: two registers of 16 atoms or four of 8, so that a whole round stays in
// registers; nearly all atoms have at most carbon's degree.
inline constexpr std::size_t zqSmallSetSize = 32;
inline constexpr std::size_t zqSmallSetDegree = 4;

/// A small set: a column for each atom, empty beyond the last.
struct alignas(64) ZQSmallSet {
  std::uint32_t values[zqSmallSetSize];
  std::uint32_t degrees[zqSmallSetSize];
  std::uint32_t neighbours[zqSmallSetDegree][zqSmallSetSize];  // columns, arbitrary beyond degree
  std::uint32_t bonds[zqSmallSetDegree][zqSmallSetSize];       // invariants of these bonds
};

// The identifier of a small set of `count` atoms; for the table of processors, on x86.
unsigned int ZQNameSmallSetAvx512(const ZQSmallSet& set, std::size_t count);
unsigned int ZQNameSmallSetAvx2(const ZQSmallSet& set, std::size_t count);

/// Computes identifiers by the formula in circular.h. One object serves all sets of a molecule, one
/// after another; the invariants must outlive it. Not thread safe.
class ZQHashedCanonicalIdGenerator {
 public:
  ZQHashedCanonicalIdGenerator(const std::vector<unsigned int>& atomInvariants,
                               const std::vector<unsigned int>& bondInvariants);

  /// Fewer than two atoms are an assertion failure and return false.
  bool GetCanonicalID(unsigned int& id, const ZQSubgraph& subgraph);

 private:
  // A bond as seen from one of its ends.
  struct Term {
    unsigned int place;
    unsigned int bondInvariant;
  };
  // Each degree below this one has its own loop, with a sorting network.
  static constexpr std::size_t unrolledDegrees = 5;

  bool FillSmallSet(const ZQSubgraph& subgraph);
  void Group(const ZQSubgraph& subgraph);
  void Pass();
  unsigned int Sum();

  unsigned int (*const nameSmallSet_)(const ZQSmallSet& set, std::size_t count);
  ZQSmallSet small_{};
  const std::vector<unsigned int>& atomInvariants_;
  const std::vector<unsigned int>& bondInvariants_;
  // By place; atoms are reordered by ascending number of neighbours in the set.
  std::vector<unsigned int> current_;
  std::vector<unsigned int> next_;
  std::vector<Term> terms_;
  std::vector<std::size_t> firstTerms_;
  std::size_t groupEnds_[unrolledDegrees] = {};  // by degree: the place after its last atom
  std::vector<unsigned int> degrees_;            // by the subgraph's place
  std::vector<unsigned int> newPlaces_;          // by the subgraph's place
  std::vector<unsigned int> scratch_;
};

}  // namespace ZQKorvex
