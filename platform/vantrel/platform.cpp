#include "contract/vantrel/platform.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <chrono>
#include <ext/stdio_filebuf.h>
#include <system_error>

#include "contract/bostrel/characters_local.h"

namespace Vantrel {

bool zqifstream::Open(const std::string& name, std::string* cause) {
  Close();
  // Without O_NONBLOCK, opening a pipe would wait for a writer.
  const int descriptor = open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  struct stat status {};
  int error = descriptor >= 0 && fstat(descriptor, &status) == 0 ? 0 : errno;
  if (S_ISDIR(status.st_mode)) error = EISDIR;
  if (error != 0 || !S_ISREG(status.st_mode)) {
    if (cause) *cause = error ? std::generic_category().message(error) : "Not a regular file";
    if (descriptor >= 0) close(descriptor);
    setstate(failbit);
    return false;
  }
  buffer_ =
      std::make_unique<__gnu_cxx::stdio_filebuf<char>>(descriptor, std::ios::in | std::ios::binary);
  rdbuf(buffer_.get());
  descriptor_ = descriptor;
  return true;
}

void zqifstream::Close() {
  rdbuf(nullptr);
  buffer_.reset();  // closes the descriptor
  descriptor_ = -1;
}

std::int64_t zqifstream::Size() {
  struct stat status {};
  return descriptor_ >= 0 && fstat(descriptor_, &status) == 0 ? status.st_size : -1;
}

bool zqifstream::ReadToken(std::string& token, std::size_t limit) {
  token.clear();
  const auto isAtSpace = [this] { return Bostrel::IsSpace(static_cast<char>(peek())); };
  while (isAtSpace()) get();
  while (token.size() < limit && peek() != traits_type::eof() && !isAtSpace()) {
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

bool ZQ_io_read_binary(zqistream& in, void* data, std::size_t size, std::size_t count) {
  if (!ZQ_io_read_binary(in, data, size * count)) return false;
  if constexpr (std::endian::native == std::endian::big) {
    auto* bytes = static_cast<char*>(data);
    for (std::size_t i = 0; i < count; ++i) std::reverse(bytes + i * size, bytes + (i + 1) * size);
  }
  return true;
}

bool ZQ_io_write_binary(zqostream& out, const void* data, std::size_t size, std::size_t count) {
  if constexpr (std::endian::native == std::endian::little) {
    return ZQ_io_write_binary(out, data, size * count);
  }
  const auto* bytes = static_cast<const char*>(data);
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t at = size; at-- != 0;) {
      if (!ZQ_io_write_binary(out, bytes + i * size + at, 1)) return false;
    }
  }
  return true;
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
