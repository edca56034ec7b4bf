#pragma once

/// The code shared by the hashed kinds: replacing illegal parameters, and making bits from a
/// prepared molecule.

#include <vector>

#include "korvex/fold_local.h"
#include "korvex/fpkinds_local.h"

namespace ZQKorvex {

/// Replaces illegal parameters by their defaults, with a warning each.
void ZQRepairParams(const ZQFPKind& kind, ZQFPTypeValues& values);

/// Calls `fold` with each identifier of a prepared molecule with the given invariants.
using ZQFoldIds = void (*)(const ZQMolBase& mol, std::vector<unsigned int>& atomInvariants,
                           std::vector<unsigned int>& bondInvariants, const ZQFPTypeValues& values,
                           ZQFolder fold);
bool ZQFillHashedFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
                    const ZQFPTypeValues& values, ZQFoldIds foldIds);
/// The `ZQFillFP` of a hashed kind.
template <ZQFoldIds foldIds>
bool ZQFillHashedFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
                    const ZQFPTypeValues& values) {
  return ZQFillHashedFP(fp, mol, kind, values, foldIds);
}

}  // namespace ZQKorvex
