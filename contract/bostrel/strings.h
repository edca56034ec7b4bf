#pragma once

/// Text helpers. Pure functions, safe from any thread.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "contract/bostrel/export.h"

namespace Bostrel {

/// Splits `text` at separators and omits empty pieces.
ZQ_EXPORT std::vector<std::string> ZQStringTokenize(std::string_view text, char separator);

/// Reads the whole text as a number in base 10: no blanks, no sign for an unsigned type, nothing
/// after it, within the type's range. Otherwise returns false and leaves `number` unchanged.
ZQ_EXPORT bool ZQStringToNumber(std::string_view text, unsigned int& number);
ZQ_EXPORT bool ZQStringToNumber(std::string_view text, std::uint64_t& number);
ZQ_EXPORT bool ZQStringToNumber(std::string_view text, int& number);
ZQ_EXPORT bool ZQStringToNumber(std::string_view text, float& number);

ZQ_EXPORT std::string ZQNumberToString(std::uint64_t number);

/// Returns the text after the last point of the file name's last component, case unchanged: "fpbin"
/// for "a.b/c.fpbin". `defaultValue` if there is no point.
ZQ_EXPORT std::string ZQFileExtension(const std::string& name,
                                      const std::string& defaultValue = std::string());

/// Returns the entry of `names` nearest to `word` by edit distance; empty if none is near.
ZQ_EXPORT std::string ZQNearestName(const std::string& word, const std::vector<std::string>& names);

/// Returns the text as the content of an XML element: `<`, `>` and `&` as references, control
/// characters as blanks, bytes that aren't UTF-8 and characters that XML forbids as U+FFFD.
ZQ_EXPORT std::string ZQToXmlText(std::string_view text);

}  // namespace Bostrel
