/// The time to open a memory-mapped database, which shouldn't depend on its number of records, and
/// that of the first query over a newly mapped file whose pages are in the page cache.
///
///   opening_bench [records] [rounds]

#include "benchmarks/bench.h"

using namespace bench;

namespace {

/// A sparse file: its records are a hole.
class SparseDatabase {
 public:
  explicit SparseDatabase(std::size_t count)
      : name_(std::filesystem::temp_directory_path() /
              ("korvex_bench_" + std::to_string(getpid()) + "_sparse" + std::to_string(count))) {
    ZQFastFPDatabaseParams params;
    params.SetFPTypeBase(TypeOf(4096));
    params.SetNumFingerPrints(count);
    std::ofstream(name_, std::ios::binary) << ZQWriteFastFPDatabaseHeaderBlob(params);
    std::filesystem::resize_file(name_, ZQGetFPDatabaseFileSize(count, TypeOf(4096)));
  }
  ~SparseDatabase() { std::filesystem::remove(name_); }
  SparseDatabase(const SparseDatabase&) = delete;
  SparseDatabase& operator=(const SparseDatabase&) = delete;

  void Open() const { Check(ZQFastFPDatabase(name_).IsValid(), "opening"); }

 private:
  std::string name_;
};

}  // namespace

int main(int argc, char** argv) {
  const std::size_t count = Argument(argc, argv, 1, 1000000);
  const auto rounds = static_cast<unsigned int>(Argument(argc, argv, 2, 20));
  const SparseDatabase small(1000);
  const SparseDatabase large(10000000);
  Race opening;
  opening.Add("1,000 records", 100, [&] {
    for (int i = 0; i < 100; ++i) small.Open();
  });
  opening.Add("10,000,000 records", 100, [&] {
    for (int i = 0; i < 100; ++i) large.Open();
  });
  opening.Run(rounds);
  std::printf("opening: %.1f us for 1,000 records, %.1f us for 10,000,000 (ratio %.2f)\n",
              1e6 / opening.Rate("1,000 records"), 1e6 / opening.Rate("10,000,000 records"),
              opening.Rate("1,000 records") / opening.Rate("10,000,000 records"));

  const Database file(count, 4096);
  const ZQFastFPDatabase warm(file.Name());
  ZQFingerPrint query;
  Check(warm.GetFingerPrint(query, 5), "a stored fingerprint");
  const ZQFPDatabaseOptions options(10, ZQSimMeasure::Tanimoto);
  const auto expected = HitsOf(warm.GetSortedScores(query, options));
  const auto units = static_cast<double>(count);
  Race race;
  race.Add("warm query", units, [&] { warm.GetSortedScores(query, options); });
  race.Add("open and first query", units, [&] {
    const ZQFastFPDatabase fresh(file.Name());
    Check(HitsOf(fresh.GetSortedScores(query, options)) == expected, "hits of a first query");
  });
  race.Run(rounds);
  std::printf("%zu records of 4096 bits, memory-mapped: warm query %.1f M/s\n", count,
              race.Rate("warm query") / 1e6);
  race.Report("open and first query", "warm query", 0.5);
}
