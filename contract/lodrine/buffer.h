#pragma once

/// Values as bytes, in order: the form of data that flows between processes. Numbers are
/// little-endian: a bool is 1 byte, an int 8; a blob is its length as an int, -1 for none, and its
/// bytes.

#include <cstdint>
#include <string>
#include <string_view>

#include "contract/bostrel/export.h"

namespace Lodrine {

class ZQ_EXPORT ZQWriteBuffer {
 public:
  void WriteBool(bool value);
  void WriteInt(std::int64_t value);
  void WriteBlob(std::string_view bytes);
  /// In place of a blob that is missing.
  void WriteNoneBlob();
  const std::string& Get() const { return bytes_; }

 private:
  std::string bytes_;
};

/// Reads in the order of writing. The bytes must outlive it. After a value that isn't there in
/// whole, `IsValid` is false, and all values are false, 0 or empty.
class ZQ_EXPORT ZQReadBuffer {
 public:
  explicit ZQReadBuffer(std::string_view bytes) : rest_(bytes) {}
  bool ReadBool();
  std::int64_t ReadInt();
  /// A view of the bytes; `isNone` (unless null) becomes whether the blob is missing.
  std::string_view ReadBlob(bool* isNone = nullptr);
  bool IsValid() const { return valid_; }
  bool IsAtEnd() const { return rest_.empty(); }

 private:
  std::string_view Take(std::size_t size);

  std::string_view rest_;
  bool valid_ = true;
};

}  // namespace Lodrine
