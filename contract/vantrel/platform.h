#pragma once

/// Platform services: streams, processors, time and the stack.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "contract/bostrel/export.h"

namespace Vantrel {

using zqistream = std::istream;
using zqostream = std::ostream;
using zqisstream = std::istringstream;
using zqosstream = std::ostringstream;

/// A binary input file with bounded reads for untrusted headers.
class ZQ_EXPORT zqifstream : public std::istream {
 public:
  zqifstream() : std::istream(nullptr) {}
  explicit zqifstream(const std::string& name) : std::istream(nullptr) { Open(name); }
  /// Returns false for anything but a readable regular file, such as a directory, and stores the
  /// cause, such as "Is a directory", in `cause` if not null.
  bool Open(const std::string& name, std::string* cause = nullptr);
  void Close();
  /// The file's descriptor, owned by the stream; -1 if not open.
  int GetDescriptor() const { return descriptor_; }
  /// Size in bytes, -1 if not open.
  std::int64_t Size();
  /// Skips white space and reads up to `limit` bytes that aren't white space.
  bool ReadToken(std::string& token, std::size_t limit);
  /// Reads up to a line feed, which is discarded; false at the end of the file or if `limit` bytes
  /// contain no line feed.
  bool ReadLine(std::string& line, std::size_t limit);

 private:
  std::unique_ptr<std::streambuf> buffer_;
  int descriptor_ = -1;
};

/// Reads or writes exactly `bytes` bytes.
inline bool ZQ_io_read_binary(zqistream& in, void* data, std::size_t bytes) {
  return static_cast<bool>(in.read(static_cast<char*>(data), static_cast<std::streamsize>(bytes)));
}
inline bool ZQ_io_write_binary(zqostream& out, const void* data, std::size_t bytes) {
  return static_cast<bool>(
      out.write(static_cast<const char*>(data), static_cast<std::streamsize>(bytes)));
}

/// The same for `count` numbers of `size` bytes, which are little-endian in the stream.
ZQ_EXPORT bool ZQ_io_read_binary(zqistream& in, void* data, std::size_t size, std::size_t count);
ZQ_EXPORT bool ZQ_io_write_binary(zqostream& out, const void* data, std::size_t size,
                                  std::size_t count);

/// The same for one number.
template <class T>
bool ZQ_io_read_number(zqistream& in, T& number) {
  return ZQ_io_read_binary(in, &number, sizeof number, 1);
}
template <class T>
bool ZQ_io_write_number(zqostream& out, T number) {
  return ZQ_io_write_binary(out, &number, sizeof number, 1);
}

/// Processors that this process may run on, at least 1.
ZQ_EXPORT unsigned int ZQGetNumProcessors();

/// Seconds since the epoch, with fractions.
ZQ_EXPORT double ZQGetTimeOfDay();

inline bool ZQIsNaN(double x) { return std::isnan(x); }

/// Scratch arrays larger than this many bytes are allocated on the heap.
ZQ_EXPORT std::size_t ZQGetAllocaThreshold();

}  // namespace Vantrel
