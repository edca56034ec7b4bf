#pragma once

/// Lingo fingerprints: the Lingo text of a molecule (contract/quarnel/lingo.h) in place of bits. A
/// text of n characters is held as n + 1 bytes from byte 0 on, the terminating NUL included, in a
/// vector of 8 n + 8 bits. The measures of measuresim.h compare such fingerprints by the multisets
/// of their substrings of four characters. Any number of threads may call these functions, given
/// distinct objects to write.

#include "contract/quarnel/lingo.h"
#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Makes the fingerprint of a molecule, over a prepared copy (`ZQPrepareForFingerprinting`) unless
/// the molecule is prepared itself; configurations are told of the atoms that are left. A molecule
/// without atoms, none but hydrogens and dummies among these, gets the empty text, held as one bit.
/// False for a molecule that isn't valid, whose bits are kept, and, after the error
/// "ZQMakeLingoFP() : out of memory", where memory ends; `fp` then has no type. A text too long for
/// a vector of bits reports the error "Max size for an ZQBitVector is INT_MAX", and `fp` gets the
/// type alone.
ZQ_EXPORT bool ZQMakeLingoFP(ZQFingerPrint& fp, const ZQMolBase& mol);

/// Substrings in the text of `a` alone, of `b` alone, and in both. If one text has fewer than four
/// characters the whole texts count as one: equal ones give 0, 0 and their length; others their two
/// lengths and 0, and false as the answer.
ZQ_EXPORT bool ZQGetLingoSimTerms(const ZQFingerPrint& a, const ZQFingerPrint& b,
                                  unsigned int* onlyA, unsigned int* onlyB, unsigned int* both);
/// The same with a text made ready once, for scans: A is its text. One that isn't valid warns
/// "lingo is not initialized" and answers false, the counts untouched. A text of `b` that is
/// shorter than four characters has no substrings.
ZQ_EXPORT bool ZQGetLingoSimTerms(const ZQLingoSim& sim, const ZQFingerPrint& b,
                                  unsigned int* onlyA, unsigned int* onlyB, unsigned int* both);

}  // namespace ZQKorvex
