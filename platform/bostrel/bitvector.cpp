#include "contract/bostrel/bitvector.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <utility>

#include "contract/bostrel/characters_local.h"
#include "contract/bostrel/throw.h"

namespace Bostrel {

namespace {

constexpr unsigned int inlineBits = 64;

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  const char lower = ToLower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

ZQBitVector::ZQBitVector(unsigned int bits) : size_(0) { SetSize(bits); }

ZQBitVector::ZQBitVector(const ZQBitVector& other) : size_(0) { *this = other; }

ZQBitVector::ZQBitVector(ZQBitVector&& other) noexcept
    : size_(std::exchange(other.size_, 0)),
      word_(std::exchange(other.word_, 0)),
      heap_(std::exchange(other.heap_, nullptr)) {}

ZQBitVector& ZQBitVector::operator=(const ZQBitVector& other) {
  if (this == &other) return *this;
  if (NumWords() != other.NumWords() || (heap_ == nullptr) != (other.heap_ == nullptr)) {
    std::uint64_t* heap = other.heap_ ? new std::uint64_t[other.NumWords()] : nullptr;
    delete[] heap_;
    heap_ = heap;
  }
  size_ = other.size_;
  word_ = other.word_;
  if (heap_) std::copy_n(other.heap_, NumWords(), heap_);
  return *this;
}

ZQBitVector& ZQBitVector::operator=(ZQBitVector&& other) noexcept {
  std::swap(size_, other.size_);
  std::swap(word_, other.word_);
  std::swap(heap_, other.heap_);
  return *this;
}

ZQBitVector::~ZQBitVector() { delete[] heap_; }

void ZQBitVector::SetSize(unsigned int bits) {
  if (bits > INT_MAX) {
    ZQThrow.Error("Max size for an ZQBitVector is INT_MAX");
    return;
  }
  const unsigned int oldWords = NumWords();
  const unsigned int words = bits / 64 + (bits % 64 != 0);
  if (words != oldWords) {
    const unsigned int kept = std::min(words, oldWords);
    if (bits > inlineBits) {
      auto* heap = new std::uint64_t[words]();
      std::copy_n(Words(), kept, heap);
      delete[] heap_;
      heap_ = heap;
    } else {
      word_ = kept ? Words()[0] : 0;
      delete[] heap_;
      heap_ = nullptr;
    }
  }
  size_ = bits;
  if (bits % 64 != 0) Words()[words - 1] &= ~std::uint64_t{0} >> (64 - bits % 64);
}

bool ZQBitVector::Grow(unsigned int bit) {
  // A bit count past UINT_MAX must not wrap to an empty vector.
  SetSize(bit == UINT_MAX ? UINT_MAX : bit + 1);
  return bit < size_;
}

void ZQBitVector::ClearBits() { std::fill_n(Words(), NumWords(), 0); }

unsigned int ZQBitVector::CountBits() const {
  unsigned int count = 0;
  for (unsigned int i = 0; i < NumWords(); ++i) {
    count += static_cast<unsigned int>(std::popcount(Words()[i]));
  }
  return count;
}

void ZQBitVector::ToHexString(std::string& text) const {
  static constexpr char digits[] = "0123456789abcdef";
  const std::size_t bytes = size_ / 8 + (size_ % 8 != 0);
  text.resize(2 * bytes);
  for (std::size_t i = 0; i < bytes; ++i) {
    const auto byte = static_cast<unsigned int>(Words()[i / 8] >> (8 * (i % 8))) & 0xFFU;
    text[2 * i] = digits[byte >> 4];
    text[2 * i + 1] = digits[byte & 0xF];
  }
}

bool ZQBitVector::FromHexString(const std::string& text) {
  if (text.size() % 2 != 0 || text.size() > INT_MAX / 4) return false;
  ZQBitVector read(static_cast<unsigned int>(4 * text.size()));
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int digit = HexDigit(text[i]);
    if (digit < 0) return false;
    // Byte 0 comes first, and within a byte the high digit.
    read.Words()[i / 16] |= static_cast<std::uint64_t>(digit) << (4 * (i % 16 ^ 1));
  }
  *this = std::move(read);
  return true;
}

bool operator==(const ZQBitVector& a, const ZQBitVector& b) {
  return a.size_ == b.size_ && std::equal(a.Words(), a.Words() + a.NumWords(), b.Words());
}

void ZQGetBitCounts(const ZQBitVector& a, const ZQBitVector& b, unsigned int* onlyA,
                    unsigned int* onlyB, unsigned int* both) {
  const unsigned int common = std::min(a.NumWords(), b.NumWords());
  unsigned int shared = 0;
  for (unsigned int i = 0; i < common; ++i) {
    shared += static_cast<unsigned int>(std::popcount(a.Words()[i] & b.Words()[i]));
  }
  *onlyA = a.CountBits() - shared;
  *onlyB = b.CountBits() - shared;
  *both = shared;
}

void ZQGetBitCounts(const ZQBitVector& a, const ZQBitVector& b, unsigned int* onlyA,
                    unsigned int* onlyB, unsigned int* both, unsigned int* neither) {
  ZQGetBitCounts(a, b, onlyA, onlyB, both);
  *neither = std::max(a.GetSize(), b.GetSize()) - *onlyA - *onlyB - *both;
}

}  // namespace Bostrel
