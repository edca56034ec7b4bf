#include <utility>

#include "apps/database.h"
#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/ranker.h"
#include "apps/stored.h"
#include "korvex/fpdatabaseoptions_params.h"

namespace KorvexProgram {

namespace {

class DatabaseRanker : public Ranker {
 public:
  DatabaseRanker(std::unique_ptr<ZQFastFPDatabase> database, const ZQFPDatabaseOptions& options)
      : database_(std::move(database)), options_(options) {}

  /// See `HitMolecules::Open`.
  bool OpenMolecules(const ZQInterface& interface, const std::string& filename) {
    return molecules_.Open(interface, filename, *database_);
  }

  std::uint64_t NumFingerPrints() const override { return database_->NumFingerPrints(); }
  std::vector<ZQIter<ZQSimScore>> Rank(const std::vector<ZQFingerPrint>& queries) const override {
    return database_->GetSortedScores(queries, options_);
  }
  ZQFPHistogram GetHistogram(const ZQMolBase& query, unsigned long bins) override {
    if (database_->GetMemoryType() == ZQFastFPDatabaseMemoryType::CUDA) {
      ZQFPHistogram histogram(bins, 0.0, 1.0);
      for (auto score = database_->GetRawScores(query, options_); score; ++score) {
        histogram.AddSample(*score);
      }
      return histogram;
    }
    ZQSimSearchResult result(bins);
    database_->SortedSearch(result, query, options_);
    return result.GetHistogram();
  }
  const ZQFPTypeBase* GetFPTypeBase() const override { return database_->GetFPTypeBase(); }
  bool GetMolecule(ZQMol& mol, std::uint64_t record) const override {
    return molecules_.GetMolecule(mol, record);
  }
  std::string GetTitle(std::uint64_t record) const override { return molecules_.GetTitle(record); }
  std::string GetSmiles(std::uint64_t record) const override {
    return molecules_.GetSmiles(record);
  }

 private:
  std::unique_ptr<ZQFastFPDatabase> database_;
  ZQFPDatabaseOptions options_;
  HitMolecules molecules_;
};

}  // namespace

std::unique_ptr<Ranker> OpenDatabaseRanker(const std::string& filename,
                                           const ZQInterface& interface,
                                           const ZQFPDatabaseOptions& options,
                                           const ZQFPTypeBase* queryType, ExitCode& exitCode) {
  exitCode = BadUsage;
  if (IsAnyTypeOptionSet(interface, "with a database, which has its own type")) return nullptr;
  exitCode = BadInput;
  auto database = OpenDatabase(filename, ZQGetFPDatabaseMemoryType(interface));
  if (!database || !CheckQueryType(queryType, database->GetFPTypeBase(), filename)) return nullptr;
  auto ranker = std::make_unique<DatabaseRanker>(std::move(database), options);
  if (!ranker->OpenMolecules(interface, filename)) return nullptr;
  return ranker;
}

}  // namespace KorvexProgram
