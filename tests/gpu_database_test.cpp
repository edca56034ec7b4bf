#include <gtest/gtest.h>

#include <cstring>

#include "fp_helpers.h"
#include "korvex/cuda/fpfast_database_cuda_impl_local.h"
#include "korvex/fpfast_database.h"
#include "korvex/version.h"
#include "mol_helpers.h"
#include "platform/nubrel/device_local.h"
#include "platform/nubrel/emulated/emulated_cuda.h"
#include "tracer_helpers.h"

using namespace ZQKorvex;

namespace {

constexpr unsigned int cuda = ZQFastFPDatabaseMemoryType::CUDA;
/// Copies go through blocks of this size: several of them for most.
constexpr unsigned long stagingBytes = 3000;
/// What the back end leaves to the driver.
constexpr std::size_t reserved = 0xA00000;

/// The bits of all results of a query, so that equal means equal to the last bit.
class Bits {
 public:
  template <class T>
  void Add(T value) {
    bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  void Add(const ZQSimScore& score) {
    Add(score.GetIdx());
    Add(score.GetScore());
  }
  void Add(const ZQSimScorePair& pair) {
    Add(pair.GetIdx1());
    Add(pair.GetIdx2());
    Add(pair.GetScore());
  }
  template <class T>
  void AddAll(ZQIter<T> iter) {
    Add(static_cast<bool>(iter));
    for (; iter; ++iter) Add(*iter);
  }
  bool operator==(const Bits&) const = default;
  std::size_t Size() const { return bytes_.size(); }

 private:
  std::string bytes_;
};
std::ostream& operator<<(std::ostream& out, const Bits& bits) {
  return out << bits.Size() << " bytes";
}

/// Each test begins with one fresh device, and ends without findings and without anything left on
/// it but what is kept for the process.
class GpuDatabase : public ::testing::Test {
 protected:
  void SetUp() override {
    Use({{}});
    if (!ZQCUDAIsGPUReady()) GTEST_SKIP() << "this build has no kernels";
  }
  void TearDown() override {
    EXPECT_EQ(ZQGetEmulatedFindings(), std::vector<std::string>());
    EXPECT_EQ(ZQGetEmulatedObjects().buffers, 0U);
    Use({{}});
  }
  static void Use(const std::vector<ZQEmulatedDevice>& devices) {
    ZQReleaseDevices(stagingBytes);
    ZQSetEmulatedDevices(devices);
    ZQResetEmulatedRecords();
  }
  static void UseMemory(std::size_t bytes) { Use({{.memory = bytes}}); }
};

ZQFPDatabaseOptions Options(unsigned int limit, unsigned int measure, bool descending = true) {
  ZQFPDatabaseOptions options(limit, measure);
  options.SetDescendingOrder(descending);
  options.SetTverskyCoeffs(0.3F, 0.8F);
  return options;
}

/// The results of all queries, in many forms.
std::vector<Bits> Ask(const ZQFastFPDatabase& database, const std::vector<ZQFingerPrint>& queries,
                      unsigned int measure) {
  std::vector<Bits> all;
  const auto add = [&](auto... results) {
    Bits bits;
    (bits.AddAll(std::move(results)), ...);
    all.push_back(bits);
  };
  const std::uint64_t count = database.NumFingerPrints();
  for (const bool descending : {true, false}) {
    for (const unsigned int limit : {0U, 7U}) {
      ZQFPDatabaseOptions options = Options(limit, measure, descending);
      add(database.GetSortedScores(queries[0], options));
      options.SetCutoff(0.4F);
      add(database.GetSortedScores(0, options), database.GetScores(queries[1], options));
      const auto many = database.GetSortedScores(queries, options);
      for (const auto& hits : many) add(hits);
    }
  }
  const ZQFPDatabaseOptions options = Options(10, measure);
  add(database.GetRawScores(queries[0], options), database.GetScores(queries[2], options));
  add(database.GetAllScores(options));
  add(database.GetHistogram(options, 1).GetCounts(),
      database.GetHistogram(options, 200).GetCounts());
  if (measure != ZQSimMeasure::Tversky) {
    std::vector<float> values(count);
    for (std::size_t i = 0; i < count; ++i) values[i] = std::sqrt(static_cast<float>(i * 37 % 101));
    const ZQFPVariogram variogram = database.GetVariogram(values, options, 7);
    add(variogram.GetCounts());
    add(variogram.GetVariogram());
  }
  // All others, the best of many ties, and as many as are within the cutoff.
  for (const unsigned int k : {5U, 1000U}) {
    ZQFPDatabaseOptions nearest = Options(std::min<unsigned int>(k, count), measure);
    add(database.GetSparseMatrix(nearest));
    nearest.SetCutoff(0.6F);
    add(database.GetSparseMatrix(nearest));
  }
  return all;
}

}  // namespace

TEST_F(GpuDatabase, QueriesOverAllPairsEndByTheirTracer) {
  const TempFile file("traced.fpbin");
  file.Write(DatabaseBytes(RandomFingerPrints(300, 1024), PathTypeOf(1024)));
  for (const std::size_t memory : {std::size_t{1} << 30, reserved + 16000}) {
    UseMemory(memory);
    const ZQFastFPDatabase database(file.Name(), cuda);
    ExpectQueriesEndByTheirTracer(database);
  }
}

TEST_F(GpuDatabase, GivesTheBitsOfTheOtherBackEnds) {
  struct Case {
    std::size_t count;
    unsigned int numbits;
    std::size_t memory;
    bool pushed;
    std::vector<unsigned int> measures;
  };
  const std::vector<unsigned int> some{ZQSimMeasure::Tanimoto, ZQSimMeasure::Tversky};
  // Sizes around groups of 32, tiles and blocks; all on the device, results in pieces, all in
  // pieces.
  for (const Case& c : {Case{1, 1024, 1 << 30, true, some}, Case{33, 3072, 1 << 30, true, some},
                        Case{32, 1024, reserved + 4200, false, some},
                        Case{270, 1024, 1 << 30, true, {1, 2, 3, 4, 5, 6}},
                        Case{140, 3072, reserved + 61000, true, some},
                        Case{150, 1024, reserved + 16000, false, some}}) {
    SCOPED_TRACE(std::to_string(c.count) + " records, " + std::to_string(c.memory) + " bytes");
    const std::vector<ZQFingerPrint> fps = RandomFingerPrints(c.count, c.numbits);
    std::vector<ZQFingerPrint> queries = RandomFingerPrints(3, c.numbits, 7);
    queries.push_back(fps[0]);
    queries.push_back(fps[0]);
    std::fill_n(queries[2].Words(), queries[2].NumWords(), 0);
    const TempFile file("cuda.fpbin");
    // The molecule indices aren't the positions.
    std::string bytes = DatabaseBytes(fps, PathTypeOf(c.numbits));
    for (std::size_t i = 0; i < c.count; ++i) {
      bytes.replace(800 + i * (16 + c.numbits / 8), 8, ZQConvert(c.count - 1 - i));
    }
    file.Write(bytes);
    UseMemory(c.memory);
    const ZQFastFPDatabase mapped(file.Name());
    const ZQFastFPDatabase database(file.Name(), cuda);
    ASSERT_EQ(database.GetMemoryType(), cuda);
    EXPECT_EQ(database.GetMemoryTypeString(), "cuda");
    EXPECT_EQ(static_cast<const ZQFastFPCUDADatabaseImpl&>(database.GetImpl()).IsPushed(),
              c.pushed);
    for (const unsigned int measure : c.measures) {
      const std::vector<Bits> expected = Ask(mapped, queries, measure);
      const std::vector<Bits> found = Ask(database, queries, measure);
      ASSERT_EQ(found.size(), expected.size());
      for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i], expected[i]) << "measure " << measure << ", result " << i;
      }
    }
  }
}

TEST_F(GpuDatabase, BringsBackFewHitsOfManyRecords) {
  constexpr std::size_t count = 40000;
  const std::vector<ZQFingerPrint> fps = RandomFingerPrints(count, 1024);
  const TempFile file("many.fpbin");
  file.Write(DatabaseBytes(fps, PathTypeOf(1024)));
  const ZQFastFPDatabase mapped(file.Name());
  const ZQFastFPDatabase database(file.Name(), cuda);
  for (const unsigned int limit : {1U, 10U, 500U}) {
    for (const bool descending : {true, false}) {
      const ZQFPDatabaseOptions options = Options(limit, ZQSimMeasure::Dice, descending);
      ZQResetEmulatedRecords();
      const Hits hits = HitsOf(database.GetSortedScores(fps[3], options));
      EXPECT_LT(ZQGetEmulatedTraffic().fromDevice, 8 * count / 2);
      EXPECT_LT(ZQGetEmulatedTraffic().toDevice, 1000U);
      EXPECT_EQ(hits, HitsOf(mapped.GetSortedScores(fps[3], options)));
    }
  }
}

TEST_F(GpuDatabase, ReportsHowItWorks) {
  const TempFile file("reports.fpbin");
  file.Write(DatabaseBytes(RandomFingerPrints(60, 1024), PathTypeOf(1024)));
  const auto level = ZQThrow.GetLevel();
  ZQThrow.SetLevel(ZQErrorLevel::Debug);
  CapturedReports reports;
  const std::string constructor = "ZQFastFPDatabase::ZQFastFPDatabase()";
  {
    Use({{.major = 6, .minor = 1}, {.major = 8}});
    const ZQFastFPDatabase database(file.Name(), cuda);
    Texts texts = reports.Take();
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_EQ(texts[0], constructor + " choose CUDA device 1.");
    EXPECT_EQ(texts[1], "Pushing data onto device.");
    EXPECT_EQ(texts[2].rfind("Push to device memory took 0.", 0), 0U) << texts[2];
    database.GetRawScores(0, {});
    EXPECT_EQ(reports.Take(), Texts{"Doing one-shot ZQFastFPDatabase::GetRawScores()."});
    ZQFPDatabaseOptions nearest(3, ZQSimMeasure::Tanimoto);
    nearest.SetCutoff(0.9F);
    database.GetSparseMatrix(nearest);
    texts = reports.Take();
    ASSERT_EQ(texts.size(), 4U);
    EXPECT_EQ(texts[1].rfind("GetMaxCount discovered ", 0), 0U) << texts[1];
    EXPECT_EQ(texts[2], "Doing one-shot ZQFastFPDatabase::GetSparseMatrix().");
    EXPECT_EQ(texts[3].rfind("shared memory requested: ", 0), 0U) << texts[3];
  }
  UseMemory(reserved + 4096);
  const ZQFastFPDatabase database(file.Name(), cuda);
  EXPECT_EQ(reports.Take(), Texts{constructor + " choose CUDA device 0."});
  database.GetAllScores({});
  const Texts texts = reports.Take();
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(texts[0].rfind("Doing chunked ZQFastFPDatabase::GetAllScores() with chunk size : ", 0),
            0U);
  EXPECT_EQ(texts[1], "Doing chunked ZQFastFPDatabase::GetAllScores().");

  // After a failed upload there is room for the fingerprints, but not for rows and columns.
  file.Write(DatabaseBytes(RandomFingerPrints(90, 1024), PathTypeOf(1024)));
  UseMemory(reserved + 20000);
  EXPECT_TRUE(ZQFastFPDatabase(file.Name(), cuda).IsValid());
  const std::vector<std::string> calls = ZQGetEmulatedCalls();
  const auto upload = std::find(calls.begin(), calls.end(), "cuMemcpyHtoDAsync_v2");
  UseMemory(reserved + 20000);
  ZQFailEmulatedCall(static_cast<unsigned long>(upload - calls.begin()) + 1);
  const ZQFastFPDatabase unpushed(file.Name(), cuda);
  EXPECT_EQ(reports.Take().back().rfind("GPU 0 : cuMemcpyHtoDAsync failed: ", 0), 0U);
  EXPECT_EQ(unpushed.GetHistogram({}, 5).NumSamples(), 90U * 89 / 2);
  EXPECT_EQ(reports.Take(),
            Texts{"Doing chunked ZQFastFPDatabase::GetHistogram() with chunk size : 64"});
  ZQThrow.SetLevel(level);
}

TEST_F(GpuDatabase, RefusesWhatItCantOpen) {
  const std::string constructor = "ZQFastFPDatabase::ZQFastFPDatabase()";
  CapturedReports reports;
  const TempFile small("small.fpbin");
  for (const unsigned int numbits : {256U, 512U, 1280U}) {
    small.Write(DatabaseBytes(RandomFingerPrints(3, numbits), PathTypeOf(numbits)));
    EXPECT_FALSE(ZQFastFPDatabase(small.Name(), cuda).IsValid());
    EXPECT_EQ(reports.Take(),
              Texts{constructor + " needs fpsize multiple of 1024 for CUDA implementation!"});
  }
  EXPECT_FALSE(ZQFastFPDatabase("/no/such.fpbin", cuda).IsValid());
  EXPECT_EQ(reports.Take().back(), constructor + " cannot initialize object for CUDA search!");

  const TempFile file("opening.fpbin");
  const std::string bytes = DatabaseBytes(RandomFingerPrints(300, 1024), PathTypeOf(1024));
  file.Write(bytes);
  for (const std::vector<ZQEmulatedDevice>& devices :
       {std::vector<ZQEmulatedDevice>{}, {{.major = 2}}, {{.major = 6, .minor = 2}}}) {
    Use(devices);
    EXPECT_FALSE(ZQKorvexIsGPUReady());
    EXPECT_EQ(ZQKorvexGetGPU(), "none");
    EXPECT_EQ(ZQFastFPDatabase(file.Name(), cuda).GetMemoryType(),
              ZQFastFPDatabaseMemoryType::MemoryMapped);
    EXPECT_EQ(reports.Take().size(), 1U);
    // The device may go between the question and the opening.
    EXPECT_FALSE(ZQFastFPCUDADatabaseImpl(file.Name()).IsValid());
    EXPECT_EQ(reports.Take(), Texts{"No compatible CUDA device found for " + constructor + "."});
  }
  Use({{}});
  EXPECT_EQ(ZQKorvexGetGPU().rfind("Emulated GPU, 1.0 GiB, compute capability 9.0, driver of ", 0),
            0U);
  file.Write(bytes.substr(0, 800 + 10 * 144));
  const ZQFastFPDatabase database(file.Name(), cuda);
  EXPECT_EQ(reports.Take(), Texts{constructor + " : cannot read all fingerprints!"});
  EXPECT_FALSE(database.GetAllScores({}));
  EXPECT_EQ(reports.Take().size(), 1U);
}

TEST_F(GpuDatabase, RefusesWhatItCantAnswer) {
  const std::vector<ZQFingerPrint> fps = RandomFingerPrints(90, 1024);
  const TempFile file("answers.fpbin");
  file.Write(DatabaseBytes(fps, PathTypeOf(1024)));
  const ZQFastFPDatabase database(file.Name(), cuda);
  CapturedReports reports;

  const std::string matrix = "ZQFastFPDatabase::GetSparseMatrix()";
  ZQFPDatabaseOptions options(91, ZQSimMeasure::Tanimoto);
  EXPECT_FALSE(database.GetSparseMatrix(options));
  EXPECT_EQ(reports.Take(), Texts{matrix + " is set to retrieve more nearest neighbors (91) than "
                                           "there are fingerprints (90)."});
  options.SetLimit(0);
  EXPECT_FALSE(database.GetSparseMatrix(options));
  const std::string all = matrix + " is set to retrieve all nxn scores.";
  EXPECT_EQ(reports.Take(), (Texts{all, "No cutoff specified! Terminating."}));
  options.SetCutoff(0.7F);
  Bits found;
  found.AddAll(database.GetSparseMatrix(options));
  EXPECT_EQ(reports.Take(), Texts{all});
  Bits expected;
  options.SetLimit(90);
  expected.AddAll(ZQFastFPDatabase(file.Name()).GetSparseMatrix(options));
  EXPECT_EQ(found, expected);
  options.SetCutoff(1.5F);
  EXPECT_FALSE(database.GetSparseMatrix(options));
  EXPECT_EQ(reports.Take(), Texts{"No nearest neighbors within the given cutoff, please adjust "
                                  "your parameters Terminating."});

  const ZQFingerPrint other = RandomFingerPrints(1, 2048)[0];
  EXPECT_FALSE(database.GetSortedScores(other, {}));
  EXPECT_EQ(reports.Take(), Texts{"ZQFastFPDatabase::GetSortedScores() fingerprint mismatch!"});
  std::vector<std::uint64_t> words;
  std::uint64_t number = 0;
  EXPECT_TRUE(database.GetImpl().GetFingerPrint(words, number, number, 89));
  EXPECT_FALSE(database.GetImpl().GetFingerPrint(words, number, number, 90));
  EXPECT_EQ(reports.Take(),
            Texts{"ZQFastFPDatabase::GetFingerPrint() fingerprint index out of range!"});
  const auto hits = database.GetSortedScores({other, fps[2]}, {});
  EXPECT_FALSE(hits[0]);
  EXPECT_EQ(HitsOf(hits[1]), HitsOf(database.GetSortedScores(2, {})));
  reports.Take();
  EXPECT_EQ(database.GetHistogram({}, 4096).NumSamples(), 90U * 89 / 2);
  EXPECT_EQ(database.GetHistogram({}, 4097).NumSamples(), 0U);
  EXPECT_EQ(database.GetVariogram(std::vector<float>(90), {}, 5000).NumBins(), 5000U);
  EXPECT_EQ(reports.Take(),
            (Texts{"ZQFastFPDatabase::GetHistogram() is limited to 4096 bins with CUDA.",
                   "ZQFastFPDatabase::GetVariogram() is limited to 4096 bins with CUDA."}));
  ZQSimSearchResult result;
  EXPECT_EQ(database.GetImpl().SortedSearch(result, fps[0], {}), ZQSimSearchStatus::Uninitialized);
  EXPECT_EQ(reports.Take(),
            Texts{"ZQFastDatabase::SortedSearch() is not available in 'cuda' mode!"});
}

TEST_F(GpuDatabase, WorksWithLittleMemory) {
  const TempFile file("little.fpbin");
  file.Write(DatabaseBytes(RandomFingerPrints(90, 1024), PathTypeOf(1024)));
  CapturedReports reports;
  Use({{.sharedMemory = 1000}});
  const ZQFPDatabaseOptions options = Options(3, ZQSimMeasure::Tanimoto);
  EXPECT_FALSE(ZQFastFPDatabase(file.Name(), cuda).GetSparseMatrix(options));
  EXPECT_EQ(reports.Take(), Texts{"Not enough shared memory!"});
  // Even less memory than what is set aside.
  UseMemory(1 << 16);
  const ZQFastFPDatabase tight(file.Name(), cuda);
  EXPECT_TRUE(tight.GetRawScores(0, {}));
  EXPECT_EQ(reports.Take(), Texts());
  UseMemory(1024);
  const ZQFastFPDatabase tooTight(file.Name(), cuda);
  EXPECT_FALSE(tooTight.GetRawScores(0, {}));
  EXPECT_EQ(reports.Take(), Texts{"GPU 0 : cuMemAlloc failed: out of memory!"});
}

TEST_F(GpuDatabase, EveryCallOfTheDriverMayFail) {
  const std::vector<ZQFingerPrint> fps = RandomFingerPrints(40, 1024);
  const TempFile file("failures.fpbin");
  file.Write(DatabaseBytes(fps, PathTypeOf(1024)));
  ZQFPDatabaseOptions options(5, ZQSimMeasure::Tanimoto);
  options.SetCutoff(0.2F);
  const std::vector<std::function<bool(const ZQFastFPDatabase&)>> queries{
      [&](const auto& database) { return bool(database.GetRawScores(fps[0], options)); },
      [&](const auto& database) { return bool(database.GetScores(fps[0], options)); },
      [&](const auto& database) {
        return bool(database.GetSortedScores({fps[0], fps[1]}, options)[1]);
      },
      [&](const auto& database) { return bool(database.GetAllScores(options)); },
      [&](const auto& database) { return database.GetHistogram(options, 5).NumSamples() > 0; },
      [&](const auto& database) {
        return database.GetVariogram(std::vector<float>(40), options, 5).NumSamples() > 0;
      },
      [&](const auto& database) { return bool(database.GetSparseMatrix(options)); }};
  for (const std::size_t memory : {std::size_t{1} << 30, reserved + 5000}) {
    for (std::size_t number = 0; number < queries.size(); ++number) {
      // Calls of the opening first, then those of the query.
      bool failed = true;
      for (unsigned long call = 1; failed; ++call) {
        ASSERT_LT(call, 2000U);
        UseMemory(memory);
        CapturedReports reports;
        ZQFailEmulatedCall(call);
        const ZQFastFPDatabase database(file.Name(), cuda);
        const bool answered = database.IsValid() && queries[number](database);
        failed = !reports.Take().empty();
        ASSERT_TRUE(failed || answered);
        ZQFailEmulatedCall(0);
        if (!database.IsValid() || database.GetMemoryType() != cuda) continue;
        ASSERT_TRUE(queries[0](database)) << "after call " << call;
        ASSERT_EQ(reports.Take(), std::vector<std::string>());
      }
      EXPECT_EQ(ZQGetEmulatedObjects().buffers, 0U);
    }
  }
}

TEST_F(GpuDatabase, QueriesFromManyThreads) {
  const TempFile file("threads.fpbin");
  file.Write(DatabaseBytes(RandomFingerPrints(300, 1024), PathTypeOf(1024)));
  const ZQFastFPDatabase database(file.Name(), cuda);
  const Hits expected = HitsOf(database.GetSortedScores(5, {}));
  OnThreads(4, [&](unsigned int) {
    EXPECT_EQ(HitsOf(database.GetSortedScores(5, {})), expected);
    EXPECT_EQ(database.GetHistogram({}, 10).NumSamples(), 300U * 299 / 2);
  });
}
