#pragma once

/// A bounded list that keeps the best N of a stream of entries. It collects up to twice the limit;
/// then one selection keeps the better half, and the worst entry kept becomes the bar for all later
/// ones. Nearly every entry costs one comparison; a compaction takes linear time, once per `limit`
/// accepted entries. An entry that ties the bar is dropped. Of equal entries those of lower index
/// are kept, and come first: so for entries offered by ascending index, and for lists of these that
/// are merged in any order, the result depends on nothing but the entries. A list is for one
/// thread.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "contract/bostrel/iter.h"
#include "contract/bostrel/throw.h"

namespace Bostrel {

template <class T>
class ZQHitList {
 public:
  /// Whether the first entry is strictly better than the second.
  using Better = bool (*)(const T&, const T&);

  /// Keeps the best `limit` of the entries that are better than `threshold`. Reserves memory for
  /// `expected` entries, at most for as many as the list holds. A limit of 0 keeps nothing; adding
  /// an entry then is an assertion failure.
  ZQHitList(unsigned int limit, Better better, T threshold, std::size_t expected)
      : better_(better), threshold_(std::move(threshold)), limit_(limit) {
    items_.reserve(std::min(expected, Capacity()));
  }

  /// The bar that an entry must beat: the worst entry kept by the latest compaction, or the
  /// threshold before the first.
  const T& GetBar() const {
    return worst_ < 0 ? threshold_ : items_[static_cast<std::size_t>(worst_)];
  }

  /// Adds an entry if it beats the bar; returns whether it did.
  bool UpdateScores(const T& entry) {
    if (!better_(entry, GetBar())) return false;
    items_.push_back(entry);
    SortScores(false);
    return true;
  }

  /// Adds the entries of another list, also those that tie the bar and have a lower index.
  void Merge(const ZQHitList& other) {
    for (const T& entry : other.items_) {
      if (!Precedes(entry, GetBar())) continue;
      items_.push_back(entry);
      SortScores(false);
    }
  }

  /// Compacts a list that exceeds its capacity; if `final`, keeps the best `limit` entries, best
  /// first. Returns false only for an empty list. More entries may be added after sorting.
  bool SortScores(bool final) {
    if (items_.empty()) return false;
    if (final) {
      SortFinally();
    } else if (items_.size() > Capacity()) {
      Compact();
    }
    return true;
  }

  /// Best first after a final sort, otherwise unordered.
  const std::vector<T>& GetItems() const { return items_; }
  unsigned int GetLimit() const { return limit_; }

 private:
  template <class>
  friend class ZQHitListIter;

  bool Precedes(const T& a, const T& b) const {
    return better_(a, b) || (!better_(b, a) && a.GetIdx() < b.GetIdx());
  }

  std::size_t Capacity() const { return 2 * std::size_t{limit_}; }

  void Compact() {
    if (!ZQ_ASSERT(limit_ > 0)) {
      items_.clear();
      return;
    }
    const auto worst = items_.begin() + (std::ptrdiff_t{limit_} - 1);
    std::nth_element(items_.begin(), worst, items_.end(),
                     [this](const T& a, const T& b) { return Precedes(a, b); });
    items_.resize(limit_, threshold_);
    worst_ = std::ptrdiff_t{limit_} - 1;
  }

  void SortFinally() {
    const auto end =
        items_.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(limit_, items_.size()));
    std::partial_sort(items_.begin(), end, items_.end(),
                      [this](const T& a, const T& b) { return Precedes(a, b); });
    items_ = std::vector<T>(items_.begin(), end);
    if (worst_ >= 0) worst_ = static_cast<std::ptrdiff_t>(items_.size()) - 1;
  }

  std::vector<T> items_;
  Better better_;
  T threshold_;
  std::ptrdiff_t worst_ = -1;
  unsigned int limit_;
};

/// Iterates over the entries of a hit list, moved out of the list.
template <class T>
class ZQHitListIter : public ZQVectorIter<T> {
 public:
  explicit ZQHitListIter(std::unique_ptr<ZQHitList<T>> list)
      : ZQVectorIter<T>(std::move(list->items_)) {}
};

}  // namespace Bostrel
