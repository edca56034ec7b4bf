#pragma once

/// Tests of single characters, independent of the locale: only ASCII letters and digits count.

#include <string_view>

namespace Bostrel {

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsLower(char c) { return c >= 'a' && c <= 'z'; }
constexpr bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr char ToLower(char c) { return IsUpper(c) ? static_cast<char>(c - 'A' + 'a') : c; }
constexpr char ToUpper(char c) { return IsLower(c) ? static_cast<char>(c - 'a' + 'A') : c; }

/// Separates words of a header or of a fingerprint's text.
inline constexpr std::string_view whiteSpace = " \t\n\v\f\r";
constexpr bool IsSpace(char c) { return whiteSpace.find(c) != std::string_view::npos; }

/// Separates words of a molecule file, where vertical tabs and form feeds are errors.
constexpr bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

/// UTF-8 files of some programs begin with it.
inline constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

/// The text without blanks at its ends.
constexpr std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace Bostrel
