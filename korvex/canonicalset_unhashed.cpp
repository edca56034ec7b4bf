#include "korvex/canonicalset_unhashed_local.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace ZQKorvex {

namespace {

constexpr std::int8_t mostNeighbours = std::numeric_limits<std::int8_t>::max();

std::vector<unsigned int> OrdersOf(const std::vector<std::string>& texts) {
  std::vector<unsigned int> byText(texts.size());
  std::iota(byText.begin(), byText.end(), 0U);
  std::ranges::sort(byText, {}, [&](unsigned int i) -> const std::string& { return texts[i]; });
  std::vector<unsigned int> orders(texts.size());
  unsigned int order = 0;
  for (std::size_t i = 1; i < byText.size(); ++i) {
    order += texts[byText[i]] != texts[byText[i - 1]];
    orders[byText[i]] = order;
  }
  return orders;
}

template <class T>
int Compare(const T& a, const T& b) {
  return (a > b) - (a < b);
}

int InitialInvariant(const CanonState& state, const ZQAtomBase& a, const ZQAtomBase& b) {
  const auto& orders = static_cast<const ZQCanonSubset*>(state.userData)->atomOrders;
  const unsigned int i = a.GetIdx();
  const unsigned int k = b.GetIdx();
  if (orders[i] != orders[k]) return Compare(orders[i], orders[k]);
  return state.atomRecords[i].degree - state.atomRecords[k].degree;
}

// Cached per round: an atom is compared several times in a round, and ranks change only between
// rounds.
const std::int32_t* SortedRanks(const CanonState& state, unsigned int atom) {
  auto& subset = *static_cast<ZQCanonSubset*>(state.userData);
  const unsigned int first = subset.first[atom];
  std::int32_t* const ranks = subset.sortedRanks.data() + first;
  if (subset.round[atom] == state.round) return ranks;
  subset.round[atom] = state.round;
  const std::int8_t degree = state.atomRecords[atom].degree;
  for (int i = 0; i < degree; ++i) {
    ranks[i] = state.atomRecords[subset.neighbours[first + i].atom].rank;
  }
  std::sort(ranks, ranks + degree);
  return ranks;
}

// Atoms of one partition have equal degrees here.
int MiddleInvariant(const CanonState& state, const ZQAtomBase& a, const ZQAtomBase& b) {
  const auto& subset = *static_cast<const ZQCanonSubset*>(state.userData);
  const unsigned int i = a.GetIdx();
  const unsigned int k = b.GetIdx();
  const std::int8_t degree = state.atomRecords[i].degree;
  const std::int32_t* const ranks = SortedRanks(state, i);
  const std::int32_t* const others = SortedRanks(state, k);
  for (int n = 0; n < degree; ++n) {
    if (ranks[n] != others[n]) return Compare(ranks[n], others[n]);
  }
  const unsigned int* const bonds = subset.sortedBonds.data() + subset.first[i];
  const unsigned int* const otherBonds = subset.sortedBonds.data() + subset.first[k];
  for (int n = 0; n < degree; ++n) {
    // The greater bond comes first.
    if (bonds[n] != otherBonds[n]) return Compare(otherBonds[n], bonds[n]);
  }
  return 0;
}

}  // namespace

ZQUnHashedCanonicalIdGenerator::ZQUnHashedCanonicalIdGenerator(
    const ZQMolBase& mol, const ZQConnectionTable& connections,
    const std::vector<std::string>& atomIds, const std::vector<std::string>& bondIds)
    : mol_(mol),
      connections_(connections),
      atomIds_(atomIds),
      bondIds_(bondIds),
      pending_(mol.GetMaxAtomIdx()) {
  subset_.atomOrders = OrdersOf(atomIds);
  subset_.bondOrders = OrdersOf(bondIds);
  subset_.first.resize(mol.GetMaxAtomIdx());
  subset_.round.resize(mol.GetMaxAtomIdx());
  state_.atomRecords.resize(mol.GetMaxAtomIdx());
  state_.userData = &subset_;
}

bool ZQUnHashedCanonicalIdGenerator::GetCanonicalID(std::string& id,
                                                    std::span<const unsigned int> atoms) {
  id.clear();
  if (!ZQ_ASSERT(atoms.size() >= 2)) return false;
  const bool listed = ListAtoms(atoms);
  if (listed) {
    ZQCanonSinglePartition(state_);
    ZQCanonRefinePartitions(state_, false, InitialInvariant);
    ZQCanonActivatePartitions(state_);
    ZQCanonRefinePartitions(state_, true, MiddleInvariant);
    WriteOut(id);
  }
  for (const ZQAtomBase* atom : state_.atoms) pending_[atom->GetIdx()] = 0;
  return listed;
}

bool ZQUnHashedCanonicalIdGenerator::ListAtoms(std::span<const unsigned int> atoms) {
  state_.atoms.clear();
  for (const unsigned int idx : atoms) {
    const ZQAtomBase* atom = idx < pending_.size() ? mol_.GetAtomAt(idx) : nullptr;
    if (!ZQ_ASSERT(atom != nullptr)) return false;
    state_.atoms.push_back(atom);
    pending_[idx] = 1;
  }
  subset_.neighbours.clear();
  subset_.sortedBonds.clear();
  const bool listed =
      std::ranges::all_of(atoms, [this](unsigned int a) { return ListNeighbours(a); });
  subset_.sortedRanks.resize(subset_.neighbours.size());
  return listed;
}

bool ZQUnHashedCanonicalIdGenerator::ListNeighbours(unsigned int atom) {
  const std::size_t first = subset_.neighbours.size();
  for (const auto& entry : connections_[atom]) {
    if (!pending_[entry.atom]) continue;
    subset_.neighbours.push_back(entry);
    subset_.sortedBonds.push_back(subset_.bondOrders[entry.bond]);
  }
  std::sort(subset_.sortedBonds.begin() + static_cast<std::ptrdiff_t>(first),
            subset_.sortedBonds.end());
  const std::size_t degree = subset_.neighbours.size() - first;
  if (!ZQ_ASSERT(degree != 0)) return false;
  if (degree > mostNeighbours) {
    const std::string message =
        std::to_string(degree) + " is greater than the maximum " + std::to_string(mostNeighbours);
    return ZQ_ASSERT_MSG(degree <= mostNeighbours, message.c_str());
  }
  subset_.first[atom] = static_cast<unsigned int>(first);
  state_.atomRecords[atom].degree = static_cast<std::int8_t>(degree);
  return true;
}

// Depth first. An atom with several unwritten branches is on the stack `branched_` during each but
// the last.
void ZQUnHashedCanonicalIdGenerator::WriteOut(std::string& id) {
  branched_.clear();
  unsigned int atom = state_.atoms.front()->GetIdx();
  pending_[atom] = 0;
  id += atomIds_[atom];
  for (;;) {
    const ZQConnectionTable::Entry* best = nullptr;
    bool hasOthers = false;
    const auto isBetter = [this](const auto& a, const auto& b) {
      const std::int32_t rank = state_.atomRecords[a.atom].rank;
      const std::int32_t other = state_.atomRecords[b.atom].rank;
      return rank < other ||
             (rank == other && subset_.bondOrders[a.bond] < subset_.bondOrders[b.bond]);
    };
    const auto* const neighbours = subset_.neighbours.data() + subset_.first[atom];
    for (int i = 0; i < state_.atomRecords[atom].degree; ++i) {
      if (!pending_[neighbours[i].atom]) continue;
      hasOthers = best != nullptr;
      if (!best || isBetter(neighbours[i], *best)) best = &neighbours[i];
    }
    if (best) {
      if (hasOthers) {
        branched_.push_back(atom);
        id += '(';
      }
      atom = best->atom;
      pending_[atom] = 0;
      id.append(bondIds_[best->bond]).append(atomIds_[atom]);
    } else if (!branched_.empty()) {
      id += ')';
      atom = branched_.back();
      branched_.pop_back();
    } else {
      return;
    }
  }
}

bool ZQHasNameableEnvironments(const ZQMolBase& mol, const char* operation) {
  constexpr unsigned int most = mostNeighbours;
  for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    const ZQAtomBase* atom = mol.GetAtomAt(i);
    const unsigned int neighbours = atom ? atom->GetHvyDegree() : 0;
    if (neighbours <= most) continue;
    ZQThrow.Error("%s : an atom with %u neighbours (at most %u can be told apart in a text)",
                  operation, neighbours, most);
    return false;
  }
  return true;
}

}  // namespace ZQKorvex
