#pragma once

/// Conversions from integers to floating point that report a value beyond the range in which
/// every integer is exact: 2^24 for float, 2^53 for double. The check inlines to one compare.

#include <concepts>
#include <cstdint>
#include <limits>
#include <string>

#include "korvex/siblings.h"

namespace ZQKorvex {

/// The platform's name of a number type, as messages print it.
template <class Number>
inline constexpr const char* zqNumberName = nullptr;
template <>
inline constexpr const char* zqNumberName<unsigned int> = "unsigned int";
template <>
inline constexpr const char* zqNumberName<unsigned long> = "unsigned long";
template <>
inline constexpr const char* zqNumberName<float> = "float";
template <>
inline constexpr const char* zqNumberName<double> = "double";

template <std::floating_point Real, std::unsigned_integral Integer>
[[gnu::cold, gnu::noinline]] void ZQReportInexactConversion(Integer value, Integer limit) {
  std::string message;
  message.append("(").append(zqNumberName<Integer>).append(")").append(std::to_string(value));
  message.append(" is greater than the maximum allowed(").append(zqNumberName<Real>).append(")");
  message.append(std::to_string(static_cast<Real>(limit)));
  message.append(" when performing conversions between integers and floating point types");
  ZQThrow.Fatal("%s\nAssertion failed at line %d of %s.\n", message.c_str(), 0, "(unknown)");
}

/// The plain cast, after a Fatal report if the value is beyond the exact range.
template <std::floating_point Real, std::unsigned_integral Integer>
inline Real ZQChecked(Integer value) {
  constexpr Integer limit = Integer{1} << std::numeric_limits<Real>::digits;
  if (value > limit) [[unlikely]]
    ZQReportInexactConversion<Real>(value, limit);
  return static_cast<Real>(value);
}

inline float ZQCheckedFloat(unsigned int value) { return ZQChecked<float>(value); }
inline double ZQCheckedDouble(std::uint64_t value) { return ZQChecked<double>(value); }

}  // namespace ZQKorvex
