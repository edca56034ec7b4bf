#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace ZQKorvex {

/// The number of items that two sorted vectors share as multisets.
template <class Item>
std::size_t ZQMultisetCommonOf(const std::vector<Item>& a, const std::vector<Item>& b) {
  std::size_t common = 0;
  for (auto i = a.begin(), j = b.begin(); i != a.end() && j != b.end();) {
    if (*i == *j) {
      ++common;
      ++i;
      ++j;
    } else if (std::less<>()(*i, *j)) {
      ++i;
    } else {
      ++j;
    }
  }
  return common;
}

/// Tanimoto of two sorted vectors as multisets. Two empty ones give a NaN.
template <class Item>
float ZQMultisetTanimotoOf(const std::vector<Item>& a, const std::vector<Item>& b) {
  const std::size_t common = ZQMultisetCommonOf(a, b);
  return static_cast<float>(common) / static_cast<float>(a.size() + b.size() - common);
}

}  // namespace ZQKorvex
