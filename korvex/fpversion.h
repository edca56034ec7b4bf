#pragma once

/// Version numbers of fingerprint kinds: major.minor.patch, packed into 16 bits as major * 4096 +
/// minor * 16 + patch, with major and patch below 15 and minor below 255. A kind's version changes
/// when its bits do. Pure functions, safe from any thread.

#include <cstdint>
#include <string>

#include "korvex/siblings.h"

namespace ZQKorvex {

/// The packed number of three numbers, in range or not.
constexpr std::uint64_t ZQPackFingerPrintVersion(std::uint64_t majorNumber,
                                                 std::uint64_t minorNumber,
                                                 std::uint64_t patchNumber) {
  return majorNumber * 4096 + minorNumber * 16 + patchNumber;
}
/// "2.0.0" for 8192.
ZQ_EXPORT std::string ZQGetFingerPrintVersionString(unsigned short version);
/// Whether the text is three numbers in range, joined by points.
ZQ_EXPORT bool ZQIsValidFingerPrintVersion(const std::string& text);
/// The packed number of a text that passes the check; one that doesn't is an assertion failure.
ZQ_EXPORT unsigned short ZQGetFingerPrintVersion(const std::string& text);
/// The current version of a kind; 0 for the kinds 1, 2 and 3 of an older format. Any other
/// unknown kind warns "ZQGetFingerPrintVersion : unknown fingerprint type!" and gives 0.
ZQ_EXPORT unsigned short ZQGetFingerPrintVersion(unsigned int fptype);

}  // namespace ZQKorvex
