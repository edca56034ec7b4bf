#pragma once

/// A fingerprint database and the molecules that it was made from.

#include <memory>
#include <string>

#include "apps/command.h"
#include "contract/quarnel/moldatabase.h"
#include "korvex/fpfast.h"
#include "korvex/fpfast_database.h"

namespace KorvexProgram {

/// Whether a file has the size that its header asks for, in records of the type's size; an error
/// otherwise. Nothing reads beyond the end of a file that passes, whatever the memory type. False
/// without a message for a header that isn't valid, which has been reported.
bool IsWhole(const ZQFastFPDatabaseParams& header, const std::string& filename);

/// Opens a database whose file passes the check; null after a message otherwise.
std::unique_ptr<ZQFastFPDatabase> OpenDatabase(
    const std::string& filename,
    unsigned int memoryType = ZQFastFPDatabaseMemoryType::MemoryMapped);

/// Where titles and SMILES of hits come from.
class HitMolecules {
 public:
  /// Opens the molecule file `given` or, if that is empty, the one that the header of the database
  /// names: as written there, then beside the database. A file of other molecules than the
  /// database's is left out after a warning, and so is a header's file that can't be opened.
  /// False, after a message, for a given file that can't be opened.
  bool Open(const std::string& given, const std::string& filename,
            const ZQFastFPDatabase& database);
  /// Empty without molecules, and for a record that they don't have.
  std::string GetTitle(std::uint64_t index) const;
  std::string GetSmiles(std::uint64_t index) const;

 private:
  bool Has(std::uint64_t index) const { return molecules_ && index < molecules_->GetMaxMolIdx(); }

  std::unique_ptr<ZQMolDatabase> molecules_;
};

}  // namespace KorvexProgram
