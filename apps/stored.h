#pragma once

/// Files of the binary container with fingerprints and their molecules' titles: for each molecule a
/// record "ZQTitle", the text of its title, and a record "ZQFingerPrint". Records of other tags are
/// skipped.

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "apps/output.h"
#include "contract/bostrel/zqb.h"
#include "contract/quarnel/moldatabase.h"
#include "korvex/fingerprint.h"

namespace KorvexProgram {

/// Whether the name ends in ".zqb", in upper or lower case.
bool IsStoredName(const std::string& filename);

/// Why options of the fingerprint type are of no use with them, for `IsAnySet`.
inline constexpr const char* storedHaveType = "with stored fingerprints, which have their own type";

struct StoredFingerPrint {
  std::uint64_t number;  // in its file, from 1, damaged ones counted
  std::string title;
  ZQFingerPrint fp;
};

/// Reads a file from one fingerprint to the next.
class StoredReader {
 public:
  /// False after a message.
  bool Open(const std::string& filename);
  /// The next fingerprint with a legal type and of its size; false at the end. Each that is left
  /// out and each damaged record has a message.
  bool Read(StoredFingerPrint& stored);

 private:
  std::string filename_;
  zqifstream file_;
  ZQBinaryIOHandler handler_;
  std::uint64_t count_ = 0;  // fingerprints so far, damaged ones included
};

/// Reads all fingerprints of a file, which have to be of one type; those of another type than the
/// first have a message and are left out. Without any, after a message, `fps` is empty.
bool ReadStored(std::vector<StoredFingerPrint>& all, const std::string& filename);

/// Whether stored queries (null for none) have the type of the file that they search; an error if
/// not.
bool CheckQueryType(const ZQFPTypeBase* queryType, const ZQFPTypeBase* type,
                    const std::string& filename);
/// Whether fingerprints of a stored type can be made of molecules; an error that names its file if
/// not.
bool CheckMaking(const ZQFPTypeBase* type, const std::string& filename);

/// Makes the fingerprints of molecules, on that many threads, writes them, and prints their
/// number. A record without one has a message and is left out.
int WriteStored(const std::string& filename, const ZQMolDatabase& molecules,
                const ZQFPTypeBase* type, unsigned int numThreads);

}  // namespace KorvexProgram
