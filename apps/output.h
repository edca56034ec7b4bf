#pragma once

/// Standard output as lines of tab-separated values, or as JSON; and output files.

#include <cstdint>
#include <filesystem>
#include <string>

#include "apps/command.h"
#include "korvex/fingerprint.h"

namespace KorvexProgram {

/// The text as one field of a line: tabs, line feeds and other control characters become blanks.
std::string TsvField(std::string text);

/// The bits in hexadecimal, byte 0 first; for a Lingo or unhashed fingerprint its text.
std::string FingerPrintField(const ZQFingerPrint& fp);

/// The number with that many decimals.
std::string Decimals(double number, int decimals);

/// The number in the shortest form that reads back as the same double.
std::string ShortestNumber(double number);

/// The text as UTF-8 that is legal in XML, but for control characters: each byte that isn't part of
/// a valid sequence, or is of the noncharacters U+FFFE and U+FFFF, becomes U+FFFD.
std::string ValidUtf8(const std::string& text);

/// An output file while it is being written. It gets the name of the output only when it is
/// complete, so that a failure neither costs an earlier file nor leaves a partial one. One at a
/// time.
class PartialFile {
 public:
  /// Follows a link to a file, and keeps the mode of an existing file.
  explicit PartialFile(const std::string& target);
  PartialFile(const PartialFile&) = delete;
  PartialFile& operator=(const PartialFile&) = delete;
  ~PartialFile();
  /// The name to write to, with the extension of the output.
  const std::string& GetName() const { return name_; }
  /// False after a message.
  bool Rename() const;

 private:
  static void RemoveAndEnd(int signal);
  static const char* volatile interruptedName;

  std::filesystem::path target_;
  std::string name_;
};

/// Writes a whole file by means of a partial one, or standard output for the name "-". A device or
/// pipe is written directly. False after an error that names the file and the cause.
bool WriteFile(const std::string& name, const std::string& text);

/// A hit of a search, with the data that identify its molecule.
struct Hit {
  unsigned int query;  ///< number of the query in its file, from 1
  unsigned int rank;   ///< from 1
  double score;
  std::uint64_t index;  ///< record of the database, from 0
  std::string title;
  std::string smiles;
};

/// The number of queries that share one pass over the records, if each holds at most that many hits
/// (at least 1) until its end.
std::uint64_t QueriesPerPass(std::uint64_t hitsPerQuery);

/// "-format" of `HitWriter`.
void AddHitFormat(ZQInterface& interface);

/// Writes hits: one line each, or one JSON array with an object each.
class HitWriter {
 public:
  explicit HitWriter(const ZQInterface& interface);
  void Write(const Hit& hit);
  /// Ends the array.
  void Finish() const;

 private:
  bool json_;
  bool first_ = true;
};

}  // namespace KorvexProgram
