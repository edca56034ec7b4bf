#pragma once

/// Files mapped into memory, read-only or for writing in place. Each object owns its descriptor and
/// its mapping. Failures report an error through `ZQThrow` and return false. An object is opened
/// and closed by one thread; the mapping may be used by many.

#include <cstdint>
#include <string>

#include "contract/bostrel/filemapping.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

/// The descriptor and the mapping of an open file.
class ZQ_EXPORT MMapFile {
 public:
  MMapFile(const MMapFile&) = delete;
  MMapFile& operator=(const MMapFile&) = delete;

  /// Unmaps and closes; does nothing if nothing is mapped. A failed unmapping reports "Error
  /// un-mmapping the file".
  void Close();
  /// The number of mapped bytes.
  std::uint64_t GetLength() const { return mapping_.GetLength(); }

 protected:
  MMapFile() = default;
  ~MMapFile() { Close(); }
  /// Maps `length` bytes of the open descriptor; on failure reports an error and closes the
  /// descriptor.
  bool Map(std::uint64_t length, bool writable, const char* message, const char* filename);
  void CloseDescriptor();

  int descriptor_ = -1;
  ZQFileMapping mapping_;
};

/// A file mapped read-only. A mapping may be longer than its file; pages entirely past the end of
/// the file can't be accessed.
class ZQ_EXPORT MMapInputFile : public MMapFile {
 public:
  /// Maps `length` bytes from the start. Messages: "Error opening file for reading: %s", "Error
  /// mmapping the file: %s".
  bool Open(const std::string& filename, std::uint64_t length);
  /// The same for a file open as a stream, which may be closed afterwards. The name is for
  /// messages.
  bool Open(const zqifstream& in, const std::string& filename, std::uint64_t length);
  const void* GetBase() const { return mapping_.GetBase(); }
  /// Has the kernel map all pages at once, at a fraction of the cost of the page faults of a scan.
  /// Returns when the pages are mapped.
  void PageIn() const;

 private:
  bool Take(int descriptor, const std::string& filename, std::uint64_t length);
};

/// A file created or truncated, and mapped for writing. The process's umask determines the mode of
/// a new file; an existing one keeps its mode. Writes reach the file without a further call.
class ZQ_EXPORT MMapOutputFile : public MMapFile {
 public:
  /// Extends the file to `length` bytes, all zero, and maps them. Reserves the blocks on the disk,
  /// so that a full disk is an error here and not a signal at a later write. Messages: "Error
  /// opening file for writing: %s", "Error calling lseek() to 'stretch' the file", "Error writing
  /// last byte of the file", "Error mmapping the file".
  bool Open(const std::string& filename, std::uint64_t length);
  void* GetBase() const { return mapping_.GetBase(); }
};

}  // namespace ZQKorvex
