#include "korvex/fpfast_database.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <bit>
#include <cstring>
#include <filesystem>

#include "fp_helpers.h"
#include "korvex/fpfast_database_mmap_impl_local.h"
#include "korvex/fpneighbors.h"
#include "korvex/version.h"
#include "mol_helpers.h"
#include "tracer_helpers.h"

using namespace ZQKorvex;

namespace {

const std::string constructor = "ZQFastFPDatabase::ZQFastFPDatabase()";

/// A file whose header claims `numWords` and `count`, padded with zero bytes to `size`. The file is
/// sparse.
void WriteClaim(const TempFile& file, const ZQFPTypeBase* type, std::uint64_t numWords,
                std::uint64_t count, std::uint64_t size) {
  ZQFastFPDatabaseParams params;
  params.SetMoleculeFile("mols.smi");
  params.SetFPTypeBase(type);
  params.SetNumFingerPrints(count);
  file.Write(ZQWriteFastFPDatabaseHeaderBlob(params).replace(784, 8, ZQConvert(numWords)));
  std::filesystem::resize_file(file.Name(), size);
}

double PeakMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

/// A file of 1200 fingerprints of 512 bits, opened by either back end.
class BackEnd : public ::testing::TestWithParam<unsigned int> {
 protected:
  static constexpr std::size_t count = 1200;
  BackEnd()
      : fps_(RandomFingerPrints(count, 512)),
        bytes_(DatabaseBytes(fps_, PathTypeOf(512))),
        file_("backend.fpbin") {
    file_.Write(bytes_);
  }

  std::vector<ZQFingerPrint> fps_;
  std::string bytes_;
  TempFile file_;
};
INSTANTIATE_TEST_SUITE_P(MemoryTypes, BackEnd,
                         ::testing::Values(ZQFastFPDatabaseMemoryType::MemoryMapped,
                                           ZQFastFPDatabaseMemoryType::InMemory));

}  // namespace

TEST_P(BackEnd, RecordsComeBack) {
  const ZQFastFPDatabase database(file_.Name(), GetParam());
  ASSERT_TRUE(database.IsValid());
  EXPECT_EQ(database.NumFingerPrints(), count);
  EXPECT_EQ(database.GetFPTypeBase(), PathTypeOf(512));
  EXPECT_EQ(database.GetMemoryType(), GetParam());
  EXPECT_EQ(database.GetMemoryTypeString(), GetParam() == 1 ? "memory-mapped" : "in-memory");
  for (std::size_t i = 0; i < count; ++i) {
    ZQFingerPrint fp;
    ASSERT_TRUE(database.GetFingerPrint(fp, i));
    ASSERT_EQ(fp, fps_[i]);
    ASSERT_EQ(database.GetMoleculeIndex(i), static_cast<std::int64_t>(i));
  }
}

TEST_P(BackEnd, QueriesAgreeWithOneAnother) {
  const ZQFastFPDatabase database(file_.Name(), GetParam());
  ZQFPDatabaseOptions options(25, ZQSimMeasure::Tanimoto);
  const ZQFingerPrint& query = fps_[11];
  Hits all;
  std::vector<double> raw;
  for (auto score = database.GetRawScores(query, options); score; ++score) {
    // The float measures differ for two empty fingerprints only.
    if (query.CountBits() + fps_[raw.size()].CountBits() > 0) {
      ASSERT_FLOAT_EQ(static_cast<float>(*score), ZQTanimoto(query, fps_[raw.size()]));
    }
    all.emplace_back(raw.size(), *score);
    raw.push_back(*score);
  }
  ASSERT_EQ(raw.size(), count);
  EXPECT_EQ(HitsOf(database.GetScores(query, options)), all);
  EXPECT_EQ(HitsOf(database.GetScores(11, options)), all);

  std::sort(raw.begin(), raw.end(), std::greater<>());
  const Hits sorted = HitsOf(database.GetSortedScores(query, options));
  ASSERT_EQ(sorted.size(), 25U);
  for (std::size_t i = 0; i < 25; ++i) {
    EXPECT_EQ(sorted[i].second, raw[i]);
    EXPECT_EQ(sorted[i].second, all[sorted[i].first].second);
  }
  EXPECT_EQ(HitsOf(database.GetSortedScores(11, options)), sorted);
  const auto many = database.GetSortedScores({query, fps_[3]}, options);
  EXPECT_EQ(HitsOf(many[0]), sorted);
  EXPECT_EQ(HitsOf(many[1]), HitsOf(database.GetSortedScores(fps_[3], options)));

  options.SetNumProcessors(2);
  ZQSimSearchResult result(10);
  EXPECT_EQ(database.GetImpl().SortedSearch(result, query, options), ZQSimSearchStatus::Finished);
  Hits searched = HitsOf(result.GetSortedScores());
  for (std::size_t i = 0; i < 25; ++i) EXPECT_EQ(searched[i].second, sorted[i].second);
  EXPECT_EQ(result.GetHistogram().NumSamples(), count);

  EXPECT_EQ(database.GetHistogram(options, 10).NumSamples(), count * (count - 1) / 2);
  EXPECT_EQ(database.GetVariogram(std::vector<float>(count), options, 10).NumSamples(),
            count * (count - 1) / 2);
  auto nearest = database.GetSparseMatrix(options);
  auto matrix = database.GetAllScores(options);
  std::size_t pairs = 0;
  std::vector<float> scores;
  for (; matrix; ++matrix) scores.push_back(*matrix);
  for (; nearest; ++nearest, ++pairs) {
    EXPECT_EQ(nearest->GetIdx1(), pairs / 25);
    EXPECT_EQ(nearest->GetScore(), scores[nearest->GetIdx1() * count + nearest->GetIdx2()]);
  }
  EXPECT_EQ(pairs, 25 * count);
}

// Many scores are equal. The hits are those of all scores, sorted by score and index, however many
// threads and queries share the work, which is several batches of each thread and a ragged end.
TEST_P(BackEnd, HitsOfEqualScoreAreThoseOfLowestIndex) {
  const auto fps = RandomFingerPrints(9037, 256);
  const TempFile file("ties.fpbin");
  file.Write(DatabaseBytes(fps, PathTypeOf(256)));
  const ZQFastFPDatabase database(file.Name(), GetParam());
  const std::vector<ZQFingerPrint> queries = {fps[0], fps[9], fps[4001]};
  for (const bool descending : {true, false}) {
    for (const auto& [measure, limit, hasCutoff] : {std::tuple(1U, 7U, false),
                                                    {1U, 500U, true},
                                                    {4U, 1U, false},
                                                    {5U, 40U, false},
                                                    {6U, 3000U, true},
                                                    {2U, 0U, false}}) {
      ZQFPDatabaseOptions options(limit, measure);
      options.SetDescendingOrder(descending);
      if (hasCutoff) options.SetCutoff(0.25F);
      std::vector<Hits> expected;
      for (const ZQFingerPrint& query : queries) {
        Hits& hits = expected.emplace_back();
        std::uint64_t index = 0;
        for (auto score = database.GetRawScores(query, options); score; ++score, ++index) {
          const double bar = hasCutoff ? 0.25 : descending ? 0.0 : 2.0;
          if (descending ? *score > bar : *score < bar) hits.emplace_back(index, *score);
        }
        std::stable_sort(hits.begin(), hits.end(), [&](const auto& a, const auto& b) {
          return descending ? a.second > b.second : a.second < b.second;
        });
        if (limit != 0) hits.resize(std::min<std::size_t>(limit, hits.size()));
      }
      for (const unsigned int threads : {1U, 2U, 4U}) {
        options.SetNumProcessors(threads);
        auto together = database.GetSortedScores(queries, options);
        for (std::size_t i = 0; i < queries.size(); ++i) {
          EXPECT_EQ(HitsOf(together[i]), expected[i]) << measure << " " << limit << " " << threads;
          EXPECT_EQ(HitsOf(database.GetSortedScores(queries[i], options)), expected[i]) << measure;
          ZQSimSearchResult result(10, 0.0, 1.0);
          database.GetImpl().SortedSearch(result, queries[i], options);
          EXPECT_EQ(HitsOf(result.GetSortedScores()), expected[i]) << measure << " " << limit;
        }
      }
    }
  }
}

TEST_P(BackEnd, NearestOthersOfEachRecord) {
  const ZQFastFPDatabase database(file_.Name(), GetParam());
  std::vector<std::vector<double>> scores(count);
  auto matrix = database.GetAllScores({});
  for (std::size_t i = 0; matrix; ++matrix, ++i) {
    if (i / count != i % count) scores[i / count].push_back(*matrix);
  }
  for (auto& row : scores) std::sort(row.begin(), row.end(), std::greater<>());
  // The score of record 0 at its rank 5 is that of others too; one at the cutoff is within it.
  const auto atCutoff = static_cast<float>(scores[0][5]);
  for (const unsigned int limit : {0U, 1U, 7U, 1199U, 1200U, 5000U}) {
    for (const bool hasCutoff : {false, true}) {
      ZQFPDatabaseOptions options(limit, ZQSimMeasure::Tanimoto);
      if (hasCutoff) options.SetCutoff(atCutoff);
      std::vector<std::vector<double>> found(count);
      const auto visit = [&](const ZQSimScorePair& pair) {
        EXPECT_NE(pair.GetIdx1(), pair.GetIdx2());
        found[pair.GetIdx1()].push_back(pair.GetScore());
      };
      std::size_t expected = 0;
      const std::uint64_t visited = ZQVisitNeighbors(database, options, visit);
      for (std::size_t i = 0; i < count; ++i) {
        std::vector<double> row = scores[i];
        if (limit != 0 && limit < row.size()) row.resize(limit);
        if (hasCutoff) std::erase_if(row, [&](double s) { return s < double{atCutoff}; });
        ASSERT_EQ(found[i], row) << "record " << i << ", limit " << limit;
        expected += row.size();
      }
      EXPECT_EQ(visited, expected);
    }
  }
}

TEST_P(BackEnd, QueriesOverAllPairsEndByTheirTracer) {
  const ZQFastFPDatabase database(file_.Name(), GetParam());
  ExpectQueriesEndByTheirTracer(database);
}

TEST_P(BackEnd, QueriesFromManyThreads) {
  const ZQFastFPDatabase database(file_.Name(), GetParam());
  const Hits expected = HitsOf(database.GetSortedScores(5, {}));
  OnThreads(4, [&](unsigned int) {
    ZQFPDatabaseOptions options;
    options.SetNumProcessors(2);
    EXPECT_EQ(HitsOf(database.GetSortedScores(5, {})), expected);
    EXPECT_EQ(HitsOf(database.GetSortedScores({fps_[5], fps_[6]}, options)[0]), expected);
  });
}

TEST_P(BackEnd, BadArgumentsWarnAndGiveNothing) {
  const ZQFastFPDatabase database(file_.Name(), GetParam());
  const std::string name = "ZQFastFPDatabase::";
  CapturedReports reports;
  const auto expect = [&](bool holds, const std::string& text) {
    EXPECT_TRUE(holds) << text;
    EXPECT_EQ(reports.Take(), Texts{name + text});
  };
  const ZQMol empty;
  const ZQFingerPrint other = RandomFingerPrints(1, 256)[0];
  const ZQFPDatabaseOptions options;
  ZQFingerPrint fp;

  expect(!database.GetFingerPrint(fp, count), "GetFingerPrint() : fingerprint index out of range!");
  expect(database.GetMoleculeIndex(count) == -1,
         "GetMolculeIndex() : fingerprint index out of range!");
  expect(!database.GetScores(ZQFingerPrint(), options), "GetScores() : invalid fingerprint type!");
  expect(!database.GetRawScores(other, options), "GetRawScores() : fingerprint type mismatch!");
  expect(!database.GetSortedScores(empty, options), "GetSortedScores() : empty molecule!");
  expect(!database.GetSortedScores(count, options),
         "GetSortedScores() : fingerprint index out of range!");
  // Sorted scores don't check the type; a query of another number of words is an assertion failure.
  ZQFingerPrint untyped = fps_[0];
  untyped.SetFPTypeBase(nullptr);
  EXPECT_TRUE(database.GetSortedScores(untyped, options));
  EXPECT_FALSE(database.GetSortedScores(other, options));
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
  EXPECT_EQ(database.GetSortedScores({other, fps_[0]}, options).size(), 2U);
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});

  ZQFPDatabaseOptions tversky(0, ZQSimMeasure::Tversky);
  expect(database.GetVariogram({}, tversky, 7).NumBins() == 7U,
         "GetVariogram() : Tversky similarity is not supported!");
  expect(database.GetVariogram({1.0F}, options, 7).NumSamples() == 0U,
         "GetVariogram() : 1 values for 1200 fingerprints!");
  expect(!database.GetSparseMatrix({count + 1, 1}),
         GetParam() == 1
             ? "GetSparseMatrix() set to retrieve more nearest neighbors (1201) than there are "
               "fingerprints (1200)!"
             : "GetSparseMatrix() : set to retrieve more nearest neighbors (1201) than there are "
               "fingerprints (1200).");
  EXPECT_FALSE(database.GetSparseMatrix({3000000000U, 1}));
  EXPECT_NE(reports.Take().front().find(" (-1294967296) "), std::string::npos);
  ZQFPDatabaseOptions all(0, ZQSimMeasure::Tanimoto);
  EXPECT_TRUE(database.GetSparseMatrix(all));
  EXPECT_EQ(
      reports.Take(),
      (Texts{name + "GetSparseMatrix() : set to retrieve all nxn scores!",
             name + "GetSparseMatrix() : no cutoff specified, all results will be returned!"}));
  ZQFPDatabaseOptions nothing;
  nothing.SetCutoff(2.0F);
  EXPECT_FALSE(database.GetScores(0, nothing));
  EXPECT_FALSE(database.GetSortedScores(0, nothing));
  // More bins than there is memory for.
  EXPECT_EQ(database.GetHistogram(options, 1UL << 60).NumBins(), 0U);
  reports.Take();

  ZQSimSearchResult result;
  EXPECT_EQ(database.GetImpl().SortedSearch(result, fps_[0], options), ZQSimSearchStatus::Finished);
  database.GetImpl().SortedSearch(result, fps_[0], options);
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});  // it has already run
  ZQMol invalid;
  invalid.SetValid(false);
  expect(database.SortedSearch(result, invalid, options) == ZQSimSearchStatus::Uninitialized,
         "SortedSearch() cannot generate fingerprint!");
}

TEST_P(BackEnd, AFileCutAnywhereIsRefusedWithoutACrash) {
  for (const std::size_t size : {0, 50, 100, 101, 400, 799, 800, 807, 820, 880, 4096, 5000}) {
    file_.Write(bytes_.substr(0, size));
    CapturedReports reports;
    const ZQFastFPDatabase database(file_.Name(), GetParam());
    if (!database.IsValid()) continue;
    EXPECT_EQ(GetParam(), ZQFastFPDatabaseMemoryType::MemoryMapped) << size;
    EXPECT_TRUE(reports.Take().empty());
    ZQFingerPrint fp;
    EXPECT_FALSE(database.GetFingerPrint(fp, count - 1));
    EXPECT_FALSE(database.GetSortedScores(fps_[0], {}));
    EXPECT_EQ(database.GetHistogram({}, 5).NumSamples(), 0U);
    EXPECT_EQ(reports.Take().back(),
              "ZQFastFPDatabase::GetHistogram() : fingerprint database file " + file_.Name() +
                  " is shorter than its header says!");
  }
}

TEST_P(BackEnd, AHeaderThatDoesntFitItsTypeIsNotScanned) {
  struct Case {
    unsigned int numbits;
    std::uint64_t numWords, count, size;
  };
  for (const Case& c :
       {Case{256, 0, 3, 848}, Case{256, 3, 3, 920}, Case{256, 8, 3, 1040}, Case{192, 3, 3, 920},
        Case{4000, 62, 3, 2336}, Case{256, ~0UL - 1, 0, 800}, Case{256, (1UL << 61) - 2, 0, 800},
        Case{256, 0, 1UL << 40, 9000}, Case{256, 4, 1UL << 40, 9000}}) {
    WriteClaim(file_, PathTypeOf(c.numbits), c.numWords, c.count, c.size);
    CapturedReports reports;
    const ZQFastFPDatabase database(file_.Name(), GetParam());
    if (c.count > 3 && GetParam() == ZQFastFPDatabaseMemoryType::InMemory) {
      EXPECT_FALSE(database.IsValid());
      continue;
    }
    ASSERT_TRUE(database.IsValid());
    ZQFingerPrint fp;
    EXPECT_EQ(database.GetFingerPrint(fp, 0), c.count > 0);
    EXPECT_TRUE(c.count == 0 || fp.GetSize() == 64 * c.numWords);
    const ZQFingerPrint query = RandomFingerPrints(1, c.numbits)[0];
    for (unsigned int measure = 1; measure <= 6; ++measure) {
      const ZQFPDatabaseOptions options(0, measure);
      EXPECT_FALSE(database.GetScores(query, options));
      EXPECT_FALSE(database.GetSortedScores(query, options));
      EXPECT_FALSE(database.GetSortedScores({query, fp}, options)[1]);
      EXPECT_FALSE(database.GetRawScores(0, options));
      EXPECT_FALSE(database.GetSortedScores("CCO"_mol, options));
      EXPECT_FALSE(database.GetAllScores(options));
      EXPECT_FALSE(database.GetSparseMatrix(options));
      EXPECT_EQ(database.GetHistogram(options, 5).NumSamples(), 0U);
      if (c.count <= 3) database.GetVariogram(std::vector<float>(c.count), options, 5);
      ZQSimSearchResult result;
      EXPECT_EQ(database.GetImpl().SortedSearch(result, query, options),
                ZQSimSearchStatus::Uninitialized);
    }
    EXPECT_EQ(reports.Count(ZQErrorLevel::Fatal), 0U) << c.numWords << " " << c.count;
    reports.Take();
    EXPECT_FALSE(database.GetAllScores({}));
    const Texts texts = reports.Take();
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_EQ(texts[0].substr(0, 35), "ZQFastFPDatabase::GetAllScores() fi");
  }
}

// A type may have radii for which no fingerprint can be made.
TEST_P(BackEnd, MoleculesAreNoQueriesUnderATypeThatCantBeMade) {
  const ZQFPTypeBase* type = ZQGetCircularFPType(256, 0, 200, 1, 1);
  std::vector<ZQFingerPrint> fps = RandomFingerPrints(3, 256);
  for (ZQFingerPrint& fp : fps) fp.SetFPTypeBase(type);
  file_.Write(DatabaseBytes(fps, type));
  const ZQFastFPDatabase database(file_.Name(), GetParam());
  CapturedReports reports;
  ZQSimSearchResult result;
  EXPECT_FALSE(database.GetSortedScores("CCO"_mol, {}));
  EXPECT_FALSE(database.GetRawScores("CCO"_mol, {}));
  EXPECT_EQ(database.SortedSearch(result, "CCO"_mol, {}), ZQSimSearchStatus::Uninitialized);
  EXPECT_EQ(reports.Take(),
            (Texts{"ZQFastFPDatabase::GetSortedScores() : cannot generate fingerprint!",
                   "ZQFastFPDatabase::GetRawScores() cannot generate fingerprint!",
                   "ZQFastFPDatabase::SortedSearch() cannot generate fingerprint!"}));
  EXPECT_TRUE(database.GetSortedScores(0, {}));
}

TEST(FastFPDatabase, ChecksOfADatabaseThatIsNotValid) {
  CapturedReports reports;
  const ZQFastFPDatabase database("/no/such.fpbin");
  reports.Take();
  EXPECT_FALSE(database.IsValidFPIndex(0, "me()"));
  EXPECT_FALSE(database.IsValidFPType(RandomFingerPrints(1, 256)[0], "me()"));
  EXPECT_EQ(reports.Count(ZQErrorLevel::Fatal), 0U);
  EXPECT_EQ(reports.Take().back(), "me() : fingerprint type mismatch!");
}

TEST(MemoryMapped, AResultBeyondAnyMemoryIsAWarning) {
  constexpr std::uint64_t count = std::uint64_t{1} << 32;
  const TempFile file("sparse.fpbin");
  WriteClaim(file, PathTypeOf(256), 4, count, 800 + 48 * count);
  const ZQFastFPDatabase database(file.Name());
  ASSERT_TRUE(database.IsValid());
  CapturedReports reports;
  EXPECT_FALSE(database.GetAllScores({}));
  ASSERT_EQ(reports.Reports().size(), 1U);
  EXPECT_TRUE(reports.Take()[0].starts_with("ZQFastFPDatabase::GetAllScores() : "));
  EXPECT_FALSE(database.GetSparseMatrix(ZQFPDatabaseOptions(0, ZQSimMeasure::Tanimoto)));
  EXPECT_EQ(reports.Take().back(),
            "ZQFastFPDatabase::GetSparseMatrix(): not enough system memory to store results!");
}

TEST(MemoryMapped, WithoutAMapping) {
  struct Unmapped : ZQFastFPMemoryMapDatabaseImpl {
    using ZQFastFPMemoryMapDatabaseImpl::ZQFastFPMemoryMapDatabaseImpl;
    void Unmap() { file_.Close(); }
  };
  const auto fps = RandomFingerPrints(20, 256);
  const TempFile file("unmapped.fpbin");
  file.Write(DatabaseBytes(fps, PathTypeOf(256)));
  Unmapped database(file.Name());
  EXPECT_EQ(std::memcmp(database.GetFilePtr("me()"), "LE\n", 3), 0);
  database.Unmap();
  CapturedReports reports;
  EXPECT_EQ(database.GetFilePtr("me()"), nullptr);
  EXPECT_EQ(reports.Take(),
            (Texts{"Assertion", "me() : invalid fingerprint database file pointer!"}));
  const auto expect = [&](bool holds, const std::string& name) {
    EXPECT_TRUE(holds) << name;
    EXPECT_EQ(reports.Take(), (Texts{"Assertion", "ZQFastFPDatabase::" + name +
                                                      " invalid fingerprint database file "
                                                      "pointer!"}));
  };
  expect(!database.GetScores(fps[0], {}), "GetScores() :");
  expect(!database.GetSortedScores(fps[0], {}), "GetSortedScores() :");
  expect(!database.GetSortedScores(fps, {})[19], "GetSortedScores() :");
  expect(!database.GetRawScores(fps[0], {}), "GetRawScores() :");
  expect(!database.GetAllScores({}), "GetAllScores()");
  expect(database.GetHistogram({}, 7).NumBins() == 7, "GetHistogram() :");
  expect(database.GetVariogram(std::vector<float>(20), {}, 7).NumBins() == 7, "GetVariogram() :");
  expect(!database.GetSparseMatrix({5, 1}), "GetSparseMatrix() :");
  std::vector<std::uint64_t> words;
  std::uint64_t id = 0;
  std::uint64_t popcount = 0;
  expect(!database.GetFingerPrint(words, id, popcount, 0), "GetFingerPrint() :");
  ZQSimSearchResult result;
  expect(database.SortedSearch(result, fps[0], {}) == ZQSimSearchStatus::Uninitialized,
         "Search() :");
}

TEST(ImplBase, OperationsKeepTheirSlots) {
  using Base = ZQFastFPDatabaseImplBase;
  using Options = const ZQFPDatabaseOptions&;
  using Words = std::vector<std::uint64_t>&;
  // A pointer to a virtual function is its offset into the table, and 1; destructors take two.
  std::uintptr_t slot = 2;
  const auto expectNext = [&](auto function) {
    EXPECT_EQ((std::bit_cast<std::array<std::uintptr_t, 2>>(function)[0]), 8 * slot + 1);
    ++slot;
  };
  using HitsOf = ZQIter<ZQSimScore> (Base::*)(const ZQFingerPrint&, Options) const;
  expectNext(&Base::IsValid);
  expectNext(&Base::GetMemoryType);
  expectNext(&Base::GetMemoryTypeString);
  expectNext(static_cast<HitsOf>(&Base::GetScores));
  expectNext(static_cast<HitsOf>(&Base::GetSortedScores));
  expectNext(static_cast<ZQIter<double> (Base::*)(const ZQFingerPrint&, Options) const>(
      &Base::GetRawScores));
  expectNext(&Base::GetAllScores);
  expectNext(&Base::GetHistogram);
  expectNext(&Base::GetVariogram);
  expectNext(&Base::GetSparseMatrix);
  expectNext(
      static_cast<unsigned int (Base::*)(ZQSimSearchResult&, const ZQFingerPrint&, Options) const>(
          &Base::SortedSearch));
  expectNext(
      static_cast<bool (Base::*)(Words, std::uint64_t&, std::uint64_t&, std::uint64_t) const>(
          &Base::GetFingerPrint));
}

TEST(InMemory, TakesMemoryForWhatTheFileHas) {
  const TempFile file("claim.fpbin");
  struct Case {
    std::uint64_t numWords, count, size;
    const char* text;
  };
  for (const Case& c : {Case{1UL << 29, 1, 848, "cannot read 0-th fingerprint"},
                        Case{4, 1UL << 26, 848 + 47, "cannot read 1-th fingerprint"},
                        Case{0, 1UL << 26, 800 + 160, "cannot read 10-th fingerprint"},
                        Case{~0UL - 1, 5, 848, "cannot read 0-th fingerprint"},
                        Case{~0UL, 5, 848, "cannot read 0-th fingerprint"}}) {
    WriteClaim(file, PathTypeOf(256), c.numWords, c.count, c.size);
    CapturedReports reports;
    const double before = PeakMiB();
    EXPECT_FALSE(ZQFastFPDatabase(file.Name(), ZQFastFPDatabaseMemoryType::InMemory).IsValid());
    EXPECT_LT(PeakMiB() - before, 64);
    EXPECT_EQ(reports.Take(), Texts{constructor + " : " + c.text});
  }
}

TEST(InMemory, ChecksEachRecord) {
  const auto fps = RandomFingerPrints(20, 256);
  const std::string bytes = DatabaseBytes(fps, PathTypeOf(256));
  const TempFile file("records.fpbin");
  std::string damaged = bytes;
  damaged.replace(800 + 7 * 48 + 8, 8, ZQConvert(std::uint64_t{257}));
  std::string moved = bytes;
  moved.replace(800 + 7 * 48, 8, ZQConvert(std::uint64_t{8}));
  std::string endless = bytes;
  endless.replace(endless.find("\n20\n"), 15, "\n1099511627776\n");
  for (const std::size_t at : {784U, 792U}) {
    endless.replace(at, 8, ZQConvert(std::uint64_t{1} << 40));
  }

  CapturedReports reports;
  file.Write(bytes.substr(0, bytes.size() - 1));
  EXPECT_TRUE(ZQFastFPDatabase(file.Name(), 1).IsValid());
  EXPECT_FALSE(ZQFastFPDatabase(file.Name(), 2).IsValid());
  EXPECT_EQ(reports.Take(), Texts{constructor + " : cannot read 19-th fingerprint"});
  file.Write(damaged);
  EXPECT_TRUE(ZQFastFPDatabase(file.Name(), 1).IsValid());
  EXPECT_FALSE(ZQFastFPDatabase(file.Name(), 2).IsValid());
  EXPECT_EQ(reports.Take(), Texts{constructor + " : invalid data in 7-th fingerprint"});
  file.Write(moved);
  ZQFingerPrint fp;
  EXPECT_FALSE(ZQFastFPDatabase(file.Name(), 2).GetFingerPrint(fp, 7));
  EXPECT_EQ(reports.Take(), Texts{"ZQFastFPDatabase::GetFingerPrint() : fingerprint and molecule "
                                  "index inconsistency!"});
  // A size beyond any memory.
  file.Write(endless.substr(0, 800));
  EXPECT_FALSE(ZQFastFPDatabase(file.Name(), 2).IsValid());
  EXPECT_EQ(reports.Take().size(), 1U);
  EXPECT_FALSE(ZQFastFPDatabase(file.Name(), 1).GetSortedScores(fps[0], {}));
}

TEST(FastDatabase, AMissingFileAnswersNothing) {
  CapturedReports reports;
  const ZQFastFPDatabase database("/no/such.fpbin", 1);
  const Texts opening{
      "ZQFastFPDatabaseParams() cannot open fingerprint database file /no/such.fpbin",
      constructor + " : cannot initialize object!", constructor + " : no pop count support!"};
  EXPECT_EQ(reports.Take(), opening);
  EXPECT_EQ(database.NumFingerPrints(), 0U);
  EXPECT_EQ(reports.Take(),
            Texts{"ZQFastFPDatabase::NumFingerPrints() : invalid ZQFastFPDatabase object!"});
  EXPECT_FALSE(database.GetSparseMatrix({}));
  EXPECT_EQ(database.GetHistogram({}, 9).NumBins(), 9U);
  EXPECT_EQ(database.GetMoleculeIndex(0), -1);
  EXPECT_EQ(database.GetSortedScores(std::vector<ZQFingerPrint>(3), {}).size(), 3U);
  EXPECT_EQ(reports.Take().size(), 4U);
  Texts inMemory = opening;
  inMemory.push_back(constructor + " cannot initialize object for in memory search!");
  EXPECT_FALSE(ZQFastFPDatabase("/no/such.fpbin", 2).IsValid());
  EXPECT_EQ(reports.Take(), inMemory);
}

TEST(FastDatabase, OtherMemoryTypesFallBack) {
  if (ZQKorvexIsGPUReady()) GTEST_SKIP() << "this machine has a GPU";
  const TempFile file("fallback.fpbin");
  file.Write(DatabaseBytes(RandomFingerPrints(3, 256), PathTypeOf(256)));
  const std::string noDevice =
      constructor + " : no CUDA-enabled device available falling back to memory-mapped type!";
  for (const unsigned int type : {0U, 3U, 7U}) {
    CapturedReports reports;
    const ZQFastFPDatabase database(file.Name(), type);
    EXPECT_EQ(database.GetMemoryType(), ZQFastFPDatabaseMemoryType::MemoryMapped);
    Texts expected{noDevice};
    if (type != 3) {
      expected.insert(
          expected.begin(),
          constructor + " : invalid memory type parameter initialized for memory-mapped!");
    }
    EXPECT_EQ(reports.Take(), expected);
  }
}

TEST(FastDatabase, WithoutRecords) {
  const TempFile file("empty.fpbin");
  file.Write(DatabaseBytes({}, PathTypeOf(256)));
  const ZQFingerPrint query = RandomFingerPrints(1, 256)[0];
  for (const unsigned int type : {1U, 2U}) {
    const ZQFastFPDatabase database(file.Name(), type);
    EXPECT_TRUE(database.IsValid());
    EXPECT_FALSE(database.GetSortedScores(query, {}));
    EXPECT_FALSE(database.GetSortedScores({query, query}, {})[1]);
    EXPECT_FALSE(database.GetAllScores({}));
    ZQSimSearchResult result;
    EXPECT_EQ(database.GetImpl().SortedSearch(result, query, {}), ZQSimSearchStatus::Finished);
    EXPECT_FALSE(result.GetSortedScores());
  }
}

TEST(FastDatabase, QueriesWithAMolecule) {
  const ZQFPTypeBase* type = ZQGetFPType(ZQFPType::Path);
  const std::vector<std::string> smiles{"CCO", "c1ccccc1", "CC(=O)Oc1ccccc1C(=O)O", "CCN"};
  std::vector<ZQFingerPrint> fps(smiles.size());
  for (std::size_t i = 0; i < smiles.size(); ++i) {
    const ZQMol mol = ReadSmiles(smiles[i]);
    ASSERT_TRUE(ZQMakeFP(fps[i], mol, type));
  }
  const TempFile file("molecules.fpbin");
  file.Write(DatabaseBytes(fps, type));
  const ZQFastFPDatabase database(file.Name());
  const ZQMol query = "OCC"_mol;
  EXPECT_EQ(HitsOf(database.GetSortedScores(query, {}))[0], std::pair(std::uint64_t{0}, 1.0));
  EXPECT_EQ(HitsOf(database.GetScores(query, {})), HitsOf(database.GetScores(0, {})));
  EXPECT_EQ(*database.GetRawScores(query, {}), 1.0);
  ZQSimSearchResult result;
  EXPECT_EQ(database.SortedSearch(result, query, {}), ZQSimSearchStatus::Finished);
  EXPECT_EQ(result.GetSortedScores()->GetIdx(), 0U);
  EXPECT_EQ(database.SortedSearch(result, query, {}), ZQSimSearchStatus::Finished);  // once more
}
