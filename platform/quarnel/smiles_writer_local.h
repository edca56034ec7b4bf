#pragma once

#include <string>
#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// Writes a SMILES that starts from the atom of the lowest rank in each part and goes to the
/// neighbour of the lowest rank first. `rank` is by atom index; equal ranks go by index. The text
/// depends on the molecule and the order of the ranks alone.
std::string WriteSmiles(const ZQMolBase& mol, const std::vector<unsigned int>& rank);

}  // namespace Quarnel
