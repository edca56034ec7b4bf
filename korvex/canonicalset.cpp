// The identifier of a set of n atoms is computed in n / 2 rounds over the values of its atoms,
// which are initially their invariants. In a round each atom adds a term for each neighbour to its
// value: the neighbour's value of the previous round plus the invariant of the bond. The terms, in
// ascending order, are multiplied by the weights 947, 983, 1019, 1049 and so on. After the last
// round the values other than 0, in ascending order, are multiplied by the weights from the third
// on; their sum is the identifier. All arithmetic is unsigned modulo 2^32.
//
// The rounds take two thirds of the time of circular fingerprints (radius 0-5, drug-like
// molecules). Their bottleneck is the sorting of terms: two to four at nearly every atom. These are
// sorted without a call of a sort function. If the processor has wide registers, a small set
// (nearly all environments up to radius 3) fits into a few of them, one atom per lane, and networks
// of minimum and maximum sort the terms of all atoms at once (canonicalset_x86.cpp). Otherwise
// atoms are grouped by degree, and each degree up to 4 has a loop with its own network.

#include "korvex/canonicalset_local.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "korvex/primes_local.h"
#include "korvex/processor_local.h"

namespace ZQKorvex {

namespace {

// After `PATH_PRIMES`, every fifth prime is a weight.
constexpr std::size_t primesPerWeight = 5;

std::vector<unsigned int> MakeWeights(std::size_t count) {
  std::vector<unsigned int> weights(PATH_PRIMES.begin() + 1, PATH_PRIMES.end());
  // The n-th prime is below n (ln n + ln ln n) (J. B. Rosser and L. Schoenfeld, Illinois J. Math.
  // 6, 64-94, 1962). The table ends with the 406th.
  const double n = 406.0 + static_cast<double>(primesPerWeight * count);
  const auto limit = static_cast<std::size_t>(n * (std::log(n) + std::log(std::log(n))));
  std::vector<bool> composite(limit + 1);
  for (std::size_t number = 2, primes = 0; weights.size() < count; ++number) {
    if (composite[number]) continue;
    for (std::size_t multiple = number * number; multiple <= limit; multiple += number) {
      composite[multiple] = true;
    }
    if (number > PATH_PRIMES.back() && ++primes % primesPerWeight == 0) {
      weights.push_back(static_cast<unsigned int>(number));
    }
  }
  return weights;
}

void Order(unsigned int& a, unsigned int& b) {
  const unsigned int lesser = std::min(a, b);
  b = std::max(a, b);
  a = lesser;
}

}  // namespace

std::span<const unsigned int> ZQCanonicalWeights(std::size_t count) {
  // Molecules of common sizes share one small table. The size of the largest table is limited to
  // save memory.
  static const std::vector<unsigned int> small = MakeWeights(256);
  if (count <= small.size()) return small;
  static const std::vector<unsigned int> medium = MakeWeights(1 << 14);
  if (count <= medium.size()) return medium;
  static const std::vector<unsigned int> large = MakeWeights(1 << 22);
  if (count > large.size()) throw std::bad_alloc();
  return large;
}

ZQHashedCanonicalIdGenerator::ZQHashedCanonicalIdGenerator(
    const std::vector<unsigned int>& atomInvariants,
    const std::vector<unsigned int>& bondInvariants)
    : nameSmallSet_(ZQGetProcessor().nameSmallSet),
      atomInvariants_(atomInvariants),
      bondInvariants_(bondInvariants) {}

bool ZQHashedCanonicalIdGenerator::GetCanonicalID(unsigned int& id, const ZQSubgraph& subgraph) {
  id = 0;
  const std::size_t count = subgraph.NumAtoms();
  if (!ZQ_ASSERT(count >= 2)) return false;
  if (nameSmallSet_ && FillSmallSet(subgraph)) {
    id = nameSmallSet_(small_, count);
    return true;
  }
  Group(subgraph);
  for (std::size_t pass = count / 2; pass != 0; --pass) Pass();
  id = Sum();
  return true;
}

// False if the set has too many atoms, or an atom too many neighbours.
bool ZQHashedCanonicalIdGenerator::FillSmallSet(const ZQSubgraph& subgraph) {
  const std::span<const unsigned int> atoms = subgraph.Atoms();
  if (atoms.size() > zqSmallSetSize) return false;
  std::fill(std::begin(small_.values), std::end(small_.values), 0);
  std::fill(std::begin(small_.degrees), std::end(small_.degrees), 0);
  for (std::size_t i = 0; i < atoms.size(); ++i) small_.values[i] = atomInvariants_[atoms[i]];
  for (const ZQSubgraph::Bond& bond : subgraph.Bonds()) {
    const std::uint32_t a = bond.place;
    const std::uint32_t b = bond.earlierPlace;
    const std::uint32_t termOfA = small_.degrees[a]++;
    const std::uint32_t termOfB = small_.degrees[b]++;
    if (termOfA >= zqSmallSetDegree || termOfB >= zqSmallSetDegree) return false;
    const std::uint32_t invariant = bondInvariants_[bond.idx];
    small_.neighbours[termOfA][a] = b;
    small_.neighbours[termOfB][b] = a;
    small_.bonds[termOfA][a] = invariant;
    small_.bonds[termOfB][b] = invariant;
  }
  return true;
}

// Groups the atoms by their number of neighbours in the set, and lists their terms.
void ZQHashedCanonicalIdGenerator::Group(const ZQSubgraph& subgraph) {
  const std::span<const unsigned int> atoms = subgraph.Atoms();
  const std::size_t count = atoms.size();
  degrees_.assign(count, 0);
  for (const ZQSubgraph::Bond& bond : subgraph.Bonds()) {
    ++degrees_[bond.place];
    ++degrees_[bond.earlierPlace];
  }
  std::size_t ends[unrolledDegrees + 1] = {};
  const auto group = [](unsigned int degree) {
    return std::min<std::size_t>(degree, unrolledDegrees);
  };
  for (const unsigned int degree : degrees_) ++ends[group(degree)];
  for (std::size_t sum = 0; std::size_t & end : ends) sum += std::exchange(end, sum);
  current_.resize(count);
  next_.resize(count);
  newPlaces_.resize(count);
  firstTerms_.resize(count + 1);
  firstTerms_[count] = 2 * subgraph.Bonds().size();
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t place = ends[group(degrees_[i])]++;
    newPlaces_[i] = static_cast<unsigned int>(place);
    current_[place] = atomInvariants_[atoms[i]];
    firstTerms_[place] = degrees_[i];
  }
  std::copy_n(ends, unrolledDegrees, groupEnds_);
  // Counts become end offsets, which filling decrements to begin offsets.
  for (std::size_t place = 0, sum = 0; place < count; ++place) {
    firstTerms_[place] = sum += firstTerms_[place];
  }
  terms_.resize(2 * subgraph.Bonds().size());
  for (const ZQSubgraph::Bond& bond : subgraph.Bonds()) {
    const unsigned int a = newPlaces_[bond.place];
    const unsigned int b = newPlaces_[bond.earlierPlace];
    terms_[--firstTerms_[a]] = {b, bondInvariants_[bond.idx]};
    terms_[--firstTerms_[b]] = {a, bondInvariants_[bond.idx]};
  }
}

// One round: each atom adds its neighbours' terms in ascending order.
void ZQHashedCanonicalIdGenerator::Pass() {
  const unsigned int* const current = current_.data();
  unsigned int* const next = next_.data();
  const Term* term = terms_.data();
  const auto take = [&term, current] {
    const unsigned int value = term->bondInvariant + current[term->place];
    ++term;
    return value;
  };
  const unsigned int* const weight = zqWeightsOfTerms;
  std::size_t i = 0;
  for (; i < groupEnds_[0]; ++i) next[i] = current[i];
  for (; i < groupEnds_[1]; ++i) next[i] = current[i] + take() * weight[0];
  for (; i < groupEnds_[2]; ++i) {
    unsigned int a = take();
    unsigned int b = take();
    Order(a, b);
    next[i] = current[i] + a * weight[0] + b * weight[1];
  }
  for (; i < groupEnds_[3]; ++i) {
    unsigned int a = take();
    unsigned int b = take();
    unsigned int c = take();
    Order(a, b);
    Order(b, c);
    Order(a, b);
    next[i] = current[i] + a * weight[0] + b * weight[1] + c * weight[2];
  }
  for (; i < groupEnds_[4]; ++i) {
    unsigned int a = take();
    unsigned int b = take();
    unsigned int c = take();
    unsigned int d = take();
    Order(a, b);
    Order(c, d);
    Order(a, c);
    Order(b, d);
    Order(b, c);
    next[i] = current[i] + a * weight[0] + b * weight[1] + c * weight[2] + d * weight[3];
  }
  for (; i < current_.size(); ++i) {
    scratch_.clear();
    while (term != terms_.data() + firstTerms_[i + 1]) scratch_.push_back(take());
    std::ranges::sort(scratch_);
    const std::span<const unsigned int> weights = ZQCanonicalWeights(scratch_.size());
    next[i] = current[i];
    for (std::size_t k = 0; k < scratch_.size(); ++k) next[i] += scratch_[k] * weights[k];
  }
  current_.swap(next_);
}

// The sum of the values other than 0 in ascending order, each times its weight.
unsigned int ZQHashedCanonicalIdGenerator::Sum() {
  const std::span<const unsigned int> weights =
      ZQCanonicalWeights(current_.size() + zqFirstWeightOfSum);
  std::ranges::sort(current_);
  const auto nonZero = std::ranges::upper_bound(current_, 0U);
  unsigned int sum = 0;
  for (auto value = nonZero; value != current_.end(); ++value) {
    sum += *value * weights[static_cast<std::size_t>(value - nonZero) + zqFirstWeightOfSum];
  }
  return sum;
}

}  // namespace ZQKorvex
