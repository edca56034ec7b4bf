/// All pairs of 20,000 records of 4096 bits, in pairs per second, compared with the pair rate of
/// one query's scan over a million records in memory. Also prints memory beyond the result.
///
///   all_pairs_bench [records] [rounds]

#include <sys/resource.h>

#include "benchmarks/bench.h"

using namespace bench;

namespace {

/// The process's peak memory so far, in MiB.
double PeakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t count = Argument(argc, argv, 1, 20000);
  const auto rounds = static_cast<unsigned int>(Argument(argc, argv, 2, 3));
  const Database file(count, 4096);
  const ZQFastFPDatabase database(file.Name(), ZQFastFPDatabaseMemoryType::InMemory);
  const auto n = static_cast<double>(count);
  const ZQFPDatabaseOptions nearest(10, ZQSimMeasure::Tanimoto);
  const ZQFPDatabaseOptions nearestHundred(100, ZQSimMeasure::Tanimoto);

  // Each with its memory beyond the result.
  const double before = PeakMemory();
  const ZQFPHistogram histogram = database.GetHistogram(nearest, 200);
  const double afterHistogram = PeakMemory();
  const ZQIter<ZQSimScorePair> sparse = database.GetSparseMatrix(nearest);
  const double afterSparse = PeakMemory();
  std::printf("memory beyond the result: histogram %.0f MiB, sparse matrix %.0f MiB",
              afterHistogram - before,
              afterSparse - afterHistogram - n * 10 * sizeof(ZQSimScorePair) / 1048576);
  {
    const ZQIter<float> all = database.GetAllScores(nearest);
    std::printf(", all scores %.0f MiB (each at most 64)\n",
                PeakMemory() - afterSparse - n * n * 4 / 1048576);
    // The scores of one row, computed in another way.
    std::size_t i = 7 * count;
    ZQIter<float> score = all;
    score += static_cast<unsigned int>(i);
    for (auto raw = database.GetRawScores(7, nearest); raw; ++raw, ++score) {
      Check(*score == static_cast<float>(*raw), "a row of the matrix");
    }
  }
  Check(histogram.NumSamples() == count * (count - 1) / 2, "number of samples");
  std::size_t pairs = 0;
  for (ZQIter<ZQSimScorePair> pair = sparse; pair; ++pair) {
    if (pairs++ % 10 == 0) Check(pair->GetScore() == 1.0, "every record is its own nearest");
  }
  Check(pairs == 10 * count, "number of pairs");

  constexpr std::size_t scanned = 1000000;
  const Database bigFile(scanned, 4096);
  const ZQFastFPDatabase big(bigFile.Name(), ZQFastFPDatabaseMemoryType::InMemory);
  ZQFingerPrint query;
  Check(big.GetFingerPrint(query, 5), "a stored fingerprint");
  Race race;
  race.Add("one query", scanned * 10.0, [&] {
    for (int i = 0; i < 10; ++i) big.GetSortedScores(query, nearest);
  });
  race.Add("GetHistogram", n * (n - 1) / 2, [&] { database.GetHistogram(nearest, 200); });
  race.Add("GetAllScores", n * n, [&] { database.GetAllScores(nearest); });
  race.Add("GetSparseMatrix, limit 10", n * n, [&] { database.GetSparseMatrix(nearest); });
  race.Add("GetSparseMatrix, limit 100", n * n, [&] { database.GetSparseMatrix(nearestHundred); });
  race.Run(rounds);
  std::printf("%zu records of 4096 bits: one query scans %.1f M pairs/s\n", count,
              race.Rate("one query") / 1e6);
  race.Report("GetHistogram", "one query", 4.0);
  race.Report("GetAllScores", "one query", 3.0);
  race.Report("GetSparseMatrix, limit 10", "one query", 4.0);
  race.Report("GetSparseMatrix, limit 100", "one query", 4.0);
}
