#pragma once

/// A fingerprint database and its molecules.

#include <memory>
#include <string>

#include "apps/command.h"
#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/moldatabase.h"
#include "korvex/fpfast.h"
#include "korvex/fpfast_database.h"

namespace KorvexProgram {

/// Whether a file has the size that follows from its header, in records of the type's size; reports
/// an error otherwise. Nothing reads past the end of such a file with any memory type. False
/// without a message for an invalid header, which has already been reported.
bool IsWhole(const ZQFastFPDatabaseParams& header, const std::string& filename);

/// Opens a database whose file passes the check; null after a message otherwise.
std::unique_ptr<ZQFastFPDatabase> OpenDatabase(
    const std::string& filename,
    unsigned int memoryType = ZQFastFPDatabaseMemoryType::MemoryMapped);

/// The source of titles and SMILES of hits.
class HitMolecules {
 public:
  /// Opens the molecule file of "-molecules" or, if that isn't set, the one named in the header of
  /// the database: first as written there, then in the database's directory. A file whose molecules
  /// don't match the database is ignored after a warning, and so is a header's file that can't be
  /// opened. False, after a message, for a given file that can't be opened.
  bool Open(const ZQInterface& interface, const std::string& filename,
            const ZQFastFPDatabase& database);
  /// False without molecules, and after a message for a record that can't be read.
  bool GetMolecule(ZQMol& mol, std::uint64_t index) const;
  /// Empty without molecules, and for a record that isn't among them.
  std::string GetTitle(std::uint64_t index) const;
  std::string GetSmiles(std::uint64_t index) const;

 private:
  bool Has(std::uint64_t index) const { return molecules_ && index < molecules_->GetMaxMolIdx(); }

  std::unique_ptr<ZQMolDatabase> molecules_;
};

}  // namespace KorvexProgram
