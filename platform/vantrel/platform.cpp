#include "contract/vantrel/platform.h"

#include <sched.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>

namespace Vantrel {

bool zqifstream::Open(const std::string& name) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(name, error)) {
    setstate(failbit);
    return false;
  }
  open(name, std::ios::in | std::ios::binary);
  return is_open();
}

std::int64_t zqifstream::Size() {
  if (!is_open()) return -1;
  const auto here = tellg();
  seekg(0, std::ios::end);
  const auto size = tellg();
  seekg(here);
  return size;
}

bool zqifstream::ReadToken(std::string& token, std::size_t limit) {
  token.clear();
  while (std::isspace(peek())) get();
  while (token.size() < limit && peek() != traits_type::eof() && !std::isspace(peek())) {
    token += static_cast<char>(get());
  }
  return !token.empty();
}

bool zqifstream::ReadLine(std::string& line, std::size_t limit) {
  line.clear();
  for (int c = get(); c != traits_type::eof(); c = get()) {
    if (c == '\n') return true;
    if (line.size() == limit) return false;
    line += static_cast<char>(c);
  }
  return false;
}

unsigned int ZQGetNumProcessors() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return 1;
  return std::max(1U, static_cast<unsigned int>(CPU_COUNT(&allowed)));
}

double ZQGetTimeOfDay() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::size_t ZQGetAllocaThreshold() { return 8192; }

}  // namespace Vantrel
