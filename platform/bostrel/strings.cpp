#include "contract/bostrel/strings.h"

#include <algorithm>
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

}  // namespace Bostrel
