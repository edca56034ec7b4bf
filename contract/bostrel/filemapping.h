#pragma once

/// A file mapped into memory. One thread maps and unmaps an object; any number of threads may use
/// the pages.

#include <cstdint>

#include "contract/bostrel/export.h"

namespace Bostrel {

/// The first bytes of a file, shared with other mappings and readers of it. Unmapped at
/// destruction.
class ZQ_EXPORT ZQFileMapping {
 public:
  ZQFileMapping() = default;
  ~ZQFileMapping() { Unmap(); }
  ZQFileMapping(const ZQFileMapping&) = delete;
  ZQFileMapping& operator=(const ZQFileMapping&) = delete;

  /// Maps `length` bytes, at least 1, of an open file; the descriptor may be closed afterwards. The
  /// object must not have a mapping yet. Returns false, with the cause in `errno`, if the system
  /// call fails.
  bool Map(int descriptor, std::uint64_t length, bool writable = false);
  /// Removes the mapping, if any; afterwards nothing is mapped. Returns false, with the cause in
  /// `errno`, if the system call fails.
  bool Unmap();
  /// Null if nothing is mapped.
  void* GetBase() const { return base_; }
  std::uint64_t GetLength() const { return length_; }

 private:
  std::uint64_t length_ = 0;
  void* base_ = nullptr;
};

}  // namespace Bostrel
