#pragma once

#include <span>

#include "platform/quarnel/canonical/automorphism_local.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"

namespace Quarnel {

/// Whether a canonical order can be found without `PrepareForOrder`.
bool IsPreparedForOrder(const ZQMolBase& mol);
/// Removes bonds of order 0 and hydrogens that can be counts, and perceives rings and aromaticity.
void PrepareForOrder(ZQMolBase& mol);

/// Clears configurations of `mol`, which has the indices of the view's molecule.
void ClearUnreal(ZQMolBase& mol, const MolView& view, std::span<const StereoCentre> unreal);

}  // namespace Quarnel
