#pragma once

/// What the hashed kinds have in common: how parameters are repaired, and the way from a prepared
/// molecule to bits.

#include <vector>

#include "korvex/fold_local.h"
#include "korvex/fpkinds_local.h"

namespace ZQKorvex {

/// Replaces what is illegal by the defaults, with a warning each.
void ZQRepairParams(const ZQFPKind& kind, ZQFPTypeValues& values);

/// Calls `fold` with each identifier of a prepared molecule, whose invariants come with it.
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
