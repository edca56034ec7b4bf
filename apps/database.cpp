#include "apps/database.h"

#include <filesystem>

#include "apps/molecules.h"
#include "korvex/fpfast_create.h"

namespace KorvexProgram {

namespace fs = std::filesystem;

namespace {

// The molecule file of the header, or an empty name if it doesn't exist.
std::string FindMoleculeFile(const std::string& filename, const std::string& name) {
  if (name == standardInput) {
    ZQThrow.Info("%s was made from standard input; without -molecules titles and SMILES stay empty",
                 filename.c_str());
    return {};
  }
  if (name.empty()) {
    ZQThrow.Info("%s names no molecule file; titles and SMILES stay empty", filename.c_str());
    return {};
  }
  std::error_code error;
  const fs::path folder = fs::path(filename).parent_path();
  for (const fs::path& candidate :
       {fs::path(name), folder / name, folder / fs::path(name).filename()}) {
    if (fs::is_regular_file(candidate, error)) return candidate;
  }
  ZQThrow.Info("%s: its molecule file '%s' isn't there; titles and SMILES stay empty",
               filename.c_str(), name.c_str());
  return {};
}

}  // namespace

bool IsWhole(const ZQFastFPDatabaseParams& header, const std::string& filename) {
  if (!header.IsValid() || header.IsConsistent()) return header.IsValid();
  ZQThrow.Error(
      "%s is damaged: its %lu bytes don't fit its header (%lu fingerprints of %lu words, type %s)",
      filename.c_str(), header.GetFileSize(), header.NumFingerPrints(), header.NumWords(),
      header.GetFPTypeBase()->GetFPTypeString().c_str());
  return false;
}

std::unique_ptr<ZQFastFPDatabase> OpenDatabase(const std::string& filename,
                                               unsigned int memoryType) {
  auto database = std::make_unique<ZQFastFPDatabase>(filename, memoryType);
  const bool isWhole = IsWhole(database->GetHeader(), filename);
  return isWhole && database->IsValid() ? std::move(database) : nullptr;
}

bool HitMolecules::Open(const ZQInterface& interface, const std::string& filename,
                        const ZQFastFPDatabase& database) {
  const bool isGiven = interface.IsSet("-molecules");
  const std::string name = isGiven
                               ? interface.Get<std::string>("-molecules")
                               : FindMoleculeFile(filename, database.GetHeader().GetMoleculeFile());
  if (name.empty()) return true;
  auto molecules = std::make_unique<ZQMolDatabase>();
  if (!OpenMolecules(*molecules, name, interface)) return !isGiven;
  if (!ZQAreCompatibleDatabases(*molecules, database)) {
    ZQThrow.Warning("%s holds other molecules than %s; titles and SMILES stay empty",
                    molecules->GetName().c_str(), filename.c_str());
    return true;
  }
  molecules_ = std::move(molecules);
  return true;
}

bool HitMolecules::GetMolecule(ZQMol& mol, std::uint64_t index) const {
  return Has(index) && molecules_->GetMolecule(mol, static_cast<unsigned int>(index));
}

std::string HitMolecules::GetTitle(std::uint64_t index) const {
  return Has(index) ? molecules_->GetTitle(static_cast<unsigned int>(index)) : std::string();
}

std::string HitMolecules::GetSmiles(std::uint64_t index) const {
  return Has(index) ? molecules_->GetSmiles(static_cast<unsigned int>(index)) : std::string();
}

}  // namespace KorvexProgram
