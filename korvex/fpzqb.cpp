#include "korvex/fpzqb.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "korvex/fptype_records_local.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

namespace {

// All handlers of the process know fingerprints.
[[maybe_unused]] const bool isRegistered = ZQRegisterZQBInitializer(
    static_cast<bool (*)(ZQBinaryIOHandlerBase&)>(&ZQInitFingerPrintHandlers));

/// Kinds of records without a version: 1 to 3 for the first three of today.
constexpr unsigned int lastOldKind = 3;
constexpr unsigned int KindOfOld(unsigned int oldKind) { return oldKind + 100; }
bool IsOld(unsigned int fptype) { return fptype >= 1 && fptype <= lastOldKind; }

void WriteData(zqostream& out, const ZQFingerPrint& fp) {
  const unsigned int fptype = fp ? fp.GetFPTypeBase()->GetFPType() : 0;
  ZQ_io_write_number(out, std::uint32_t{fptype});
  if (ZQHasFPTypeRecord(fptype)) {
    ZQ_io_write_number(out, std::uint16_t{fp.GetFPTypeBase()->GetVersion()});
    ZQWriteFPTypeRecord(out, fp, fptype);
  } else if (IsOld(fptype)) {
    ZQThrow.Error("fingerprint type with old version cannot be written to an ZQB");
  } else {
    ZQThrow.Error("fingerprint with unknown type cannot be written to an ZQB");
  }
  ZQ_io_write_number(out, std::uint32_t{fp.GetSize()});
  ZQ_io_write_binary(out, fp.Words(), sizeof(std::uint64_t), fp.NumWords());
}

unsigned int ReadData(zqistream& data, ZQFingerPrint& fp) {
  std::uint32_t fptype = 0;
  std::uint16_t version = 0;
  if (!ZQ_io_read_number(data, fptype)) return ZQBStatus::ShortRead;
  const bool isKnown = ZQHasFPTypeRecord(fptype) || IsOld(fptype);
  if (IsOld(fptype)) {
    ZQThrow.Warning("fingerprint type with old version was read from the ZQB");
    fptype = KindOfOld(fptype);
  } else if (!isKnown) {
    ZQThrow.Error("unknown fingerprint type was read from the ZQB");
  } else if (!ZQ_io_read_number(data, version)) {
    return ZQBStatus::ShortRead;
  }
  if (isKnown && !ZQReadFPTypeRecord(data, version, fp, fptype)) return ZQBStatus::ShortRead;
  if (!ZQReadBitVector(data, fp)) return ZQBStatus::ShortRead;
  return data.peek() == zqistream::traits_type::eof() ? ZQBStatus::Ok : ZQBStatus::BadFrame;
}

}  // namespace

bool ZQInitFingerPrintHandlers(ZQBinaryIOHandlerBase& handler) {
  handler.AddWriteFxn(ZQFingerPrintWriteFxn());
  handler.AddReadFxn(ZQFingerPrintReadFxn());
  return ZQInstallGenericDataHandler<ZQFingerPrint>(handler, "ZQBaseZQFingerPrint");
}

bool ZQInitFingerPrintHandlers(zqmolstreambase& stream) {
  return ZQInitFingerPrintHandlers(stream.GetBinaryIOHandler());
}

bool ZQFingerPrintWriteFxn::operator()(zqostream& out, const ZQFingerPrint& fp) const {
  zqosstream data;
  WriteData(data, fp);
  return ZQBWriteRecord(out, {GetTag(), std::move(data).str()});
}

unsigned int ZQFingerPrintReadFxn::operator()(zqistream& in, ZQFingerPrint& fp,
                                              std::uint64_t length) const {
  if (length == 0) return ZQBStatus::Ok;
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  if (!ZQ_ASSERT(length != most)) return ZQBStatus::ShortRead;
  unsigned int status = ZQBStatus::ShortRead;
  ZQGuardMemory("ZQFingerPrintReadFxn", [&] {
    if (length > most - 16) throw std::bad_alloc();
    std::string bytes;
    if (!ZQBReadBytes(in, length, bytes)) return false;
    if (!ZQ_ASSERT(!fp)) {
      status = ZQBStatus::BadFrame;
      return false;
    }
    zqisstream data(std::move(bytes));
    ZQFingerPrint read;
    status = ReadData(data, read);
    if (status == ZQBStatus::Ok) fp = std::move(read);
    return true;
  });
  return status;
}

bool ZQReadBitVector(zqistream& in, ZQFingerPrint& fp) {
  std::int32_t size = 0;
  if (!ZQ_io_read_number(in, size)) return false;
  if (size < 0) {
    ZQThrow.Error("Max size for an ZQBitVector is INT_MAX");
    return false;
  }
  const auto numbits = static_cast<unsigned int>(size);
  const std::uint64_t numWords = (std::uint64_t{numbits} + 63) / 64;
  return ZQGuardMemory("ZQReadBitVector", [&] {
    std::string bytes;
    if (!ZQBReadBytes(in, 8 * numWords, bytes)) return false;
    fp.SetSize(numbits);
    std::memcpy(fp.Words(), bytes.data(), bytes.size());
    fp.SetSize(numbits);  // turns off bits beyond it
    return true;
  });
}

}  // namespace ZQKorvex
