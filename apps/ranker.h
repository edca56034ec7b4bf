#pragma once

/// The sources of a search's hits: a database file; and, in memory, a file of stored fingerprints,
/// or a molecule file, whose fingerprints are made first. All are ranked by the options of the
/// command line.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "apps/command.h"
#include "contract/bostrel/iter.h"
#include "contract/quarnel/graphmol.h"
#include "korvex/fingerprint.h"
#include "korvex/fpdatabaseoptions.h"
#include "korvex/fphistogram.h"

namespace KorvexProgram {

class Ranker {
 public:
  Ranker() = default;
  virtual ~Ranker() = default;
  Ranker(const Ranker&) = delete;
  Ranker& operator=(const Ranker&) = delete;

  virtual const ZQFPTypeBase* GetFPTypeBase() const = 0;
  virtual std::uint64_t NumFingerPrints() const = 0;
  /// Whether a fingerprint of this type can be a query; false after a message that names it by
  /// `where`.
  virtual bool CheckQuery(const ZQFingerPrint& /*fp*/, const std::string& /*where*/) const {
    return true;
  }
  /// The hits of each query, best first, with the index of their record. Without any, after a
  /// warning, if memory runs out.
  virtual std::vector<ZQIter<ZQSimScore>> Rank(const std::vector<ZQFingerPrint>& queries) const = 0;
  /// The distribution of the scores of all records, without a cutoff.
  virtual ZQFPHistogram GetHistogram(const ZQMolBase& query, unsigned long bins) = 0;
  /// The molecule of a record; false if it isn't known. Many threads may call it.
  virtual bool GetMolecule(ZQMol& mol, std::uint64_t record) const = 0;
  /// Title and SMILES of a record; empty if they aren't known.
  virtual std::string GetTitle(std::uint64_t record) const = 0;
  virtual std::string GetSmiles(std::uint64_t record) const = 0;
};

// Open a file. Null after a message, with the exit code in `exitCode`: an option that is of no use
// with this file is bad usage. `queryType` is the type of stored queries, which the file must have;
// null for molecules.

std::unique_ptr<Ranker> OpenDatabaseRanker(const std::string& filename,
                                           const ZQInterface& interface,
                                           const ZQFPDatabaseOptions& options,
                                           const ZQFPTypeBase* queryType, ExitCode& exitCode);
std::unique_ptr<Ranker> OpenStoredRanker(const std::string& filename, const ZQInterface& interface,
                                         const ZQFPDatabaseOptions& options,
                                         const ZQFPTypeBase* queryType, ExitCode& exitCode);
/// Makes the fingerprints on the options' number of threads. A record without one is left out,
/// after a message.
std::unique_ptr<Ranker> OpenMoleculeRanker(const std::string& filename,
                                           const ZQInterface& interface,
                                           const ZQFPDatabaseOptions& options,
                                           const ZQFPTypeBase* queryType, ExitCode& exitCode);

}  // namespace KorvexProgram
