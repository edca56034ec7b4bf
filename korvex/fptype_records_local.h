#pragma once

/// The functions of fptype_records.h, by the kind's number.

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Whether fingerprints of a kind can be stored with their type: all kinds but the unhashed ones.
bool ZQHasFPTypeRecord(unsigned int fptype);
bool ZQWriteFPTypeRecord(zqostream& out, const ZQFingerPrint& fp, unsigned int fptype);
bool ZQReadFPTypeRecord(zqistream& in, unsigned short version, ZQFingerPrint& fp,
                        unsigned int fptype);

}  // namespace ZQKorvex
