#pragma once

/// VSEPR path weights by direct enumeration: every simple path for the depths, an ordered map for
/// the weights. Slow; the library's search must give the same to the last bit.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "korvex/vsepr_aro_stereo_types.h"
#include "korvex/vsepr_aro_types.h"
#include "korvex/vsepr_fingerprint.h"

namespace ZQKorvex {

class VseprReference {
 public:
  VseprReference(const ZQMolBase& mol, const ZQVseprOptions& options)
      : options_(options), visited_(mol.GetMaxAtomIdx()) {
    const auto [lower, upper] =
        std::minmax({options.GetMinPathLength(), options.GetMaxPathLength()});
    lower_ = std::min(lower, 8U);
    upper_ = std::min(upper, 8U);
  }

  void WalkFrom(const ZQAtomBase& start) {
    depths_.assign(visited_.size(), std::numeric_limits<unsigned int>::max());
    for (const bool onlyDepths : {true, false}) Walk(start, 0, 0, onlyDepths);
  }
  ZQVseprFingerprint::PathCounts GetPathCounts() const {
    return {weights_.begin(), weights_.end()};
  }

 private:
  void Walk(const ZQAtomBase& atom, unsigned int depth, std::uint64_t key, bool onlyDepths) {
    const unsigned int idx = atom.GetIdx();
    if (depth >= upper_ || visited_[idx]) return;
    if (onlyDepths) {
      depths_[idx] = std::min(depths_[idx], depth);
    } else {
      if (options_.GetForcePathsOut() && depths_[idx] < depth) return;
      const std::uint64_t type = options_.GetStereoAware() ? VSEPRAroStereoType::GetType(atom)
                                                           : VSEPRAroType::GetType(atom);
      key |= type << (8 * depth);
      const double weight =
          options_.GetWeightByLength() ? std::exp(static_cast<double>(8 - depth) * 0.5) : 1.0;
      if (depth >= lower_) weights_[key] += weight;
    }
    visited_[idx] = true;
    for (auto next = atom.GetAtoms(ZQIsHeavy()); next; ++next) {
      Walk(*next, depth + 1, key, onlyDepths);
    }
    visited_[idx] = false;
  }

  ZQVseprOptions options_;
  unsigned int lower_;
  unsigned int upper_;
  std::vector<bool> visited_;
  std::vector<unsigned int> depths_;  // by atom index, of the latest start
  std::map<std::uint64_t, double> weights_;
};

}  // namespace ZQKorvex
