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

/// Adds the positional parameter MOLFILE.
void AddMoleculeFile(ZQInterface& interface);

/// Opens a molecule file; false after a message, also for a file without records.
bool OpenMolecules(ZQMolDatabase& molecules, const std::string& filename);

/// The molecules of one argument: the records of a molecule file or, if the argument isn't a file
/// name, the one molecule given as SMILES.
class MoleculeArgument {
 public:
  /// False after a message.
  bool Open(const std::string& argument);
  unsigned int NumMolecules() const { return isFile_ ? file_.GetMaxMolIdx() : 1; }
  /// False after a message for a record that can't be read.
  bool GetMolecule(ZQMol& mol, unsigned int idx) const;

 private:
  ZQMolDatabase file_;
  ZQMol smiles_;
  bool isFile_ = false;
};

/// False, after a message that names the molecule by `where`, if it has no atoms.
bool CheckAtoms(const ZQMolBase& mol, const std::string& where);

/// Makes the fingerprint of a molecule; false after a message that names it by `where`.
bool MakeFingerPrint(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type,
                     const std::string& where);

/// Makes those of the records from `first` on, as many as the vector has, on that many threads. One
/// that can't be made has a message, and no type.
void MakeFingerPrints(std::vector<ZQFingerPrint>& fps, const ZQMolDatabase& molecules,
                      const std::string& filename, std::size_t first, const ZQFPTypeBase* type,
                      unsigned int numThreads);

/// Suppresses hydrogens and perceives what VSEPR types and fingerprints read.
void PrepareForVsepr(ZQMol& mol);
/// The same, then makes the fingerprint; false after an error if there is too little memory.
bool MakeFingerPrint(ZQVseprFingerprint& fp, ZQMol& mol, const ZQVseprOptions& options);

}  // namespace KorvexProgram
