#pragma once

/// Lingo fingerprints: the Lingo text of a molecule (contract/quarnel/lingo.h) instead of bits. A
/// text of n characters is stored as n + 1 bytes from byte 0 on, including the terminating NUL, in
/// a vector of 8 n + 8 bits. The measures of measuresim.h compare such fingerprints by the
/// multisets of their substrings of four characters. Any number of threads may call these functions
/// with distinct output objects.

#include "contract/quarnel/lingo.h"
#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Makes the fingerprint of a molecule from a prepared copy (`ZQPrepareForFingerprinting`) unless
/// the molecule itself is prepared; configurations are those of the remaining atoms. A molecule
/// without atoms, or with only hydrogens and dummies, gets the empty text, stored as one bit. False
/// for an invalid molecule, which keeps the bits of `fp`, and, after the error "ZQMakeLingoFP() :
/// out of memory", if memory runs out; `fp` then has no type. A text too long for a vector of bits
/// reports the error "Max size for an ZQBitVector is INT_MAX", and `fp` gets only the type.
ZQ_EXPORT bool ZQMakeLingoFP(ZQFingerPrint& fp, const ZQMolBase& mol);

/// Counts substrings in the text of `a` alone, of `b` alone, and in both. If one text has fewer
/// than four characters, whole texts are compared: equal ones give 0, 0 and their length; different
/// ones their two lengths and 0, and the function returns false.
ZQ_EXPORT bool ZQGetLingoSimTerms(const ZQFingerPrint& a, const ZQFingerPrint& b,
                                  unsigned int* onlyA, unsigned int* onlyB, unsigned int* both);
/// The same with a text prepared once, for scans; A is that text. An invalid `sim` warns "lingo is
/// not initialized" and returns false with the counts unchanged. A text of `b` that is shorter than
/// four characters has no substrings.
ZQ_EXPORT bool ZQGetLingoSimTerms(const ZQLingoSim& sim, const ZQFingerPrint& b,
                                  unsigned int* onlyA, unsigned int* onlyB, unsigned int* both);

}  // namespace ZQKorvex
