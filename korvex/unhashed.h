#pragma once

/// Unhashed fingerprints: the paths, environments or trees of a molecule as text instead of bits,
/// so that two fingerprints are compared by the exact fragments that they share.
///
/// The bits contain a NUL-terminated text from their first byte on: the distinct identifiers in
/// ascending byte order, each followed by a blank, then blanks up to a multiple of 8 bytes, the
/// last of them replaced by NUL. A reader splits it at white space. The size is 8 bits for each
/// byte of that text; the path kind has one additional NUL byte. Without identifiers there are no
/// bits.
///
/// An identifier joins the strings of `ZQGetFingerprintAtomTypes` and reads like SMARTS without
/// ring closures. That of an environment or a tree starts at the atom whose string and number of
/// neighbours in the fragment come first, as far as the graph distinguishes atoms; otherwise the
/// order of the molecule's atoms and bonds decides.
///
/// Illegal parameters aren't replaced: one out of range is an assertion failure at the end of the
/// run, and the fingerprint then has no type. A minimum above the maximum is legal, and no fragment
/// fits it. A molecule with an atom of more than 127 heavy neighbours has no environments as text:
/// the error "ZQMakeUnhashedCircularFP() : an atom with %u neighbours (at most %u can be told apart
/// in a text)", and no type. Returns false, likewise without a type, for an invalid molecule, whose
/// fingerprint keeps its bits, and, after the error "... : out of memory" with the operation's
/// name, if memory runs out. A text beyond the largest vector reports "Max size for an ZQBitVector
/// is INT_MAX". Takes as much time as the hashed kinds, and memory proportional to the distinct
/// identifiers.
///
/// Any number of threads may make fingerprints concurrently in distinct objects.

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// From paths of `minbonds` to `maxbonds` bonds, each up to 255.
ZQ_EXPORT bool ZQMakeUnhashedPathFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int minbonds,
                                    unsigned int maxbonds, unsigned int atype, unsigned int btype);
/// From environments of radius `minradius` to `maxradius`, each up to 9.
ZQ_EXPORT bool ZQMakeUnhashedCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol,
                                        unsigned int minradius, unsigned int maxradius,
                                        unsigned int atype, unsigned int btype);
/// From connected sets spanned by a tree of `minbonds` to `maxbonds` bonds, each up to 19.
ZQ_EXPORT bool ZQMakeUnhashedTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int minbonds,
                                    unsigned int maxbonds, unsigned int atype, unsigned int btype);

// The same with the parameters of a type. One of another kind reports the error "Invalid path
// fingerprint type", "Invalid circular fingerprint type" or "Invalid unhashed tree fingerprint
// type", and returns false.
ZQ_EXPORT bool ZQMakeUnhashedPathFP(ZQFingerPrint& fp, const ZQMolBase& mol,
                                    const ZQFPTypeBase* type);
ZQ_EXPORT bool ZQMakeUnhashedCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol,
                                        const ZQFPTypeBase* type);
ZQ_EXPORT bool ZQMakeUnhashedTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol,
                                    const ZQFPTypeBase* type);

}  // namespace ZQKorvex
