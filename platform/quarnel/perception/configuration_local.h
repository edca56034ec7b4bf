#pragma once

#include <cstdint>

#include "platform/quarnel/canonical/partition_local.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"

namespace Quarnel {

/// How a configuration reads when neighbours are taken in the order of their cells. Untold: two of
/// them share a cell.
enum Configuration : std::uint8_t { NoStereo, Even, Odd, Untold };

Configuration ConfigurationOf(const MolView& view, const Partition& partition, std::uint32_t atom);
Configuration ConfigurationOf(const MolView& view, const Partition& partition,
                              const MolView::Bond& bond);

}  // namespace Quarnel
