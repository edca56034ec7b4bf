#pragma once

/// The type record of a stored fingerprint, which follows its kind and version: the packed
/// parameters as 8 bytes, the least significant first; nothing for MACCS-166 and Lingo. Thread safe
/// for distinct streams and fingerprints.

#include "korvex/fingerprint.h"

namespace ZQKorvex {

// The writers. For path, circular and tree, a fingerprint whose type isn't of the kind and its
// current version is an assertion failure; nothing is written. They return false for that and for a
// failed write. The writers of Lingo and MACCS-166 write nothing and return true for any
// fingerprint.

ZQ_EXPORT bool ZQWritePathFingerPrintType(zqostream& out, const ZQFingerPrint& fp);
ZQ_EXPORT bool ZQWriteCircularFingerPrintType(zqostream& out, const ZQFingerPrint& fp);
ZQ_EXPORT bool ZQWriteTreeFingerPrintType(zqostream& out, const ZQFingerPrint& fp);
ZQ_EXPORT bool ZQWriteLingoFingerPrintType(zqostream& out, const ZQFingerPrint& fp);
ZQ_EXPORT bool ZQWriteMACCSFingerPrintType(zqostream& out, const ZQFingerPrint& fp);

// The readers set the fingerprint's type. They don't check version or parameters: records of older
// releases remain readable and have their own types. A fingerprint that already has a type is an
// assertion failure and keeps it. They return false for that and, without a message, for a stream
// that ends early.

ZQ_EXPORT bool ZQReadPathFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp);
ZQ_EXPORT bool ZQReadCircularFingerPrintType(zqistream& in, unsigned short version,
                                             ZQFingerPrint& fp);
ZQ_EXPORT bool ZQReadTreeFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp);
ZQ_EXPORT bool ZQReadLingoFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp);
ZQ_EXPORT bool ZQReadMACCSFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp);

}  // namespace ZQKorvex
