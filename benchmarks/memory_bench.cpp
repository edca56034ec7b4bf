/// One query against the database in memory, which scores fingerprint objects one by one, compared
/// with the fast database on the same fingerprints, both on one thread: more records than the
/// caches hold, and few enough for them. Then the same with each instruction set of this processor.
///
///   memory_bench [records] [rounds]

#include "benchmarks/bench.h"
#include "korvex/fpdatabase.h"
#include "korvex/processor_local.h"

using namespace bench;

namespace {

void Run(const char* kind, const ZQFPTypeBase* type, unsigned int halvings, std::size_t count,
         unsigned int rounds, double target) {
  const Database file(count, type, halvings);
  const ZQFastFPDatabase fast(file.Name(), ZQFastFPDatabaseMemoryType::InMemory);
  ZQFPDatabase database(type);
  ZQFingerPrint query;
  std::size_t bits = 0;
  for (std::size_t i = 0; i < count; ++i) {
    Check(fast.GetFingerPrint(query, i), "a stored fingerprint");
    Check(database.AddFP(query) == i, "the index of a fingerprint");
    bits += query.CountBits();
  }
  Check(fast.GetFingerPrint(query, count / 2), "a stored fingerprint");

  // Scores are floats here and doubles there, and of equal scores at the end either may be a hit.
  const ZQFPDatabaseOptions thousand(1000, ZQSimMeasure::Tanimoto);
  std::vector<double> all;
  for (auto score = fast.GetRawScores(query, thousand); score; ++score) all.push_back(*score);
  const auto expected = HitsOf(fast.GetSortedScores(query, thousand));
  const auto hits = HitsOf(database.GetSortedScores(query, 1000, 0, 0));
  Check(hits.size() == expected.size(), "the number of hits");
  for (std::size_t i = 0; i < hits.size(); ++i) {
    Check(hits[i].second == static_cast<float>(expected[i].second) &&
              hits[i].second == static_cast<float>(all[hits[i].first]),
          "a hit");
  }

  // A small database is searched many times, so that one time isn't too short to be measured.
  const std::size_t repeats = std::max<std::size_t>(200000 / count, 1);
  const auto pairs = static_cast<double>(count * repeats);
  Race race;
  race.Add("fast database", pairs, [&] {
    for (std::size_t i = 0; i < repeats; ++i) fast.GetSortedScores(query, thousand);
  });
  race.Add("in memory", pairs, [&] {
    for (std::size_t i = 0; i < repeats; ++i) database.GetSortedScores(query, 1000, 0, 0);
  });
  race.Run(rounds);
  std::printf("%s, 4096 bits, %zu on of them, %zu records, %s: fast database %.1f M pairs/s\n",
              kind, bits / count, count, ZQGetLatestProcessor(), race.Rate("fast database") / 1e6);
  race.Report("in memory", "fast database", target);
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t count = Argument(argc, argv, 1, 400000);
  const auto rounds = static_cast<unsigned int>(Argument(argc, argv, 2, 30));
  double target = 0.5;  // with the best instructions of this processor
  for (const std::string& processor : ZQGetProcessorNames()) {
    ZQForceProcessor(processor.c_str());
    for (const std::size_t records : {count, std::size_t{20000}}) {
      Run("Path", ZQGetFPType(ZQFPType::Path), 0, records, rounds, target);
      Run("Circular", ZQGetFPType(ZQFPType::Circular), 3, records, rounds, target);
    }
    target = 0.0;
  }
}
