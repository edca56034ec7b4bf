#pragma once

/// Reads the fingerprints whose bytes are a NUL-terminated text.

#include <algorithm>
#include <string_view>
#include <vector>

#include "contract/bostrel/characters_local.h"
#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// The text up to its NUL, or all bytes of a vector that has none. Refers to the fingerprint.
inline std::string_view ZQTextOf(const ZQFingerPrint& fp) {
  const std::string_view bytes(reinterpret_cast<const char*>(fp.Words()),
                               std::size_t{fp.NumWords()} * sizeof(std::uint64_t));
  return bytes.substr(0, bytes.find('\0'));
}

/// The tokens of the text of an unhashed fingerprint, in the order of the text.
inline std::vector<std::string_view> ZQTokensOf(const ZQFingerPrint& fp) {
  using Bostrel::whiteSpace;
  std::string_view text = ZQTextOf(fp);
  std::vector<std::string_view> tokens;
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(whiteSpace), text.size()));
    if (text.empty()) break;
    tokens.push_back(text.substr(0, text.find_first_of(whiteSpace)));
    text.remove_prefix(tokens.back().size());
  }
  return tokens;
}

}  // namespace ZQKorvex
