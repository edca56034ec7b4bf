/// Queries on a GPU over records of 4096 bits: scans as a part of the bandwidth of the device's
/// memory, nearest neighbours as a multiple of the processor's rate, and opening as a part of the
/// bus's rate.
///
///   gpu_bench [records] [records of the matrix] [rounds]

#include <cinttypes>
#include <cstring>

#include "benchmarks/bench.h"
#include "korvex/cuda/device_records_local.h"
#include "korvex/version.h"
#include "platform/nubrel/cuda_driver_local.h"

using namespace bench;

namespace {

constexpr unsigned int numbits = 4096;
constexpr std::uint64_t recordBytes = numbits / 8;
constexpr unsigned int cuda = ZQFastFPDatabaseMemoryType::CUDA;

const ZQFPDatabaseOptions nearest(10, ZQSimMeasure::Tanimoto);

/// The device that databases use.
int FirstDevice() {
  std::vector<int> devices;
  ZQCUGetAvailableDevices(devices, 1);
  return devices[0];
}

/// Opens the database again and again, against the bus: copies of a piece of pinned memory.
void Opening(const Database& file, std::uint64_t count, unsigned int rounds) {
  const int device = FirstDevice();
  const Nubrel::ZQCUDADriver& driver = *Nubrel::ZQGetCUDADriver();
  constexpr std::uint64_t pieceBytes = std::uint64_t{64} << 20;
  const auto target = ZQMakeBuffer(device, pieceBytes);
  void* source = nullptr;
  Check(ZQCUSetDevice(device) && driver.cuMemAllocHost_v2.Run(device, &source, pieceBytes),
        "pinned memory");
  const auto bytes = static_cast<double>(count * recordBytes);
  Race race;
  race.Add("the bus", 4.0 * pieceBytes, [&] {
    for (int i = 0; i < 4; ++i) {
      Check(driver.cuMemcpyHtoDAsync_v2.Run(device, target->GetKernelBuffer(), source, pieceBytes,
                                            nullptr),
            "a copy");
    }
    Check(ZQCUDeviceSynchronize(), "copies");
  });
  race.Add("opening", bytes,
           [&] { Check(ZQFastFPDatabase(file.Name(), cuda).GetMemoryType() == cuda, "opening"); });
  race.Run(rounds);
  driver.cuMemFreeHost.Run(device, source);
  std::printf("opening %" PRIu64 " records, in bytes\n", count);
  race.Report("opening", "the bus", 0.7);
}

/// Scans of the fingerprints, in bytes.
void Scans(const Database& file, std::uint64_t count, unsigned int rounds) {
  const int device = FirstDevice();
  const ZQFastFPDatabase database(file.Name(), cuda);
  const ZQFastFPDatabase mapped(file.Name());
  ZQFingerPrint query;
  Check(mapped.GetFingerPrint(query, 5), "a stored fingerprint");
  for (const unsigned int limit : {10U, 1000U}) {
    const ZQFPDatabaseOptions options(limit, ZQSimMeasure::Tanimoto);
    Check(HitsOf(database.GetSortedScores(query, options)) ==
              HitsOf(mapped.GetSortedScores(query, options)),
          "hits");
  }

  // The limit: a kernel that reads all words and counts their bits, or the device's own filling of
  // memory, whichever is faster.
  const auto words = ZQMakeBuffer(device, count * recordBytes);
  const auto counts = ZQMakeBuffer(device, count * 4);
  const auto scores = ZQMakeBuffer(device, count * 8);
  Check(words->Clear() && counts->Clear() && scores->Clear(), "room for the records once more");
  ZQCUPopcountKernel counter;
  counter.device = device;
  counter.words = words->GetKernelBuffer();
  counter.count = count;
  counter.numWords = numbits / 64;
  counter.counts = counts->GetKernelBuffer();
  ZQCUGetRawScoresKernel score;
  score.device = device;
  score.records = {counter.words, counter.counts, count, 0};
  score.numWords = numbits / 64;
  score.query = counter.words;
  score.measure = {ZQSimMeasure::Tanimoto, {numbits, 1.0 / numbits, 0.0, 0.0}};
  score.scores = scores->GetKernelBuffer();
  const auto bytes = static_cast<double>(count * recordBytes);
  Race race;
  race.Add("filling memory", bytes,
           [&] { Check(words->Clear() && ZQCUDeviceSynchronize(), "filling"); });
  race.Add("reading memory", bytes,
           [&] { Check(counter.RunKernel() && ZQCUDeviceSynchronize(), "counting"); });
  race.Add("scores that stay on the device", bytes,
           [&] { Check(score.RunKernel() && ZQCUDeviceSynchronize(), "scores"); });
  race.Add("GetRawScores", bytes, [&] { database.GetRawScores(query, nearest); });
  race.Add("GetSortedScores, limit 10", bytes, [&] { database.GetSortedScores(query, nearest); });
  race.Add("memory-mapped", bytes, [&] { mapped.GetSortedScores(query, nearest); });
  race.Run(rounds);
  const char* limit = race.Rate("filling memory") > race.Rate("reading memory") ? "filling memory"
                                                                                : "reading memory";
  std::printf("one query over %" PRIu64 " records, in bytes; %s at %.1f GB/s\n", count, limit,
              race.Rate(limit) / 1e9);
  race.Report("scores that stay on the device", limit, 0.8);
  race.Report("GetRawScores", limit, 0.8);
  race.Report("GetSortedScores, limit 10", limit, 0.8);
  race.Report("GetSortedScores, limit 10", "memory-mapped", 1.0);
}

/// Nearest neighbours, in pairs. The processor gets fewer records, as its rate hardly depends on
/// their number, and counts twice, as for two cores.
void Neighbors(std::uint64_t count, unsigned int rounds) {
  const std::uint64_t fewer = std::min<std::uint64_t>(count, 20000);
  const Database file(count, numbits);
  const Database smallFile(fewer, numbits);
  const ZQFastFPDatabase database(file.Name(), cuda);
  const ZQFastFPDatabase small(smallFile.Name(), cuda);
  const ZQFastFPDatabase inMemory(smallFile.Name(), ZQFastFPDatabaseMemoryType::InMemory);
  ZQIter<ZQSimScorePair> expected = inMemory.GetSparseMatrix(nearest);
  for (auto pair = small.GetSparseMatrix(nearest); pair || expected; ++pair, ++expected) {
    Check(pair && expected && pair->GetIdx1() == expected->GetIdx1() &&
              pair->GetIdx2() == expected->GetIdx2() && pair->GetScore() == expected->GetScore(),
          "neighbours");
  }
  const auto pairs = [](std::uint64_t n) {
    return static_cast<double>(n) * static_cast<double>(n);
  };
  Race race;
  race.Add("neighbours", pairs(count), [&] { database.GetSparseMatrix(nearest); });
  race.Add("histogram", pairs(count) / 2, [&] { database.GetHistogram(nearest, 200); });
  race.Add("two cores", 2 * pairs(fewer), [&] { inMemory.GetSparseMatrix(nearest); });
  race.Run(rounds);
  std::printf("10 nearest neighbours of %" PRIu64 " records (processor: %" PRIu64 "), in pairs\n",
              count, fewer);
  race.Report("neighbours", "two cores", 50.0);
  race.Report("histogram", "two cores", 50.0);
}

}  // namespace

int main(int argc, char** argv) {
  const std::uint64_t count = Argument(argc, argv, 1, 10000000);
  const std::uint64_t matrixCount = Argument(argc, argv, 2, 200000);
  const auto rounds = static_cast<unsigned int>(Argument(argc, argv, 3, 5));
  std::printf("GPU: %s\n", ZQKorvexGetGPU().c_str());
  if (!ZQKorvexIsGPUReady()) return 0;
  const Database file(count, numbits);
  Opening(file, count, rounds);
  Scans(file, count, rounds);
  Neighbors(matrixCount, rounds);
}
