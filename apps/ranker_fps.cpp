#include "apps/ranker_fps.h"

#include <iostream>

#include "apps/molecules.h"
#include "apps/options.h"
#include "korvex/fps_convert.h"

namespace KorvexProgram {

std::unique_ptr<ZQFPSDatabase> OpenFPS(const std::string& filename) {
  auto database = filename == standardInput ? std::make_unique<ZQFPSDatabase>(std::cin, inputName)
                                            : std::make_unique<ZQFPSDatabase>(filename);
  return database->IsValid() ? std::move(database) : nullptr;
}

namespace {

// All records of a file; none if it can't be read.
std::vector<StoredFingerPrint> AllOf(const ZQFPSDatabase& database) {
  std::vector<StoredFingerPrint> all(database.NumFingerPrints());
  for (std::size_t i = 0; i < all.size(); ++i) {
    all[i].number = i + 1;
    database.GetFingerPrint(all[i].fp, i);
  }
  return all;
}

}  // namespace

std::unique_ptr<FPSRanker> OpenFPSRanker(const std::string& filename, const ZQInterface& interface,
                                         const ZQFPDatabaseOptions& options, ExitCode& exitCode) {
  constexpr const char* ofMolecules[] = {"-html", "-molecules"};
  constexpr const char* ofDatabases[] = {"-memtype"};
  exitCode = BadUsage;
  if (IsAnySet(interface, ofMolecules, "with FPS files, which have no molecules") ||
      IsAnySet(interface, ofDatabases, "with FPS files, which are searched in memory") ||
      IsAnyTypeOptionSet(interface, "with FPS files, which have their own type")) {
    return nullptr;
  }
  exitCode = BadInput;
  auto database = OpenFPS(filename);
  if (!database) return nullptr;
  return std::make_unique<FPSRanker>(filename, std::move(database), options);
}

bool ReadFPSQueries(std::vector<StoredFingerPrint>& queries, const std::string& filename,
                    const FPSRanker& ranker) {
  const auto file = OpenFPS(filename);
  if (!file) return false;
  const ZQFPSDatabase& database = ranker.GetDatabase();
  if (file->NumBits() != database.NumBits()) {
    ZQThrow.Error("the queries of %s have %u bits, but %s has fingerprints of %u", filename.c_str(),
                  file->NumBits(), ranker.GetFilename().c_str(), database.NumBits());
    return false;
  }
  const std::string& type = file->GetHeader().type;
  if (type != database.GetHeader().type) {
    ZQThrow.Warning("the queries are of type '%s', but %s is of type '%s'", type.c_str(),
                    ranker.GetFilename().c_str(), database.GetHeader().type.c_str());
  }
  queries = AllOf(*file);
  return true;
}

bool ReadFPSQueries(std::vector<StoredFingerPrint>& queries, const std::string& filename) {
  const auto file = OpenFPS(filename);
  if (!file) return false;
  std::string fault;
  if (!ZQGetFPSType(file->GetHeader(), &fault)) {
    ZQThrow.Error("%s can be compared with FPS files only: %s", filename.c_str(), fault.c_str());
    return false;
  }
  queries = AllOf(*file);
  return true;
}

bool CheckMoleculeQuery(const FPSRanker& ranker, const std::string& query) {
  const std::string& filename = ranker.GetFilename();
  if (ranker.GetFPTypeBase()) return CheckMaking(ranker.GetFPTypeBase(), filename);
  std::string fault;
  ZQGetFPSType(ranker.GetDatabase().GetHeader(), &fault);
  ZQThrow.Error("'%s' is neither an FPS file nor an id of %s, and can't be a molecule: %s",
                query.c_str(), filename.c_str(), fault.c_str());
  return false;
}

}  // namespace KorvexProgram
