#pragma once

/// FPS files (fps.h) of korvex's own fingerprint types, and their way into a `.fpbin` file
/// (fpfast.h).

#include <cstdint>
#include <string>

#include "korvex/fingerprint.h"
#include "korvex/fps.h"

namespace ZQKorvex {

/// The type of a header whose `type` is a type string of korvex, of fingerprints with exactly
/// `numBits` bits. Null for any other; `*fault`, if `fault` isn't null, is then the reason, such as
/// "its #type 'Foreign/1' is none of korvex". Warns only about a text that begins like one of
/// korvex.
ZQ_EXPORT const ZQFPTypeBase* ZQGetFPSType(const ZQFPSHeader& header, std::string* fault = nullptr);

struct ZQFPSConversionCounts {
  std::uint64_t records = 0;
  std::uint64_t skipped = 0;  ///< lines left out, each after a warning
  std::uint64_t sources = 0;  ///< `#source=` lines, of which a database holds the first
};

/// Writes the database `fpbinFile` from the records of `fpsFile`, in their order. The molecule file
/// of its header is the first source, or empty; it has no place for ids. False, after the error
/// "Can't convert %s: %s" or one of `ZQFPSReader`, if the file isn't of a type that a database
/// accepts, can't be read to its end, or if the output can't be written; the output is then
/// incomplete. Memory doesn't depend on the number of records.
ZQ_EXPORT bool ZQConvertFPSToFastFPDatabase(const std::string& fpbinFile,
                                            const std::string& fpsFile,
                                            ZQFPSConversionCounts* counts = nullptr);
/// The same from a stream, by `ZQFPSReader::Open`. The name is for messages.
ZQ_EXPORT bool ZQConvertFPSToFastFPDatabase(const std::string& fpbinFile, zqistream& in,
                                            const std::string& name,
                                            ZQFPSConversionCounts* counts = nullptr);

}  // namespace ZQKorvex
