#pragma once

/// The layout of one component: CoordGen's, checked and mended.

#include <cstdint>
#include <span>
#include <vector>

#include "contract/quarnel/coordinates.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"

namespace Quarnel {

/// Places the atoms of a component of two atoms or more, with bonds of median length 1. Needs the
/// view's ring membership.
void LayOut(const MolView& view, std::span<const std::uint32_t> atoms,
            std::vector<ZQPoint>& points);

}  // namespace Quarnel
