#include "korvex/fpversion.h"

#include <cstdint>
#include <limits>
#include <vector>

#include "contract/bostrel/strings.h"
#include "korvex/fingerprint.h"

namespace ZQKorvex {

namespace {

struct Version {
  std::uint64_t major = 0;
  std::uint64_t minor = 0;
  std::uint64_t patch = 0;

  constexpr std::uint64_t Pack() const { return major * 4096 + minor * 16 + patch; }
  constexpr bool IsInRange() const { return major < 15 && minor < 255 && patch < 15; }
};

constexpr Version currentVersion{2, 0, 0};
constexpr Version currentMACCS166Version{2, 2, 0};
static_assert(currentVersion.Pack() == 8192 && currentMACCS166Version.Pack() == 8224);

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
  switch (fptype) {
    case ZQFPType::MACCS166:
      return static_cast<unsigned short>(currentMACCS166Version.Pack());
    case ZQFPType::Path:
    case ZQFPType::Lingo:
    case ZQFPType::Circular:
    case ZQFPType::Tree:
    case ZQFPType::UnhashedPath:
    case ZQFPType::UnhashedCircular:
    case ZQFPType::UnhashedTree:
      return static_cast<unsigned short>(currentVersion.Pack());
    case 1:
    case 2:
    case 3:
      return 0;
    default:
      ZQThrow.Warning("%s : unknown fingerprint type!", "ZQGetFingerPrintVersion");
      return 0;
  }
}

}  // namespace ZQKorvex
