#include "korvex/fptype_records.h"

#include <array>

#include "korvex/fptypes.h"

namespace ZQKorvex {

namespace {

using IdBytes = std::array<unsigned char, 8>;

bool WriteType(zqostream& out, const ZQFingerPrint& fp, unsigned int fptype) {
  const ZQFPKind& kind = *ZQFindFPKind(fptype);
  if (!kind.HasParams()) return true;
  const ZQFPTypeBase* type = fp.GetFPTypeBase();
  if (!ZQ_ASSERT(type && type->GetFPType() == kind.number && type->GetVersion() == kind.version)) {
    return false;
  }
  IdBytes bytes;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<unsigned char>(type->GetID() >> (8 * i));
  }
  return ZQ_io_write_binary(out, bytes.data(), bytes.size());
}

bool ReadType(zqistream& in, unsigned short version, ZQFingerPrint& fp, unsigned int fptype) {
  if (!ZQ_ASSERT(!fp)) return false;
  std::uint64_t id = 0;
  if (ZQFindFPKind(fptype)->HasParams()) {
    IdBytes bytes;
    if (!ZQ_io_read_binary(in, bytes.data(), bytes.size())) return false;
    for (std::size_t i = 0; i < bytes.size(); ++i) id |= std::uint64_t{bytes[i]} << (8 * i);
  }
  fp.SetFPTypeBase(ZQFindFPKind(fptype)->intern(version, id));
  return true;
}

}  // namespace

bool ZQWritePathFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return WriteType(out, fp, ZQFPType::Path);
}
bool ZQWriteCircularFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return WriteType(out, fp, ZQFPType::Circular);
}
bool ZQWriteTreeFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return WriteType(out, fp, ZQFPType::Tree);
}
bool ZQWriteLingoFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return WriteType(out, fp, ZQFPType::Lingo);
}
bool ZQWriteMACCSFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return WriteType(out, fp, ZQFPType::MACCS166);
}

bool ZQReadPathFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ReadType(in, version, fp, ZQFPType::Path);
}
bool ZQReadCircularFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ReadType(in, version, fp, ZQFPType::Circular);
}
bool ZQReadTreeFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ReadType(in, version, fp, ZQFPType::Tree);
}
bool ZQReadLingoFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ReadType(in, version, fp, ZQFPType::Lingo);
}
bool ZQReadMACCSFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ReadType(in, version, fp, ZQFPType::MACCS166);
}

}  // namespace ZQKorvex
