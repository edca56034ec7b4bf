#pragma once

/// The MACCS keys that are substructures, and the function that sets all bits.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "contract/quarnel/subsearch.h"
#include "korvex/fingerprint.h"

namespace ZQKorvex {

struct MACCSKey {
  MACCSKey(const char* text, std::uint32_t key, std::uint32_t second)
      : smarts(text),
        number(key),
        secondNumber(second),
        query(smarts, false),
        numParts(1 + static_cast<unsigned int>(std::ranges::count(smarts, '.'))),
        part(smarts.substr(0, smarts.find('.')), false) {}

  std::string smarts;
  std::uint32_t number;
  std::uint32_t secondNumber;  ///< key that a second unique match sets; 0 for none
  ZQSubSearch query;
  /// A key such as "[#8].[#8]" has equal parts of one atom, any other is one part: its matches are
  /// the combinations of this number of matches of a part.
  unsigned int numParts;
  ZQSubSearch part;
  std::uint32_t equalNumber = 0;  ///< an earlier key with the same text; 0 for none
};

/// The keys in ascending order.
class MACCS166Keys : public std::vector<MACCSKey> {
 public:
  MACCS166Keys();
  /// The only table of the process, made at the first call.
  static const MACCS166Keys& Get();
};

/// Elements with a key have atomic numbers below this.
inline constexpr unsigned int zqMACCSElements = 113;
/// The key of an element; 0 for none.
unsigned int ZQMACCSElementKey(unsigned int atomicNum);

/// Sets the bits of a prepared molecule in a fingerprint of 166 clear bits.
void ZQMakeMACCS166SetBits(ZQFingerPrint& fp, const ZQMolBase& mol);

}  // namespace ZQKorvex
