#pragma once

/// Text helpers. Pure functions, safe from any thread.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "contract/bostrel/export.h"

namespace Bostrel {

/// The pieces of `text` between separators; empty pieces are left out.
ZQ_EXPORT std::vector<std::string> ZQStringTokenize(std::string_view text, char separator);

/// Reads the whole text as a number in base 10: no blanks, no sign for an unsigned type, nothing
/// behind it, inside the type's range. False, and `number` unchanged, otherwise.
ZQ_EXPORT bool ZQStringToNumber(std::string_view text, unsigned int& number);
ZQ_EXPORT bool ZQStringToNumber(std::string_view text, std::uint64_t& number);
ZQ_EXPORT bool ZQStringToNumber(std::string_view text, int& number);
ZQ_EXPORT bool ZQStringToNumber(std::string_view text, float& number);

ZQ_EXPORT std::string ZQNumberToString(std::uint64_t number);

/// What stands behind the last point of the file name's last component, case as it is: "fpbin"
/// for "a.b/c.fpbin". `defaultValue` where there is no point.
ZQ_EXPORT std::string ZQFileExtension(const std::string& name,
                                      const std::string& defaultValue = std::string());

/// The entry of `names` that `word` most likely meant, by edit distance; empty if none is near.
ZQ_EXPORT std::string ZQNearestName(const std::string& word, const std::vector<std::string>& names);

}  // namespace Bostrel
