#pragma once

/// The bounded list that turns a stream of entries into the best N of them. Entries pile up to
/// twice the limit; then one selection keeps the better half, and the worst entry kept becomes
/// the bar for all that follow. So nearly every entry costs one comparison, and a compaction
/// costs linear time once for `limit` accepted entries. Entries that tie stand in no particular
/// order, and one that ties the bar is lost. One list belongs to one thread.

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

  /// Keeps the best `limit` of the entries that are better than `threshold`. Memory for
  /// `expected` entries is reserved, but not for more than the list holds. A limit of 0 keeps
  /// nothing and is an assertion failure once an entry arrives.
  ZQHitList(unsigned int limit, Better better, T threshold, std::size_t expected)
      : better_(better), threshold_(std::move(threshold)), limit_(limit) {
    items_.reserve(std::min(expected, Capacity()));
  }

  /// What an entry must beat to be taken: the worst entry kept by the latest compaction, before
  /// that the threshold.
  const T& GetBar() const {
    return worst_ < 0 ? threshold_ : items_[static_cast<std::size_t>(worst_)];
  }

  /// Takes an entry if it beats the bar, and says whether it did.
  bool UpdateScores(const T& entry) {
    if (!better_(entry, GetBar())) return false;
    items_.push_back(entry);
    SortScores(false);
    return true;
  }

  /// Compacts a list that has outgrown its capacity; if `final`, keeps the best `limit` entries,
  /// best first. False only for an empty list. A sorted list takes further entries.
  bool SortScores(bool final) {
    if (items_.empty()) return false;
    if (final) {
      SortFinally();
    } else if (items_.size() > Capacity()) {
      Compact();
    }
    return true;
  }

  /// In best-first order after a final sort, else in none.
  const std::vector<T>& GetItems() const { return items_; }
  unsigned int GetLimit() const { return limit_; }

 private:
  template <class>
  friend class ZQHitListIter;

  std::size_t Capacity() const { return 2 * std::size_t{limit_}; }

  void Compact() {
    if (!ZQ_ASSERT(limit_ > 0)) {
      items_.clear();
      return;
    }
    const auto worst = items_.begin() + (std::ptrdiff_t{limit_} - 1);
    std::nth_element(items_.begin(), worst, items_.end(), better_);
    items_.resize(limit_, threshold_);
    worst_ = std::ptrdiff_t{limit_} - 1;
  }

  void SortFinally() {
    const auto end =
        items_.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(limit_, items_.size()));
    std::partial_sort(items_.begin(), end, items_.end(), better_);
    items_ = std::vector<T>(items_.begin(), end);
    if (worst_ >= 0) worst_ = static_cast<std::ptrdiff_t>(items_.size()) - 1;
  }

  std::vector<T> items_;
  Better better_;
  T threshold_;
  std::ptrdiff_t worst_ = -1;
  unsigned int limit_;
};

/// Iterates over the entries of a hit list, which it takes from the list.
template <class T>
class ZQHitListIter : public ZQVectorIter<T> {
 public:
  explicit ZQHitListIter(std::unique_ptr<ZQHitList<T>> list)
      : ZQVectorIter<T>(std::move(list->items_)) {}
};

}  // namespace Bostrel
