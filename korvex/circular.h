#pragma once

/// Circular fingerprints: one bit for each environment of an atom, that is, all atoms within a
/// number of bonds of it.
///
/// An environment is the set of its atoms with all bonds between them. The identifier of an
/// environment of n >= 2 atoms is computed from the atom invariants A and the bond invariants B in
/// n / 2 rounds of
///
///     A'[i] = A[i] + the sum of (B[bond] + A[neighbour]) P(j) over the neighbours in the
///     environment.
///
/// The terms are multiplied in ascending order by P = 947, 983, 1019, ..., 2791 (50 fixed primes,
/// then every fifth prime from 2833 on). The identifier is the sum of the final values other than
/// 0, each multiplied, in ascending order, by the multipliers from 1019 on. All arithmetic is
/// modulo 2^32. A single atom's identifier is its invariant. The bit is the identifier modulo
/// `ZQGetHashSize(numbits)`.
///
/// Thread safe for distinct objects.

#include <string>
#include <vector>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Makes a circular fingerprint of `numbits` bits (16 to 65535) from environments of radius
/// `minradius` to `maxradius` (up to 10), with the atom and bond typing of fpatomtyper.h. An
/// illegal number is replaced by its default (4096, 0, 5; both typings None by 4239 and 1) after a
/// warning that names both. Returns false for an invalid molecule; `fp` then has no type and keeps
/// its bits. The fingerprint of an empty molecule has no bits set. The cost is quadratic in the
/// atoms of an environment and linear in the number of environments.
ZQ_EXPORT bool ZQMakeCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int numbits,
                                unsigned int minradius, unsigned int maxradius, unsigned int atype,
                                unsigned int btype);
/// The same with 4096 bits, radius 0 to 5 and the default typing.
ZQ_EXPORT bool ZQMakeCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol);
/// The same with the parameters of a circular type. Returns false for a type of another kind, after
/// the warning "ZQMakeCircularFP : invalid circular fingerprint type".
ZQ_EXPORT bool ZQMakeCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type);

// The identifiers themselves, for a prepared molecule and the invariants that
// `ZQGetFingerprintAtomTypes` computes: one entry for each atom and bond index, else an assertion
// failure and no identifiers. Of atoms with an equal symmetry class other than 0 only the first is
// a centre. Radius 0 yields the invariant of every atom. An environment that no longer grows is
// listed once more and then omitted.

/// Replaces `ids` by the identifiers, repeats included; returns their number. `atype` and `btype`
/// are not used. A string identifier resembles SMARTS without ring closures.
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
