#include "contract/bostrel/zqb.h"

#include <algorithm>
#include <mutex>

namespace Bostrel {

namespace {

constexpr std::size_t longestTag = 255;

struct Initializers {
  std::mutex mutex;
  std::vector<bool (*)(ZQBinaryIOHandlerBase&)> functions;
};

// Made on first use, since libraries register while they are loaded.
Initializers& GetInitializers() {
  static Initializers initializers;
  return initializers;
}

}  // namespace

bool ZQBWriteTag(zqostream& out, const std::string& tag) {
  return tag.size() <= longestTag &&
         Vantrel::ZQ_io_write_number(out, static_cast<std::uint32_t>(tag.size())) &&
         Vantrel::ZQ_io_write_binary(out, tag.data(), tag.size());
}

bool ZQBWriteDataLength(zqostream& out, std::uint64_t length) {
  return Vantrel::ZQ_io_write_number(out, length);
}

bool ZQBReadTag(zqistream& in, std::string& tag) {
  std::uint32_t length = 0;
  return Vantrel::ZQ_io_read_number(in, length) && length <= longestTag &&
         ZQBReadBytes(in, length, tag);
}

bool ZQBReadDataLength(zqistream& in, std::uint64_t& length) {
  return Vantrel::ZQ_io_read_number(in, length);
}

bool ZQBReadBytes(zqistream& in, std::uint64_t length, std::string& bytes) {
  constexpr std::uint64_t piece = std::uint64_t{1} << 16;
  bytes.clear();
  while (length != bytes.size()) {
    // Pieces grow with what was read, so that copying stays linear.
    const std::size_t begin = bytes.size();
    const std::uint64_t wanted = std::min(length - begin, std::max<std::uint64_t>(piece, begin));
    bytes.resize(begin + wanted);
    in.read(bytes.data() + begin, static_cast<std::streamsize>(wanted));
    if (static_cast<std::uint64_t>(in.gcount()) == wanted) continue;
    bytes.resize(begin + static_cast<std::size_t>(in.gcount()));
    return false;
  }
  return true;
}

unsigned int ZQBReadRecord(zqistream& in, ZQUnknownZQBData& record) {
  std::uint64_t length = 0;
  if (!ZQBReadTag(in, record.tag)) return ZQBStatus::NoTag;
  if (!ZQBReadDataLength(in, length)) return ZQBStatus::ShortRead;
  return ZQBReadBytes(in, length, record.bytes) ? ZQBStatus::Ok : ZQBStatus::ShortRead;
}

bool ZQBWriteRecord(zqostream& out, const ZQUnknownZQBData& record) {
  return ZQBWriteTag(out, record.tag) && ZQBWriteDataLength(out, record.bytes.size()) &&
         Vantrel::ZQ_io_write_binary(out, record.bytes.data(), record.bytes.size());
}

std::uint64_t ZQHashTypeName(const char* name) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (; *name != '\0'; ++name) hash = (hash ^ static_cast<unsigned char>(*name)) * 0x100000001b3;
  return hash;
}

void ZQBinaryIOHandlerBase::Add(Functions& functions, const ZQBinaryFxnBase& function) {
  std::unique_ptr<ZQBinaryFxnBase> copy(function.CreateCopy());
  for (std::unique_ptr<ZQBinaryFxnBase>& earlier : functions) {
    if (earlier->GetType() != copy->GetType() || earlier->GetTag() != copy->GetTag()) continue;
    earlier = std::move(copy);
    return;
  }
  functions.push_back(std::move(copy));
}

const ZQBinaryFxnBase* ZQBinaryIOHandlerBase::Find(const Functions& functions, std::uint64_t type,
                                                   const std::string* tag) {
  const auto found = std::ranges::find_if(functions, [&](const auto& function) {
    return function->GetType() == type && (!tag || function->GetTag() == *tag);
  });
  return found == functions.end() ? nullptr : found->get();
}

// A copy of the list is called, so that an initializer may make a handler.
ZQBinaryIOHandler::ZQBinaryIOHandler() {
  Initializers& initializers = GetInitializers();
  std::unique_lock<std::mutex> lock(initializers.mutex);
  const auto functions = initializers.functions;
  lock.unlock();
  for (const auto& function : functions) function(*this);
}

bool ZQRegisterZQBInitializer(bool (*initializer)(ZQBinaryIOHandlerBase& handler)) {
  Initializers& initializers = GetInitializers();
  const std::lock_guard<std::mutex> lock(initializers.mutex);
  initializers.functions.push_back(initializer);
  return true;
}

unsigned int ZQBFinishRecord(zqistream& in, std::streamoff begin, std::uint64_t length,
                             unsigned int status) {
  if (begin < 0) return status;
  const bool failed = !in;
  in.clear();
  const auto end = static_cast<std::streamoff>(static_cast<std::uint64_t>(begin) + length);
  if (!failed && in.tellg() == std::streampos(end)) return status;
  in.seekg(0, std::ios::end);
  if (end < begin || in.tellg() < end) return ZQBStatus::ShortRead;
  in.seekg(end);
  return status == ZQBStatus::Ok ? ZQBStatus::BadFrame : status;
}

bool ZQBWriteDataTag(zqostream& out, unsigned int tag) {
  const std::string name = ZQGetTagName(tag);
  return ZQBWriteTag(out, name) &&
         (!name.empty() || Vantrel::ZQ_io_write_number(out, std::uint32_t{tag}));
}

bool ZQBReadDataTag(zqistream& in, unsigned int& tag) {
  std::string name;
  std::uint32_t number = 0;
  if (!ZQBReadTag(in, name)) return false;
  if (!name.empty()) {
    tag = ZQGetTag(name);
    return true;
  }
  if (!Vantrel::ZQ_io_read_number(in, number) || number >= ZQFirstNamedTag) return false;
  tag = number;
  return true;
}

bool ZQBWriteGenericData(zqostream& out, const ZQBase& object,
                         const ZQBinaryIOHandlerBase& handler) {
  for (const ZQWriteFxn<ZQBase>* write : handler.GetWriteFxns<ZQBase>()) {
    if (!(*write)(out, object)) return false;
  }
  return true;
}

}  // namespace Bostrel
