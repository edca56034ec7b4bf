#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "apps/ranker_fps.h"
#include "apps/report.h"
#include "apps/stored.h"
#include "korvex/fpdatabaseoptions_params.h"
#include "korvex/fpfast_database.h"

namespace KorvexProgram {

namespace {

constexpr const char* source = "DB.fpbin|FILE.fps|FPS.zqb|MOLFILE";

ZQFPDatabaseOptions DefaultOptions() {
  ZQFPDatabaseOptions options;
  options.SetLimit(10);
  return options;
}

void Configure(ZQInterface& interface) {
  AddArgument(interface, source,
              "The database, or an FPS file, or stored fingerprints, or a molecule file, of which "
              "fingerprints are made in memory");
  AddArgument(
      interface, "QUERY",
      "A molecule file, each record of which is a query, or one query as a SMILES, or stored "
      "fingerprints (.zqb), or an FPS file (.fps); for an FPS file also the id of a record");
  interface.AddParameter({"-molecules", "-mol", ZQParamType::String,
                          "Molecule file of the database, for titles and SMILES, in place of the "
                          "one that the database names"});
  AddHitFormat(interface);
  interface.AddParameter({"-html", "", ZQParamType::String, "Writes a report to this file"});
  AddThreads(interface);
  AddTypeOptions(interface, Kinds::All);
  ZQConfigureFPDatabaseMemoryType(interface, ZQFastFPDatabaseMemoryType::MemoryMapped);
  ZQConfigureFPDatabaseOptions(interface, DefaultOptions());
  AddTverskyCoeffs(interface);
  AddMoleculeFileOptions(interface, true);
}

// Queries, their fingerprints, and their record numbers, from 1.
struct Queries {
  std::vector<unsigned int> numbers;
  std::vector<ZQFingerPrint> fps;
  std::vector<ZQMol> mols;  // for a report only
};

// The queries of the command line: molecules, or fingerprints of a file.
class QueryArgument {
 public:
  // False after a message.
  bool Open(const std::string& argument, const ZQInterface& interface) {
    if (IsFPS(argument, interface)) return ReadFPSQueries(stored_, argument);
    return IsStoredName(argument) ? ReadStored(stored_, argument)
                                  : OpenMoleculesOrSmiles(molecules_, argument, interface);
  }
  // The same for queries of an FPS file, of which a record is a query too, by its id.
  bool Open(const std::string& argument, const ZQInterface& interface, const FPSRanker& ranker) {
    if (IsFPS(argument, interface)) return ReadFPSQueries(stored_, argument, ranker);
    const ZQFPSDatabase& database = ranker.GetDatabase();
    std::error_code error;
    const std::uint64_t record = std::filesystem::exists(argument, error)
                                     ? database.NumFingerPrints()
                                     : database.FindId(argument);
    if (record < database.NumFingerPrints()) {
      stored_.resize(1);
      stored_[0].number = 1;
      return database.GetFingerPrint(stored_[0].fp, record);
    }
    return CheckMoleculeQuery(ranker, argument) && Open(argument, interface) &&
           CheckQueryType(GetStoredType(), ranker.GetFPTypeBase(), ranker.GetFilename());
  }
  // Null for molecules, and for fingerprints of another program.
  const ZQFPTypeBase* GetStoredType() const {
    return stored_.empty() ? nullptr : stored_.front().fp.GetFPTypeBase();
  }
  unsigned int NumQueries() const {
    return stored_.empty() ? molecules_.GetMaxMolIdx() : static_cast<unsigned int>(stored_.size());
  }

  // The next queries that have a fingerprint, from record `next` on.
  Queries Read(const Ranker& ranker, std::uint64_t count, bool withMolecules,
               unsigned int& next) const {
    Queries queries;
    ZQMol mol;
    while (next < NumQueries() && queries.fps.size() < count) {
      ZQFingerPrint fp;
      const unsigned int number = NumberOf(next);
      const std::string where = "query " + std::to_string(number);
      const bool made = Get(fp, mol, next++, ranker.GetFPTypeBase(), where);
      if (!made || !ranker.CheckQuery(fp, where)) continue;
      queries.numbers.push_back(number);
      queries.fps.push_back(std::move(fp));
      if (withMolecules) queries.mols.push_back(mol);
    }
    return queries;
  }

 private:
  unsigned int NumberOf(unsigned int idx) const {
    return stored_.empty() ? idx + 1 : static_cast<unsigned int>(stored_[idx].number);
  }
  bool Get(ZQFingerPrint& fp, ZQMol& mol, unsigned int idx, const ZQFPTypeBase* type,
           const std::string& where) const {
    if (stored_.empty()) {
      return molecules_.GetMolecule(mol, idx) && MakeFingerPrint(fp, mol, type, where);
    }
    fp = stored_[idx].fp;
    return true;
  }

  ZQMolDatabase molecules_;
  std::vector<StoredFingerPrint> stored_;
};

// The report of a search, if one is wanted. A page of more hits is slow in a browser.
class SearchReport {
 public:
  SearchReport(const ZQInterface& interface, const ZQFPDatabaseOptions& options)
      : isWanted_(interface.IsSet("-html")),
        filename_(isWanted_ ? interface.Get<std::string>("-html") : ""),
        options_(options) {}

  bool IsWanted() const { return isWanted_; }

  // False after a message.
  bool Add(const ZQMol& query, const std::vector<ZQSimScore>& hits, Ranker& ranker) {
    numHits_ += hits.size();
    if (numHits_ > mostHits) {
      ZQThrow.Error("-html: a report has at most %u hits; lower -limit", mostHits);
      return false;
    }
    DrawnMolecule drawn;
    drawn.mol = query;
    drawn.Name();
    drawn.Draw();
    const ReportMeasure measure{options_.GetSimFunc(), options_.GetTverskyAlpha(),
                                options_.GetTverskyBeta()};
    queries_.push_back(DescribeQuery(
        drawn, hits, ranker.GetHistogram(query, bins),
        [&ranker](ZQMol& mol, std::uint64_t record) { return ranker.GetMolecule(mol, record); },
        ranker.GetFPTypeBase(), measure, options_.GetNumProcessors()));
    if (queries_.back().hits.size() == hits.size()) return true;
    ZQThrow.Error("-html: the molecules of the hits can't be read; -molecules names their file");
    return false;
  }

  // False after a message.
  bool Write(const ZQFPTypeBase* type, const std::string& database) const {
    return WriteFile(filename_, MakeSearchPage(type, options_.GetSimFunc(), database, queries_));
  }

 private:
  static constexpr unsigned int mostHits = 1000;
  static constexpr unsigned long bins = 50;

  bool isWanted_;
  std::string filename_;
  ZQFPDatabaseOptions options_;
  std::size_t numHits_ = 0;
  std::vector<ReportQuery> queries_;
};

std::vector<ZQSimScore> Collected(ZQIter<ZQSimScore> hits) {
  std::vector<ZQSimScore> all;
  for (; hits; ++hits) all.push_back(*hits);
  return all;
}

// Opens both arguments. Null after a message, with the exit code in `exitCode`.
std::unique_ptr<Ranker> OpenRanker(const std::string& filename, const ZQInterface& interface,
                                   const ZQFPDatabaseOptions& options, QueryArgument& argument,
                                   ExitCode& exitCode) {
  const auto query = interface.Get<std::string>("QUERY");
  if (IsFPS(filename, interface)) {
    auto ranker = OpenFPSRanker(filename, interface, options, exitCode);
    if (!ranker || !argument.Open(query, interface, *ranker)) return nullptr;
    return ranker;
  }
  exitCode = BadInput;
  if (!argument.Open(query, interface)) return nullptr;
  exitCode = BadUsage;
  constexpr const char* html[] = {"-html"};
  if (argument.GetStoredType() && IsAnySet(interface, html, "with stored queries")) return nullptr;
  const auto open = IsMoleculeFile(filename) ? OpenMoleculeRanker
                    : IsStoredName(filename) ? OpenStoredRanker
                                             : OpenDatabaseRanker;
  return open(filename, interface, options, argument.GetStoredType(), exitCode);
}

int Run(const ZQInterface& interface) {
  ZQFPDatabaseOptions options = DefaultOptions();
  ZQSetupFPDatabaseOptions(options, interface);
  SetTverskyCoeffs(options, interface);
  options.SetNumProcessors(GetThreads(interface));

  QueryArgument argument;
  ExitCode exitCode = BadInput;
  const auto filename = interface.Get<std::string>(source);
  const std::unique_ptr<Ranker> ranker =
      OpenRanker(filename, interface, options, argument, exitCode);
  if (!ranker) return exitCode;

  HitWriter writer(interface);
  SearchReport report(interface, options);
  bool reported = true;
  std::size_t answered = 0;
  const std::uint64_t count = QueriesPerPass(options.GetLimit(), ranker->NumFingerPrints());
  for (unsigned int next = 0; next < argument.NumQueries();) {
    const Queries queries = argument.Read(*ranker, count, report.IsWanted(), next);
    const unsigned int numWarnings = NumWarnings();
    std::vector<ZQIter<ZQSimScore>> hitsOfAll = ranker->Rank(queries.fps);
    if (NumWarnings() != numWarnings) return BadInput;  // too little memory, or a failing GPU
    for (std::size_t i = 0; i < hitsOfAll.size(); ++i) {
      const std::vector<ZQSimScore> hits = Collected(std::move(hitsOfAll[i]));
      writer.Write(queries.numbers[i], hits, *ranker);
      reported = reported && (!report.IsWanted() || report.Add(queries.mols[i], hits, *ranker));
    }
    answered += hitsOfAll.size();
  }
  if (answered == 0 || !reported) return BadInput;
  return !report.IsWanted() || report.Write(ranker->GetFPTypeBase(), filename) ? Done : BadInput;
}

}  // namespace

const Command searchCommand{"search", "Ranks a database or a molecule file against query molecules",
                            Configure, Run};

}  // namespace KorvexProgram
