#include "korvex/fpmatch.h"

#include <cstdint>
#include <map>

#include "korvex/checked_local.h"
#include "korvex/fpmatch_local.h"

namespace ZQKorvex {

namespace {

// The sum of two integer mixes, both widened to 64 bits: R. Jenkins' six shifts and T. Wang's
// multiplicative one ("Integer hash functions", 1997 and 2007).
unsigned int Mix(std::uint64_t x) {
  std::uint64_t a = x + (x << 12) + 0x7ed55d16;
  a = a ^ (a >> 19) ^ 0xc761c23c;
  a += a << 5;
  const std::uint64_t b = (a + 0xe9f8cc1d) ^ ((a + 0x165667b1) << 9);
  const std::uint64_t c = b + (b << 3) + 0xfd7046c5;
  std::uint64_t y = x ^ (x >> 16) ^ 61;
  y += y << 3;
  y ^= y >> 4;
  y *= 0x27d4eb2d;
  y ^= y >> 15;
  return static_cast<unsigned int>(y) + (static_cast<unsigned int>(c ^ (c >> 16)) ^ 0xb55a4f09);
}

template <class Visit>
void ForEachAtomAndBond(const ZQMolBase& mol, Visit visit) {
  for (unsigned int i = 0; i < mol.GetMaxAtomIdx(); ++i) {
    if (ZQAtomBase* atom = mol.GetAtomAt(i)) visit(atom);
  }
  for (unsigned int i = 0; i < mol.GetMaxBondIdx(); ++i) {
    if (ZQBondBase* bond = mol.GetBondAt(i)) visit(bond);
  }
}

template <class T>
void SetPointer(T* item, unsigned int tag) {
  T* old = nullptr;
  if (!item->FindData(tag)) {
    item->AddData(tag, item);
  } else if (item->GetData(tag, old)) {
    item->SetData(tag, item);
  }
}

// Pairs the originals of two sequences up to the shorter one's end.
template <class T, class Item, class Member>
void PairOriginals(ZQMatch& match, const std::vector<Item>& a, const std::vector<Item>& b,
                   Member member) {
  const GetOriginalPtr<T> original;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    match.AddPair(original(std::invoke(member, a[i])), original(std::invoke(member, b[i])));
  }
}

using Fragment = ZQFPAtomBondSet<std::string>;

struct EqualFragments {
  bool operator()(const Fragment& a, const Fragment& b) const {
    return a.GetId() == b.GetId() && ZQEqualAtomBondSet()(a, b);
  }
};

std::map<std::string, std::vector<const Fragment*>> GroupById(
    const std::vector<Fragment>& fragments) {
  std::map<std::string, std::vector<const Fragment*>> groups;
  for (const Fragment& fragment : fragments) groups[fragment.GetId()].push_back(&fragment);
  return groups;
}

}  // namespace

unsigned int ZQGetAtomAddressHash(const ZQAtomBase* atom) {
  ZQ_ASSERT(atom != nullptr);
  return Mix(reinterpret_cast<std::uintptr_t>(atom));
}
unsigned int ZQGetBondAddressHash(const ZQBondBase* bond) {
  ZQ_ASSERT(bond != nullptr);
  return Mix(reinterpret_cast<std::uintptr_t>(bond));
}

unsigned int ZQGetMatchAddressHash(const ZQMatchBase* match) {
  if (!ZQ_ASSERT(match != nullptr)) return 0;
  unsigned int hash = 0;
  for (const auto& pair : match->GetAtomPairs()) {
    hash += ZQGetAtomAddressHash(pair.pattern) + ZQGetAtomAddressHash(pair.target);
  }
  for (const auto& pair : match->GetBondPairs()) {
    hash += ZQGetBondAddressHash(pair.pattern) + ZQGetBondAddressHash(pair.target);
  }
  return hash;
}

unsigned int ZQGetAddressHash(const ZQAtomBondSet& set) {
  unsigned int hash = 0;
  for (const ZQAtomBase* atom : set.GetAtoms()) hash += ZQGetAtomAddressHash(atom);
  for (const ZQBondBase* bond : set.GetBonds()) hash += ZQGetBondAddressHash(bond);
  return hash;
}

std::string ZQOriginalPtrTagString() { return "__oriptr"; }

unsigned int ZQOriginalPtrTag() {
  static const unsigned int tag = ZQGetTag(ZQOriginalPtrTagString());
  return tag;
}

void ZQSetPointersAsGenericData(const ZQMolBase& mol) {
  ForEachAtomAndBond(mol, [tag = ZQOriginalPtrTag()](auto* item) { SetPointer(item, tag); });
}

void ZQDetetePointersAsGenericData(const ZQMolBase& mol) {
  ForEachAtomAndBond(mol, [tag = ZQOriginalPtrTag()](auto* item) { item->DeleteData(tag); });
}

ZQMatch* ZQCombineMatches(const ZQMatchBase& a, const ZQMatchBase& b) {
  ZQ_ASSERT(a.NumAtoms() == b.NumAtoms());
  ZQ_ASSERT(a.NumBonds() == b.NumBonds());
  ZQMatch match;
  PairOriginals<ZQAtomBase>(match, a.GetAtomPairs(), b.GetAtomPairs(),
                            &ZQMatchPair<ZQAtomBase>::target);
  PairOriginals<ZQBondBase>(match, a.GetBondPairs(), b.GetBondPairs(),
                            &ZQMatchPair<ZQBondBase>::target);
  return new ZQMatch(std::move(match));
}

ZQMatch* ZQCombineAtomBondSets(const Fragment& a, const Fragment& b) {
  ZQ_ASSERT(a.GetId() == b.GetId());
  ZQ_ASSERT(a.NumAtoms() == b.NumAtoms());
  ZQ_ASSERT(a.NumBonds() == b.NumBonds());
  ZQMatch match;
  PairOriginals<ZQAtomBase>(match, a.GetAtoms(), b.GetAtoms(), std::identity());
  PairOriginals<ZQBondBase>(match, a.GetBonds(), b.GetBonds(), std::identity());
  return new ZQMatch(std::move(match));
}

ZQMatch ZQPairByPosition(const ZQAtomBondSet& a, const ZQAtomBondSet& b) {
  ZQMatch match;
  if (!ZQ_ASSERT(a.NumAtoms() == b.NumAtoms() && a.NumBonds() == b.NumBonds())) return match;
  match.Reserve(a.NumAtoms(), a.NumBonds());
  for (unsigned int i = 0; i < a.NumAtoms(); ++i) match.AddPair(a.GetAtoms()[i], b.GetAtoms()[i]);
  for (unsigned int i = 0; i < a.NumBonds(); ++i) match.AddPair(a.GetBonds()[i], b.GetBonds()[i]);
  return match;
}

bool ZQEqualAtomBondSet::operator()(const ZQAtomBondSet& a, const ZQAtomBondSet& b) const {
  return a.NumBonds() == b.NumBonds() && !ZQHaveDifferentMembers(a.GetAtoms(), b.GetAtoms()) &&
         !ZQHaveDifferentMembers(a.GetBonds(), b.GetBonds());
}

bool ZQEqualMatch::operator()(const ZQMatchBase* a, const ZQMatchBase* b) const {
  if (!ZQ_ASSERT(a && b)) return false;
  const auto differ = [](const auto& pairs, const auto& others, auto side) {
    return ZQHaveDifferentMembers(pairs, others, side);
  };
  using AtomPair = ZQMatchPair<ZQAtomBase>;
  using BondPair = ZQMatchPair<ZQBondBase>;
  return a->NumBonds() == b->NumBonds() &&
         !differ(a->GetAtomPairs(), b->GetAtomPairs(), &AtomPair::pattern) &&
         !differ(a->GetAtomPairs(), b->GetAtomPairs(), &AtomPair::target) &&
         !differ(a->GetBondPairs(), b->GetBondPairs(), &BondPair::pattern) &&
         !differ(a->GetBondPairs(), b->GetBondPairs(), &BondPair::target);
}

void ZQGetUniquePatterns(std::vector<Fragment>& out, const std::set<std::string>& common,
                         const std::vector<Fragment>& in) {
  ZQDistinct<Fragment, EqualFragments> distinct;
  for (const Fragment& fragment : in) {
    if (common.contains(fragment.GetId())) distinct.Add(fragment);
  }
  out = distinct.TakeItems();
}

void ZQGetCommonMatches(std::vector<ZQMatchBase*>& out, const std::set<std::string>& common,
                        const std::vector<Fragment>& a, const std::vector<Fragment>& b,
                        bool unique) {
  if (!ZQ_ASSERT(out.empty())) return;
  const auto groupsA = GroupById(a);
  const auto groupsB = GroupById(b);
  ZQMatchList matches(unique);
  for (const std::string& id : common) {
    const auto groupA = groupsA.find(id);
    const auto groupB = groupsB.find(id);
    if (groupA == groupsA.end() || groupB == groupsB.end()) continue;
    for (const Fragment* fragment : groupA->second) {
      for (const Fragment* other : groupB->second) {
        const std::unique_ptr<ZQMatch> match(ZQCombineAtomBondSets(*fragment, *other));
        matches.Add(std::move(*match));
      }
    }
  }
  out.reserve(matches.Size());
  ZQCheckedUnsigned(matches.Size());
  for (ZQMatch& match : matches.Take()) out.push_back(new ZQMatch(std::move(match)));
}

}  // namespace ZQKorvex
