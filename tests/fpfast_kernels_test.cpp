#include "korvex/fpfast_kernels_local.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include "fp_helpers.h"
#include "korvex/fpfast_variants_local.h"
#include "mol_helpers.h"
#include "processor_helpers.h"

using namespace ZQKorvex;

namespace {

// The reference: each pair computed separately, in plain integers.

double PlainScore(const ZQFPDatabaseOptions& options, const std::uint64_t* a,
                  const std::uint64_t* b, std::size_t numWords) {
  double c = 0;
  for (std::size_t w = 0; w < numWords; ++w) c += std::popcount(a[2 + w] & b[2 + w]);
  const auto q = static_cast<double>(a[1]);
  const auto r = static_cast<double>(b[1]);
  const auto bits = static_cast<double>(64 * numWords);
  switch (options.GetSimFunc()) {
    case ZQSimMeasure::Tanimoto:
      return c == 0 ? 0.0 : c / (q + r - c);
    case ZQSimMeasure::Cosine:
      return c == 0 ? 0.0 : c / std::sqrt(r * q);
    case ZQSimMeasure::Dice:
      return q + r == 0 ? 0.0 : 2 * c / (q + r);
    case ZQSimMeasure::Euclid:
      return std::sqrt((bits - q - r + 2 * c) * (1.0 / bits));
    case ZQSimMeasure::Tversky: {
      const double d = (q - c) * double{options.GetTverskyAlpha()} +
                       (r - c) * double{options.GetTverskyBeta()} + c;
      return d == 0 ? 0.0 : c / d;
    }
    default:
      return (q + r - 2 * c) * (1.0 / bits);
  }
}

struct Data {
  Data(std::size_t n, unsigned int numbits, std::size_t offset = 0, unsigned int seed = 1)
      : fps(RandomFingerPrints(n, numbits, seed)),
        words(RecordsOf(fps, offset)),
        data(words.data() + offset),
        count(n),
        numWords(numbits / 64) {}

  const std::uint64_t* At(std::size_t i) const { return data + i * (numWords + 2); }
  double Score(const ZQFPDatabaseOptions& options, std::size_t i, std::size_t j) const {
    return PlainScore(options, At(i), At(j), numWords);
  }

  ZQScanRecords Scanned(ZQPopCountFunc popCount = ZQPopCountPOPCNT) const {
    return {data, count, numWords, popCount};
  }
  std::vector<double> Raw(const ZQFPDatabaseOptions& options, std::size_t query,
                          ZQPopCountFunc popCount = ZQPopCountPOPCNT) const {
    std::vector<double> scores;
    ZQFastFPRaw(scores, fps[query], options, Scanned(popCount));
    return scores;
  }

  std::vector<ZQFingerPrint> fps;
  std::vector<std::uint64_t> words;
  const std::uint64_t* data;
  std::size_t count;
  std::size_t numWords;
};

using Hits = std::vector<std::pair<std::uint64_t, double>>;

Hits HitsOf(const std::vector<ZQSimScore>& items) {
  Hits hits;
  for (const ZQSimScore& item : items) hits.emplace_back(item.GetIdx(), item.GetScore());
  return hits;
}

// Threads and calls recorded by the test's popcount function.
std::mutex callsLock;
std::size_t calls = 0;
std::set<std::thread::id> callers;
unsigned long CountingPopCount(const unsigned long* words, unsigned long count) {
  const std::lock_guard guard(callsLock);
  ++calls;
  callers.insert(std::this_thread::get_id());
  return ZQPopCountBitCount(words, count);
}

}  // namespace

TEST_P(EveryVariant, ScoresAreTheJudgesBitForBit) {
  for (const unsigned int numWords :
       {4U, 8U, 12U, 16U, 20U, 24U, 28U, 60U, 64U, 68U, 124U, 128U, 132U, 252U}) {
    for (const std::size_t count : {1U, 7U, 8U, 9U, 63U, 64U, 65U, 130U}) {
      const Data records(count, 64 * numWords, numWords % 3, numWords);
      for (unsigned int measure = 1; measure <= 6; ++measure) {
        ZQFPDatabaseOptions options(0, measure);
        options.SetTverskyCoeffs(0.7F, 0.2F);
        const std::size_t query = count / 2;
        const auto scores = records.Raw(options, query);
        EXPECT_EQ(ZQGetLatestProcessor(), GetParam());
        ASSERT_EQ(scores.size(), count);
        for (std::size_t i = 0; i < count; ++i) {
          ASSERT_EQ(scores[i], records.Score(options, query, i))
              << numWords << " words, record " << i << ", measure " << measure;
        }
      }
    }
  }
}

TEST_P(EveryVariant, CountsAreTheJudgesAtEveryLengthAndStart) {
  constexpr std::size_t numRecords = 19;
  constexpr std::size_t stride = 5;  // they overlap
  std::mt19937_64 random(11);
  std::vector<std::uint64_t> words(400);
  for (std::uint64_t& word : words) word = random();
  std::fill_n(words.begin() + 40, 320, ~std::uint64_t{0});  // sums of bytes are at their maximum
  const ZQPopCountFunc popcount = ZQGetPopCountFunc(ZQGetPopCountMethod());
  const ZQScanVariant& scans = *ZQGetProcessor().scans;
  EXPECT_EQ(popcount(words.data(), 0), 0U);
  for (std::size_t length = 4; length <= 260; length += 4) {
    for (std::size_t start = 0; start < 4; ++start) {
      const std::uint64_t* query = &words[44 - start];
      const std::uint64_t* records = &words[start];
      std::array<std::uint32_t, numRecords> counts;
      scans.scan(query, records, 0, stride, numRecords, length, counts.data());
      for (std::size_t i = 0; i < numRecords; ++i) {
        std::vector<std::uint64_t> common(start + length);
        std::uint32_t expected = 0;
        for (std::size_t w = 0; w < length; ++w) {
          common[start + w] = query[w] & records[i * stride + w];
          expected += static_cast<std::uint32_t>(std::popcount(common[start + w]));
        }
        ASSERT_EQ(counts[i], expected) << length << " words from " << start << ", record " << i;
        ASSERT_EQ(popcount(&common[start], length), expected) << length << " words";
      }
    }
  }
}

TEST_P(EveryVariant, CountsOfAPairAtEveryLength) {
  std::mt19937_64 random(12);
  std::vector<std::uint64_t> words(700);
  for (std::uint64_t& word : words) word = random();
  std::fill_n(words.begin() + 20, 250, ~std::uint64_t{0});  // as above
  std::fill_n(words.begin() + 370, 270, ~std::uint64_t{0});
  for (std::size_t length = 0; length <= 300; ++length) {
    const std::uint64_t* a = &words[length % 3];
    const std::uint64_t* b = &words[350 + length % 7];
    ZQBitTerms expected;
    for (std::size_t w = 0; w < length; ++w) {
      expected.a += static_cast<std::uint32_t>(std::popcount(a[w]));
      expected.b += static_cast<std::uint32_t>(std::popcount(b[w]));
      expected.both += static_cast<std::uint32_t>(std::popcount(a[w] & b[w]));
    }
    const ZQBitTerms terms = ZQGetProcessor().scans->count(a, b, length);
    ASSERT_EQ(std::tie(terms.a, terms.b, terms.both),
              std::tie(expected.a, expected.b, expected.both))
        << length << " words";
  }
}

TEST(Processors, BestFirstAndAnyProcessorHasOne) {
  const std::vector<std::string> names = ZQGetProcessorNames();
  ASSERT_FALSE(names.empty());
  EXPECT_EQ(names.back(), "portable");
  EXPECT_FALSE(ZQForceProcessor("none such"));
  const Data records(10, 256);
  records.Raw({}, 0, ZQPopCountBitCount);
  EXPECT_EQ(ZQGetLatestProcessor(), names.front());
}

TEST(Scores, OfEmptyAndFullFingerPrints) {
  // Records: no bits, all 256, the lower 128, the upper 128. The query has the lower 128.
  std::vector<ZQFingerPrint> fps(4);
  for (std::size_t i = 0; i < 4; ++i) {
    fps[i].SetSize(256);
    fps[i].SetFPTypeBase(PathTypeOf(256));
    for (unsigned int w = 0; w < 4; ++w) {
      if (i == 1 || (i == 2 && w < 2) || (i == 3 && w >= 2)) fps[i].Words()[w] = ~std::uint64_t{0};
    }
  }
  const auto records = RecordsOf(fps);
  const std::vector<std::vector<double>> expected = {
      {0.0, 0.5, 1.0, 0.0},                                // Tanimoto
      {0.0, 128 / std::sqrt(128.0 * 256.0), 1.0, 0.0},     // Cosine
      {0.0, 256.0 / 384.0, 1.0, 0.0},                      // Dice
      {std::sqrt(0.5), std::sqrt(0.5), 1.0, 0.0},          // Euclid
      {0.0, 128 / (128 * double{0.05F} + 128), 1.0, 0.0},  // Tversky
      {0.5, 0.5, 0.0, 1.0},                                // Manhattan
  };
  for (unsigned int measure = 1; measure <= 6; ++measure) {
    std::vector<double> scores;
    ZQFastFPRaw(scores, fps[2], {0, measure}, {records.data(), 4, 4, ZQPopCountPOPCNT});
    EXPECT_EQ(scores, expected[measure - 1]) << measure;
    ZQFastFPRaw(scores, fps[0], {0, measure}, {records.data(), 1, 4, ZQPopCountPOPCNT});
    EXPECT_EQ(scores, std::vector<double>{measure == ZQSimMeasure::Euclid ? 1.0 : 0.0}) << measure;
  }
}

TEST(Scores, CutoffIsInclusiveInBothOrders) {
  const Data records(200, 256);
  for (const bool descending : {true, false}) {
    ZQFPDatabaseOptions options;
    options.SetDescendingOrder(descending);
    options.SetCutoff(static_cast<float>(0.5));
    std::vector<ZQSimScore> out(3);
    ZQFastFPSimScore(out, records.fps[0], options, records.Scanned());
    Hits expected;
    for (std::size_t i = 0; i < 200; ++i) {
      const double score = records.Score(options, 0, i);
      if (descending ? score >= 0.5 : score <= 0.5) expected.emplace_back(i, score);
    }
    EXPECT_EQ(HitsOf(out), expected);
  }
}

TEST(Kernels, AForeignPopCountIsCalledOncePerPair) {
  const Data records(300, 512);
  calls = 0;
  const auto foreign = records.Raw({}, 5, CountingPopCount);
  EXPECT_EQ(calls, 301U);  // one more for the query itself
  EXPECT_EQ(foreign, records.Raw({}, 5));
}

TEST_P(EveryVariant, HitListIsThatOfOneRecordAfterAnother) {
  const Data records(3000, 256);  // many ties
  for (const unsigned int limit : {0U, 1U, 3U, 100U, 2999U, 5000U, 1U << 31, ~0U}) {
    for (int variety = 0; variety < 4; ++variety) {
      ZQFPDatabaseOptions options(limit, variety % 2 == 0 ? 1 : 6);
      options.SetDescendingOrder(variety % 2 == 0);
      if (variety >= 2) options.SetCutoff(0.4F);
      const auto expected = ZQInitFPDatabaseHitList(3000, options);
      for (std::size_t i = 0; i < 3000; ++i) {
        expected->UpdateScores(ZQSimScore(i, records.Score(options, 7, i)));
      }
      expected->SortScores(true);
      const auto list = ZQInitFPDatabaseHitList(3000, options);
      ZQFastFPHitList(list.get(), records.fps[7], options, records.Scanned());
      list->SortScores(true);
      ASSERT_EQ(HitsOf(list->GetItems()), HitsOf(expected->GetItems())) << limit << " " << variety;
    }
  }
}

TEST_P(EveryVariant, ManyQueriesHitWhatEachHits) {
  const Data records(1500, 512);
  const auto queries = RandomFingerPrints(300, 512, 3);
  ZQFPDatabaseOptions options(10, ZQSimMeasure::Dice);
  std::vector<Hits> expected;
  for (const ZQFingerPrint& query : queries) {
    const auto list = ZQInitFPDatabaseHitList(1500, options);
    ZQFastFPHitList(list.get(), query, options, records.Scanned());
    list->SortScores(true);
    expected.push_back(HitsOf(list->GetItems()));
  }
  for (const unsigned int threads : {1U, 2U, 3U}) {
    options.SetNumProcessors(threads);
    std::vector<std::unique_ptr<ZQHitList<ZQSimScore>>> lists(queries.size());
    for (auto& list : lists) list = ZQInitFPDatabaseHitList(1500, options);
    ZQFastFPHitLists(lists, queries, options, records.Scanned());
    for (std::size_t i = 0; i < lists.size(); ++i) {
      lists[i]->SortScores(true);
      ASSERT_EQ(HitsOf(lists[i]->GetItems()), expected[i]) << threads << " threads, query " << i;
    }
  }
}

TEST_P(EveryVariant, ResultHasAllScoresOnAnyNumberOfThreads) {
  const Data records(5037, 256, 1);
  ZQFPHistogram expected(37, 0.0, 1.0);
  std::multiset<double, std::greater<>> scores;
  ZQFPDatabaseOptions options(50, ZQSimMeasure::Tanimoto);
  for (std::size_t i = 0; i < 5037; ++i) {
    expected.AddSample(records.Score(options, 3, i));
    scores.insert(records.Score(options, 3, i));
  }
  for (const unsigned int threads : {1U, 2U, 4U}) {
    options.SetNumProcessors(threads);
    ZQSimSearchResultImpl result(37, 0.0, 1.0);
    result.Init(5037, options);
    ZQFastFPResult(&result, records.fps[3], options, records.Scanned());
    result.SetSearchStatus(ZQSimSearchStatus::Finished);
    EXPECT_EQ(result.NumSearched(), 5037U);
    const ZQFPHistogram histogram = result.GetHistogram();
    auto count = histogram.GetCounts();
    for (auto want = expected.GetCounts(); want; ++want, ++count) EXPECT_EQ(*count, *want);
    auto best = scores.begin();
    unsigned int hits = 0;
    for (auto hit = result.GetSortedScores(); hit; ++hit, ++best, ++hits) {
      ASSERT_EQ(hit->GetScore(), *best);
      ASSERT_EQ(hit->GetScore(), records.Score(options, 3, hit->GetIdx()));
    }
    EXPECT_EQ(hits, 50U);
  }
}

TEST(Kernels, ThreadsStartAtAThousandRecords) {
  const Data records(1000, 256);
  ZQFPDatabaseOptions options;
  options.SetNumProcessors(2);
  for (const std::size_t count : {999U, 1000U}) {
    callers.clear();
    ZQSimSearchResultImpl result(10, 0.0, 1.0);
    result.Init(count, options);
    ZQFastFPResult(&result, records.fps[0], options, {records.data, count, 4, CountingPopCount});
    EXPECT_EQ(callers.contains(std::this_thread::get_id()), count == 999);
    EXPECT_EQ(callers.size(), count == 999 ? 1U : options.GetNumProcessors());
  }
}

TEST_P(EveryVariant, AllAgainstAll) {
  for (const std::size_t count : {0U, 1U, 2U, 64U, 65U, 200U}) {
    const Data records(count, 256, 1);
    for (unsigned int measure = 1; measure <= 6; ++measure) {
      const ZQFPDatabaseOptions options(0, measure);
      const bool symmetric = measure != ZQSimMeasure::Tversky;
      std::vector<float> matrix;
      ZQFastFPAllScores(matrix, options, records.Scanned());
      ASSERT_EQ(matrix.size(), count * count);
      // Many bins: scores of few bits coincide with the edges of some.
      for (const unsigned long bins : {1UL, 10UL, 49UL, 200UL, 66000UL}) {
        ZQFPHistogram expected(bins, 0.0, 1.0);
        for (std::size_t i = 0; i < count; ++i) {
          for (std::size_t j = 0; j < count; ++j) {
            const double score = records.Score(options, i, j);
            ASSERT_EQ(matrix[i * count + j], static_cast<float>(score)) << i << " " << j;
            if (!symmetric || i < j) expected.AddSample(score);
          }
        }
        ZQFPHistogram histogram(bins, 0.0, 1.0);
        ZQFastFPHistogram(histogram, options, records.Scanned());
        EXPECT_EQ(histogram.NumSamples(),
                  symmetric ? count * (count - (count > 0)) / 2 : count * count);
        auto got = histogram.GetCounts();
        for (auto want = expected.GetCounts(); want; ++want, ++got) ASSERT_EQ(*got, *want);
      }
    }
  }
}

TEST_P(EveryVariant, VariogramIsSummedRowByRow) {
  const Data records(150, 256);
  std::vector<float> values(150);
  for (std::size_t i = 0; i < 150; ++i) values[i] = std::sin(static_cast<float>(i));
  const ZQFPDatabaseOptions options;
  ZQFPVariogram expected(20, 0.0, 1.0);
  for (std::size_t i = 0; i < 150; ++i) {
    for (std::size_t j = i + 1; j < 150; ++j) {
      expected.AddSample(1.0F - static_cast<float>(records.Score(options, i, j)),
                         values[i] - values[j]);
    }
  }
  ZQFPVariogram variogram(20, 0.0, 1.0);
  ZQFastFPVariogram(variogram, values, options, records.Scanned());
  auto got = variogram.GetVariogram();
  for (auto want = expected.GetVariogram(); want; ++want, ++got) EXPECT_EQ(*got, *want);
}

namespace {

using Entries = std::vector<std::tuple<std::uint64_t, std::uint64_t, double>>;

/// Every `step`th row of a sparse matrix straight from the definition: each row keeps a list and
/// its lowest entry.
Entries PlainSparseMatrix(const Data& records, const ZQFPDatabaseOptions& options, std::size_t k,
                          std::size_t step = 1) {
  Entries out;
  for (std::size_t i = 0; i < records.count; i += step) {
    std::vector<std::pair<float, std::uint64_t>> list;
    float lowest = 100.0F;
    std::size_t position = 0;
    for (std::size_t j = 0; j < records.count; ++j) {
      const auto score = static_cast<float>(records.Score(options, i, j));
      if (list.size() < k) {
        list.emplace_back(score, records.At(j)[0]);
        if (lowest > score) {
          lowest = score;
          position = list.size() - 1;
        }
      } else if (score > lowest) {
        list[position] = {score, j};
        position = 0;
        for (std::size_t e = 1; e < k; ++e) {
          if (list[e].first < list[position].first) position = e;
        }
        lowest = list[position].first;
      }
    }
    std::sort(list.begin(), list.end(), std::greater<>());
    for (const auto& entry : list) {
      if (options.HasCutoff() && !(entry > std::pair(options.GetCutoff(), std::uint64_t{0}))) break;
      out.emplace_back(records.At(i)[0], entry.second, entry.first);
    }
  }
  return out;
}

/// The entries of every `step`th row.
Entries EntriesOf(const std::vector<ZQSimScorePair>& pairs, std::size_t step = 1) {
  Entries entries;
  for (const ZQSimScorePair& pair : pairs) {
    if (pair.GetIdx1() % step != 0) continue;
    entries.emplace_back(pair.GetIdx1(), pair.GetIdx2(), pair.GetScore());
  }
  return entries;
}

void ExpectEntries(const Entries& got, const Entries& expected, const std::string& what) {
  ASSERT_EQ(got.size(), expected.size()) << what;
  for (std::size_t i = 0; i < got.size(); ++i) {
    ASSERT_EQ(got[i], expected[i]) << what << ", entry " << i;
  }
}

void ExpectPlainSparseMatrix(const Data& records, const ZQFPDatabaseOptions& options, std::size_t k,
                             std::size_t step = 1) {
  std::vector<ZQSimScorePair> out;
  ZQFastFPSparseMatrix(out, options, records.Scanned(), k);
  ExpectEntries(EntriesOf(out, step), PlainSparseMatrix(records, options, k, step),
                std::to_string(k));
}

}  // namespace

TEST_P(EveryVariant, SparseMatrixKeepsWhatItIsToldAmongEquals) {
  for (const std::size_t count : {1U, 63U, 64U, 150U}) {
    Data records(count, 256);
    // Ids differ from the positions, which shows which of the two an entry contains.
    for (std::size_t i = 0; i < count; ++i) records.words[i * 6] = 7 * i + 1000;
    for (const unsigned int measure : {1U, 2U, 5U, 6U}) {
      ZQFPDatabaseOptions options(0, measure);
      for (const std::size_t k : {1U, 2U, 10U, 63U, 150U}) {
        if (k > count) continue;
        ExpectPlainSparseMatrix(records, options, k);
        ZQFPDatabaseOptions cut(options);
        cut.SetCutoff(0.5F);
        ExpectPlainSparseMatrix(records, cut, k);
      }
    }
  }
}

TEST(Kernels, SparseMatrixInBandsOfRows) {
  // More list entries than are kept at once: bands of less than a block, and of some blocks.
  ExpectPlainSparseMatrix(Data(1700, 256), ZQFPDatabaseOptions(0, 1), 1690);
  ExpectPlainSparseMatrix(Data(2700, 256), ZQFPDatabaseOptions(0, 1), 1000, 31);
}

TEST_P(EveryVariant, SparseMatrixIsTheSameInAnyBands) {
  for (const std::size_t count : {130U, 320U}) {
    const Data records(count, 256);
    for (unsigned int measure = 1; measure <= 6; ++measure) {
      const ZQFPDatabaseOptions options(0, measure);
      for (const std::size_t k : {1U, 7U, 70U}) {
        const Entries expected = PlainSparseMatrix(records, options, k);
        for (const std::size_t band : std::vector<std::size_t>{1, 16, 48, 63, 64, 65, 96, 100, 128,
                                                               192, 319, count, count + 1}) {
          std::vector<ZQSimScorePair> out;
          ZQFastFPSparseMatrixInBands(out, options, records.Scanned(), k, band);
          ExpectEntries(EntriesOf(out), expected,
                        "measure " + std::to_string(measure) + ", band " + std::to_string(band));
        }
      }
    }
  }
}

TEST(Kernels, ShortFormsReadTheHeader) {
  const auto fps = RandomFingerPrints(100, 256);
  const std::string bytes = DatabaseBytes(fps, PathTypeOf(256));
  std::vector<std::uint64_t> image(bytes.size() / 8);
  std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(image.data()));
  const Data records(100, 256);
  const ZQFPDatabaseOptions options;
  std::vector<double> shortForm;
  ZQFastFPRaw(shortForm, fps[2], options, {image.data(), ZQPopCountPOPCNT});
  EXPECT_EQ(shortForm, records.Raw(options, 2));
  std::vector<ZQSimScorePair> pairs;
  ZQFastFPSparseMatrix(pairs, options, {image.data(), ZQPopCountPOPCNT}, 3);
  EXPECT_EQ(pairs.size(), 300U);
}

TEST(Kernels, BadArgumentsAreAssertionFailures) {
  const Data records(100, 256);
  const ZQFPDatabaseOptions options;
  CapturedReports reports;
  std::vector<double> scores;
  ZQFastFPRaw(scores, records.fps[0], options, {nullptr, 100, 4, ZQPopCountPOPCNT});
  ZQFastFPRaw(scores, records.fps[0], options, {nullptr, ZQPopCountPOPCNT});
  ZQFastFPRaw(scores, RandomFingerPrints(1, 512)[0], options, records.Scanned());
  ZQFastFPRaw(scores, records.fps[0], options, {records.data, 100, 4, nullptr});
  ZQFastFPHitList(nullptr, records.fps[0], options, records.Scanned());
  ZQFastFPResult(nullptr, records.fps[0], options, records.Scanned());
  ZQFPVariogram variogram(10, 0.0, 1.0);
  ZQFastFPVariogram(variogram, std::vector<float>(100), {0, ZQSimMeasure::Tversky},
                    records.Scanned());
  ZQFastFPVariogram(variogram, std::vector<float>(99), options, records.Scanned());
  EXPECT_TRUE(scores.empty());
  EXPECT_EQ(variogram.NumSamples(), 0U);
  EXPECT_EQ(reports.Take(), Texts(8, "Assertion"));
}

TEST(Kernels, AMatrixBeyondAnyMemoryThrows) {
  const Data records(1, 256);
  std::vector<float> matrix;
  // The number of scores wraps to 0.
  EXPECT_THROW(
      ZQFastFPAllScores(matrix, {}, {records.data, std::uint64_t{1} << 32, 4, ZQPopCountPOPCNT}),
      std::length_error);
}

// Stored counts that are wrong.

TEST_P(EveryVariant, FalseCountsGiveScoresFromZeroToOne) {
  const std::uint64_t all = ~std::uint64_t{0};
  constexpr std::uint64_t huge = std::uint64_t{1} << 60;
  // The query has the lower 128 of 256 bits. Records: all of them, stored as 0; the same as 2^60,
  // which is read as 256; none of them, stored as 256.
  const std::vector<std::uint64_t> words{0, 0,    all, all, 0, 0,  //
                                         1, huge, all, all, 0, 0,  //
                                         2, 256,  0,   0,   0, 0};
  ZQFingerPrint query;
  query.SetSize(256);
  std::fill_n(query.Words(), 2, all);
  const double tversky = 128 / (128 * double{0.05F} + 128);
  const std::vector<std::vector<double>> expected = {
      {1.0, 0.5, 0.0},                           // Tanimoto, of 128 / 0
      {0.0, 128 / std::sqrt(256.0 * 128), 0.0},  // Cosine
      {1.0, 256.0 / 384, 0.0},                   // Dice, of 256 / 128
      {1.0, std::sqrt(0.5), 0.0},                // Euclid, of the roots of 1.5 and -0.5
      {1.0, tversky, 0.0},                       // Tversky
      {0.0, 0.5, 1.0},                           // Manhattan, of -0.5 and 1.5
  };
  CapturedReports reports;
  for (unsigned int measure = 1; measure <= 6; ++measure) {
    for (const ZQPopCountFunc popcount : {ZQPopCountPOPCNT, &CountingPopCount}) {
      std::vector<double> scores;
      ZQFastFPRaw(scores, query, {0, measure}, {words.data(), 3, 4, popcount});
      EXPECT_EQ(scores, expected[measure - 1]) << measure;
    }
  }
  EXPECT_TRUE(reports.Take().empty());
}

TEST_P(EveryVariant, AFalseCountIsNoOtherRecordsBusiness) {
  constexpr std::size_t count = 150;
  CapturedReports reports;
  for (unsigned int measure = 1; measure <= 6; ++measure) {
    ZQFPDatabaseOptions options(count, measure);
    Data records(count, 256);
    for (const std::size_t i : {1U, 62U, 65U, 149U}) records.words[6 * i + 1] = i % 3;
    const auto raw = records.Raw(options, 5);
    std::vector<float> matrix;
    ZQFastFPAllScores(matrix, options, records.Scanned());
    // Now an impossible count in each of the three blocks.
    for (const std::size_t i : {60U, 64U, 140U}) records.words[6 * i + 1] = ~std::uint64_t{0} - i;
    const auto isChanged = [](std::size_t i) { return i == 60 || i == 64 || i == 140; };
    EXPECT_EQ(records.Raw(options, 5), records.Raw(options, 5, CountingPopCount));
    const auto rawAfter = records.Raw(options, 5);
    std::vector<float> matrixAfter;
    ZQFastFPAllScores(matrixAfter, options, records.Scanned());
    for (std::size_t i = 0; i < count; ++i) {
      ASSERT_TRUE(isChanged(i) || rawAfter[i] == raw[i]) << measure << " " << i;
      for (std::size_t j = 0; j < count; ++j) {
        const float score = matrixAfter[i * count + j];
        ASSERT_TRUE(score >= 0.0F && score <= 1.0F);
        ASSERT_TRUE(isChanged(i) || isChanged(j) || score == matrix[i * count + j]);
      }
    }
    // The kernels agree, and no histogram gets a score outside its range.
    ZQFPHistogram histogram(10, 0.0, 1.0);
    ZQFastFPHistogram(histogram, options, records.Scanned());
    EXPECT_GE(histogram.NumSamples(), count * (count - 1) / 2);
    std::vector<ZQSimScorePair> pairs;
    ZQFastFPSparseMatrixInBands(pairs, options, records.Scanned(), count, 64);
    ASSERT_EQ(pairs.size(), count * count);
    for (const ZQSimScorePair& pair : pairs) {
      ASSERT_EQ(pair.GetScore(), matrixAfter[pair.GetIdx1() * count + pair.GetIdx2()]);
    }
    ZQSimSearchResultImpl result(10, 0.0, 1.0);
    result.Init(count, options);
    ZQFastFPResult(&result, records.fps[5], options, records.Scanned());
    result.SetSearchStatus(ZQSimSearchStatus::Finished);
    EXPECT_EQ(result.GetHistogram().NumSamples(), count);
    for (auto hit = result.GetSortedScores(); hit; ++hit) {
      ASSERT_EQ(hit->GetScore(), rawAfter[hit->GetIdx()]);
    }
  }
  EXPECT_TRUE(reports.Take().empty());
}
