#pragma once

#include <algorithm>
#include <vector>

namespace ZQKorvex {

/// Lets the first atom of each symmetry class through. Class 0, which stands for not perceived,
/// always passes.
class ZQSymmetryFilter {
 public:
  bool IsFirst(unsigned int symmetryClass) {
    if (symmetryClass == 0) return true;
    const auto place = std::lower_bound(seen_.begin(), seen_.end(), symmetryClass);
    if (place != seen_.end() && *place == symmetryClass) return false;
    seen_.insert(place, symmetryClass);
    return true;
  }

 private:
  std::vector<unsigned int> seen_;  // ascending
};

}  // namespace ZQKorvex
