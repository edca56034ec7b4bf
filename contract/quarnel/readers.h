#pragma once

/// Reading and writing molecules as text. A text that can't be read leaves the molecule empty and
/// not valid, and one warning that tells where, what was found and what was expected: "record 12 of
/// mols.smi: SMILES column 2: found "Q", expected an atom ...". Double bonds in rings of up to
/// seven atoms keep no configuration, as they have no choice. Safe from many threads on distinct
/// molecules; time is linear in the length of the text.

#include <string>
#include <string_view>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// Reads one SMILES, all of OpenSMILES (opensmiles.org): brackets, isotopes, classes, charges,
/// aromatic symbols, ring closures with bond symbols and `%nn` or `%(nnn)`, dots, `/` `\`, `@`
/// `@@`, `*`. Charges, isotopes and classes have up to nine digits. Beyond the language, `->` and
/// `<-` stand for a coordination bond, of order 0, wherever a bond symbol may. Implicit hydrogens
/// are counted, aromatic input is kekulized and stays flagged aromatic. White space ends the text.
/// `where` stands in front of the message, such as "record 12 of mols.smi".
ZQ_EXPORT bool ZQSmilesToMol(ZQMolBase& mol, std::string_view smiles,
                             const std::string& where = std::string());

/// Writes a SMILES in atom index order, stereo included. Not canonical. A bond of order 0 has no
/// symbol and is left out. A bracket holds nine hydrogens; those of a greater count follow it as
/// atoms, so that the text grows with the count. Configurations of double bonds that no set of `/`
/// and `\` can tell without telling a wrong one as well are left out, too.
ZQ_EXPORT std::string ZQMolToSmiles(const ZQMolBase& mol);

/// Writes the canonical SMILES, stereo included: the same text whatever the order of atoms and
/// bonds, the way hydrogens are held, and the choice among equivalent Kekulé structures. It reads
/// back to a molecule with the same text. Parts are sorted by their texts. Works on a copy, whose
/// hydrogens are suppressed (`ZQSuppressHydrogens`) and whose rings and aromaticity are perceived
/// anew; a molecule without hydrogen atoms and bonds of order 0 that has both perceived is taken as
/// it stands.
///
/// A configuration that isn't real is left out: of an atom or double bond that can't hold one (an
/// amine turns over unless rings lock it), or whose opposite gives the same molecule, by equal
/// neighbours; and so is one that `ZQMolToSmiles` can't write or that a bond of order 0 ends at.
/// Time is close to linear for most molecules, and bounded: only where a graph of thousands of
/// atoms of few kinds exhausts the search does the text depend on the order.
ZQ_EXPORT std::string ZQMolToCanonicalSmiles(const ZQMolBase& mol);

/// Reads one molfile (V2000 or V3000) up to "M  END"; the title is its first line. Line feeds may
/// have carriage returns before them. Configurations come from coordinates, or from parities where
/// all of them are 0; aromatic bonds are kekulized; any, coordination and hydrogen bonds (types 8
/// to 10) get order 0; atoms of queries and R groups are dummy atoms. Implicit hydrogens follow the
/// valence field, else `ZQDefaultHCount` less the radical electrons.
///
/// In a flat drawing wedges give the configuration of the atom at their narrow end, by the
/// directions of its bonds. A fourth neighbour that isn't drawn lies behind or in front of three
/// that fill the plane, and across from the middle one of three in a half-plane, two of them in
/// line included. Wedges that contradict each other, a wavy bond, and bonds drawn on top of each
/// other give none. So does a nitrogen of three bonds, be it locked in rings.
ZQ_EXPORT bool ZQMolfileToMol(ZQMolBase& mol, std::string_view molfile,
                              const std::string& where = std::string());

}  // namespace Quarnel
