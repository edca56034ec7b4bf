#include "korvex/fptype_records.h"

#include <array>

#include "korvex/fptypes_local.h"
#include "korvex/fpversion.h"

namespace ZQKorvex {

namespace {

using IdBytes = std::array<unsigned char, 8>;

bool WriteType(zqostream& out, const ZQFingerPrint& fp, const ZQFPKind& kind) {
  if (!kind.HasParams()) return true;
  const ZQFPTypeBase* type = fp.GetFPTypeBase();
  if (!ZQ_ASSERT(type && type->GetFPType() == kind.number &&
                 type->GetVersion() == ZQGetFingerPrintVersion(kind.number))) {
    return false;
  }
  IdBytes bytes;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<unsigned char>(type->GetID() >> (8 * i));
  }
  return ZQ_io_write_binary(out, bytes.data(), bytes.size());
}

bool ReadType(zqistream& in, unsigned short version, ZQFingerPrint& fp, const ZQFPKind& kind) {
  if (!ZQ_ASSERT(!fp)) return false;
  std::uint64_t id = 0;
  if (kind.HasParams()) {
    IdBytes bytes;
    if (!ZQ_io_read_binary(in, bytes.data(), bytes.size())) return false;
    for (std::size_t i = 0; i < bytes.size(); ++i) id |= std::uint64_t{bytes[i]} << (8 * i);
  }
  fp.SetFPTypeBase(ZQInternFPType(kind, version, id));
  return true;
}

}  // namespace

bool ZQWritePathFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return WriteType(out, fp, zqPathKind);
}
bool ZQWriteCircularFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return WriteType(out, fp, zqCircularKind);
}
bool ZQWriteTreeFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return WriteType(out, fp, zqTreeKind);
}
bool ZQWriteLingoFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return WriteType(out, fp, zqLingoKind);
}
bool ZQWriteMACCSFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return WriteType(out, fp, zqMACCS166Kind);
}

bool ZQReadPathFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ReadType(in, version, fp, zqPathKind);
}
bool ZQReadCircularFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ReadType(in, version, fp, zqCircularKind);
}
bool ZQReadTreeFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ReadType(in, version, fp, zqTreeKind);
}
bool ZQReadLingoFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ReadType(in, version, fp, zqLingoKind);
}
bool ZQReadMACCSFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ReadType(in, version, fp, zqMACCS166Kind);
}

}  // namespace ZQKorvex
