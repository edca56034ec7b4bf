#pragma once

/// Reading and writing molecules as text. A text that can't be read leaves the molecule empty and
/// not valid, and one warning that tells where, what was found and what was expected. Safe from
/// many threads on distinct molecules.

#include <string>
#include <string_view>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// Reads one SMILES, all of OpenSMILES (opensmiles.org): brackets, isotopes, classes, charges,
/// aromatic symbols, ring closures with bond symbols and `%nn` or `%(nnn)`, dots, `/` `\`, `@`
/// `@@`, `*`. Implicit hydrogens are counted, aromatic input is kekulized and stays flagged
/// aromatic. `where` stands in front of the message, such as "record 12 of mols.smi".
ZQ_EXPORT bool ZQSmilesToMol(ZQMolBase& mol, std::string_view smiles,
                             const std::string& where = std::string());

/// Writes a SMILES in atom index order, stereo included. Not canonical.
ZQ_EXPORT std::string ZQMolToSmiles(const ZQMolBase& mol);

/// Reads one molfile (V2000 or V3000) up to "M  END"; the title is its first line. Line feeds may
/// have carriage returns before them.
ZQ_EXPORT bool ZQMolfileToMol(ZQMolBase& mol, std::string_view molfile,
                              const std::string& where = std::string());

}  // namespace Quarnel
