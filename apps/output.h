#pragma once

/// Standard output as lines of tab-separated values, or as JSON.

#include <cstdint>
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

/// The text as UTF-8: each byte that isn't part of a valid sequence becomes U+FFFD.
std::string ValidUtf8(const std::string& text);

/// Writes a file as a whole: a text that can't be written leaves no file, and an existing one as it
/// was. "-" is standard output. False after a message.
bool WriteFile(const std::string& filename, const std::string& text);

/// A hit of a search, with the data that identify its molecule.
struct Hit {
  unsigned int query;  ///< number of the query in its file, from 1
  unsigned int rank;   ///< from 1
  double score;
  std::uint64_t index;  ///< record of the database, from 0
  std::string title;
  std::string smiles;
};

/// Writes hits: one line each, or one JSON array with an object each.
class HitWriter {
 public:
  explicit HitWriter(bool json);
  void Write(const Hit& hit);
  /// Ends the array.
  void Finish() const;

 private:
  bool json_;
  bool first_ = true;
};

}  // namespace KorvexProgram
