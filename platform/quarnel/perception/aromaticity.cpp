#include <algorithm>
#include <array>
#include <span>
#include <utility>
#include <vector>

#include "contract/bostrel/throw.h"
#include "contract/quarnel/perception.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"
#include "platform/quarnel/molecule/valence_electrons_local.h"
#include "platform/quarnel/molecule/workspace_local.h"

// Hückel's rule (E. Hückel, Z. Phys. 70, 204, 1931) over cycles of atoms that contribute 0, 1 or 2
// electrons each. The graph of these atoms is contracted: atoms with two such neighbours are merged
// into chains between the branching atoms. A drug's ring system has a handful of chains, a cycle is
// a set of them, and the sum of two rings is the symmetric difference of two sets. The shortest
// rings through each chain are tested, found by Dijkstra's search from one of its ends to the
// other, and then the outlines of fused rings, in order of their number, until all rings are
// aromatic.

namespace Quarnel {
namespace {

constexpr std::uint32_t none = MolView::none;
constexpr unsigned int largestRing = 24;  // of the model
/// Bounds on the work for one ring system, in units that don't depend on the atoms' order. The
/// number after each is the maximum in 38,000 molecules, 8,000 of them selected for their ring
/// systems, metals and size.
constexpr std::size_t maxRingsOfChain = 64;    // 8
constexpr unsigned int maxReached = 256;       // 33
constexpr std::size_t maxFused = 6;            // of the model
constexpr std::size_t maxCombinations = 1024;  // 126
/// A combination is extended by each of its fused neighbours, so that most occur several times.
constexpr std::size_t maxRepeats = 64;

constexpr int noPart = -1;  // of an atom that can't take part

/// Whether a double bond to this element takes carbon's electron: groups 15 to 17.
bool StealsElectrons(unsigned int element) {
  const unsigned int electrons = GetValenceElectrons(element);
  return electrons >= 5 && electrons <= 7;
}

/// The bonds of an atom, as needed for the electron count.
struct Bonding {
  unsigned int valence = 0;
  unsigned int ringDoubles = 0;
  unsigned int otherDoubles = 0;
  unsigned int triples = 0;
  unsigned int partner = 0;  // element at the far end of the double bond outside of rings
};

/// The table in the header of `ZQAssignAromaticFlags`.
int PiElectrons(const MolView::Atom& atom, const Bonding& bonding) {
  const unsigned int valence = bonding.valence;
  const unsigned int doubles = bonding.ringDoubles + bonding.otherDoubles;
  const bool plain = doubles == 0 && bonding.triples == 0;
  const bool inRing = bonding.ringDoubles == 1 && doubles == 1 && bonding.triples == 0;
  const int charge = atom.charge;
  switch (atom.element) {
    case 6:
      if (inRing && ((charge == 0 && valence <= 4) || (charge == -1 && valence == 3))) return 1;
      if (bonding.triples == 1 && doubles == 0 && charge == 0 && valence <= 4) return 1;
      if (plain && valence == 3 && charge == -1) return 2;
      if (plain && valence == 3 && charge == 1) return 0;
      if (doubles == 1 && bonding.otherDoubles == 1 && charge == 0 && valence == 4 &&
          StealsElectrons(bonding.partner)) {
        return 0;
      }
      return noPart;
    case 14:
      return inRing && charge == 0 && valence == 4 ? 1 : noPart;
    case 5:
      if (inRing && valence == 3U - static_cast<unsigned int>(charge)) return 1;
      return plain && charge == 0 && valence == 3 ? 0 : noPart;
    case 7:
    case 15:
    case 33:
      if (inRing && ((charge == 0 && valence == 3) || (charge == 1 && valence == 4))) return 1;
      if (plain && ((charge == 0 && valence == 3) || (charge == -1 && valence == 2))) return 2;
      if (atom.element == 7 && charge == 1 && valence == 4 && doubles == 1 &&
          bonding.partner == 8) {
        return 0;
      }
      if (atom.element == 7 && charge == 0 && valence == 5 && bonding.ringDoubles == 1 &&
          bonding.otherDoubles == 1 && bonding.partner == 8) {
        return 1;
      }
      return noPart;
    case 8:
      if (inRing && charge == 1 && valence == 3) return 1;
      return plain && charge == 0 && valence == 2 ? 2 : noPart;
    case 16:
    case 34:
    case 52:
      if (inRing && charge == 1 && valence == 3) return 1;
      return plain && ((charge == 0 && valence == 2) || (charge == 1 && valence == 3)) ? 2 : noPart;
    default:
      return noPart;
  }
}

class AromaticSystems {
 public:
  /// Sets the flags of the view's aromatic atoms and bonds; clears none.
  void Run(MolView& view, unsigned int maxRing);

 private:
  /// A path whose inner atoms have no other neighbour that takes part.
  struct Chain {
    std::uint32_t from;  // branching atoms, both ends; equal for a ring with one branching atom
    std::uint32_t to;
    std::uint32_t firstBond;  // in chainBonds_
    std::uint32_t length;     // in bonds
    int inner;                // electrons of the inner atoms
    bool aromatic;
  };
  using Combination = std::array<std::uint32_t, maxFused>;  // ascending rings, none at the end

  void FindParticipants();
  void RunSystem(std::uint32_t start);
  void TestSimpleRing();
  void FindChains();
  std::uint32_t FollowChain(std::uint32_t from, const MolView::Edge& first);
  void FindRings();
  void FindRingsOf(std::uint32_t chain);
  void CombineRings();
  void FindFusedRings();
  void TestCombination(const Combination& rings);
  bool IsSingleCycle(std::uint32_t start, std::size_t size) const;
  bool IsAromatic(std::span<const std::uint32_t> cycle) const;
  bool IsHueckel(unsigned int size, int electrons) const {
    return size <= maxRing_ && electrons % 4 == 2;
  }
  std::span<const std::uint32_t> Ring(std::uint32_t ring) const {
    return {ringChains_.data() + ringStart_[ring], ringStart_[ring + 1] - ringStart_[ring]};
  }
  std::span<const std::uint32_t> ChainsAt(std::uint32_t branch) const {
    return {chainsAt_.data() + firstChainAt_[branch], numChainsAt_[branch]};
  }
  /// A triple bond isn't marked between its aromatic atoms.
  void MarkBond(std::uint32_t b) {
    MolView::Bond& bond = view_->bonds[b];
    view_->atoms[bond.bgn].aromatic = view_->atoms[bond.end].aromatic = true;
    bond.aromatic = bond.order <= 2;
  }

  MolView* view_ = nullptr;
  unsigned int maxRing_ = 0;
  // By atom.
  std::vector<int> electrons_;
  std::vector<std::uint32_t> degree_;  // neighbours that take part
  std::vector<char> seen_;
  std::vector<char> takesPart_;  // by bond
  // Of the current system.
  std::vector<std::uint32_t> members_;
  std::vector<std::uint32_t> branches_;
  std::vector<Chain> chains_;
  std::vector<std::uint32_t> chainBonds_;
  std::vector<std::uint32_t> chainsAt_;
  std::vector<std::uint32_t> firstChainAt_;  // by atom
  std::vector<std::uint32_t> numChainsAt_;   // by atom
  std::vector<std::uint32_t> ringChains_;
  std::vector<std::uint32_t> ringStart_;
  // Of one search for shortest paths; `distance_` is by atom and all none between searches.
  struct Reached {
    std::uint32_t distance;
    std::uint32_t atom;
  };
  struct Step {
    std::uint32_t atom;
    std::uint32_t next;  // position in ChainsAt
  };
  std::vector<std::uint32_t> distance_;
  std::vector<Reached> heap_;
  std::vector<std::uint32_t> touched_;
  std::vector<Step> steps_;
  std::vector<std::uint32_t> path_;
  // Of the combinations.
  using Pair = std::pair<std::uint32_t, std::uint32_t>;
  std::vector<Pair> byChain_;               // chain and ring
  std::vector<Pair> fusions_;               // ascending, each in both directions
  std::vector<std::uint32_t> firstFusion_;  // by ring
  std::vector<Combination> combinations_;
  std::vector<Combination> grown_;
  std::vector<char> inCycle_;  // by chain
  std::vector<char> marked_;   // by chain: aromatic by a combination of the current size
  std::vector<std::uint32_t> cycle_;
};

void AromaticSystems::FindParticipants() {
  const std::uint32_t n = view_->NumAtoms();
  electrons_.resize(n);
  degree_.assign(n, 0);
  seen_.assign(n, 0);
  takesPart_.assign(view_->bonds.size(), 0);
  for (std::uint32_t a = 0; a < n; ++a) {
    const MolView::Atom& atom = view_->atoms[a];
    electrons_[a] = noPart;
    if (!atom.inRing) continue;
    Bonding bonding;
    bonding.valence = atom.implicitH;
    for (const MolView::Edge& edge : view_->Edges(a)) {
      const MolView::Bond& bond = view_->bonds[edge.bond];
      bonding.valence += bond.order;
      if (bond.order == 2) {
        if (bond.inRing) {
          ++bonding.ringDoubles;
        } else {
          ++bonding.otherDoubles;
          bonding.partner = view_->atoms[edge.atom].element;
        }
      } else if (bond.order > 2) {
        ++bonding.triples;
      }
    }
    electrons_[a] = PiElectrons(atom, bonding);
  }
  for (std::uint32_t b = 0; b < view_->NumBonds(); ++b) {
    const MolView::Bond& bond = view_->bonds[b];
    if (!bond.inRing || bond.order == 0 || electrons_[bond.bgn] == noPart ||
        electrons_[bond.end] == noPart) {
      continue;
    }
    takesPart_[b] = 1;
    ++degree_[bond.bgn];
    ++degree_[bond.end];
  }
  // Dead ends can't be part of a cycle.
  members_.clear();
  for (std::uint32_t a = 0; a < n; ++a) {
    if (degree_[a] == 1) members_.push_back(a);
  }
  while (!members_.empty()) {
    const std::uint32_t a = members_.back();
    members_.pop_back();
    for (const MolView::Edge& edge : view_->Edges(a)) {
      if (!takesPart_[edge.bond]) continue;
      takesPart_[edge.bond] = 0;
      degree_[a] = 0;
      if (--degree_[edge.atom] == 1) members_.push_back(edge.atom);
    }
  }
}

void AromaticSystems::Run(MolView& view, unsigned int maxRing) {
  view_ = &view;
  maxRing_ = maxRing;
  FindParticipants();
  for (std::uint32_t a = 0; a < view_->NumAtoms(); ++a) {
    if (degree_[a] != 0 && !seen_[a]) RunSystem(a);
  }
}

void AromaticSystems::RunSystem(std::uint32_t start) {
  members_.assign(1, start);
  seen_[start] = 1;
  branches_.clear();
  for (std::size_t head = 0; head < members_.size(); ++head) {
    const std::uint32_t a = members_[head];
    if (degree_[a] > 2) branches_.push_back(a);
    for (const MolView::Edge& edge : view_->Edges(a)) {
      if (!takesPart_[edge.bond] || seen_[edge.atom]) continue;
      seen_[edge.atom] = 1;
      members_.push_back(edge.atom);
    }
  }
  if (branches_.empty()) {
    TestSimpleRing();
    return;
  }
  FindChains();
  FindRings();
  for (std::uint32_t ring = 0; ring + 1 < ringStart_.size(); ++ring) {
    if (!IsAromatic(Ring(ring))) continue;
    for (const std::uint32_t c : Ring(ring)) chains_[c].aromatic = true;
  }
  CombineRings();
  for (const Chain& chain : chains_) {
    if (!chain.aromatic) continue;
    for (std::uint32_t i = 0; i < chain.length; ++i) MarkBond(chainBonds_[chain.firstBond + i]);
  }
}

void AromaticSystems::TestSimpleRing() {
  int electrons = 0;
  for (const std::uint32_t a : members_) electrons += electrons_[a];
  if (!IsHueckel(static_cast<unsigned int>(members_.size()), electrons)) return;
  for (const std::uint32_t a : members_) {
    for (const MolView::Edge& edge : view_->Edges(a)) {
      if (takesPart_[edge.bond]) MarkBond(edge.bond);
    }
  }
}

// Appends the chain that leaves `from` by `first` and returns its last bond.
std::uint32_t AromaticSystems::FollowChain(std::uint32_t from, const MolView::Edge& first) {
  Chain chain{from, first.atom, static_cast<std::uint32_t>(chainBonds_.size()), 1, 0, false};
  std::uint32_t bond = first.bond;
  chainBonds_.push_back(bond);
  while (degree_[chain.to] == 2) {
    chain.inner += electrons_[chain.to];
    for (const MolView::Edge& edge : view_->Edges(chain.to)) {
      if (!takesPart_[edge.bond] || edge.bond == bond) continue;
      bond = edge.bond;
      chain.to = edge.atom;
      break;
    }
    chainBonds_.push_back(bond);
    ++chain.length;
  }
  chains_.push_back(chain);
  return bond;
}

void AromaticSystems::FindChains() {
  chains_.clear();
  chainBonds_.clear();
  chainsAt_.clear();
  firstChainAt_.resize(view_->atoms.size());
  numChainsAt_.resize(view_->atoms.size());
  for (const std::uint32_t a : branches_) {
    firstChainAt_[a] = static_cast<std::uint32_t>(chainsAt_.size());
    numChainsAt_[a] = 0;
    chainsAt_.resize(chainsAt_.size() + degree_[a]);
  }
  for (const std::uint32_t a : branches_) {
    for (const MolView::Edge& edge : view_->Edges(a)) {
      // A chain is followed from one of its ends; its last bond is unmarked until all are found.
      if (takesPart_[edge.bond] != 1) continue;
      takesPart_[edge.bond] = 2;
      takesPart_[FollowChain(a, edge)] = 2;
      const auto c = static_cast<std::uint32_t>(chains_.size() - 1);
      const std::uint32_t to = chains_[c].to;
      chainsAt_[firstChainAt_[a] + numChainsAt_[a]++] = c;
      chainsAt_[firstChainAt_[to] + numChainsAt_[to]++] = c;
    }
  }
}

// Finds all shortest rings through each bond: unlike a smallest set of smallest rings, this set
// doesn't depend on the order of atoms.
void AromaticSystems::FindRings() {
  ringChains_.clear();
  ringStart_.assign(1, 0);
  distance_.resize(std::max(distance_.size(), view_->atoms.size()), none);
  for (std::uint32_t c = 0; c < chains_.size(); ++c) FindRingsOf(c);
  // A ring was found once for each of its chains that has no shorter ring.
  const auto numRings = static_cast<std::uint32_t>(ringStart_.size() - 1);
  path_.resize(numRings);
  for (std::uint32_t r = 0; r < numRings; ++r) path_[r] = r;
  const auto less = [this](std::uint32_t a, std::uint32_t b) {
    return std::ranges::lexicographical_compare(Ring(a), Ring(b));
  };
  const auto same = [this](std::uint32_t a, std::uint32_t b) {
    return std::ranges::equal(Ring(a), Ring(b));
  };
  std::ranges::sort(path_, less);
  path_.erase(std::unique(path_.begin(), path_.end(), same), path_.end());
  std::ranges::sort(path_);
  std::uint32_t size = 0;
  for (std::uint32_t r = 0; r < path_.size(); ++r) {
    const std::span<const std::uint32_t> ring = Ring(path_[r]);
    const auto length = static_cast<std::uint32_t>(ring.size());
    std::ranges::copy(ring, ringChains_.begin() + size);
    ringStart_[r] = size;
    size += length;
  }
  ringStart_.resize(path_.size() + 1);
  ringStart_.back() = size;
}

void AromaticSystems::FindRingsOf(std::uint32_t chain) {
  const Chain& closed = chains_[chain];
  if (closed.from == closed.to) {
    ringChains_.push_back(chain);
    ringStart_.push_back(static_cast<std::uint32_t>(ringChains_.size()));
    return;
  }
  if (closed.length >= maxRing_) return;
  // Dijkstra's search from one end of the chain to the other without the chain.
  const auto later = [](const Reached& a, const Reached& b) { return a.distance > b.distance; };
  std::uint32_t limit = maxRing_ - closed.length;
  touched_.assign(1, closed.from);
  distance_[closed.from] = 0;
  heap_.assign(1, {0, closed.from});
  unsigned int settled = 0;
  std::uint32_t radius = 0;
  bool closes = false;
  while (!heap_.empty()) {
    std::ranges::pop_heap(heap_, later);
    const Reached at = heap_.back();
    heap_.pop_back();
    if (at.distance > distance_[at.atom]) continue;
    if (at.distance > radius && settled > maxReached) break;
    closes = at.atom == closed.to;
    if (closes) break;
    radius = at.distance;
    ++settled;
    for (const std::uint32_t c : ChainsAt(at.atom)) {
      const Chain& next = chains_[c];
      const std::uint32_t to = next.from == at.atom ? next.to : next.from;
      const std::uint32_t distance = at.distance + next.length;
      if (c == chain || distance > limit || distance >= distance_[to]) continue;
      if (distance_[to] == none) touched_.push_back(to);
      if (to == closed.to) limit = distance;
      distance_[to] = distance;
      heap_.push_back({distance, to});
      std::ranges::push_heap(heap_, later);
    }
  }
  if (closes) {
    // Back along every shortest path.
    const std::size_t numRings = ringStart_.size();
    const std::size_t numChains = ringChains_.size();
    steps_.assign(1, {closed.to, 0});
    path_.assign(1, chain);
    while (!steps_.empty() && ringStart_.size() - numRings <= maxRingsOfChain) {
      Step& step = steps_.back();
      if (step.atom == closed.from) {
        const auto first = static_cast<std::ptrdiff_t>(ringChains_.size());
        ringChains_.insert(ringChains_.end(), path_.begin(), path_.end());
        std::sort(ringChains_.begin() + first, ringChains_.end());
        ringStart_.push_back(static_cast<std::uint32_t>(ringChains_.size()));
      }
      if (step.atom == closed.from || step.next == numChainsAt_[step.atom]) {
        steps_.pop_back();
        path_.pop_back();
        continue;
      }
      const std::uint32_t c = ChainsAt(step.atom)[step.next++];
      const Chain& back = chains_[c];
      const std::uint32_t to = back.from == step.atom ? back.to : back.from;
      if (c == chain || distance_[to] == none ||
          distance_[to] + back.length != distance_[step.atom]) {
        continue;
      }
      steps_.push_back({to, 0});
      path_.push_back(c);
    }
    if (ringStart_.size() - numRings > maxRingsOfChain) {
      ringStart_.resize(numRings);
      ringChains_.resize(numChains);
    }
  }
  for (const std::uint32_t a : touched_) distance_[a] = none;
}

bool AromaticSystems::IsAromatic(std::span<const std::uint32_t> cycle) const {
  unsigned int size = 0;
  int electrons = 0;
  int ends = 0;  // every branching atom of a cycle is the end of two of its chains
  for (const std::uint32_t c : cycle) {
    const Chain& chain = chains_[c];
    size += chain.length;
    electrons += chain.inner;
    ends += electrons_[chain.from] + electrons_[chain.to];
  }
  return IsHueckel(size, electrons + ends / 2);
}

// Finds the pairs of rings that share exactly one bond.
void AromaticSystems::FindFusedRings() {
  const auto numRings = static_cast<std::uint32_t>(ringStart_.size() - 1);
  byChain_.clear();
  for (std::uint32_t ring = 0; ring < numRings; ++ring) {
    for (const std::uint32_t c : Ring(ring)) byChain_.emplace_back(c, ring);
  }
  std::ranges::sort(byChain_);
  fusions_.clear();
  for (std::size_t i = 0; i < byChain_.size(); ++i) {
    const std::uint32_t c = byChain_[i].first;
    for (std::size_t j = i + 1; j < byChain_.size() && byChain_[j].first == c; ++j) {
      const std::span<const std::uint32_t> a = Ring(byChain_[i].second);
      const std::span<const std::uint32_t> b = Ring(byChain_[j].second);
      const auto isShared = [&](std::uint32_t chain) {
        return std::binary_search(b.begin(), b.end(), chain);
      };
      if (chains_[c].length != 1 || std::ranges::count_if(a, isShared) != 1) continue;
      fusions_.emplace_back(byChain_[i].second, byChain_[j].second);
      fusions_.emplace_back(byChain_[j].second, byChain_[i].second);
    }
  }
  std::ranges::sort(fusions_);
  firstFusion_.assign(numRings + 1, 0);
  for (const Pair& fusion : fusions_) ++firstFusion_[fusion.first + 1];
  for (std::uint32_t ring = 0; ring < numRings; ++ring)
    firstFusion_[ring + 1] += firstFusion_[ring];
}

// Rings that aren't aromatic alone may be aromatic together with their neighbours, as in azulene.
// All combinations of one size are tested against the same state.
void AromaticSystems::CombineRings() {
  const auto numRings = static_cast<std::uint32_t>(ringStart_.size() - 1);
  const auto isCovered = [this](std::uint32_t ring) {
    return std::ranges::all_of(Ring(ring), [this](std::uint32_t c) { return chains_[c].aromatic; });
  };
  combinations_.clear();
  for (std::uint32_t ring = 0; ring < numRings; ++ring) {
    if (isCovered(ring)) continue;
    Combination& single = combinations_.emplace_back();
    single.fill(none);
    single[0] = ring;
  }
  if (combinations_.empty() || numRings < 2) return;

  FindFusedRings();
  inCycle_.assign(chains_.size(), 0);
  for (std::size_t size = 2; size <= maxFused; ++size) {
    grown_.clear();
    for (const Combination& rings : combinations_) {
      for (std::size_t i = 0; i + 1 < size; ++i) {
        for (std::uint32_t f = firstFusion_[rings[i]]; f < firstFusion_[rings[i] + 1]; ++f) {
          const std::uint32_t ring = fusions_[f].second;
          if (std::find(rings.begin(), rings.end(), ring) != rings.end()) continue;
          Combination& grown = grown_.emplace_back(rings);
          grown[size - 1] = ring;
          std::sort(grown.begin(), grown.begin() + static_cast<std::ptrdiff_t>(size));
        }
      }
      if (grown_.size() > maxRepeats * maxCombinations) return;
    }
    std::ranges::sort(grown_);
    grown_.erase(std::unique(grown_.begin(), grown_.end()), grown_.end());
    if (grown_.empty() || grown_.size() > maxCombinations) return;
    marked_.assign(chains_.size(), 0);
    for (const Combination& rings : grown_) TestCombination(rings);
    for (std::size_t c = 0; c < chains_.size(); ++c) chains_[c].aromatic |= marked_[c] != 0;
    combinations_.swap(grown_);
    bool allCovered = true;
    for (std::uint32_t ring = 0; ring < numRings; ++ring) allCovered &= isCovered(ring);
    if (allCovered) return;
  }
}

// Marks the outline of the rings if it is one cycle that obeys the rule, and the bonds of the rings
// that link two of its atoms: which of those are double often depends on the drawing.
void AromaticSystems::TestCombination(const Combination& rings) {
  const auto forEachChain = [&](const auto& visit) {
    for (const std::uint32_t ring : rings) {
      if (ring == none) break;
      for (const std::uint32_t c : Ring(ring)) visit(c);
    }
  };
  forEachChain([this](std::uint32_t c) { inCycle_[c] ^= 1; });
  cycle_.clear();
  forEachChain([this](std::uint32_t c) {
    if (inCycle_[c] != 1) return;
    inCycle_[c] = 2;
    cycle_.push_back(c);
  });
  if (!cycle_.empty() && IsAromatic(cycle_) && IsSingleCycle(cycle_.front(), cycle_.size())) {
    for (const std::uint32_t c : cycle_) marked_[c] = 1;
    const auto isOnCycle = [this](std::uint32_t branch) {
      return std::ranges::any_of(ChainsAt(branch), [this](std::uint32_t c) { return inCycle_[c]; });
    };
    forEachChain([&](std::uint32_t c) {
      const Chain& chain = chains_[c];
      if (chain.length == 1 && isOnCycle(chain.from) && isOnCycle(chain.to)) marked_[c] = 1;
    });
  }
  for (const std::uint32_t c : cycle_) inCycle_[c] = 0;
}

bool AromaticSystems::IsSingleCycle(std::uint32_t start, std::size_t size) const {
  std::uint32_t c = start;
  std::uint32_t at = chains_[c].to;
  for (std::size_t length = 1; length <= size; ++length) {
    std::uint32_t next = none;
    for (const std::uint32_t other : ChainsAt(at)) {
      if (other == c || !inCycle_[other]) continue;
      if (next != none) return false;
      next = other;
    }
    if (next == none) return false;
    if (next == start) return length == size;
    c = next;
    at = chains_[c].from == at ? chains_[c].to : chains_[c].from;
  }
  return false;
}

/// Whether the molecule's aromatic flags differ from the view's.
bool HasOtherFlags(const MolView& view) {
  return std::ranges::any_of(view.atoms,
                             [](const auto& a) { return a.atom->IsAromatic() != a.aromatic; }) ||
         std::ranges::any_of(view.bonds,
                             [](const auto& b) { return b.bond->IsAromatic() != b.aromatic; });
}

}  // namespace

bool ZQAssignAromaticFlags(ZQMolBase& mol, unsigned int model, bool clear, unsigned int maxRing,
                           bool /*prune*/) {
  if (model != 2) {
    Bostrel::ZQThrow.Warning("ZQAssignAromaticFlags() : unknown aromaticity model %u!", model);
    return false;
  }
  if (!mol.IsPerceived(ZQPerceived::Rings)) ZQFindRingAtomsAndBonds(mol);
  const Workspace<MolView> workspace;
  const Workspace<AromaticSystems> systems;
  MolView& view = workspace->Read(mol, MolView::Properties);
  if (clear) {
    for (MolView::Atom& atom : view.atoms) atom.aromatic = false;
    for (MolView::Bond& bond : view.bonds) bond.aromatic = false;
  }
  systems->Run(view, maxRing == 0 ? largestRing : std::min(maxRing, largestRing));
  for (const unsigned int follower :
       {ZQPerceived::Hybridization, ZQPerceived::Chirality, ZQPerceived::Symmetry}) {
    if (mol.IsPerceived(follower) && HasOtherFlags(view)) mol.SetPerceived(follower, false);
  }
  for (const MolView::Atom& atom : view.atoms) atom.atom->SetAromatic(atom.aromatic);
  for (const MolView::Bond& bond : view.bonds) bond.bond->SetAromatic(bond.aromatic);
  mol.SetData(ZQAromaticityModelTag, static_cast<int>(model));
  mol.SetPerceived(ZQPerceived::Aromaticity, true);
  return true;
}

}  // namespace Quarnel
