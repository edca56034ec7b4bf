#pragma once

/// Circular fingerprints: one bit for each environment of an atom, the ball of all atoms within a
/// number of bonds.
///
/// A ball counts as the set of its atoms with all bonds between them. The identifier of a ball of
/// n >= 2 atoms comes from their invariants A and those of the bonds, B, by n / 2 rounds of
///
///     A'[i] = A[i] + the sum of (B[bond] + A[neighbour]) P(j) over the neighbours in the ball,
///
/// whose terms go in ascending order with the multipliers P = 947, 983, 1019, ..., 2791 (50 fixed
/// primes, then every fifth prime from 2833 on), and at last by the sum of the final values other
/// than 0, in ascending order with the multipliers from 1019 on; all modulo 2^32. A single atom's
/// identifier is its invariant. The bit is the identifier modulo `ZQGetHashSize(numbits)`.
///
/// Any number of threads may make fingerprints at once, given distinct objects.

#include <string>
#include <vector>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Makes a circular fingerprint of `numbits` bits (16 to 65535) from balls of radius `minradius` to
/// `maxradius` (up to 10), with the atom and bond typing of fpatomtyper.h. An illegal number is
/// replaced by its default (4096, 0, 5; both typings None by 4239 and 1) after a warning that names
/// both. False for a molecule that isn't valid; `fp` then has no type and keeps its bits. An empty
/// molecule gives a fingerprint without bits. The cost of a ball grows with the square of its
/// atoms, that of a molecule in proportion to its balls.
ZQ_EXPORT bool ZQMakeCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int numbits,
                                unsigned int minradius, unsigned int maxradius, unsigned int atype,
                                unsigned int btype);
/// The same with 4096 bits, radius 0 to 5 and the default typing.
ZQ_EXPORT bool ZQMakeCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol);
/// The same with the parameters of a circular type. A type of another kind warns "ZQMakeCircularFP
/// : invalid circular fingerprint type" and answers false.
ZQ_EXPORT bool ZQMakeCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type);

// The identifiers themselves, over a prepared molecule and invariants as
// `ZQGetFingerprintAtomTypes` makes them: one entry for each atom and bond index, else an assertion
// failure and no identifiers. Of atoms with an equal symmetry class other than 0 only the first is
// a centre. Radius 0 gives the invariant of every atom slot. A ball that no longer grows is told
// once more, and then no further.

/// Replaces `ids` by the identifiers, repeats included; returns their number. The typing is taken
/// as it comes and not read. Over strings an identifier reads like SMARTS without ring closures.
ZQ_EXPORT unsigned int ZQCircularIdGenerator(std::vector<unsigned int>& ids, const ZQMolBase& mol,
                                             const std::vector<unsigned int>& atomInvariants,
                                             const std::vector<unsigned int>& bondInvariants,
                                             unsigned int minradius, unsigned int maxradius,
                                             unsigned int atype, unsigned int btype);
ZQ_EXPORT unsigned int ZQCircularIdGenerator(std::vector<std::string>& ids, const ZQMolBase& mol,
                                             const std::vector<std::string>& atomInvariants,
                                             const std::vector<std::string>& bondInvariants,
                                             unsigned int minradius, unsigned int maxradius,
                                             unsigned int atype, unsigned int btype);

}  // namespace ZQKorvex
