/// Many queries in one pass, compared with the same queries one by one, on one thread.
///
///   many_queries_bench [records] [queries] [rounds]

#include "benchmarks/bench.h"

using namespace bench;

int main(int argc, char** argv) {
  const std::size_t count = Argument(argc, argv, 1, 1000000);
  const std::size_t numQueries = Argument(argc, argv, 2, 100);
  const auto rounds = static_cast<unsigned int>(Argument(argc, argv, 3, 5));
  for (const unsigned int numbits : {4096U, 2048U, 1024U}) {
    const Database file(count, numbits);
    const ZQFastFPDatabase database(file.Name(), ZQFastFPDatabaseMemoryType::InMemory);
    std::vector<ZQFingerPrint> queries(numQueries);
    for (std::size_t i = 0; i < numQueries; ++i) {
      Check(database.GetFingerPrint(queries[i], i * count / numQueries), "a stored fingerprint");
    }
    const ZQFPDatabaseOptions options(10, ZQSimMeasure::Tanimoto);
    const auto together = database.GetSortedScores(queries, options);
    for (std::size_t i = 0; i < numQueries; ++i) {
      Check(HitsOf(together[i]) == HitsOf(database.GetSortedScores(queries[i], options)),
            "the hits of a query among many");
    }
    const auto pairs = static_cast<double>(count) * static_cast<double>(numQueries);
    Race race;
    race.Add("one by one", pairs, [&] {
      for (const ZQFingerPrint& query : queries) database.GetSortedScores(query, options);
    });
    race.Add("together", pairs, [&] { database.GetSortedScores(queries, options); });
    race.Run(rounds);
    std::printf("%zu queries, %zu records of %u bits: one by one %.1f M pairs/s\n", numQueries,
                count, numbits, race.Rate("one by one") / 1e6);
    race.Report("together", "one by one", 2.0);
  }
}
