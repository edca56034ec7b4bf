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

/// A `ZQFillFP` but for its last argument.
bool ZQFillHashedFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
                    const ZQFPTypeValues& values, ZQFoldIds foldIds);

}  // namespace ZQKorvex
