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

class VseprReference {
 public:
  VseprReference(const Quarnel::ZQMolBase& mol, const ZQKorvex::ZQVseprOptions& options)
      : options_(options), visited_(mol.GetMaxAtomIdx()) {
    const auto [lower, upper] =
        std::minmax({options.GetMinPathLength(), options.GetMaxPathLength()});
    lower_ = std::min(lower, 8U);
    upper_ = std::min(upper, 8U);
  }

  void WalkFrom(const Quarnel::ZQAtomBase& start) {
    depths.assign(visited_.size(), std::numeric_limits<unsigned int>::max());
    if (options_.GetForcePathsOut()) FindDepths(start, 0);
    Walk(start, 0, 0);
  }
  ZQKorvex::ZQVseprFingerprint::PathCounts GetPathCounts() const {
    return {weights_.begin(), weights_.end()};
  }

  /// By atom index, of the latest start.
  std::vector<unsigned int> depths;

  void FindDepths(const Quarnel::ZQAtomBase& atom, unsigned int depth) {
    if (depth >= upper_ || visited_[atom.GetIdx()]) return;
    depths[atom.GetIdx()] = std::min(depths[atom.GetIdx()], depth);
    visited_[atom.GetIdx()] = true;
    for (auto next = atom.GetAtoms(ZQKorvex::ZQNot(ZQKorvex::ZQIsHydrogen())); next; ++next) {
      FindDepths(*next, depth + 1);
    }
    visited_[atom.GetIdx()] = false;
  }

 private:
  void Walk(const Quarnel::ZQAtomBase& atom, unsigned int depth, std::uint64_t key) {
    if (depth >= upper_ || visited_[atom.GetIdx()]) return;
    if (options_.GetForcePathsOut() && depths[atom.GetIdx()] < depth) return;
    const std::uint64_t type = options_.GetStereoAware()
                                   ? ZQKorvex::VSEPRAroStereoType::GetType(atom)
                                   : ZQKorvex::VSEPRAroType::GetType(atom);
    key |= type << (8 * depth);
    const double weight =
        options_.GetWeightByLength() ? std::exp(static_cast<double>(8 - depth) * 0.5) : 1.0;
    if (depth >= lower_) weights_[key] += weight;
    visited_[atom.GetIdx()] = true;
    for (auto next = atom.GetAtoms(ZQKorvex::ZQNot(ZQKorvex::ZQIsHydrogen())); next; ++next) {
      Walk(*next, depth + 1, key);
    }
    visited_[atom.GetIdx()] = false;
  }

  ZQKorvex::ZQVseprOptions options_;
  unsigned int lower_;
  unsigned int upper_;
  std::vector<bool> visited_;
  std::map<std::uint64_t, double> weights_;
};
