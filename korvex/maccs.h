#pragma once

/// The public set of 166 MACCS structural keys: a fixed dictionary of questions about a molecule,
/// a bit each. Most are substructures, some ask which elements occur, and two count components and
/// aromatic ring systems. Key k is bit k - 1 (J. L. Durant, B. A. Leland, D. R. Henry and J. G.
/// Nourse, J. Chem. Inf. Comput. Sci. 42, 1273-1280, 2002).
///
/// Any number of threads may make fingerprints at once, given distinct objects.

#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// Makes the fingerprint of 166 bits, whatever size it had. False for a molecule that isn't valid,
/// whose fingerprint keeps its bits, and, after the error "ZQMakeMACCS166FP() : out of memory",
/// where memory ends; the fingerprint then has no type. An empty molecule gives a fingerprint
/// without bits. A molecule that is prepared already (fpatomtyper.h) is read as it stands; of
/// others a copy is prepared. Elements beyond 112, and key 44, which asks nothing, set no bit.
ZQ_EXPORT bool ZQMakeMACCS166FP(ZQFingerPrint& fp, const ZQMolBase& mol);

}  // namespace ZQKorvex
