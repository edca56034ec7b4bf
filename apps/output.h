#pragma once

/// Standard output as lines of tab-separated values, or as JSON; and output files.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "apps/command.h"
#include "korvex/fingerprint.h"
#include "korvex/fpdatabaseoptions.h"

namespace KorvexProgram {

/// The text as one field of a line: tabs, line feeds and other control characters become blanks.
std::string TsvField(std::string text);

/// The bits in hexadecimal, byte 0 first; for a Lingo or unhashed fingerprint its text.
std::string FingerPrintField(const ZQFingerPrint& fp);

/// The number with that many decimals.
std::string Decimals(double number, int decimals);

/// Appends the number in the shortest form that reads back as the same double.
void AppendShortest(std::string& text, double number);

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

/// False, after an error, if a file of this name can't be replaced: a directory, device or pipe,
/// or one that is write-protected.
bool CheckReplaceable(const std::string& name);

/// Writes a whole file by means of a partial one, or standard output for the name "-". A device or
/// pipe is written directly. False after an error that names the file and the cause.
bool WriteFile(const std::string& name, const std::string& text);

/// The number of queries that share one pass over the records. Until its end each query holds that
/// many lists of at most `limit` hits, or of any number if it is 0; a record is in one of them.
std::uint64_t QueriesPerPass(std::uint64_t limit, std::uint64_t records, unsigned int lists = 1);

/// "-format" of `HitWriter`.
void AddHitFormat(ZQInterface& interface);

/// Writes hits: one line each, or one JSON array with an object each.
class HitWriter {
 public:
  explicit HitWriter(const ZQInterface& interface);
  HitWriter(const HitWriter&) = delete;
  HitWriter& operator=(const HitWriter&) = delete;
  /// Ends the array, also where memory runs out.
  ~HitWriter();
  /// The hits of a query, best first. `query` is its number in its file, from 1; `molecules` has
  /// the titles and SMILES of the records.
  template <class Molecules>
  void Write(unsigned int query, const std::vector<ZQSimScore>& hits, const Molecules& molecules) {
    unsigned int rank = 0;
    for (const ZQSimScore& hit : hits) {
      Write(query, ++rank, hit, molecules.GetTitle(hit.GetIdx()),
            molecules.GetSmiles(hit.GetIdx()));
    }
  }

 private:
  void Write(unsigned int query, unsigned int rank, const ZQSimScore& hit, const std::string& title,
             const std::string& smiles);

  bool json_;
  bool first_ = true;
};

}  // namespace KorvexProgram
