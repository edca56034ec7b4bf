#pragma once

/// Path fingerprints: one bit for each linear walk of atoms and bonds, within a range of lengths.
///
/// The identifier of a walk a0 b1 a1 ... bn an, with A and B the invariants and P the multipliers
/// 947, 983, 1019, ...: A[a0] P1 + B[b1] P2 + A[a1] P3 + ... + A[an] P(2n+1), modulo 2^32. A walk
/// visits no atom twice and is taken in both directions, so that a path sets up to two bits. The
/// bit is the identifier modulo `ZQGetHashSize(numbits)`. Over string invariants an identifier is
/// their concatenation.
///
/// Any number of threads may make fingerprints at once, given distinct objects.

#include <set>
#include <string>
#include <vector>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Makes a path fingerprint of `numbits` bits (16 to 65535) from walks of `minbonds` to `maxbonds`
/// bonds (up to 19), with the atom and bond typing of fpatomtyper.h. An illegal number is replaced
/// by its default (4096, 0, 5; both typings None by 191 and 3) after a warning that names both.
/// False for a molecule that isn't valid; `fp` then has no type and keeps its bits. An empty
/// molecule gives a fingerprint without bits. Costs time in proportion to the number of walks,
/// which is exponential in `maxbonds`; memory beyond the copy of the molecule doesn't depend on it.
ZQ_EXPORT bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int numbits,
                            unsigned int minbonds, unsigned int maxbonds, unsigned int atype,
                            unsigned int btype);
/// The same with 4096 bits, 0 to 5 bonds and the default typing.
ZQ_EXPORT bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol);
/// The same with the parameters of a path type. A type of another kind warns "ZQMakePathFP :
/// invalid path fingerprint type!" and answers false.
ZQ_EXPORT bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type);

// The walks themselves, over a prepared molecule and invariants as `ZQGetFingerprintAtomTypes`
// makes them: one entry for each atom and bond index, else an assertion failure and no walks. Both
// families visit the same walks. Start atoms are all heavy atoms, of those with an equal symmetry
// class other than 0 only the first.

/// Adds the distinct identifiers to the set; returns the set's size. The error "ZQPathIdGenerator()
/// : out of memory" empties it.
ZQ_EXPORT unsigned int ZQPathIdGenerator(std::set<unsigned int>& ids, const ZQMolBase& mol,
                                         std::vector<unsigned int>& atomInvariants,
                                         std::vector<unsigned int>& bondInvariants,
                                         unsigned int minbonds, unsigned int maxbonds);
ZQ_EXPORT unsigned int ZQPathIdGenerator(std::set<std::string>& ids, const ZQMolBase& mol,
                                         std::vector<std::string>& atomInvariants,
                                         std::vector<std::string>& bondInvariants,
                                         unsigned int minbonds, unsigned int maxbonds);
/// Appends the identifiers in the order of the walk, repeats included; returns the vector's size.
ZQ_EXPORT unsigned int ZQPathIdGeneratorStack(std::vector<unsigned int>& ids, const ZQMolBase& mol,
                                              std::vector<unsigned int>& atomInvariants,
                                              std::vector<unsigned int>& bondInvariants,
                                              unsigned int minbonds, unsigned int maxbonds);
ZQ_EXPORT unsigned int ZQPathIdGeneratorStack(std::vector<std::string>& ids, const ZQMolBase& mol,
                                              std::vector<std::string>& atomInvariants,
                                              std::vector<std::string>& bondInvariants,
                                              unsigned int minbonds, unsigned int maxbonds);

}  // namespace ZQKorvex
