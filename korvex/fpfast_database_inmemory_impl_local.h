#pragma once

/// The back end that loads all records into one array when it is opened.

#include <cstdint>
#include <string>
#include <vector>

#include "korvex/fpfast_database_implbase_local.h"

namespace ZQKorvex {

class ZQFastFPInMemoryDatabaseImpl : public ZQFastFPDatabaseImplBase {
 public:
  explicit ZQFastFPInMemoryDatabaseImpl(const std::string& filename);

  unsigned int GetMemoryType() const override { return ZQFastFPDatabaseMemoryType::InMemory; }
  std::string GetMemoryTypeString() const override { return "in-memory"; }

 protected:
  const std::uint64_t* GetRecords(const char* caller) const override;
  const std::uint64_t* GetRecord(std::uint64_t index) const override;

 private:
  /// Reads all records. Allocates memory only for those that the file has, whatever its header
  /// claims.
  bool Load();

  std::vector<std::uint64_t> records_;
};

}  // namespace ZQKorvex
