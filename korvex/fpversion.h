#pragma once

/// Version numbers of fingerprint kinds: major.minor.patch, packed into 16 bits as major * 4096 +
/// minor * 16 + patch, with major and patch below 15 and minor below 255. A kind's version changes
/// when its bits change. Pure functions, thread safe.

#include <cstdint>
#include <string>

#include "korvex/siblings.h"

namespace ZQKorvex {

/// Packs three numbers without a range check.
constexpr std::uint64_t ZQPackFingerPrintVersion(std::uint64_t majorNumber,
                                                 std::uint64_t minorNumber,
                                                 std::uint64_t patchNumber) {
  return majorNumber * 4096 + minorNumber * 16 + patchNumber;
}
/// "2.0.0" for 8192.
ZQ_EXPORT std::string ZQGetFingerPrintVersionString(unsigned short version);
/// Whether the text is three numbers in range, separated by dots.
ZQ_EXPORT bool ZQIsValidFingerPrintVersion(const std::string& text);
/// The packed version of a valid text; an invalid text is an assertion failure.
ZQ_EXPORT unsigned short ZQGetFingerPrintVersion(const std::string& text);
/// The current version of a kind; 0 for the kinds 1, 2 and 3 of an older format. Returns 0 for any
/// other unknown kind, after the warning "ZQGetFingerPrintVersion : unknown fingerprint type!".
ZQ_EXPORT unsigned short ZQGetFingerPrintVersion(unsigned int fptype);

}  // namespace ZQKorvex
