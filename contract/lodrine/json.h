#pragma once

/// JSON texts of values. Texts are UTF-8.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contract/bostrel/export.h"

namespace Lodrine {

/// A text as a JSON string value, with quotes. Empty if it isn't UTF-8.
ZQ_EXPORT std::string ZQQuoteJSON(std::string_view text);

/// A parsed JSON text. Its nesting has no limit.
class ZQ_EXPORT JSONParseHelper {
 public:
  /// Warns "JSON : %s at byte %d", with the cause, if the text isn't JSON.
  explicit JSONParseHelper(std::string_view text);
  ~JSONParseHelper();
  bool IsValid() const;

 private:
  struct ZQ_LOCAL Document;
  friend ZQ_EXPORT bool GetJSONArrayAttr(const JSONParseHelper& json, const std::string& key,
                                         std::vector<std::optional<std::string>>& entries);

  std::unique_ptr<Document> document_;  // null if the text isn't JSON
};

/// Reads the array of strings and nulls under a key of an object; a null is a missing entry. If
/// there is none, it warns "JSON : no array of strings under the key %s", or nothing for a text
/// that didn't parse, `entries` is empty, and the result is false.
ZQ_EXPORT bool GetJSONArrayAttr(const JSONParseHelper& json, const std::string& key,
                                std::vector<std::optional<std::string>>& entries);

}  // namespace Lodrine
