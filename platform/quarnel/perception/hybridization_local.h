#pragma once

#include <cstdint>
#include <vector>

#include "platform/quarnel/molecule/molgraph_view_local.h"

namespace Quarnel {

/// Hybridization of every atom of the view, as `ZQAssignHybridization` sets it.
void FindHybridization(const MolView& view, std::vector<std::uint8_t>& hyb);

}  // namespace Quarnel
