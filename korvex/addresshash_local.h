#pragma once

/// Hashes of the addresses of atoms and bonds, which key sets of them without sorting. They differ
/// between runs and are never stored.

#include <cstdint>

#include "korvex/siblings.h"

namespace ZQKorvex {

namespace addresshash_local {

/// The sum of two integer mixes, both widened to 64 bits: R. Jenkins' six shifts and T. Wang's
/// multiplicative one ("Integer hash functions", 1997 and 2007).
inline unsigned int Mix(std::uint64_t x) {
  std::uint64_t a = x + (x << 12) + 0x7ed55d16;
  a = a ^ (a >> 19) ^ 0xc761c23c;
  a += a << 5;
  const std::uint64_t b = (a + 0xe9f8cc1d) ^ ((a + 0x165667b1) << 9);
  const std::uint64_t c = b + (b << 3) + 0xfd7046c5;
  std::uint64_t y = x ^ (x >> 16) ^ 61;
  y += y << 3;
  y ^= y >> 4;
  y *= 0x27d4eb2d;
  y ^= y >> 15;
  return static_cast<unsigned int>(y) + (static_cast<unsigned int>(c ^ (c >> 16)) ^ 0xb55a4f09);
}

}  // namespace addresshash_local

/// Null is an assertion failure.
inline unsigned int ZQGetAtomAddressHash(const ZQAtomBase* atom) {
  ZQ_ASSERT(atom != nullptr);
  return addresshash_local::Mix(reinterpret_cast<std::uintptr_t>(atom));
}
inline unsigned int ZQGetBondAddressHash(const ZQBondBase* bond) {
  ZQ_ASSERT(bond != nullptr);
  return addresshash_local::Mix(reinterpret_cast<std::uintptr_t>(bond));
}

}  // namespace ZQKorvex
