// The kernels on the emulated device, against plain loops, and what the emulation catches.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <numeric>
#include <random>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/nubrel/emulated/block_local.h"
#include "platform/nubrel/emulated/emulated_cuda.h"

using namespace Nubrel;

namespace {

/// The first device, its stream and its kernels.
class Device {
 public:
  Device() {
    CUcontext context = nullptr;
    EXPECT_EQ(cuInit(0), CUDA_SUCCESS);
    EXPECT_EQ(cuDevicePrimaryCtxRetain(&context, 0), CUDA_SUCCESS);
    EXPECT_EQ(cuCtxSetCurrent(context), CUDA_SUCCESS);
    EXPECT_EQ(cuStreamCreate(&stream_, CU_STREAM_NON_BLOCKING), CUDA_SUCCESS);
    EXPECT_EQ(cuModuleLoadData(&module_, "image"), CUDA_SUCCESS);
    ZQResetEmulatedRecords();
  }
  ~Device() {
    for (const CUdeviceptr buffer : buffers_) EXPECT_EQ(cuMemFree_v2(buffer), CUDA_SUCCESS);
    EXPECT_EQ(cuStreamDestroy_v2(stream_), CUDA_SUCCESS);
  }
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  CUstream GetStream() const { return stream_; }

  template <class T>
  CUdeviceptr Write(const std::vector<T>& data) {
    CUdeviceptr address = 0;
    EXPECT_EQ(cuMemAlloc_v2(&address, data.size() * sizeof(T)), CUDA_SUCCESS);
    buffers_.push_back(address);
    EXPECT_EQ(cuMemcpyHtoDAsync_v2(address, data.data(), data.size() * sizeof(T), stream_),
              CUDA_SUCCESS);
    return address;
  }
  template <class T>
  std::vector<T> Read(CUdeviceptr address, std::size_t count) {
    std::vector<T> data(count);
    EXPECT_EQ(cuMemcpyDtoHAsync_v2(data.data(), address, count * sizeof(T), stream_), CUDA_SUCCESS);
    EXPECT_EQ(cuStreamSynchronize(stream_), CUDA_SUCCESS);
    EXPECT_EQ(ZQGetEmulatedFindings(), std::vector<std::string>());
    return data;
  }
  template <class Fields>
  CUresult Run(const char* name, const Fields& fields) {
    CUfunction kernel = nullptr;
    EXPECT_EQ(cuModuleGetFunction(&kernel, module_, name), CUDA_SUCCESS);
    const ZQCUShape shape = ZQShapeOf(fields);
    EXPECT_LE(shape.sharedBytes, 48U << 10);
    Fields copy = fields;
    void* arguments[] = {&copy};
    return cuLaunchKernel(kernel, shape.gridX, shape.gridY, 1, zqBlockThreads, 1, 1,
                          shape.sharedBytes, stream_, arguments, nullptr);
  }

 private:
  CUstream stream_ = nullptr;
  CUmodule module_ = nullptr;
  std::vector<CUdeviceptr> buffers_;
};

/// Random fingerprints, the first without bits, in a few densities so that equal scores occur.
struct Prints {
  Prints(std::size_t count, unsigned long wordsOfPrint, unsigned int seed)
      : words(count * wordsOfPrint), counts(count), numWords(wordsOfPrint) {
    std::mt19937_64 random(seed);
    for (std::size_t i = numWords; i < words.size(); ++i) {
      words[i] = random() & random();
      if (i / numWords % 3 != 0) words[i] &= random() & random();
    }
    for (std::size_t i = 0; i < count; ++i) counts[i] = Common(*this, i, i);
  }
  unsigned int Common(const Prints& other, std::size_t i, std::size_t j) const {
    unsigned int common = 0;
    for (std::size_t word = 0; word < numWords; ++word) {
      common += std::popcount(words[i * numWords + word] & other.words[j * numWords + word]);
    }
    return common;
  }
  ZQCURecords Send(Device& device, unsigned long first = 0) const {
    return {device.Write(words), device.Write(counts), counts.size(), first};
  }

  std::vector<unsigned long long> words;
  std::vector<unsigned int> counts;
  unsigned long numWords;
};

using Formula = double (*)(const ZQCUScoreTerms&, double, double, double);
constexpr Formula formulae[] = {ZQCUTanimoto, ZQCUCosine,  ZQCUDice,
                                ZQCUEuclid,   ZQCUTversky, ZQCUManhattan};

ZQCUMeasure MakeMeasure(unsigned int number, unsigned long numWords) {
  const double bits = 64.0 * static_cast<double>(numWords);
  return {number, {bits, 1.0 / bits, 0.75, 1.5}};
}

/// The score of the first fingerprint and the second.
double ScoreOf(const ZQCUMeasure& measure, const Prints& a, std::size_t i, const Prints& b,
               std::size_t j) {
  return ZQCUClamp(
      formulae[measure.number - 1](measure.terms, a.counts[i], b.counts[j], a.Common(b, i, j)));
}

/// Sizes around blocks and tiles, the last with several strips of tiles.
struct Size {
  std::size_t rows;
  std::size_t columns;
  unsigned long numWords;
};
constexpr Size sizes[] = {{1, 1, 16}, {63, 65, 16}, {64, 64, 48}, {130, 513, 16}, {65, 580, 48}};

/// A test for each measure and size; all data are those of its rows and columns.
class KernelsTest : public testing::TestWithParam<std::tuple<unsigned int, Size>> {
 protected:
  static constexpr unsigned long firstRow = 40;
  static constexpr unsigned long firstColumn = 70;

  Size size = std::get<1>(GetParam());
  ZQCUMeasure measure = MakeMeasure(std::get<0>(GetParam()), size.numWords);
  Prints rows{size.rows, size.numWords, 1};
  Prints columns{size.columns, size.numWords, 2};
  Device device;

  template <class Fields>
  Fields MakeQuery() {
    Fields fields;
    fields.records = columns.Send(device, firstColumn);
    fields.numWords = size.numWords;
    fields.query = device.Write(
        std::vector(rows.words.end() - static_cast<long>(size.numWords), rows.words.end()));
    fields.queryCount = rows.counts.back();
    fields.measure = measure;
    return fields;
  }
  template <class Fields>
  Fields MakePairs() {
    Fields fields;
    fields.rows = rows.Send(device, firstRow);
    fields.columns = columns.Send(device, firstColumn);
    fields.numWords = size.numWords;
    fields.measure = measure;
    return fields;
  }
  double Score(std::size_t row, std::size_t column) const {
    return ScoreOf(measure, rows, row, columns, column);
  }
  /// A score that occurs.
  double GetBar() const { return Score(size.rows - 1, size.columns / 2); }
};

INSTANTIATE_TEST_SUITE_P(All, KernelsTest,
                         testing::Combine(testing::Range(1U, 7U), testing::ValuesIn(sizes)));

TEST_P(KernelsTest, Scans) {
  auto scored = MakeQuery<ZQCURawScoresFields>();
  scored.scores = device.Write(std::vector<double>(size.columns, -1.0));
  ASSERT_EQ(device.Run("ScoreRecords", scored), CUDA_SUCCESS);
  std::vector<double> expected(size.columns);
  for (std::size_t i = 0; i < size.columns; ++i) expected[i] = Score(size.rows - 1, i);
  EXPECT_EQ(device.Read<double>(scored.scores, size.columns), expected);

  const ZQCUPopcountFields counted{scored.records.words, size.columns, size.numWords,
                                   device.Write(std::vector<unsigned int>(size.columns))};
  ASSERT_EQ(device.Run("CountBits", counted), CUDA_SUCCESS);
  EXPECT_EQ(device.Read<unsigned int>(counted.counts, size.columns), columns.counts);

  // Bars by their three flags; each run appends to the hits before.
  auto search = MakeQuery<ZQCUScoresFields>();
  search.bar = GetBar();
  search.hits = device.Write(std::vector<ZQCUHit>(8 * size.columns));
  search.numHits = device.Write(std::vector<unsigned long>(1));
  std::vector<std::pair<unsigned long, double>> expectedHits;
  for (int flags = 0; flags < 8; ++flags) {
    search.hasBar = (flags & 1) != 0;
    search.strict = (flags & 2) != 0;
    search.descending = (flags & 4) != 0;
    ASSERT_EQ(device.Run("FindHits", search), CUDA_SUCCESS);
    for (std::size_t i = 0; i < size.columns; ++i) {
      const double score = expected[i];
      const bool isBetter = search.descending ? score > search.bar : score < search.bar;
      if (!search.hasBar || isBetter || (!search.strict && score == search.bar)) {
        expectedHits.emplace_back(firstColumn + i, score);
      }
    }
  }
  const auto numHits = device.Read<unsigned long>(search.numHits, 1)[0];
  ASSERT_EQ(numHits, expectedHits.size());
  std::vector<std::pair<unsigned long, double>> hits;
  for (const ZQCUHit& hit : device.Read<ZQCUHit>(search.hits, numHits)) {
    hits.emplace_back(hit.index, hit.score);
  }
  std::sort(hits.begin(), hits.end());
  std::sort(expectedHits.begin(), expectedHits.end());
  EXPECT_EQ(hits, expectedHits);
}

TEST_P(KernelsTest, Pairs) {
  auto scored = MakePairs<ZQCUAllScoresFields>();
  const std::size_t numPairs = size.rows * size.columns;
  scored.scores = device.Write(std::vector<float>(numPairs, -1.0F));
  auto counted = MakePairs<ZQCUCountsFields>();
  counted.cutoff = static_cast<float>(GetBar());
  counted.numNeighbors = device.Write(std::vector<unsigned int>(size.rows, 5));
  auto binned = MakePairs<ZQCUVariogramFields>();
  binned.numBins = 20;
  binned.binSize = 0.05F;
  binned.bins = device.Write(std::vector<std::uint16_t>(numPairs, 99));
  // Every pair, then the upper triangle; bins up to the most there may be.
  std::array<ZQCUHistogramFields, 2> histograms = {MakePairs<ZQCUHistogramFields>(),
                                                   MakePairs<ZQCUHistogramFields>()};
  histograms[0].numBins = zqCUMaxBins;
  histograms[1].numBins = 7;
  histograms[1].upperTriangle = true;

  std::vector<float> scores;
  std::vector<unsigned int> numNeighbors(size.rows, 5);
  std::vector<std::uint16_t> bins;
  std::array<std::vector<unsigned long>, 2> counts;
  for (std::size_t i = 0; i < 2; ++i) {
    histograms[i].binSize = 1.0 / histograms[i].numBins;
    counts[i].assign(histograms[i].numBins, 1UL << 32);
    histograms[i].counts = device.Write(counts[i]);
  }
  for (std::size_t row = 0; row < size.rows; ++row) {
    for (std::size_t column = 0; column < size.columns; ++column) {
      const double score = Score(row, column);
      const bool isUpper = firstRow + row < firstColumn + column;
      scores.push_back(static_cast<float>(score));
      if (scores.back() >= counted.cutoff) ++numNeighbors[row];
      for (std::size_t i = 0; i < 2; ++i) {
        const auto bin = static_cast<unsigned int>(score / histograms[i].binSize);
        if (i == 0 || isUpper) ++counts[i][std::min(bin, histograms[i].numBins - 1)];
      }
      const auto bin = static_cast<unsigned int>((1.0F - scores.back()) / 0.05F);
      bins.push_back(isUpper ? static_cast<std::uint16_t>(std::min(bin, 19U)) : 99);
    }
  }
  ASSERT_EQ(device.Run("ScorePairs", scored), CUDA_SUCCESS);
  EXPECT_EQ(device.Read<float>(scored.scores, numPairs), scores);
  ASSERT_EQ(device.Run("CountNeighbors", counted), CUDA_SUCCESS);
  EXPECT_EQ(device.Read<unsigned int>(counted.numNeighbors, size.rows), numNeighbors);
  for (std::size_t i = 0; i < 2; ++i) {
    ASSERT_EQ(device.Run("CountBins", histograms[i]), CUDA_SUCCESS);
    EXPECT_EQ(device.Read<unsigned long>(histograms[i].counts, counts[i].size()), counts[i]);
  }
  ASSERT_EQ(device.Run("FindBins", binned), CUDA_SUCCESS);
  EXPECT_EQ(device.Read<std::uint16_t>(binned.bins, numPairs), bins);
}

/// Two runs, of 100 columns and of the others, with and without a cutoff, for lists that fill at
/// once, later, and never.
TEST_P(KernelsTest, Nearest) {
  auto fields = MakePairs<ZQCUSparseFields>();
  const ZQCURecords all = fields.columns;
  fields.cutoff = static_cast<float>(GetBar());
  for (const unsigned int k : {0U, 1U, 63U, 150U}) {
    fields.hasCutoff = !fields.hasCutoff;
    std::vector<std::vector<std::pair<float, unsigned long>>> lists(size.rows);
    for (std::size_t row = 0; row < size.rows; ++row) {
      auto& list = lists[row];
      for (std::size_t column = 0; column < size.columns; ++column) {
        const auto score = static_cast<float>(Score(row, column));
        if (fields.hasCutoff && score < fields.cutoff) continue;
        if (list.size() < k) {
          list.emplace_back(score, firstColumn + column);
          continue;
        }
        const auto lowest = std::min_element(list.begin(), list.end(),
                                             [](auto& a, auto& b) { return a.first < b.first; });
        if (lowest != list.end() && score > lowest->first) *lowest = {score, firstColumn + column};
      }
    }
    const std::size_t numSlots = std::max<std::size_t>(size.rows * k, 1);
    fields.k = k;
    fields.scores = device.Write(std::vector<float>(numSlots));
    fields.indices = device.Write(std::vector<unsigned long>(numSlots));
    fields.sizes = device.Write(std::vector<unsigned int>(size.rows));
    const std::size_t part = std::min<std::size_t>(size.columns, 100);
    for (const auto& [begin, end] : {std::pair{std::size_t{0}, part}, {part, size.columns}}) {
      if (begin == end) continue;
      fields.columns = {all.words + begin * size.numWords * 8, all.counts + begin * 4, end - begin,
                        firstColumn + begin};
      ASSERT_EQ(device.Run("FindNearest", fields), CUDA_SUCCESS);
    }
    const auto listSizes = device.Read<unsigned int>(fields.sizes, size.rows);
    const auto scores = device.Read<float>(fields.scores, numSlots);
    const auto indices = device.Read<unsigned long>(fields.indices, numSlots);
    for (std::size_t row = 0; row < size.rows; ++row) {
      std::vector<std::pair<float, unsigned long>> list;
      for (std::size_t slot = row * k; slot < row * k + listSizes[row]; ++slot) {
        list.emplace_back(scores[slot], indices[slot]);
      }
      ASSERT_EQ(list, lists[row]) << row << " " << k;
    }
  }
}

/// A kernel of two phases on 256 integers of shared memory, which it writes to global memory; what
/// goes wrong is up to the two functions.
struct FaultyKernel {
  const char* name;
  std::function<void(EmulatedBlock::Shared<unsigned int>&, unsigned int t)> first;
  std::function<void(EmulatedBlock::Shared<unsigned int>&, EmulatedBlock::Global<unsigned int>&,
                     unsigned int t)>
      second;
  const char* fault;  ///< null: none
};

TEST(EmulatedBlock, Findings) {
  const auto write = [](auto& shared, unsigned int t) { shared.Set(t, t); };
  const auto nothing = [](auto&, unsigned int) {};
  const auto copyOther = [](auto& shared, auto& global, unsigned int t) {
    global.Set(t, shared.Get(t ^ 1));
  };
  const FaultyKernel kernels[] = {
      {"fine", write, copyOther, nullptr},
      {"additions",
       [](auto& shared, unsigned int t) {
         if (t == 0) shared.Set(0, 0);
       },
       [](auto& shared, auto&, unsigned int) { shared.Add(0, 1); }, nullptr},
      {"no barrier", nothing,
       [&](auto& shared, auto& global, unsigned int t) {
         write(shared, t);
         copyOther(shared, global, t);
       },
       "a race"},
      {"read before write", nothing,
       [&](auto& shared, auto& global, unsigned int t) {
         copyOther(shared, global, t);
         write(shared, t);
       },
       "a race"},
      {"two writers", [](auto& shared, unsigned int t) { shared.Set(t / 2, t); }, copyOther,
       "a race"},
      {"not atomic",
       [](auto& shared, unsigned int t) {
         if (t == 0) shared.Set(0, 0);
         shared.Add(0, 1);
       },
       copyOther, "a race"},
      {"two writers of global memory", write,
       [](auto& shared, auto& global, unsigned int t) { global.Set(t / 2, shared.Get(t)); },
       "a race"},
      {"not atomic in global memory", nothing,
       [](auto&, auto& global, unsigned int) { global.Set(0, global.Get(0) + 1); }, "a race"},
      {"atomic in global memory", nothing,
       [](auto&, auto& global, unsigned int) { global.Add(0, 1); }, nullptr},
      {"shared overrun", [](auto& shared, unsigned int t) { shared.Set(t + 1, t); }, copyOther,
       "outside of its array"},
      {"overrun", write,
       [](auto& shared, auto& global, unsigned int t) { global.Set(t + 1, shared.Get(t)); },
       "outside of its buffer"},
      {"underrun", write,
       [](auto& shared, auto& global, unsigned int t) { global.Set(t - 1UL, shared.Get(t)); },
       "outside of its buffer"},
  };
  for (const FaultyKernel& kernel : kernels) {
    std::vector<unsigned int> memory(zqBlockThreads);
    EmulatedLaunch launch;
    launch.kernel = kernel.name;
    launch.sharedBytes = zqBlockThreads * sizeof(unsigned int);
    launch.getMemory = [&](ZQCUAddress) { return std::as_writable_bytes(std::span(memory)); };
    RunBlocks(launch, 1, 1, [&](EmulatedBlock& block) {
      auto shared = block.CarveShared<unsigned int>(zqBlockThreads);
      auto global = block.GetGlobal<unsigned int>(0);
      block.ForThreads([&](unsigned int t) { kernel.first(shared, t); });
      block.ForThreads([&](unsigned int t) { kernel.second(shared, global, t); });
    });
    const std::string finding = launch.findings.empty() ? "" : launch.findings[0];
    EXPECT_EQ(finding.empty(), !kernel.fault) << finding;
    EXPECT_TRUE(finding.ends_with(kernel.fault ? kernel.fault : "")) << finding;
  }

  // Two blocks write to the same place.
  unsigned int written = 0;
  EmulatedLaunch writes;
  writes.getMemory = [&](ZQCUAddress) { return std::as_writable_bytes(std::span(&written, 1)); };
  RunBlocks(writes, 2, 1, [](EmulatedBlock& block) {
    auto global = block.GetGlobal<unsigned int>(0);
    block.ForThreads([&](unsigned int t) {
      if (t == 0) global.Set(0, t);
    });
  });
  EXPECT_EQ(writes.numFindings, 1);

  EmulatedLaunch launch;
  launch.getMemory = [](ZQCUAddress) { return std::span<std::byte>(); };
  RunBlocks(launch, 2, 1, [](EmulatedBlock& block) {
    block.GetGlobal<unsigned int>(0).Get(0);  // between phases
    block.CarveShared<unsigned long>(1);      // more than there is
  });
  EXPECT_EQ(launch.numFindings, 4);
}

/// Work is late: pinned memory is read when the copy runs, other memory at once; a kernel's failure
/// is seen by the next wait, once.
TEST(EmulatedDriver, DefersWork) {
  Device device;
  const auto address = device.Write(std::vector<int>{1});
  void* pinned = nullptr;
  ASSERT_EQ(cuMemAllocHost_v2(&pinned, sizeof(int)), CUDA_SUCCESS);
  const auto send = [&](void* source) {
    int value = 2;
    std::memcpy(source, &value, sizeof value);
    EXPECT_EQ(cuMemcpyHtoDAsync_v2(address, source, sizeof value, device.GetStream()),
              CUDA_SUCCESS);
    value = 3;
    std::memcpy(source, &value, sizeof value);
    return device.Read<int>(address, 1)[0];
  };
  EXPECT_EQ(send(pinned), 3);
  int plain = 0;
  EXPECT_EQ(send(&plain), 2);
  EXPECT_EQ(cuMemFreeHost(pinned), CUDA_SUCCESS);

  // A wait for an event is one for the work before it.
  CUevent event = nullptr;
  ASSERT_EQ(cuEventCreate(&event, CU_EVENT_DISABLE_TIMING), CUDA_SUCCESS);
  int late = 0;
  EXPECT_EQ(cuMemcpyDtoHAsync_v2(&late, address, sizeof late, device.GetStream()), CUDA_SUCCESS);
  EXPECT_EQ(cuEventRecord(event, device.GetStream()), CUDA_SUCCESS);
  EXPECT_EQ(late, 0);
  EXPECT_EQ(cuEventSynchronize(event), CUDA_SUCCESS);
  EXPECT_EQ(late, 2);
  EXPECT_EQ(cuEventDestroy_v2(event), CUDA_SUCCESS);

  // A kernel over a buffer that was freed.
  CUdeviceptr buffer = 0;
  EXPECT_EQ(cuMemAlloc_v2(&buffer, 1 << 20), CUDA_SUCCESS);
  EXPECT_EQ(cuMemFree_v2(buffer), CUDA_SUCCESS);
  const ZQCUPopcountFields freed{buffer, 300, 16, buffer};
  ASSERT_EQ(device.Run("CountBits", freed), CUDA_SUCCESS);
  EXPECT_EQ(cuStreamSynchronize(device.GetStream()), CUDA_ERROR_ILLEGAL_ADDRESS);
  EXPECT_EQ(cuStreamSynchronize(device.GetStream()), CUDA_SUCCESS);
  EXPECT_FALSE(ZQGetEmulatedFindings().empty());
  EXPECT_EQ(ZQGetEmulatedTraffic().fromDevice, 3 * sizeof(int));

  ZQFailEmulatedCall(2, CUDA_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(cuMemAlloc_v2(&buffer, 1), CUDA_SUCCESS);
  EXPECT_EQ(cuMemFree_v2(buffer), CUDA_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(cuMemFree_v2(buffer), CUDA_SUCCESS);
  EXPECT_EQ(cuMemFree_v2(buffer), CUDA_ERROR_INVALID_VALUE);
  EXPECT_EQ(cuMemAlloc_v2(&buffer, std::size_t{1} << 30), CUDA_ERROR_OUT_OF_MEMORY);
}

}  // namespace
