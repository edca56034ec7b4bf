#pragma once

/// Fingerprints in the binary container (contract/bostrel/zqb.h): as records of their own, tagged
/// "ZQFingerPrint", and as generic data of an object, tagged "ZQBaseZQFingerPrint". Every
/// `ZQBinaryIOHandler` reads and writes both.
///
/// The data of a record: the kind (4 bytes), the version (2), for path, circular and tree the
/// packed parameters (8), the number of bits (4), and the bits in whole words of 8 bytes, bit i in
/// byte i/8; all numbers little-endian. A record of a path fingerprint of 4096 bits has 530 bytes
/// of data.
///
/// Text kinds other than Lingo can't be stored. Records of kinds 1 to 3 (MACCS-166, path, Lingo)
/// are those of old releases, without a version; they are read as version 0 and never written.

#include "contract/bostrel/zqb.h"
#include "contract/quarnel/molstream.h"
#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Adds the functions below, and those for generic data, to a handler that lacks them. Return true.
ZQ_EXPORT bool ZQInitFingerPrintHandlers(ZQBinaryIOHandlerBase& handler);
ZQ_EXPORT bool ZQInitFingerPrintHandlers(zqmolstreambase& stream);

class ZQ_EXPORT ZQFingerPrintWriteFxn final : public ZQWriteFxn<ZQFingerPrint> {
 public:
  std::string GetTag() const override { return "ZQFingerPrint"; }
  ZQFingerPrintWriteFxn* CreateCopy() const override { return new ZQFingerPrintWriteFxn(*this); }
  /// Writes the record. Reports the error "fingerprint with unknown type cannot be written to an
  /// ZQB" for an unhashed kind or no type; the record is then written without version and
  /// parameters. A type of an old version is an assertion failure. False if the stream fails.
  bool operator()(zqostream& out, const ZQFingerPrint& fp) const override;
};

class ZQ_EXPORT ZQFingerPrintReadFxn final : public ZQReadFxn<ZQFingerPrint> {
 public:
  std::string GetTag() const override { return "ZQFingerPrint"; }
  ZQFingerPrintReadFxn* CreateCopy() const override { return new ZQFingerPrintReadFxn(*this); }
  /// Reads the data of a record into a fingerprint without a type (an assertion). Any version and
  /// parameters are accepted. Data of an unknown kind, 0 included, is an error, "unknown
  /// fingerprint type was read from the ZQB"; the bits are read, and the fingerprint has no type.
  /// An old kind warns "fingerprint type with old version was read from the ZQB". A length of 0
  /// reads nothing and is `Ok`; data that ends before its last bit is `ShortRead`.
  unsigned int operator()(zqistream& in, ZQFingerPrint& fp, std::uint64_t length) const override;
};

/// Reads size and words into the fingerprint. A negative size reports the error "Max size for an
/// ZQBitVector is INT_MAX" and leaves the size as it was. False for that, if the stream ends
/// early, and after an error if memory runs out, which is taken only for bytes that are there.
ZQ_EXPORT bool ZQReadBitVector(zqistream& in, ZQFingerPrint& fp);

}  // namespace ZQKorvex
