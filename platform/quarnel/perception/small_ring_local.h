#pragma once

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// Whether the bond is in a ring of up to seven atoms, where a double bond can only be cis. Looks
/// at the neighbourhood alone and needs no perception.
bool IsInSmallRing(const ZQBondBase& bond);

/// Takes back the configurations of double bonds in small rings, as readers do.
void DropSmallRingStereo(ZQMolBase& mol);

}  // namespace Quarnel
