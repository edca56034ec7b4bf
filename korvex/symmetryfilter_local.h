#pragma once

#include <algorithm>
#include <vector>

#include "contract/quarnel/mol.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

/// Accepts the first atom of each symmetry class, and every atom if the molecule's symmetry isn't
/// perceived, even if old classes are set. Class 0 is always accepted.
class ZQSymmetryFilter {
 public:
  explicit ZQSymmetryFilter(const ZQMolBase& mol)
      : isPerceived_(mol.IsPerceived(ZQPerceived::Symmetry)) {}

  bool IsFirst(const ZQAtomBase& atom) {
    const unsigned int symmetryClass = isPerceived_ ? atom.GetSymmetryClass() : 0;
    if (symmetryClass == 0) return true;
    const auto place = std::lower_bound(seen_.begin(), seen_.end(), symmetryClass);
    if (place != seen_.end() && *place == symmetryClass) return false;
    seen_.insert(place, symmetryClass);
    return true;
  }

 private:
  bool isPerceived_;
  std::vector<unsigned int> seen_;  // ascending
};

}  // namespace ZQKorvex
