#pragma once

/// A file mapped into memory. An object is mapped and unmapped by one thread; the pages may be used
/// by many.

#include <cstdint>

#include "contract/bostrel/export.h"

namespace Bostrel {

/// The first bytes of a file, shared with whoever else maps or reads it. Unmapped at destruction.
class ZQ_EXPORT ZQFileMapping {
 public:
  ZQFileMapping() = default;
  ~ZQFileMapping() { Unmap(); }
  ZQFileMapping(const ZQFileMapping&) = delete;
  ZQFileMapping& operator=(const ZQFileMapping&) = delete;

  /// Maps `length` bytes, at least 1, of an open file, whose descriptor may be closed then. Nothing
  /// may be mapped yet. False, with the cause in `errno`, if the system refuses.
  bool Map(int descriptor, std::uint64_t length, bool writable = false);
  /// Nothing is mapped then. False, with the cause in `errno`, if the system refuses.
  bool Unmap();
  /// Null if nothing is mapped.
  void* GetBase() const { return base_; }
  std::uint64_t GetLength() const { return length_; }

 private:
  std::uint64_t length_ = 0;
  void* base_ = nullptr;
};

}  // namespace Bostrel
