#pragma once

/// The public set of 166 MACCS structural keys: a fixed dictionary of structural features, a bit
/// each. Most are substructures, some are the presence of elements, and two count components and
/// aromatic ring systems. Key k is bit k - 1 (J. L. Durant, B. A. Leland, D. R. Henry and J. G.
/// Nourse, J. Chem. Inf. Comput. Sci. 42, 1273-1280, 2002).
///
/// Any number of threads may make fingerprints concurrently in distinct objects.

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Makes the fingerprint of 166 bits, whatever its previous size. False for an invalid molecule,
/// whose fingerprint keeps its bits, and, after the error "ZQMakeMACCS166FP() : out of memory", if
/// memory runs out; the fingerprint then has no type. An empty molecule gives a fingerprint without
/// bits. A prepared molecule (fpatomtyper.h) is used unchanged; of others a copy is prepared.
/// Elements beyond 112, and key 44, which is undefined, set no bit.
ZQ_EXPORT bool ZQMakeMACCS166FP(ZQFingerPrint& fp, const ZQMolBase& mol);

}  // namespace ZQKorvex
