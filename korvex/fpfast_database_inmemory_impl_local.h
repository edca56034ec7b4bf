#pragma once

/// The back end that loads all records into one array when it is opened.

#include <cstdint>
#include <string>
#include <vector>

#include "korvex/fpfast_database_scan_impl_local.h"

namespace ZQKorvex {

class ZQFastFPInMemoryDatabaseImpl : public ZQFastFPScanDatabaseImpl {
 public:
  explicit ZQFastFPInMemoryDatabaseImpl(const std::string& filename);

  unsigned int GetMemoryType() const override { return ZQFastFPDatabaseMemoryType::InMemory; }
  std::string GetMemoryTypeString() const override { return "in-memory"; }

 protected:
  bool GetRecords(const std::uint64_t*& records, const char* caller) const override;
  const std::uint64_t* GetRecord(std::uint64_t index) const override;
  void WarnOfLimit(const char* caller, int limit, int numRecords) const override;

 private:
  /// Reads all records. Takes memory for those that the file has, whatever its header claims.
  bool Load();

  std::vector<std::uint64_t> records_;
};

}  // namespace ZQKorvex
