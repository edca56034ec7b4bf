#pragma once

/// The measures of measuresim.h as functions of the counts, for whatever is counted. The order of
/// the arithmetic is part of the result.

#include <xmmintrin.h>

#include <cmath>
#include <cstddef>
#include <functional>
#include <vector>

#include "korvex/checked_local.h"

namespace ZQKorvex {

/// The counts of two fingerprints, as in measuresim.h; not valid where there are none to compare,
/// which every measure answers with 0.0.
struct ZQCounts {
  unsigned int onlyA = 0;
  unsigned int onlyB = 0;
  unsigned int both = 0;
  unsigned int neither = 0;
  bool valid = false;
};

inline float ZQTanimotoOf(const ZQCounts& n) {
  if (!n.valid) return 0.0F;
  if (n.onlyA + n.onlyB == 0) return 1.0F;
  if (n.both == 0) return 0.0F;
  return ZQCheckedFloat(n.both) / ZQCheckedFloat(n.onlyA + n.onlyB + n.both);
}

inline float ZQCosineOf(const ZQCounts& n) {
  if (!n.valid) return 0.0F;
  if (n.onlyA + n.onlyB == 0) return 1.0F;
  if (n.both == 0) return 0.0F;
  const float x = ZQCheckedFloat(n.onlyB + n.both) * ZQCheckedFloat(n.onlyA + n.both);
  const float r = _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(x)));
  return ((((x * r) * r) + -3.0F) * (r * -0.5F)) * ZQCheckedFloat(n.both);
}

inline float ZQDiceOf(const ZQCounts& n) {
  if (!n.valid) return 0.0F;
  if (n.onlyA + n.onlyB == 0) return 1.0F;
  if (n.both == 0) return 0.0F;
  const float both = ZQCheckedFloat(n.both);
  const double sum = 2.0 * static_cast<double>(n.both) + static_cast<double>(n.onlyA + n.onlyB);
  return (both + both) / static_cast<float>(sum);
}

inline float ZQEuclidOf(const ZQCounts& n) {
  if (!n.valid) return 0.0F;
  if (n.onlyA + n.onlyB == 0) return 1.0F;
  const unsigned int equal = n.both + n.neither;
  if (equal == 0) return 0.0F;
  return std::sqrt(ZQCheckedFloat(equal) / ZQCheckedFloat(n.onlyA + n.onlyB + equal));
}

inline float ZQTverskyOf(const ZQCounts& n, float alpha, float beta) {
  if (!n.valid) return 0.0F;
  if (n.onlyA + n.onlyB == 0) return 1.0F;
  if (n.both == 0) return 0.0F;
  const float both = ZQCheckedFloat(n.both);
  return both / ((alpha * ZQCheckedFloat(n.onlyA) + beta * ZQCheckedFloat(n.onlyB)) + both);
}

inline float ZQManhattanOf(const ZQCounts& n) {
  if (!n.valid) return 0.0F;
  const unsigned int unequal = n.onlyA + n.onlyB;
  if (unequal == 0) return 0.0F;
  return ZQCheckedFloat(unequal) / ZQCheckedFloat(unequal + n.both + n.neither);
}

/// Tanimoto of two sorted lists as multisets. Two empty ones give a NaN.
template <class Item>
float ZQMultisetTanimotoOf(const std::vector<Item>& a, const std::vector<Item>& b) {
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
  return static_cast<float>(common) / static_cast<float>(a.size() + b.size() - common);
}

}  // namespace ZQKorvex
