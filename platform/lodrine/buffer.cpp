#include "contract/lodrine/buffer.h"

namespace Lodrine {

namespace {

constexpr std::size_t intSize = 8;
constexpr std::int64_t noneLength = -1;

}  // namespace

void ZQWriteBuffer::WriteBool(bool value) { bytes_ += value ? '\1' : '\0'; }

void ZQWriteBuffer::WriteInt(std::int64_t value) {
  const auto bits = static_cast<std::uint64_t>(value);
  for (std::size_t i = 0; i < intSize; ++i) bytes_ += static_cast<char>(bits >> (8 * i));
}

void ZQWriteBuffer::WriteBlob(std::string_view bytes) {
  WriteInt(static_cast<std::int64_t>(bytes.size()));
  bytes_ += bytes;
}

void ZQWriteBuffer::WriteNoneBlob() { WriteInt(noneLength); }

bool ZQReadBuffer::ReadBool() {
  const std::string_view byte = Take(1);
  return !byte.empty() && byte[0] != 0;
}

std::int64_t ZQReadBuffer::ReadInt() {
  std::uint64_t bits = 0;
  std::size_t i = 0;
  for (const char byte : Take(intSize)) {
    bits |= std::uint64_t{static_cast<unsigned char>(byte)} << (8 * i++);
  }
  return static_cast<std::int64_t>(bits);
}

std::string_view ZQReadBuffer::ReadBlob(bool* isNone) {
  const std::int64_t length = ReadInt();
  const bool none = length == noneLength;
  if (isNone) *isNone = none;
  // Other negative lengths are greater than any number of bytes.
  return none ? std::string_view() : Take(static_cast<std::size_t>(length));
}

std::string_view ZQReadBuffer::Take(std::size_t size) {
  valid_ = valid_ && size <= rest_.size();
  if (!valid_) return {};
  const std::string_view taken = rest_.substr(0, size);
  rest_.remove_prefix(size);
  return taken;
}

}  // namespace Lodrine
