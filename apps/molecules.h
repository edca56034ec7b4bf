#pragma once

/// Molecules from the command line.

#include <cstddef>
#include <string>
#include <vector>

#include "apps/command.h"
#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/moldatabase.h"
#include "korvex/fingerprint.h"
#include "korvex/vsepr_fingerprint.h"

namespace KorvexProgram {

/// The name that stands for standard input, and its name in messages.
inline constexpr const char* standardInput = "-";
inline constexpr const char* inputName = "standard input";
/// The argument of an output file, where "-" is standard output.
inline constexpr const char* outputArgument = "OUT";

/// Whether the name is that of standard input, or has the extension of a molecule file.
bool IsMoleculeFile(const std::string& filename);

/// Adds the positional parameter MOLFILE.
void AddMoleculeFile(ZQInterface& interface);

/// Adds the options of molecule files, in a group of their own: "-input-format", the format of
/// standard input, and "-smiles-column" and "-title-column" of tables. Of a command that also reads
/// FPS files, `withFPS` makes "fps" one of the formats.
void AddMoleculeFileOptions(ZQInterface& interface, bool withFPS = false);
/// Whether an argument of such a command is an FPS file, by its name or as standard input.
bool IsFPS(const std::string& argument, const ZQInterface& interface);
/// False, after an error, if two of the arguments are standard input, or if one of these options
/// would be ignored. True for a command without them.
bool CheckMoleculeFileOptions(const ZQInterface& interface);

/// Opens a molecule file, or standard input, by the options of `AddMoleculeFileOptions`; false
/// after a message, also for one without records.
bool OpenMolecules(ZQMolDatabase& molecules, const std::string& filename,
                   const ZQInterface& interface);
/// The same; an argument that isn't the name of a molecule file is the one molecule that it is as a
/// SMILES.
bool OpenMoleculesOrSmiles(ZQMolDatabase& molecules, const std::string& argument,
                           const ZQInterface& interface);

/// False, after a message that names the molecule by `where`, if it has no atoms.
bool CheckAtoms(const ZQMolBase& mol, const std::string& where);

/// Makes the fingerprint of a molecule; false after a message that names it by `where`.
bool MakeFingerPrint(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type,
                     const std::string& where);

/// Makes those of the records from `first` on, as many as the vector has, on that many threads. One
/// that can't be made has a message, and no type.
void MakeFingerPrints(std::vector<ZQFingerPrint>& fps, const ZQMolDatabase& molecules,
                      std::size_t first, const ZQFPTypeBase* type, unsigned int numThreads);

/// Suppresses hydrogens and perceives what VSEPR types and fingerprints read.
void PrepareForVsepr(ZQMol& mol);
/// The same, then makes the fingerprint; false after an error if there is too little memory.
bool MakeFingerPrint(ZQVseprFingerprint& fp, ZQMol& mol, const ZQVseprOptions& options);

}  // namespace KorvexProgram
