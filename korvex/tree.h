#pragma once

/// Tree fingerprints: one bit for each connected set of atoms, including branched ones, within a
/// range of sizes.
///
/// A set includes all bonds between its atoms. The identifier of a single atom is its invariant,
/// that of a pair with invariants x >= y and bond w is x 947 + y 1019 + w 983, and that of a larger
/// set is described in circular.h; all modulo 2^32. The bit is the identifier modulo
/// `ZQGetHashSize(numbits)`. Each set is visited once, without a record of those seen before: a
/// branch excludes the atoms that its earlier siblings added (S. Wernicke, IEEE/ACM Trans. Comput.
/// Biol. Bioinf. 3, 347-359, 2006).
///
/// Any number of threads may make fingerprints concurrently in distinct objects.

#include <string>
#include <vector>

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Makes a tree fingerprint of `numbits` bits (16 to 65535) from connected sets spanned by a tree
/// of `minbonds` to `maxbonds` bonds (up to 19), with the atom and bond typing of fpatomtyper.h. An
/// illegal number is replaced by its default (4096, 0, 4; both typings None by 63 and 1) after a
/// warning that names both; 20 bonds pass this check, but cause an assertion failure when the
/// fingerprint gets its type. False for an invalid molecule; `fp` then has no type and keeps its
/// bits. An empty molecule gives a fingerprint without bits. Takes time proportional to the number
/// of sets, which is exponential in `maxbonds`; memory beyond the copy of the molecule doesn't
/// depend on it.
ZQ_EXPORT bool ZQMakeTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int numbits,
                            unsigned int minbonds, unsigned int maxbonds, unsigned int atype,
                            unsigned int btype);
/// The same with 4096 bits, 0 to 4 bonds and the default typing.
ZQ_EXPORT bool ZQMakeTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol);
/// The same with the parameters of a tree type. A type of another kind reports the error
/// "ZQMakeTreeFP ;invalid tree fingerprint type" and returns false.
ZQ_EXPORT bool ZQMakeTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type);

// The identifiers themselves, with the same rules as in circular.h. Of symmetric atoms only the
// first is a centre.

ZQ_EXPORT unsigned int ZQTreeIdGenerator(std::vector<unsigned int>& ids, const ZQMolBase& mol,
                                         const std::vector<unsigned int>& atomInvariants,
                                         const std::vector<unsigned int>& bondInvariants,
                                         unsigned int minbonds, unsigned int maxbonds,
                                         unsigned int atype, unsigned int btype);
ZQ_EXPORT unsigned int ZQTreeIdGenerator(std::vector<std::string>& ids, const ZQMolBase& mol,
                                         const std::vector<std::string>& atomInvariants,
                                         const std::vector<std::string>& bondInvariants,
                                         unsigned int minbonds, unsigned int maxbonds,
                                         unsigned int atype, unsigned int btype);

}  // namespace ZQKorvex
