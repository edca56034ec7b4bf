#pragma once

/// Parts of a drawing that are computed apart from its lines.

#include <cstdint>
#include <vector>

#include "korvex/draw.h"

namespace ZQKorvex {

/// A wedge on a single bond, narrow at the atom whose configuration it shows.
struct ZQWedge {
  const ZQAtomBase* narrow = nullptr;  ///< null for a plain bond
  bool isUp = false;                   ///< solid; otherwise hashed
};

/// Chooses a bond for each atom with a configuration, and its direction by the layout. By bond
/// index. An atom none of whose bonds is single remains without.
std::vector<ZQWedge> ZQChooseWedges(const ZQMolBase& mol, const ZQLayout& layout);

/// Whether each double bond with a configuration has it in the layout.
bool ZQHasBondStereo(const ZQMolBase& mol, const ZQLayout& layout);

}  // namespace ZQKorvex
