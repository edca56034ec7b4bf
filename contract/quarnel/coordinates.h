#pragma once

/// Coordinates of atoms: those of the input, and new ones for a drawing.

#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

struct ZQPoint {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
};

/// Tag of the coordinates read with a molecule, a `std::vector<ZQPoint>` by atom index in the units
/// of the input. Present only if they aren't all 0. Atoms added later have no entry.
inline constexpr unsigned int ZQCoordinatesTag = 59;

/// Computes coordinates for a flat drawing, one for each atom index (holes are at the origin):
/// bonds of median length 1, y upwards, components side by side, hydrogen atoms like others. Double
/// bonds have their configuration and atoms are half a bond length apart wherever that could be
/// achieved, in all but some cages and bridged macrocycles. The same molecule gets the same layout
/// each time. Returns false after a warning for a molecule of more than `ZQMostLayoutAtoms` atoms.
/// Safe from many threads, of which one at a time is served; a drug-like molecule takes about 1 ms,
/// one of hundreds of atoms below a second.
inline constexpr unsigned int ZQMostLayoutAtoms = 999;
ZQ_EXPORT bool ZQGenerateLayout(std::vector<ZQPoint>& layout, const ZQMolBase& mol);

}  // namespace Quarnel
