#include "contract/bostrel/strings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <numeric>

namespace Bostrel {

namespace {

template <class Number>
bool ReadWhole(std::string_view text, Number& number) {
  Number read{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  number = read;
  return true;
}

std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] != b[j]);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

// The length of the valid UTF-8 sequence at the start of the text, 0 if there is none.
std::size_t SequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const unsigned int lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  unsigned int code = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U) return 0;
    code = code << 6U | (byte(i) & 0x3FU);
  }
  constexpr std::array<unsigned int, 5> least{0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = code >= 0xD800 && code < 0xE000;
  const bool isNoCharacter = code == 0xFFFE || code == 0xFFFF;  // XML forbids both
  return code < least[length] || code > 0x10FFFF || isSurrogate || isNoCharacter ? 0 : length;
}

}  // namespace

std::vector<std::string> ZQStringTokenize(std::string_view text, char separator) {
  std::vector<std::string> tokens;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (end != 0) tokens.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return tokens;
}

bool ZQStringToNumber(std::string_view text, unsigned int& number) {
  return ReadWhole(text, number);
}
bool ZQStringToNumber(std::string_view text, std::uint64_t& number) {
  return ReadWhole(text, number);
}
bool ZQStringToNumber(std::string_view text, int& number) { return ReadWhole(text, number); }
bool ZQStringToNumber(std::string_view text, float& number) { return ReadWhole(text, number); }

std::string ZQNumberToString(std::uint64_t number) { return std::to_string(number); }

std::string ZQFileExtension(const std::string& name, const std::string& defaultValue) {
  const std::size_t point = name.find_last_of("./");
  if (point == std::string::npos || name[point] == '/') return defaultValue;
  return name.substr(point + 1);
}

std::string ZQNearestName(const std::string& word, const std::vector<std::string>& names) {
  const std::string* nearest = nullptr;
  std::size_t least = word.size() / 2 + 1;  // beyond this distance it is another word
  for (const std::string& name : names) {
    const std::size_t distance = EditDistance(word, name);
    if (distance < least) {
      least = distance;
      nearest = &name;
    }
  }
  return nearest ? *nearest : std::string();
}

std::string ZQToXmlText(std::string_view text) {
  std::string escaped;
  while (!text.empty()) {
    const std::size_t length = SequenceLength(text);
    const std::string_view sequence = text.substr(0, std::max<std::size_t>(length, 1));
    text.remove_prefix(sequence.size());
    const char c = sequence[0];
    if (length == 0) {
      escaped += "\xEF\xBF\xBD";
    } else if (c == '<') {
      escaped += "&lt;";
    } else if (c == '>') {
      escaped += "&gt;";
    } else if (c == '&') {
      escaped += "&amp;";
    } else if (length == 1 && (static_cast<unsigned char>(c) < ' ' || c == '\x7f')) {
      escaped += ' ';
    } else {
      escaped += sequence;
    }
  }
  return escaped;
}

}  // namespace Bostrel
