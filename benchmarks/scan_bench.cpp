/// One query against a million records: `GetSortedScores` on one thread and `SortedSearch` on two,
/// compared with the limit of as many threads over the same memory; also `GetSortedScores` with
/// each instruction set of this processor.
///
///   scan_bench [records] [rounds]

#include "benchmarks/bench.h"
#include "korvex/fpfast_database_inmemory_impl_local.h"
#include "korvex/fpfast_database_mmap_impl_local.h"
#include "korvex/processor_local.h"

using namespace bench;

namespace {

template <class BackEnd>
void Run(const Database& file, unsigned int rounds, double target) {
  const Open<BackEnd> database(file.Name());
  const std::uint64_t count = database.NumFingerPrints();
  ZQFingerPrint query;
  Check(database.MakeQuery(query, count / 2, "bench"), "a stored fingerprint");
  const ZQFPDatabaseOptions ten(10, ZQSimMeasure::Tanimoto);
  const ZQFPDatabaseOptions thousand(1000, ZQSimMeasure::Tanimoto);
  ZQFPDatabaseOptions twoThreads(10, ZQSimMeasure::Tanimoto);
  twoThreads.SetNumProcessors(2);

  // The hits' scores must be the best of all.
  std::vector<double> all;
  for (auto score = database.GetRawScores(query, ten); score; ++score) all.push_back(*score);
  std::sort(all.begin(), all.end(), std::greater<>());
  const auto hits = HitsOf(database.GetSortedScores(query, thousand));
  for (std::size_t i = 0; i < hits.size(); ++i) Check(hits[i].second == all[i], "scores of hits");

  const auto units = static_cast<double>(count);
  const std::uint64_t numWords = count * (query.NumWords() + 2);
  Race race;
  race.Add("limit", units, [&] { Limit(database.Records(), numWords, 1); });
  race.Add("limit 10", units, [&] { database.GetSortedScores(query, ten); });
  race.Add("limit 1000", units, [&] { database.GetSortedScores(query, thousand); });
  race.Add("limit of 2 threads", units, [&] { Limit(database.Records(), numWords, 2); });
  race.Add("SortedSearch, 2 threads", units, [&] {
    ZQSimSearchResult result;
    database.SortedSearch(result, query, twoThreads);
    Check(result.GetSortedScores()->GetScore() == all.front(), "best hit");
  });
  const std::vector<std::string> processors = ZQGetProcessorNames();
  for (const std::string& processor : processors) {
    race.Add(processor, units, [&] {
      ZQForceProcessor(processor.c_str());
      database.GetSortedScores(query, ten);
      ZQForceProcessor(nullptr);
    });
  }
  race.Run(rounds);

  std::printf("%u bits, %lu records, %s: limit %.1f M/s (%.1f GB/s), of 2 threads %.1f M/s\n",
              query.GetSize(), count, database.GetMemoryTypeString().c_str(),
              race.Rate("limit") / 1e6, race.Rate("limit") * (query.GetSize() / 8.0 + 16) / 1e9,
              race.Rate("limit of 2 threads") / 1e6);
  race.Report("limit 10", "limit", target);
  race.Report("limit 1000", "limit", target);
  race.Report("SortedSearch, 2 threads", "limit of 2 threads", target);
  for (const std::string& processor : processors) race.Report(processor, "limit", 0);
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t count = Argument(argc, argv, 1, 1000000);
  const auto rounds = static_cast<unsigned int>(Argument(argc, argv, 2, 30));
  for (const auto& [numbits, target] :
       {std::pair(4096U, 0.9), std::pair(2048U, 0.8), std::pair(1024U, 0.8)}) {
    const Database file(count, numbits);
    Run<ZQFastFPInMemoryDatabaseImpl>(file, rounds, target);
    Run<ZQFastFPMemoryMapDatabaseImpl>(file, rounds, target);
  }
}
