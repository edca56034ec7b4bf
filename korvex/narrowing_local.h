#pragma once

/// Conversions to a narrower number that report a value beyond its range.

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "korvex/siblings.h"

namespace ZQKorvex {

[[gnu::cold, gnu::noinline]] inline void ZQReportNarrowing(const std::string& from,
                                                           const std::string& to) {
  const std::string message = from + " is greater than the maximum allowed" + to +
                              " when performing conversions between integers and floating point "
                              "types";
  ZQThrow.Fatal("%s\nAssertion failed at line %d of %s.\n", message.c_str(), 0, "(unknown)");
}

inline unsigned int ZQCheckedUnsigned(std::uint64_t value) {
  constexpr std::uint64_t limit = std::numeric_limits<unsigned int>::max();
  if (value > limit) [[unlikely]]
    ZQReportNarrowing("(unsigned long)" + std::to_string(value),
                      "(unsigned int)" + std::to_string(limit));
  return static_cast<unsigned int>(value);
}

inline float ZQCheckedFloat(double value) {
  constexpr double limit = std::numeric_limits<float>::max();
  if (std::abs(value) > limit) [[unlikely]]
    ZQReportNarrowing("(double)" + std::to_string(value), "(float)" + std::to_string(limit));
  return static_cast<float>(value);
}

}  // namespace ZQKorvex
