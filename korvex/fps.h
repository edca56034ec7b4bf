#pragma once

/// FPS files, the open text format of fingerprints of any origin. The lines of a header, such as
///
///   #FPS1
///   #num_bits=1024
///   #type=...
///   #software=...
///   #source=...
///   #date=2026-11-23T21:30:00
///
/// precede one line for each fingerprint: its bytes in hexadecimal digits of either case, a tab and
/// an id. Byte 0 comes first, and bit b is bit b % 8 of byte b / 8. The bytes have room for the
/// bits and no more; bits beyond `num_bits` are 0. All header lines but the first may be missing;
/// without `num_bits`, a fingerprint has all the bits of the first record's digits. Lines end with
/// a line feed, which a carriage return may precede. A byte order mark is skipped.
///
/// An id is any text without tabs, and may be empty. What follows it after another tab is ignored.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korvex/siblings.h"

namespace ZQKorvex {

/// The header of an FPS file. Empty texts stand for lines that are missing.
struct ZQFPSHeader {
  unsigned int numBits = 0;
  std::string type;
  std::string software;
  std::vector<std::string> sources;
  std::string date;
  /// Key and value of each other line, in order.
  std::vector<std::pair<std::string, std::string>> others;
};

/// The most bits of a fingerprint.
inline constexpr unsigned int zqFPSMaxBits = 1U << 20;

/// Whether the name ends in ".fps" or ".fps.gz", in upper or lower case.
ZQ_EXPORT bool ZQIsFPSName(const std::string& filename);

/// A fingerprint of an FPS file. Both point into the reader, up to its next operation.
struct ZQFPSRecord {
  /// (bits + 63) / 64 words. Bit b is bit b % 64 of word b / 64; bits past the size are 0.
  const std::uint64_t* words = nullptr;
  std::string_view id;
};

/// Reads an FPS file from one fingerprint to the next. Its memory doesn't depend on the file's
/// size. For one thread.
///
/// A line that isn't a fingerprint is left out and counted, after the warning "line %lu of %s is
/// left out: found %s, expected %s". A file that can't be read as a whole reports the error "Can't
/// read fingerprints from %s: %s".
class ZQ_EXPORT ZQFPSReader {
 public:
  ZQFPSReader();
  ~ZQFPSReader();
  ZQFPSReader(const ZQFPSReader&) = delete;
  ZQFPSReader& operator=(const ZQFPSReader&) = delete;

  /// Opens a file, unpacked if its name ends in ".gz", and reads the header. False, after the
  /// error, if it can't be read, isn't an FPS file, has an illegal `num_bits` (0, or above
  /// `zqFPSMaxBits`), or has no fingerprint. A header without its first line is read after the
  /// warning "line 1 of %s: found %s, expected #FPS1".
  bool Open(const std::string& filename);
  /// The same for an open stream, which must outlive the reader, and is unpacked if it begins as
  /// gzip data does. The name is for messages.
  bool Open(zqistream& in, const std::string& name);

  /// That of the open file; the number of bits is always set.
  const ZQFPSHeader& GetHeader() const;
  /// The next fingerprint. False at the end, and, after the error, if the rest can't be read.
  bool Read(ZQFPSRecord& record);
  /// Whether the file was open, and all of it so far could be read.
  bool IsGood() const;
  /// The lines left out so far.
  std::uint64_t NumSkipped() const;

 private:
  class ZQ_LOCAL Impl;
  std::unique_ptr<Impl> impl_;
};

/// Writes an FPS file. For one thread.
class ZQ_EXPORT ZQFPSWriter {
 public:
  ZQFPSWriter();
  /// A file that isn't closed is incomplete.
  ~ZQFPSWriter();
  ZQFPSWriter(const ZQFPSWriter&) = delete;
  ZQFPSWriter& operator=(const ZQFPSWriter&) = delete;

  /// Creates or truncates a file, packed if its name ends in ".gz", and writes the header. Control
  /// characters of a key or a value become blanks. False after the error "Can't write fingerprints
  /// to %s: %s", also for a number of bits that is 0 or above `zqFPSMaxBits`.
  bool Open(const std::string& filename, const ZQFPSHeader& header);
  /// The same for an open stream, which must outlive the writer. The name is for messages.
  bool Open(zqostream& out, const std::string& name, const ZQFPSHeader& header);

  /// Writes a fingerprint, whose words are those of `ZQFPSRecord`; bits past the size are written
  /// as 0. Tabs, line feeds and carriage returns of the id become blanks. False if nothing is open,
  /// or if an earlier write failed. Writes are buffered, so that only `Close` reports the last one.
  bool Write(const std::uint64_t* words, std::string_view id);
  /// Writes what is left. False, after the error, if this or an earlier write failed.
  bool Close();

 private:
  class ZQ_LOCAL Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ZQKorvex
