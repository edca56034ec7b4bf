#pragma once

/// Layouts of connected molecules by the library CoordGen.

#include <cstdint>
#include <span>
#include <vector>

#include "contract/quarnel/coordinates.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"

namespace Quarnel {

/// Places the atoms of one component, given as numbers of the view; writes `points[atom]` in any
/// unit. Returns false if CoordGen can't: it refuses some cages, and other input makes it fail.
/// One thread at a time gets through, since the library has templates that all runs share.
bool RunCoordGen(const MolView& view, std::span<const std::uint32_t> atoms,
                 std::vector<ZQPoint>& points);

}  // namespace Quarnel
