#pragma once

/// Path fingerprints: one bit for each linear path of atoms and bonds, within a range of lengths.
///
/// The identifier of a path a0 b1 a1 ... bn an, with A and B the invariants and P the multipliers
/// 947, 983, 1019, ...: A[a0] P1 + B[b1] P2 + A[a1] P3 + ... + A[an] P(2n+1), modulo 2^32. A path
/// visits no atom twice and is taken in both directions, so that it sets up to two bits. The bit is
/// the identifier modulo `ZQGetHashSize(numbits)`. For string invariants an identifier is their
/// concatenation.
///
/// Any number of threads may make fingerprints concurrently in distinct objects.

#include <set>
#include <string>
#include <vector>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Makes a path fingerprint of `numbits` bits (16 to 65535) from paths of `minbonds` to `maxbonds`
/// bonds (up to 19), with the atom and bond typing of fpatomtyper.h. An illegal number is replaced
/// by its default (4096, 0, 5; both typings None by 191 and 3) after a warning that names both.
/// False for an invalid molecule; `fp` then has no type and keeps its bits. An empty molecule gives
/// a fingerprint without bits. Takes time proportional to the number of paths, which is exponential
/// in `maxbonds`; memory beyond the copy of the molecule doesn't depend on it.
ZQ_EXPORT bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int numbits,
                            unsigned int minbonds, unsigned int maxbonds, unsigned int atype,
                            unsigned int btype);
/// The same with 4096 bits, 0 to 5 bonds and the default typing.
ZQ_EXPORT bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol);
/// The same with the parameters of a path type. A type of another kind warns "ZQMakePathFP :
/// invalid path fingerprint type!" and returns false.
ZQ_EXPORT bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type);

// The paths themselves, over a prepared molecule and invariants as `ZQGetFingerprintAtomTypes`
// makes them: one entry for each atom and bond index, else an assertion failure and no paths. Both
// families enumerate the same paths. Start atoms are all heavy atoms, but only the first of those
// with an equal symmetry class other than 0.

/// Adds the distinct identifiers to the set; returns the set's size. On the error
/// "ZQPathIdGenerator() : out of memory" the set is empty.
ZQ_EXPORT unsigned int ZQPathIdGenerator(std::set<unsigned int>& ids, const ZQMolBase& mol,
                                         std::vector<unsigned int>& atomInvariants,
                                         std::vector<unsigned int>& bondInvariants,
                                         unsigned int minbonds, unsigned int maxbonds);
ZQ_EXPORT unsigned int ZQPathIdGenerator(std::set<std::string>& ids, const ZQMolBase& mol,
                                         std::vector<std::string>& atomInvariants,
                                         std::vector<std::string>& bondInvariants,
                                         unsigned int minbonds, unsigned int maxbonds);
/// Appends the identifiers in order of enumeration, repeats included; returns the vector's size.
ZQ_EXPORT unsigned int ZQPathIdGeneratorStack(std::vector<unsigned int>& ids, const ZQMolBase& mol,
                                              std::vector<unsigned int>& atomInvariants,
                                              std::vector<unsigned int>& bondInvariants,
                                              unsigned int minbonds, unsigned int maxbonds);
ZQ_EXPORT unsigned int ZQPathIdGeneratorStack(std::vector<std::string>& ids, const ZQMolBase& mol,
                                              std::vector<std::string>& atomInvariants,
                                              std::vector<std::string>& bondInvariants,
                                              unsigned int minbonds, unsigned int maxbonds);

}  // namespace ZQKorvex
