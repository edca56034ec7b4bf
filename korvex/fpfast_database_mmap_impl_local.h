#pragma once

/// The back end that scans the mapped file in the page cache.

#include <atomic>
#include <cstdint>
#include <string>

#include "korvex/fpfast_database_implbase_local.h"
#include "korvex/mmapfile.h"

namespace ZQKorvex {

class ZQFastFPMemoryMapDatabaseImpl : public ZQFastFPDatabaseImplBase {
 public:
  explicit ZQFastFPMemoryMapDatabaseImpl(const std::string& filename);

  unsigned int GetMemoryType() const override { return ZQFastFPDatabaseMemoryType::MemoryMapped; }
  std::string GetMemoryTypeString() const override { return "memory-mapped"; }

  /// The start of the mapping. Null, after an assertion failure and the warning "%s : invalid
  /// fingerprint database file pointer!", if nothing is mapped.
  const void* GetFilePtr(const char* caller) const;

 protected:
  const std::uint64_t* GetRecords(const char* caller) const override;
  const std::uint64_t* GetRecord(std::uint64_t index) const override;

  /// For a back end whose messages of opening differ: after `caller`, "%s cannot initialize object
  /// for memory mapping!".
  ZQFastFPMemoryMapDatabaseImpl(const std::string& filename, const std::string& caller);
  /// Whether the file has the pages of the first `count` records. Opening doesn't compare the file
  /// with its header.
  bool HasPagesFor(std::uint64_t count) const;

  MMapInputFile file_;

 private:
  /// Like `GetFilePtr`; `caller` includes the blank and colon of the message.
  const std::uint64_t* GetBase(const std::string& caller) const;

  mutable std::atomic<bool> pagedIn_ = false;
};

}  // namespace ZQKorvex
