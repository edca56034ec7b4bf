#pragma once

/// The inner model of explanations, common to all kinds: the fragments of one molecule with the
/// bits that they set, and what two molecules share.

#include <compare>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "contract/quarnel/graphmol.h"
#include "korvex/fpkinds_local.h"
#include "korvex/fpmatch_local.h"
#include "korvex/fppattern.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

/// The end of the warning for a kind that isn't in the table or has no text of its own.
inline constexpr char zqNoFragments[] = "unknown fingerprint type!";

/// A prepared copy of a molecule, and the way back to the caller's atoms and bonds. The caller's
/// molecule is tagged only while it is copied.
class ZQTracedCopy {
 public:
  ZQTracedCopy(const ZQMolBase& mol, unsigned int fptype);

  ZQGraphMol& Mol() { return copy_; }
  /// The caller's atom or bond for one of the copy.
  ZQAtomBase* Original(const ZQAtomBase& atom) const { return atoms_[atom.GetIdx()]; }
  ZQBondBase* Original(const ZQBondBase& bond) const { return bonds_[bond.GetIdx()]; }
  ZQAtomBondSet Original(const ZQAtomBondSet& set) const { return {set, atoms_, bonds_}; }
  /// The target side of a match.
  ZQAtomBondSet Original(const ZQMatchBase& match) const;

 private:
  ZQGraphMol copy_;
  std::vector<ZQAtomBase*> atoms_;  // by index
  std::vector<ZQBondBase*> bonds_;
};

/// The fragments of one molecule.
class ZQFPFragments {
 public:
  /// Occurrences of one key are occurrences of one fragment. Ascending keys are the order of an
  /// overlap; the number is 0 where the texts alone order them.
  using Key = std::pair<unsigned int, std::string>;
  struct Occurrence {
    ZQAtomBondSet set;  // of the caller's molecule
    const Key* key;
  };
  /// A bit, and an occurrence that sets it.
  struct Setting {
    unsigned int bit;
    std::size_t occurrence;
  };
  /// The occurrences of one fragment.
  struct Group {
    std::vector<std::size_t> places;
    std::size_t count = 0;  // of all; greater than that of places if sets stand for many
  };
  using Groups = std::map<Key, Group>;

  /// Adds an occurrence, unless its key has one of the same atoms and bonds; returns its place.
  /// With a `count`, the set is the union of this many, too many to list.
  std::size_t Add(const Key& key, ZQAtomBondSet set, std::size_t count = 1) {
    const auto entry = groups_.try_emplace(key).first;
    const std::size_t before = occurrences_.Items().size();
    const std::size_t place = occurrences_.Add({std::move(set), &entry->first});
    if (place == before) {
      entry->second.places.push_back(place);
      entry->second.count += count;
    }
    return place;
  }
  void AddBit(unsigned int bit, std::size_t occurrence) { settings_.push_back({bit, occurrence}); }

  const ZQAtomBondSet& operator[](std::size_t place) const {
    return occurrences_.Items()[place].set;
  }
  const Groups& GetGroups() const { return groups_; }
  const std::vector<Setting>& GetSettings() const { return settings_; }

 private:
  struct Equal {
    bool operator()(const Occurrence& a, const Occurrence& b) const {
      return a.key == b.key && ZQEqualAtomBondSet()(a.set, b.set);
    }
  };

  ZQDistinct<Occurrence, Equal> occurrences_;
  Groups groups_;
  std::vector<Setting> settings_;
};

inline unsigned int ZQGetAddressHash(const ZQFPFragments::Occurrence& occurrence) {
  return ZQGetAddressHash(occurrence.set);
}

/// Calls `visit(text, groupA, groupB)` for each fragment that two molecules share.
template <class Visit>
void ZQForEachShared(const ZQFPFragments& a, const ZQFPFragments& b, Visit visit) {
  auto i = a.GetGroups().begin();
  auto j = b.GetGroups().begin();
  while (i != a.GetGroups().end() && j != b.GetGroups().end()) {
    const auto order = i->first <=> j->first;
    if (std::is_eq(order)) visit(i->first.second, i->second, j->second);
    if (std::is_lteq(order)) ++i;
    if (std::is_gteq(order)) ++j;
  }
}

/// The number of matches of an overlap before equal ones are removed; the greatest number on
/// overflow.
inline std::size_t ZQCountPairs(const ZQFPFragments& a, const ZQFPFragments& b) {
  using Group = ZQFPFragments::Group;
  std::size_t count = 0;
  ZQForEachShared(a, b, [&](const std::string& /*text*/, const Group& ofA, const Group& ofB) {
    count = ZQSaturatedSum(count, ZQSaturatedProduct(ofA.count, ofB.count));
  });
  return count;
}

/// Adds the matches of an overlap to `matches`, and calls `visit(text)` after each that is new.
template <class Visit>
void ZQAddOverlap(ZQMatchList& matches, const ZQFPFragments& a, const ZQFPFragments& b,
                  Visit visit) {
  using Group = ZQFPFragments::Group;
  ZQForEachShared(a, b, [&](const std::string& text, const Group& ofA, const Group& ofB) {
    for (const std::size_t i : ofA.places) {
      for (const std::size_t j : ofB.places) {
        if (matches.Add(ZQPairByPosition(a[i], b[j]))) visit(text);
      }
    }
  });
}

/// The overlap under a type of this kind, whose row has fragments.
ZQIter<ZQMatchBase> ZQGetOverlap(const char* name, const ZQMolBase& a, const ZQMolBase& b,
                                 const ZQFPTypeBase* type, unsigned int fptype);

/// Thrown at the fragment after the last of `ZQMostFragments`.
struct ZQTooManyFragments {};

/// Returns the result of `make`, or an empty one after an error if memory runs out or a molecule
/// has too many fragments.
template <class Make>
auto ZQGuardFragments(const char* name, Make make) -> decltype(make()) {
  using Result = decltype(make());
  const auto makeInMemory = [&] {
    return ZQCatch<std::bad_alloc>(make, [name](const std::bad_alloc&) -> Result {
      ZQThrow.Error("%s : out of memory", name);
      return Result();
    });
  };
  return ZQCatch<ZQTooManyFragments>(makeInMemory, [name](const ZQTooManyFragments&) -> Result {
    ZQThrow.Error("%s : more than %zu fragments in a molecule", name, ZQMostFragments);
    return Result();
  });
}

/// Calls `make` for a type of a kind and valid molecules; returns an empty iterator otherwise, and
/// after an error.
template <class Make>
auto ZQMakeResult(const char* name, const ZQFPTypeBase* type, unsigned int fptype, bool areValid,
                  Make make) -> decltype(make()) {
  if (!ZQ_ASSERT(type && type->GetFPType() == fptype) || !areValid) return {};
  return ZQGuardFragments(name, make);
}

/// An iterator that owns its values; empty for none.
template <class T>
ZQIter<T> ZQIterate(std::vector<T>&& values) {
  if (values.empty()) return {};
  return {new ZQVectorIter<T>(std::move(values))};
}

// The columns `fragments.collect` of the table of kinds.

bool ZQCollectPathFragments(ZQFPFragments& fragments, const ZQMolBase& mol,
                            const ZQFPTypeBase* type, bool forExplanation);
bool ZQCollectCircularFragments(ZQFPFragments& fragments, const ZQMolBase& mol,
                                const ZQFPTypeBase* type, bool forExplanation);
bool ZQCollectTreeFragments(ZQFPFragments& fragments, const ZQMolBase& mol,
                            const ZQFPTypeBase* type, bool forExplanation);
bool ZQCollectMACCSFragments(ZQFPFragments& fragments, const ZQMolBase& mol,
                             const ZQFPTypeBase* type, bool forExplanation);

}  // namespace ZQKorvex
