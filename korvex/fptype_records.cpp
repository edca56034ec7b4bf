#include "korvex/fptype_records.h"

#include "korvex/fptype_records_local.h"
#include "korvex/fptypes.h"

namespace ZQKorvex {

bool ZQHasFPTypeRecord(unsigned int fptype) {
  const ZQFPKind* kind = ZQFindFPKind(fptype);
  return kind && !kind->IsUnhashed();
}

bool ZQWriteFPTypeRecord(zqostream& out, const ZQFingerPrint& fp, unsigned int fptype) {
  const ZQFPKind& kind = *ZQFindFPKind(fptype);
  if (!kind.HasParams()) return true;
  const ZQFPTypeBase* type = fp.GetFPTypeBase();
  if (!ZQ_ASSERT(type && type->GetFPType() == kind.number && type->GetVersion() == kind.version)) {
    return false;
  }
  return ZQ_io_write_number(out, type->GetID());
}

bool ZQReadFPTypeRecord(zqistream& in, unsigned short version, ZQFingerPrint& fp,
                        unsigned int fptype) {
  if (!ZQ_ASSERT(!fp)) return false;
  const ZQFPKind& kind = *ZQFindFPKind(fptype);
  std::uint64_t id = 0;
  if (kind.HasParams() && !ZQ_io_read_number(in, id)) return false;
  fp.SetFPTypeBase(kind.intern(version, id));
  return true;
}

bool ZQWritePathFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return ZQWriteFPTypeRecord(out, fp, ZQFPType::Path);
}
bool ZQWriteCircularFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return ZQWriteFPTypeRecord(out, fp, ZQFPType::Circular);
}
bool ZQWriteTreeFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return ZQWriteFPTypeRecord(out, fp, ZQFPType::Tree);
}
bool ZQWriteLingoFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return ZQWriteFPTypeRecord(out, fp, ZQFPType::Lingo);
}
bool ZQWriteMACCSFingerPrintType(zqostream& out, const ZQFingerPrint& fp) {
  return ZQWriteFPTypeRecord(out, fp, ZQFPType::MACCS166);
}

bool ZQReadPathFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ZQReadFPTypeRecord(in, version, fp, ZQFPType::Path);
}
bool ZQReadCircularFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ZQReadFPTypeRecord(in, version, fp, ZQFPType::Circular);
}
bool ZQReadTreeFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ZQReadFPTypeRecord(in, version, fp, ZQFPType::Tree);
}
bool ZQReadLingoFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ZQReadFPTypeRecord(in, version, fp, ZQFPType::Lingo);
}
bool ZQReadMACCSFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp) {
  return ZQReadFPTypeRecord(in, version, fp, ZQFPType::MACCS166);
}

}  // namespace ZQKorvex
