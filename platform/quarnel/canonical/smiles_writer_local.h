#pragma once

#include <string>
#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// Writes the connected parts of a molecule as SMILES. Each starts from its atom of the lowest
/// rank, the parts come in the order of these, and a chain goes to the neighbour of the lowest rank
/// first. `rank` is by atom index; equal ranks go by index. The texts depend on the molecule and
/// the order of the ranks alone. `lostBonds`, if not null, gets the double bonds whose
/// configuration no set of marks could write.
std::vector<std::string> WriteSmilesParts(const ZQMolBase& mol,
                                          const std::vector<unsigned int>& rank,
                                          std::vector<ZQBondBase*>* lostBonds);

/// Whether the molecule has bonds that aren't written.
bool HasBondsWithoutOrder(const ZQMolBase& mol);

/// One SMILES of several parts.
std::string JoinSmilesParts(const std::vector<std::string>& parts);

}  // namespace Quarnel
