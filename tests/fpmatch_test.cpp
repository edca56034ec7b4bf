// The algebra of atom and bond sets and of matches.

#include <gtest/gtest.h>

#include <bit>

#include "korvex/fpmatch.h"
#include "tests/mol_helpers.h"

namespace ZQKorvex {
namespace {

TEST(AddressHash, WorkedValues) {
  const auto at = [](std::uintptr_t address) {
    return std::bit_cast<const ZQAtomBase*>(address);  // never read
  };
  EXPECT_EQ(ZQGetAtomAddressHash(at(0x1000)), 0xd8baafe1U);
  EXPECT_EQ(ZQGetAtomAddressHash(at(0x7f1234567890)), 0xa90742b5U);
  CapturedReports reports;
  ZQGetAtomAddressHash(nullptr);
  ZQGetBondAddressHash(nullptr);
  ZQGetMatchAddressHash(nullptr);
  EXPECT_FALSE(ZQEqualMatch()(nullptr, nullptr));
  EXPECT_EQ(reports.Take(), Texts(4, "Assertion"));
}

// A fragment by the numbers of its atoms; each but the first has its bond to the one before.
using Fragment = ZQFPAtomBondSet<std::string>;
Fragment FragmentOf(const ZQMolBase& mol, const std::string& id,
                    const std::vector<unsigned int>& atoms) {
  Fragment fragment(&mol, id);
  for (std::size_t i = 0; i < atoms.size(); ++i) {
    ZQAtomBase* atom = mol.GetAtomAt(atoms[i]);
    fragment.AddAtom(atom);
    for (auto bond = atom->GetBonds(); i != 0 && bond; ++bond) {
      if (bond->GetNbr(atom)->GetIdx() == atoms[i - 1]) fragment.AddBond(&*bond);
    }
  }
  return fragment;
}

class FPMatchTest : public testing::Test {
 protected:
  FPMatchTest() {
    ZQSetPointersAsGenericData(from);
    mol = from;
  }
  ZQMatch MatchOf(const std::vector<std::pair<unsigned int, unsigned int>>& pairs) const {
    ZQMatch match;
    for (const auto& [a, b] : pairs) match.AddPair(from.GetAtomAt(a), from.GetAtomAt(b));
    return match;
  }
  ZQIter<ZQAtomBase> Atoms(const std::vector<unsigned int>& indices) const {
    std::vector<ZQAtomBase*> atoms;
    atoms.reserve(indices.size());
    for (const unsigned int i : indices) atoms.push_back(from.GetAtomAt(i));
    return {new ZQPointerIter<ZQAtomBase>(std::move(atoms))};
  }

  ZQMol from = "CCCCCCCC"_mol;
  ZQMol mol;  // a tagged copy
};

TEST_F(FPMatchTest, IteratorsDifferAsSetsAndByLength) {
  using Indices = std::vector<unsigned int>;
  const struct {
    Indices a;
    Indices b;
    bool differ;
  } cases[] = {{{}, {}, false},
               {{1, 2, 3}, {3, 1, 2}, false},
               {{1, 2}, {1, 2, 2}, true},
               {{1, 2}, {1, 3}, true},
               {{1, 1, 2}, {1, 2, 2}, false},
               {{1, 2}, {1, 1}, false},
               {{1, 1}, {1, 2}, true},
               {{}, {1}, true}};
  for (const auto& [a, b, differ] : cases) {
    ZQIter<ZQAtomBase> atEnd = Atoms(b);
    while (atEnd) ++atEnd;  // compared from the start all the same
    EXPECT_EQ(AreDifferent(Atoms(a), atEnd), differ);
    ZQMatch matchA;
    ZQMatch matchB;
    for (const unsigned int i : a) matchA.AddPair(from.GetAtomAt(0), from.GetAtomAt(i));
    for (const unsigned int i : b) matchB.AddPair(from.GetAtomAt(0), from.GetAtomAt(i));
    EXPECT_EQ(ZQEqualMatch()(&matchA, &matchB), !differ);
  }
  EXPECT_FALSE(AreDifferent(ZQIter<ZQBondBase>(), ZQIter<ZQBondBase>()));
}

TEST_F(FPMatchTest, MatchesAreEqualHoweverPaired) {
  const ZQMatch match = MatchOf({{0, 4}, {1, 5}});
  const ZQMatch swapped = MatchOf({{0, 5}, {1, 4}});
  EXPECT_TRUE(ZQEqualMatch()(&match, &swapped));
  EXPECT_EQ(ZQGetMatchAddressHash(&match), ZQGetMatchAddressHash(&swapped));
  ZQMatch bonded = match;
  bonded.AddPair(from.GetBondAt(0), from.GetBondAt(4));
  ZQMatch otherBond = swapped;
  otherBond.AddPair(from.GetBondAt(0), from.GetBondAt(5));
  for (const ZQMatch& other : {MatchOf({{0, 4}, {1, 6}}), MatchOf({{4, 0}, {5, 1}}), bonded}) {
    EXPECT_FALSE(ZQEqualMatch()(&match, &other));
  }
  EXPECT_FALSE(ZQEqualMatch()(&bonded, &otherBond));
  EXPECT_EQ(ZQGetMatchAddressHash(&bonded) - ZQGetMatchAddressHash(&match),
            ZQGetBondAddressHash(from.GetBondAt(0)) + ZQGetBondAddressHash(from.GetBondAt(4)));
}

TEST_F(FPMatchTest, TagsLeadToTheOriginals) {
  ZQSetPointersAsGenericData(from);  // again
  const GetOriginalPtr<ZQAtomBase> original;
  const std::unique_ptr<GetOriginalPtr<ZQBondBase>> bondOriginal(
      GetOriginalPtr<ZQBondBase>().CreateCopy());
  EXPECT_EQ(original(mol.GetAtomAt(3)), from.GetAtomAt(3));
  EXPECT_EQ((*bondOriginal)(mol.GetBondAt(3)), from.GetBondAt(3));
  EXPECT_FALSE(++from.GetAtomAt(0)->GetDataIter());  // one entry
  const unsigned int mine = ZQGetTag("mine");
  from.GetAtomAt(0)->AddData(mine, 1);
  ZQDetetePointersAsGenericData(from);
  EXPECT_TRUE(from.GetAtomAt(0)->FindData(mine));
  EXPECT_FALSE(from.GetAtomAt(1)->GetDataIter() || from.GetBondAt(0)->GetDataIter());

  CapturedReports reports;
  EXPECT_EQ(original(from.GetAtomAt(0)), nullptr);
  EXPECT_EQ(original(nullptr), nullptr);
  from.GetAtomAt(0)->AddData(ZQOriginalPtrTag(), std::string("another type"));
  ZQSetPointersAsGenericData(from);
  std::string kept;
  EXPECT_TRUE(from.GetAtomAt(0)->GetData(ZQOriginalPtrTag(), kept));
  EXPECT_EQ(original(from.GetAtomAt(1)), from.GetAtomAt(1));
  EXPECT_EQ(reports.Count(ZQErrorLevel::Fatal), 2U);
  EXPECT_EQ(reports.Count(ZQErrorLevel::Warning), 1U);
}

TEST_F(FPMatchTest, SetsCombineByPositionAndMatchesByTarget) {
  const std::unique_ptr<ZQMatch> match(
      ZQCombineAtomBondSets(FragmentOf(mol, "x", {0, 1, 2}), FragmentOf(mol, "x", {7, 6, 5})));
  ASSERT_EQ(match->NumAtoms(), 3U);
  ASSERT_EQ(match->NumBonds(), 2U);
  EXPECT_EQ(match->GetAtomPairs()[0].pattern, from.GetAtomAt(0));
  EXPECT_EQ(match->GetAtomPairs()[0].target, from.GetAtomAt(7));
  EXPECT_EQ(match->GetBondPairs()[1].target, from.GetBondAt(5));

  const ZQSubSearch query("CCC");
  auto a = query.Match(mol, true);
  auto b = query.Match(mol, true);
  ++b;
  const std::unique_ptr<ZQMatch> combined(ZQCombineMatches(*a, *b));
  ASSERT_EQ(combined->NumAtoms(), 3U);
  for (std::size_t i = 0; i < 3; ++i) {
    const auto& pair = combined->GetAtomPairs()[i];
    EXPECT_EQ(pair.pattern, from.GetAtomAt(a->GetAtomPairs()[i].target->GetIdx()));
    EXPECT_EQ(pair.target, from.GetAtomAt(b->GetAtomPairs()[i].target->GetIdx()));
  }

  CapturedReports reports;
  const std::unique_ptr<ZQMatch> shorter(
      ZQCombineAtomBondSets(FragmentOf(mol, "x", {0, 1, 2}), FragmentOf(mol, "y", {7, 6})));
  EXPECT_EQ(shorter->NumAtoms(), 2U);
  EXPECT_EQ(reports.Take(), Texts(3, "Assertion"));
}

TEST_F(FPMatchTest, CommonFragments) {
  const std::vector<Fragment> a = {FragmentOf(mol, "b", {1, 0}), FragmentOf(mol, "a", {0, 1}),
                                   FragmentOf(mol, "b", {0, 1}), FragmentOf(mol, "z", {2, 3}),
                                   FragmentOf(mol, "a", {2, 3}), FragmentOf(mol, "b", {1, 0})};
  const std::vector<Fragment> b = {FragmentOf(mol, "a", {4, 5}), FragmentOf(mol, "a", {5, 6}),
                                   FragmentOf(mol, "a", {6, 7}), FragmentOf(mol, "b", {5, 4})};
  std::vector<Fragment> kept = b;
  ZQGetUniquePatterns(kept, {}, a);
  EXPECT_TRUE(kept.empty());
  ZQGetUniquePatterns(kept, {"a", "b"}, a);
  std::string ids;
  for (const Fragment& fragment : kept) ids += fragment.GetId();
  EXPECT_EQ(ids, "baa");
  // Of "a" two and three; "b" is the reverse of the first of "a" in either.
  for (const bool unique : {false, true}) {
    std::vector<ZQMatchBase*> matches;
    ZQGetCommonMatches(matches, {"b", "a", "none"}, kept, b, unique);
    std::vector<std::pair<unsigned int, unsigned int>> firstPairs;
    for (const ZQMatchBase* match : matches) {
      const auto& pair = match->GetAtomPairs()[0];
      firstPairs.emplace_back(pair.pattern->GetIdx(), pair.target->GetIdx());
    }
    std::vector<std::pair<unsigned int, unsigned int>> expected = {{0, 4}, {0, 5}, {0, 6},
                                                                   {2, 4}, {2, 5}, {2, 6}};
    if (!unique) expected.emplace_back(1, 5);
    EXPECT_EQ(firstPairs, expected);
    CapturedReports reports;
    ZQGetCommonMatches(matches, {"a"}, kept, b, unique);  // not empty
    EXPECT_EQ(reports.Take(), Texts{"Assertion"});
    for (const ZQMatchBase* match : matches) delete match;
  }
}

}  // namespace
}  // namespace ZQKorvex
