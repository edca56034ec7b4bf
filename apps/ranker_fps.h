#pragma once

/// FPS files as the source of a search's hits. Their records have ids, and no molecules.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "apps/ranker.h"
#include "apps/stored.h"
#include "korvex/fps_database.h"

namespace KorvexProgram {

/// A file, or standard input; null after a message.
std::unique_ptr<ZQFPSDatabase> OpenFPS(const std::string& filename);

class FPSRanker : public Ranker {
 public:
  FPSRanker(std::string filename, std::unique_ptr<ZQFPSDatabase> database,
            const ZQFPDatabaseOptions& options)
      : filename_(std::move(filename)), database_(std::move(database)), options_(options) {}
  const ZQFPSDatabase& GetDatabase() const { return *database_; }
  const std::string& GetFilename() const { return filename_; }

  /// Null for fingerprints of another program: molecules can't be queries.
  const ZQFPTypeBase* GetFPTypeBase() const override { return database_->GetFPTypeBase(); }
  std::uint64_t NumFingerPrints() const override { return database_->NumFingerPrints(); }
  std::vector<ZQIter<ZQSimScore>> Rank(const std::vector<ZQFingerPrint>& queries) const override {
    return database_->GetSortedScores(queries, options_);
  }
  /// Without samples: no report is made of an FPS file.
  ZQFPHistogram GetHistogram(const ZQMolBase& /*query*/, unsigned long bins) override {
    return ZQFPHistogram(bins, 0.0, 1.0);
  }
  bool GetMolecule(ZQMol& /*mol*/, std::uint64_t /*record*/) const override { return false; }
  std::string GetTitle(std::uint64_t record) const override {
    return std::string(database_->GetId(record));
  }
  std::string GetSmiles(std::uint64_t /*record*/) const override { return {}; }

 private:
  std::string filename_;
  std::unique_ptr<ZQFPSDatabase> database_;
  ZQFPDatabaseOptions options_;
};

/// Null after a message, with the exit code in `exitCode`.
std::unique_ptr<FPSRanker> OpenFPSRanker(const std::string& filename, const ZQInterface& interface,
                                         const ZQFPDatabaseOptions& options, ExitCode& exitCode);

/// All records of an FPS file as queries of one; false after an error if they have another number
/// of bits. Another type is a warning.
bool ReadFPSQueries(std::vector<StoredFingerPrint>& queries, const std::string& filename,
                    const FPSRanker& ranker);
/// The same as queries of another kind of file, which need a type of korvex.
bool ReadFPSQueries(std::vector<StoredFingerPrint>& queries, const std::string& filename);

/// Whether molecules can be queries of this file; an error, which names the query, if not.
bool CheckMoleculeQuery(const FPSRanker& ranker, const std::string& query);

}  // namespace KorvexProgram
