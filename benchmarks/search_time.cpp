/// The best time of one sorted search from C++, in seconds, for a comparison with another caller's
/// (python_bench.py).
///
///   search_time DB.fpbin RECORD ROUNDS

#include "benchmarks/bench.h"

int main(int argc, char** argv) {
  using namespace bench;
  if (argc != 4) return 2;
  const ZQFastFPDatabase database(argv[1], ZQFastFPDatabaseMemoryType::InMemory);
  ZQFingerPrint query;
  Check(database.GetFingerPrint(query, std::strtoull(argv[2], nullptr, 10)), "the query");
  const ZQFPDatabaseOptions options(10, ZQSimMeasure::Tanimoto);
  double best = 1e9;
  for (int round = std::atoi(argv[3]); round > 0; --round) {
    const auto start = std::chrono::steady_clock::now();
    Check(database.GetSortedScores(query, options).IsValid(), "hits");
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    best = std::min(best, time.count());
  }
  std::printf("%.9f\n", best);
}
