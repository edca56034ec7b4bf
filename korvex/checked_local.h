#pragma once

/// Number conversions that report values outside the target's range: integers to floating point
/// beyond the range in which every integer is exact (2^24 for float, 2^53 for double), and
/// narrowing ones. The check inlines to one compare.

#include <cmath>
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

template <class To, class From>
[[gnu::cold, gnu::noinline]] void ZQReportConversion(From value, To limit) {
  std::string message;
  message.append("(").append(zqNumberName<From>).append(")").append(std::to_string(value));
  message.append(" is greater than the maximum allowed(").append(zqNumberName<To>).append(")");
  message.append(std::to_string(limit));
  message.append(" when performing conversions between integers and floating point types");
  ZQThrow.Fatal("%s\nAssertion failed at line %d of %s.\n", message.c_str(), 0, "(unknown)");
}

/// The plain cast, after a Fatal report if the value is beyond the exact range.
template <std::floating_point Real, std::unsigned_integral Integer>
inline Real ZQChecked(Integer value) {
  constexpr Integer limit = Integer{1} << std::numeric_limits<Real>::digits;
  if (value > limit) [[unlikely]]
    ZQReportConversion(value, static_cast<Real>(limit));
  return static_cast<Real>(value);
}

inline float ZQCheckedFloat(unsigned int value) { return ZQChecked<float>(value); }
inline double ZQCheckedDouble(std::uint64_t value) { return ZQChecked<double>(value); }

// To a narrower number: the plain cast, after a Fatal report if the value is beyond its range.

inline unsigned int ZQCheckedUnsigned(std::uint64_t value) {
  constexpr unsigned int limit = std::numeric_limits<unsigned int>::max();
  if (value > limit) [[unlikely]]
    ZQReportConversion(value, limit);
  return static_cast<unsigned int>(value);
}

/// The product of two sizes; on overflow the greatest number, which exceeds any container's size.
inline std::uint64_t ZQSaturatedProduct(std::uint64_t a, std::uint64_t b) {
  std::uint64_t product = 0;
  return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<std::uint64_t>::max()
                                                : product;
}

/// The sum, likewise.
inline std::uint64_t ZQSaturatedSum(std::uint64_t a, std::uint64_t b) {
  std::uint64_t sum = 0;
  return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<std::uint64_t>::max() : sum;
}

inline float ZQCheckedFloat(double value) {
  constexpr float limit = std::numeric_limits<float>::max();
  if (std::abs(value) > limit) [[unlikely]]
    ZQReportConversion(value, limit);
  return static_cast<float>(value);
}

}  // namespace ZQKorvex
