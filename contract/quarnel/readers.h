#pragma once

/// Reading and writing molecules as text. For a text that can't be read, the molecule becomes empty
/// and not valid, and one warning reports where the error is, what was found and what was expected:
/// "record 12 of mols.smi: SMILES column 2: found "Q", expected an atom ...". Double bonds in rings
/// of up to seven atoms keep no configuration, since they can only be cis. Safe from many threads
/// on distinct molecules; time is linear in the length of the text.

#include <string>
#include <string_view>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// Reads one SMILES, all of OpenSMILES (opensmiles.org): brackets, isotopes, classes, charges,
/// aromatic symbols, ring closures with bond symbols and `%nn` or `%(nnn)`, dots, `/` `\`, `@`
/// `@@`, `*`. Charges, isotopes and classes have up to nine digits. As an extension, `->` and `<-`
/// are bond symbols for a coordination bond, of order 0. Implicit hydrogens are counted; aromatic
/// input is kekulized and remains flagged aromatic. White space ends the text. `where` precedes the
/// message, such as "record 12 of mols.smi".
ZQ_EXPORT bool ZQSmilesToMol(ZQMolBase& mol, std::string_view smiles,
                             const std::string& where = std::string());

/// Writes a SMILES in atom index order, stereo included. Not canonical. A bond of order 0 has no
/// symbol and is omitted. A bracket holds at most nine hydrogens; further ones follow it as atoms,
/// so that the text grows with the count. A double bond's configuration is omitted if no set of `/`
/// and `\` describes it without describing a wrong one as well.
ZQ_EXPORT std::string ZQMolToSmiles(const ZQMolBase& mol);

/// The same with the atoms of the text in index order, so that reading it gives the same indices
/// (but for holes). An atom that isn't bonded to the branch before it follows a dot, and ring
/// closures make its bonds. Hydrogens that follow a bracket come between the atoms.
ZQ_EXPORT std::string ZQMolToOrderedSmiles(const ZQMolBase& mol);

/// Writes the canonical SMILES, stereo included. The text doesn't depend on the order of atoms and
/// bonds, on whether hydrogens are explicit, or on the choice among equivalent Kekulé structures.
/// Reading it gives a molecule with the same text. Components are sorted by their texts. Works on a
/// copy, whose hydrogens are suppressed (`ZQSuppressHydrogens`) and whose rings and aromaticity are
/// perceived anew; a molecule without hydrogen atoms and bonds of order 0 that has both perceived
/// is used unchanged.
///
/// A configuration that isn't real is omitted: that of an atom or double bond that can't have one
/// (an amine inverts unless rings lock it), or one whose opposite gives the same molecule because
/// of equal neighbours. Also omitted are those that `ZQMolToSmiles` can't write and those where a
/// bond of order 0 ends. Time is close to linear for most molecules, and bounded: the text depends
/// on the order only if a graph of thousands of atoms of few kinds exhausts the search.
ZQ_EXPORT std::string ZQMolToCanonicalSmiles(const ZQMolBase& mol);

/// Reads one molfile (V2000 or V3000) up to "M  END"; the title is its first line. Line feeds may
/// be preceded by carriage returns. Configurations come from coordinates, or from parities if all
/// coordinates are 0; aromatic bonds are kekulized; any, coordination and hydrogen bonds (types 8
/// to 10) get order 0; atoms of queries and R groups are dummy atoms. Implicit hydrogens follow the
/// valence field, otherwise `ZQDefaultHCount` minus the radical electrons.
///
/// In a flat drawing wedges give the configuration of the atom at their narrow end, by the
/// directions of its bonds. A fourth neighbour that isn't drawn is behind or in front of three that
/// surround the centre, and opposite the middle one of three in a half-plane, two of them in line
/// included. Wedges that contradict each other, a wavy bond, and bonds drawn on top of each other
/// give none. A nitrogen with three bonds has none either, even if locked in rings.
ZQ_EXPORT bool ZQMolfileToMol(ZQMolBase& mol, std::string_view molfile,
                              const std::string& where = std::string());

}  // namespace Quarnel
