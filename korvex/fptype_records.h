#pragma once

/// The part of a stored fingerprint that tells its type, behind its kind and version: the packed
/// parameters as 8 bytes, the least significant first; nothing for MACCS-166 and Lingo. Any thread
/// may call, given distinct streams and fingerprints.

#include "korvex/fingerprint.h"

namespace ZQKorvex {

// The writers. Of path, circular and tree a fingerprint whose type isn't of the kind and the
// current version is an assertion failure, and writes nothing. False for that and for a failed
// write. Those of Lingo and MACCS-166 write nothing and return true, whatever the fingerprint
// holds.

ZQ_EXPORT bool ZQWritePathFingerPrintType(zqostream& out, const ZQFingerPrint& fp);
ZQ_EXPORT bool ZQWriteCircularFingerPrintType(zqostream& out, const ZQFingerPrint& fp);
ZQ_EXPORT bool ZQWriteTreeFingerPrintType(zqostream& out, const ZQFingerPrint& fp);
ZQ_EXPORT bool ZQWriteLingoFingerPrintType(zqostream& out, const ZQFingerPrint& fp);
ZQ_EXPORT bool ZQWriteMACCSFingerPrintType(zqostream& out, const ZQFingerPrint& fp);

// The readers give the fingerprint its type. Neither version nor parameters are held to any limit:
// what an older release wrote stays readable, under a type of its own. A fingerprint that has a
// type already is an assertion failure, and keeps it. False for that, and, without a report, for a
// stream that ends early.

ZQ_EXPORT bool ZQReadPathFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp);
ZQ_EXPORT bool ZQReadCircularFingerPrintType(zqistream& in, unsigned short version,
                                             ZQFingerPrint& fp);
ZQ_EXPORT bool ZQReadTreeFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp);
ZQ_EXPORT bool ZQReadLingoFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp);
ZQ_EXPORT bool ZQReadMACCSFingerPrintType(zqistream& in, unsigned short version, ZQFingerPrint& fp);

}  // namespace ZQKorvex
