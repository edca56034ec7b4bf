#pragma once

/// Unhashed fingerprints: the paths, balls or trees of a molecule as texts instead of bits, so that
/// two fingerprints are compared on the exact fragments that they share.
///
/// The bits hold a NUL-terminated text from their first byte on: the distinct identifiers in
/// ascending byte order, each followed by a blank, then blanks up to a multiple of 8 bytes, the
/// last of them replaced by NUL. A reader splits it at white space. The size is 8 bits a byte of
/// that text; the path kind has one NUL byte more. Without identifiers there are no bits.
///
/// An identifier joins the strings of `ZQGetFingerprintAtomTypes` and reads like SMARTS, ring
/// closures left out. A ball's or a tree's starts at the atom whose string and number of
/// neighbours in the fragment come first, as far as the graph tells atoms apart; where it doesn't,
/// the order of the molecule's atoms and bonds decides.
///
/// Nothing is repaired here: a parameter out of range is an assertion failure at the end of the
/// run, and the fingerprint then has no type. A minimum above the maximum is legal, and no fragment
/// fits it. An atom with more than 127 heavy neighbours has no balls as text: the error
/// "ZQMakeUnhashedCircularFP() : an atom with %u neighbours (at most %u can be told apart in a
/// text)", and no type. False, likewise without a type, for a molecule that
/// isn't valid, whose fingerprint keeps its bits, and, after the error "... : out of memory" with
/// the operation's name, where memory ends. A text beyond the largest vector reports "Max size for
/// an ZQBitVector is INT_MAX". Costs time like the hashed kinds, and memory in proportion to the
/// distinct identifiers.
///
/// Any number of threads may make fingerprints at once, given distinct objects.

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// From walks of `minbonds` to `maxbonds` bonds, each up to 255.
ZQ_EXPORT bool ZQMakeUnhashedPathFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int minbonds,
                                    unsigned int maxbonds, unsigned int atype, unsigned int btype);
/// From balls of radius `minradius` to `maxradius`, each up to 9.
ZQ_EXPORT bool ZQMakeUnhashedCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol,
                                        unsigned int minradius, unsigned int maxradius,
                                        unsigned int atype, unsigned int btype);
/// From connected sets that a tree of `minbonds` to `maxbonds` bonds spans, each up to 19.
ZQ_EXPORT bool ZQMakeUnhashedTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int minbonds,
                                    unsigned int maxbonds, unsigned int atype, unsigned int btype);

// The same with the parameters of a type. One of another kind is an error, "Invalid path
// fingerprint type", "Invalid circular fingerprint type" or "Invalid unhashed tree fingerprint
// type", and answers false.
ZQ_EXPORT bool ZQMakeUnhashedPathFP(ZQFingerPrint& fp, const ZQMolBase& mol,
                                    const ZQFPTypeBase* type);
ZQ_EXPORT bool ZQMakeUnhashedCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol,
                                        const ZQFPTypeBase* type);
ZQ_EXPORT bool ZQMakeUnhashedTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol,
                                    const ZQFPTypeBase* type);

}  // namespace ZQKorvex
