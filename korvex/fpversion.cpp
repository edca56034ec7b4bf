#include "korvex/fpversion.h"

#include <cstdint>
#include <limits>
#include <vector>

#include "contract/bostrel/strings.h"
#include "korvex/fpkinds.h"

namespace ZQKorvex {

namespace {

struct Version {
  std::uint64_t major = 0;
  std::uint64_t minor = 0;
  std::uint64_t patch = 0;

  std::uint64_t Pack() const { return ZQPackFingerPrintVersion(major, minor, patch); }
  bool IsInRange() const { return major < 15 && minor < 255 && patch < 15; }
};

bool Parse(const std::string& text, Version& version) {
  const std::vector<std::string> parts = ZQStringTokenize(text, '.');
  return parts.size() == 3 && ZQStringToNumber(parts[0], version.major) &&
         ZQStringToNumber(parts[1], version.minor) && ZQStringToNumber(parts[2], version.patch);
}

}  // namespace

std::string ZQGetFingerPrintVersionString(unsigned short version) {
  return std::to_string(version / 4096) + "." + std::to_string(version / 16 % 256) + "." +
         std::to_string(version % 16);
}

bool ZQIsValidFingerPrintVersion(const std::string& text) {
  Version version;
  return Parse(text, version) && version.IsInRange();
}

unsigned short ZQGetFingerPrintVersion(const std::string& text) {
  Version version;
  if (!ZQ_ASSERT(Parse(text, version))) return 0;
  ZQ_ASSERT(version.IsInRange());
  constexpr std::uint64_t largest = std::numeric_limits<unsigned short>::max();
  if (!ZQ_ASSERT_MSG(version.Pack() <= largest,
                     "packed version is greater than the maximum allowed(unsigned short)65535")) {
    return 0;
  }
  return static_cast<unsigned short>(version.Pack());
}

unsigned short ZQGetFingerPrintVersion(unsigned int fptype) {
  if (const ZQFPKind* kind = ZQFindFPKind(fptype)) return kind->version;
  // The kinds 1, 2 and 3 belong to an older format.
  if (fptype < 1 || fptype > 3) {
    ZQThrow.Warning("%s : unknown fingerprint type!", "ZQGetFingerPrintVersion");
  }
  return 0;
}

}  // namespace ZQKorvex
