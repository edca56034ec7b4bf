/// One query against a million records: `GetSortedScores` on one thread, `SortedSearch` on two,
/// against the limit of as many threads.
///
///   scan_bench [records] [rounds]

#include "benchmarks/bench.h"
#include "korvex/fpfast_database_implbase_local.h"

using namespace bench;

namespace {

void Run(std::size_t count, unsigned int rounds, unsigned int numbits, double target) {
  const Database file(count, numbits);
  const std::vector<std::uint64_t> records = LoadRecords(file.Name());
  const ZQFastFPDatabase mapped(file.Name(), ZQFastFPDatabaseMemoryType::MemoryMapped);
  const ZQFastFPDatabase inMemory(file.Name(), ZQFastFPDatabaseMemoryType::InMemory);
  ZQFingerPrint query;
  Check(inMemory.GetFingerPrint(query, count / 2), "a stored fingerprint");
  ZQFPDatabaseOptions ten(10, ZQSimMeasure::Tanimoto);
  ZQFPDatabaseOptions thousand(1000, ZQSimMeasure::Tanimoto);
  ZQFPDatabaseOptions twoThreads(10, ZQSimMeasure::Tanimoto);
  twoThreads.SetNumProcessors(2);

  // The hits must be the best of all scores.
  std::vector<std::pair<double, std::uint64_t>> all;
  for (auto score = mapped.GetRawScores(query, ten); score; ++score) {
    all.emplace_back(*score, all.size());
  }
  std::sort(all.begin(), all.end(), std::greater<>());
  for (const ZQFastFPDatabase* database : {&mapped, &inMemory}) {
    const auto hits = HitsOf(database->GetSortedScores(query, thousand));
    for (std::size_t i = 0; i < hits.size(); ++i) {
      Check(hits[i].second == all[i].first, "scores of the hits");
    }
  }

  const auto units = static_cast<double>(count);
  Race race;
  race.Add("limit", units, [&] { Limit(records); });
  race.Add("limit of two threads", units, [&] { Limit(records, 2); });
  const auto add = [&](const char* name, const ZQFastFPDatabase& database,
                       const ZQFPDatabaseOptions& options) {
    race.Add(name, units, [&] { database.GetSortedScores(query, options); });
  };
  add("in memory, limit 10", inMemory, ten);
  add("in memory, limit 1000", inMemory, thousand);
  add("mapped, limit 10", mapped, ten);
  add("mapped, limit 1000", mapped, thousand);
  for (const auto& [name, database] : {std::pair("SortedSearch in memory, 2 threads", &inMemory),
                                       std::pair("SortedSearch mapped, 2 threads", &mapped)}) {
    race.Add(name, units, [&, database = database] {
      ZQSimSearchResult result;
      database->GetImpl().SortedSearch(result, query, twoThreads);
      Check(result.GetSortedScores()->GetScore() == all.front().first, "best hit");
    });
  }
  race.Run(rounds);

  std::printf("%u bits, %zu records: limit %.1f M/s (%.1f GB/s), of two threads %.1f M/s\n",
              numbits, count, race.Rate("limit") / 1e6,
              race.Rate("limit") * (numbits / 8 + 16) / 1e9,
              race.Rate("limit of two threads") / 1e6);
  for (const char* name :
       {"in memory, limit 10", "in memory, limit 1000", "mapped, limit 10", "mapped, limit 1000"}) {
    race.Report(name, "limit", target);
  }
  for (const char* name : {"SortedSearch in memory, 2 threads", "SortedSearch mapped, 2 threads"}) {
    race.Report(name, "limit of two threads", target);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t count = Argument(argc, argv, 1, 1000000);
  const auto rounds = static_cast<unsigned int>(Argument(argc, argv, 2, 30));
  Run(count, rounds, 4096, 0.9);
  Run(count, rounds, 2048, 0.8);
  Run(count, rounds, 1024, 0.8);
}
