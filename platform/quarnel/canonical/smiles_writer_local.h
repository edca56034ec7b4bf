#pragma once

#include <string>
#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// Writes the connected components of a molecule as SMILES. Each starts from its atom of lowest
/// rank, components are in the order of these atoms, and neighbours of lower rank are visited
/// first. `rank` is by atom index; ties are broken by index. The texts depend only on the molecule
/// and the order of the ranks. `lostBonds`, if not null, receives the double bonds whose
/// configuration no set of marks can describe.
std::vector<std::string> WriteSmilesParts(const ZQMolBase& mol,
                                          const std::vector<unsigned int>& rank,
                                          std::vector<ZQBondBase*>* lostBonds);

/// Whether the molecule has bonds that aren't written.
bool HasBondsWithoutOrder(const ZQMolBase& mol);

/// Joins several parts to one SMILES.
std::string JoinSmilesParts(const std::vector<std::string>& parts);

}  // namespace Quarnel
