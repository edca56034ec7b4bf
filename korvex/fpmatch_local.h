#pragma once

/// Inner parts of the algebra of fpmatch.h: containers without equal entries, and pairing without
/// tags.

#include <unordered_map>
#include <utility>
#include <vector>

#include "korvex/fpmatch.h"

namespace ZQKorvex {

/// The sum of the hashes of the atoms and bonds, modulo 2^32.
unsigned int ZQGetAddressHash(const ZQAtomBondSet& set);
inline unsigned int ZQGetAddressHash(const ZQMatch& match) { return ZQGetMatchAddressHash(&match); }

/// Sets of atoms and bonds, or matches, without equal ones, in the order of addition.
template <class T, class Equal>
class ZQDistinct {
 public:
  /// Appends the item unless there is an equal one; returns the place of either.
  std::size_t Add(T item) {
    const unsigned int hash = ZQGetAddressHash(item);
    const auto [begin, end] = places_.equal_range(hash);
    for (auto place = begin; place != end; ++place) {
      if (Equal()(items_[place->second], item)) return place->second;
    }
    places_.emplace(hash, items_.size());
    items_.push_back(std::move(item));
    return items_.size() - 1;
  }
  const std::vector<T>& Items() const { return items_; }
  std::vector<T>&& TakeItems() { return std::move(items_); }

 private:
  std::vector<T> items_;
  std::unordered_multimap<unsigned int, std::size_t> places_;  // by hash
};

struct ZQEqualMatches {
  bool operator()(const ZQMatch& a, const ZQMatch& b) const { return ZQEqualMatch()(&a, &b); }
};

/// Matches in the order of addition, with or without equal ones.
class ZQMatchList {
 public:
  explicit ZQMatchList(bool unique) : unique_(unique) {}
  /// Returns whether the match was added.
  bool Add(ZQMatch match) {
    const std::size_t before = Size();
    if (unique_) return distinct_.Add(std::move(match)) == before;
    all_.push_back(std::move(match));
    return true;
  }
  std::size_t Size() const { return unique_ ? distinct_.Items().size() : all_.size(); }
  std::vector<ZQMatch>&& Take() { return unique_ ? distinct_.TakeItems() : std::move(all_); }

 private:
  bool unique_;
  ZQDistinct<ZQMatch, ZQEqualMatches> distinct_;
  std::vector<ZQMatch> all_;
};

/// Pairs the atoms and the bonds of two sets by position; different sizes are an assertion failure.
ZQMatch ZQPairByPosition(const ZQAtomBondSet& a, const ZQAtomBondSet& b);

}  // namespace ZQKorvex
