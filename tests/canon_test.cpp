#include "contract/quarnel/canon.h"

#include <gtest/gtest.h>

#include "tests/mol_helpers.h"

namespace Quarnel {

namespace {

using Ranks = std::vector<std::int32_t>;

int CompareDegrees(const CanonState&, const ZQAtomBase& a, const ZQAtomBase& b) {
  return static_cast<int>(a.GetHvyDegree()) - static_cast<int>(b.GetHvyDegree());
}

int CompareNeighbours(const CanonState& state, const ZQAtomBase& a, const ZQAtomBase& b) {
  const auto key = [&](const ZQAtomBase& atom) {
    Ranks ranks;
    for (auto nbr = atom.GetAtoms(); nbr; ++nbr) {
      ranks.push_back(state.atomRecords[nbr->GetIdx()].rank);
    }
    std::ranges::sort(ranks);
    return ranks;
  };
  return key(a) < key(b) ? -1 : key(a) > key(b);
}

Ranks RanksOf(const CanonState& state) {
  Ranks ranks;
  for (const auto& record : state.atomRecords) ranks.push_back(record.rank);
  return ranks;
}

}  // namespace

TEST(Canon, RefinesInRoundsWhateverTheOrderOfTheList) {
  constexpr int length = 61;
  const ZQMol chain = ReadSmiles(std::string(length, 'C'));
  // Ranks give an atom's distance from its end, up to a limit.
  const auto upTo = [](int limit) {
    Ranks ranks;
    for (int i = 0; i < length; ++i) ranks.push_back(2 * std::min({i, length - 1 - i, limit}));
    return ranks;
  };
  std::mt19937 random(1);
  CanonState state;
  state.atomRecords.resize(length);
  for (int trial = 0; trial < 10; ++trial) {
    state.atoms.clear();
    for (auto atom = chain.GetAtoms(); atom; ++atom) state.atoms.push_back(&*atom);
    std::ranges::shuffle(state.atoms, random);
    const std::vector<const ZQAtomBase*> before = state.atoms;
    ZQCanonSinglePartition(state);
    EXPECT_EQ(RanksOf(state), upTo(0));
    ZQCanonRefinePartitions(state, false, CompareDegrees);
    EXPECT_EQ(RanksOf(state), upTo(1));
    ZQCanonRefinePartitions(state, true, CompareNeighbours);  // nothing is active
    EXPECT_EQ(RanksOf(state), upTo(1));
    ZQCanonActivatePartitions(state);
    ZQCanonRefinePartitions(state, false, CompareNeighbours);
    EXPECT_EQ(RanksOf(state), upTo(2));
    ZQCanonActivatePartitions(state);
    ZQCanonRefinePartitions(state, true, CompareNeighbours);
    EXPECT_EQ(RanksOf(state), upTo(length));
    const auto place = [&](std::size_t i) { return std::ranges::find(before, state.atoms[i]); };
    for (std::size_t i = 0; i + 1 < length; i += 2) EXPECT_LT(place(i), place(i + 1));
  }
}

}  // namespace Quarnel
