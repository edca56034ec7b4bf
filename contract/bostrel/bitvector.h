#pragma once

/// A vector of bits. Bit i is in byte i/8 at the mask 1 << (i % 8); the storage is an array of
/// 64-bit little-endian words. Up to 64 bits are stored inside the object, more on the heap. Values
/// are copied freely; distinct objects may be used from distinct threads.

#include <cstdint>
#include <string>
#include <vector>

#include "contract/bostrel/export.h"

namespace Bostrel {

class ZQ_EXPORT ZQBitVector {
 public:
  /// `bits` bits, all off.
  explicit ZQBitVector(unsigned int bits = 64);
  ZQBitVector(const ZQBitVector& other);
  ZQBitVector(ZQBitVector&& other) noexcept;
  ZQBitVector& operator=(const ZQBitVector& other);
  ZQBitVector& operator=(ZQBitVector&& other) noexcept;
  ~ZQBitVector();

  unsigned int GetSize() const { return size_; }
  /// Grows with zero bits or shrinks; a shrunk vector keeps no bits beyond its size. A size above
  /// INT_MAX reports the error "Max size for an ZQBitVector is INT_MAX" and changes nothing.
  void SetSize(unsigned int bits);
  /// Turns all bits off; the size is unchanged.
  void ClearBits();

  /// Sets a bit, growing the vector to `bit + 1` bits if needed.
  void SetBitOn(unsigned int bit) {
    if (bit >= size_ && !Grow(bit)) return;
    Words()[bit / 64] |= std::uint64_t{1} << (bit % 64);
  }
  void SetBitOff(unsigned int bit) {
    if (bit < size_) Words()[bit / 64] &= ~(std::uint64_t{1} << (bit % 64));
  }
  /// A bit past the size is off.
  bool IsBitOn(unsigned int bit) const {
    return bit < size_ && ((Words()[bit / 64] >> (bit % 64)) & 1) != 0;
  }
  unsigned int CountBits() const;

  /// The words, word 0 first; `NumWords` of them. Bits past the size are 0.
  const std::uint64_t* Words() const { return heap_ ? heap_ : &word_; }
  /// For filling words in bulk; the caller keeps the bits past the size at 0.
  std::uint64_t* Words() { return heap_ ? heap_ : &word_; }
  unsigned int NumWords() const { return size_ / 64 + (size_ % 64 != 0); }

  /// Writes two lower-case hexadecimal digits per byte, byte 0 first, replacing the text.
  void ToHexString(std::string& text) const;
  /// Reads what `ToHexString` writes; the size becomes 4 bits per digit. Returns false and leaves
  /// the vector unchanged if a character isn't a hexadecimal digit or the number of digits is odd.
  bool FromHexString(const std::string& text);

  /// Same size and same bits.
  friend ZQ_EXPORT bool operator==(const ZQBitVector& a, const ZQBitVector& b);

 private:
  bool Grow(unsigned int bit);

  unsigned int size_;
  std::uint64_t word_ = 0;
  std::uint64_t* heap_ = nullptr;  // null up to 64 bits
};

/// Counts the bits set in `a` alone, in `b` alone and in both. The shorter vector is treated as
/// padded with zeros to the longer one's size.
ZQ_EXPORT void ZQGetBitCounts(const ZQBitVector& a, const ZQBitVector& b, unsigned int* onlyA,
                              unsigned int* onlyB, unsigned int* both);
/// The same, and the number of bits clear in both.
ZQ_EXPORT void ZQGetBitCounts(const ZQBitVector& a, const ZQBitVector& b, unsigned int* onlyA,
                              unsigned int* onlyB, unsigned int* both, unsigned int* neither);

}  // namespace Bostrel
