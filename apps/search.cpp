#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "apps/ranker.h"
#include "korvex/fpdatabaseoptions_params.h"
#include "korvex/fpfast_database.h"

namespace KorvexProgram {

namespace {

constexpr const char* source = "DB.fpbin|MOLFILE";

// The most queries in one pass over the database, and the most hits held until its end.
constexpr std::uint64_t queriesPerPass = 256;
constexpr std::uint64_t hitsPerPass = std::uint64_t{1} << 22;

const ZQNamespaceInterface& Formats() {
  static const ZQNamespaceInterface formats(
      "Format", ZQNamespaceMode::Single,
      {{"tsv", 0, "a line a hit: query, rank, score, index, title, SMILES"},
       {"json", 1, "an array of objects with the same fields"}});
  return formats;
}

ZQFPDatabaseOptions DefaultOptions() {
  ZQFPDatabaseOptions options;
  options.SetLimit(10);
  return options;
}

void Configure(ZQInterface& interface) {
  AddArgument(interface, source,
              "The database, or a molecule file, of which fingerprints are made in memory");
  AddArgument(interface, "QUERY",
              "A molecule file, each record of which is a query, or one query as a SMILES");
  interface.AddParameter({"-molecules", "-mol", ZQParamType::String,
                          "Molecule file of the database, for titles and SMILES, in place of the "
                          "one that the database names"});
  ZQParameter format("-format", "-f", ZQParamType::String, "Output format");
  format.SetLegalNames(Formats()).SetDefault("tsv");
  AddDetails(&format, &Formats());
  interface.AddParameter(std::move(format));
  AddThreads(interface);
  AddTypeOptions(interface, Kinds::All);
  ZQConfigureFPDatabaseMemoryType(interface, ZQFastFPDatabaseMemoryType::MemoryMapped);
  ZQConfigureFPDatabaseOptions(interface, DefaultOptions());
  AddTverskyCoeffs(interface);
}

// Fingerprints of queries, and their record numbers, from 1.
struct Queries {
  std::vector<unsigned int> numbers;
  std::vector<ZQFingerPrint> fps;
};

// The next queries that have a fingerprint, from record `next` on.
Queries ReadQueries(const MoleculeArgument& molecules, const Ranker& ranker, std::uint64_t count,
                    unsigned int& next) {
  Queries queries;
  ZQMol mol;
  while (next < molecules.NumMolecules() && queries.fps.size() < count) {
    const bool read = molecules.GetMolecule(mol, next++);
    ZQFingerPrint fp;
    if (!read || !ranker.MakeQuery(fp, mol, "query " + std::to_string(next))) continue;
    queries.numbers.push_back(next);
    queries.fps.push_back(std::move(fp));
  }
  return queries;
}

int Run(const ZQInterface& interface) {
  ZQFPDatabaseOptions options = DefaultOptions();
  ZQSetupFPDatabaseOptions(options, interface);
  SetTverskyCoeffs(options, interface);
  options.SetNumProcessors(GetThreads(interface));

  MoleculeArgument molecules;
  if (!molecules.Open(interface.Get<std::string>("QUERY"))) return BadInput;
  const auto filename = interface.Get<std::string>(source);
  const auto open = ZQMolDatabase::IsReadable(filename) ? OpenMoleculeRanker : OpenDatabaseRanker;
  ExitCode exitCode = BadInput;
  const std::unique_ptr<Ranker> ranker = open(filename, interface, options, exitCode);
  if (!ranker) return exitCode;

  HitWriter writer(interface.Get<std::string>("-format") == "json");
  std::size_t answered = 0;
  const std::uint64_t records = std::max<std::uint64_t>(ranker->NumFingerPrints(), 1);
  const std::uint64_t hitsPerQuery =
      options.GetLimit() == 0 ? records : std::min<std::uint64_t>(options.GetLimit(), records);
  const std::uint64_t count =
      std::clamp<std::uint64_t>(hitsPerPass / hitsPerQuery, 1, queriesPerPass);
  for (unsigned int next = 0; next < molecules.NumMolecules();) {
    const Queries queries = ReadQueries(molecules, *ranker, count, next);
    const unsigned int numWarnings = NumWarnings();
    std::vector<ZQIter<ZQSimScore>> hits = ranker->Rank(queries.fps);
    if (NumWarnings() != numWarnings) {
      writer.Finish();
      return BadInput;  // too little memory
    }
    for (std::size_t i = 0; i < hits.size(); ++i) {
      for (unsigned int rank = 1; hits[i]; ++hits[i], ++rank) {
        const std::uint64_t index = hits[i]->GetIdx();
        writer.Write({queries.numbers[i], rank, hits[i]->GetScore(), index, ranker->GetTitle(index),
                      ranker->GetSmiles(index)});
      }
    }
    answered += hits.size();
  }
  writer.Finish();
  return answered != 0 ? Done : BadInput;
}

}  // namespace

const Command searchCommand{"search", "Ranks a database or a molecule file against query molecules",
                            Configure, Run};

}  // namespace KorvexProgram
