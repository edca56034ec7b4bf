#pragma once

/// The algebra of fragments that two molecules share: the way from a working copy back to the
/// caller's molecule, equality of sets and of matches, and pairing. Two atoms or bonds are the same
/// if they are the same object.
///
/// A null argument is an assertion failure. The functions are thread safe for distinct molecules;
/// setting and deleting tags writes to the molecule, although it is constant.

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "contract/quarnel/subsearch.h"
#include "korvex/fpatombondset.h"

namespace ZQKorvex {

/// A hash of the address, valid within one process. It keys sets without sorting them: sums don't
/// depend on the order.
ZQ_EXPORT unsigned int ZQGetAtomAddressHash(const ZQAtomBase* atom);
ZQ_EXPORT unsigned int ZQGetBondAddressHash(const ZQBondBase* bond);
/// The sum of the hashes of all atoms and bonds of both sides, modulo 2^32.
ZQ_EXPORT unsigned int ZQGetMatchAddressHash(const ZQMatchBase* match);

/// The tag "__oriptr" of generic data: an atom's or bond's own pointer, which copies of the
/// molecule keep.
ZQ_EXPORT std::string ZQOriginalPtrTagString();
ZQ_EXPORT unsigned int ZQOriginalPtrTag();
/// Tags all atoms and bonds. Data of another type under the tag stay, after the warning of
/// `ZQBase::GetData`.
ZQ_EXPORT void ZQSetPointersAsGenericData(const ZQMolBase& mol);
/// Removes the tag from all atoms and bonds. Doesn't allocate.
ZQ_EXPORT void ZQDetetePointersAsGenericData(const ZQMolBase& mol);

/// Returns the tagged original of an atom (T = `ZQAtomBase`) or bond (`ZQBondBase`) of a copy. If
/// there is none, it is an assertion failure, and null.
template <class T>
class GetOriginalPtr {
 public:
  GetOriginalPtr() : tag_(ZQOriginalPtrTag()) {}
  T* operator()(const T* copy) const {
    T* original = nullptr;
    ZQ_ASSERT(copy && copy->GetData(tag_, original) && original);
    return original;
  }
  GetOriginalPtr* CreateCopy() const { return new GetOriginalPtr(*this); }

 private:
  unsigned int tag_;
};

/// The match of the originals of two matches of one query in two working copies, paired in the
/// query's order; owned by the caller. Different sizes are an assertion failure.
ZQ_EXPORT ZQMatch* ZQCombineMatches(const ZQMatchBase& a, const ZQMatchBase& b);
/// The match of the originals of two fragments, paired by position; owned by the caller. Different
/// identifiers or sizes are an assertion failure.
ZQ_EXPORT ZQMatch* ZQCombineAtomBondSets(const ZQFPAtomBondSet<std::string>& a,
                                         const ZQFPAtomBondSet<std::string>& b);

/// Whether `a` has another number of members than `b`, or not all of its members. Repeats count in
/// the numbers only. `member` projects an element of the containers to a pointer.
template <class Container, class Member = std::identity>
bool ZQHaveDifferentMembers(const Container& a, const Container& b, Member member = {}) {
  if (a.size() != b.size()) return true;
  if (std::ranges::equal(a, b, {}, member, member)) return false;
  using Pointer = std::decay_t<decltype(std::invoke(member, *a.begin()))>;
  std::vector<Pointer> members;
  members.reserve(a.size());
  for (const auto& element : a) members.push_back(std::invoke(member, element));
  std::ranges::sort(members);
  return !std::ranges::all_of(
      b, [&](Pointer pointer) { return std::ranges::binary_search(members, pointer); }, member);
}

/// The same for all values of two iterators, from their first; a null iterator is empty.
template <class T>
bool AreDifferent(ZQIter<T> a, ZQIter<T> b) {
  const auto pointers = [](ZQIter<T>& iter) {
    std::vector<const T*> all;
    for (iter.ToFirst(); iter; ++iter) all.push_back(&*iter);
    return all;
  };
  return ZQHaveDifferentMembers(pointers(a), pointers(b));
}

/// Whether two sets have the same atoms and bonds, in any order.
struct ZQ_EXPORT ZQEqualAtomBondSet {
  bool operator()(const ZQAtomBondSet& a, const ZQAtomBondSet& b) const;
};
/// Whether two matches have the same pattern atoms, target atoms, pattern bonds and target bonds,
/// however paired.
struct ZQ_EXPORT ZQEqualMatch {
  bool operator()(const ZQMatchBase* a, const ZQMatchBase* b) const;
};

/// Replaces `out` by the fragments with an identifier in `common`, in the order of `in`, without
/// those that have the identifier, atoms and bonds of an earlier one.
ZQ_EXPORT void ZQGetUniquePatterns(std::vector<ZQFPAtomBondSet<std::string>>& out,
                                   const std::set<std::string>& common,
                                   const std::vector<ZQFPAtomBondSet<std::string>>& in);

/// Combines each fragment of `a` with each of `b` that has the same identifier: by ascending
/// identifier in `common`, then in the order of `a` and of `b`; with `unique`, only the first of
/// equal matches. `out` must be empty (else an assertion failure); its matches are the caller's.
ZQ_EXPORT void ZQGetCommonMatches(std::vector<ZQMatchBase*>& out,
                                  const std::set<std::string>& common,
                                  const std::vector<ZQFPAtomBondSet<std::string>>& a,
                                  const std::vector<ZQFPAtomBondSet<std::string>>& b, bool unique);

}  // namespace ZQKorvex
