#pragma once

#include <cstdint>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Sets the bits of identifiers, each taken modulo the hash size. The modulus is two
/// multiplications by a reciprocal that is exact for all 32-bit identifiers (Lemire, Kaser and
/// Kurz, "Faster remainder by direct computation", Software: Practice and Experience 49, 2019).
class ZQFolder {
 public:
  /// The hash size is at least 2 and at most the fingerprint's size, which must not change while
  /// the folder is in use.
  ZQFolder(ZQFingerPrint& fp, unsigned int hashSize)
      : words_(fp.Words()), hashSize_(hashSize), reciprocal_(~std::uint64_t{0} / hashSize + 1) {}

  void operator()(unsigned int id) const {
    const unsigned int bit = Fold(id);
    words_[bit / 64] |= std::uint64_t{1} << (bit % 64);
  }
  /// id modulo hash size.
  unsigned int Fold(unsigned int id) const {
    const std::uint64_t fraction = reciprocal_ * id;
    return static_cast<unsigned int>((static_cast<Wide>(fraction) * hashSize_) >> 64);
  }

 private:
  __extension__ using Wide = unsigned __int128;

  std::uint64_t* words_;
  unsigned int hashSize_;
  std::uint64_t reciprocal_;
};

}  // namespace ZQKorvex
