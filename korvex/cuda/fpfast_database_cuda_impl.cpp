#include "korvex/cuda/fpfast_database_cuda_impl_local.h"

#include <chrono>
#include <limits>
#include <utility>

#include "korvex/checked_local.h"
#include "korvex/fpfast_local.h"
#include "korvex/fpfast_queries_local.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

namespace {

// The messages' names have no blank and colon here.
constexpr const char* constructorName = "ZQFastFPDatabase::ZQFastFPDatabase()";
constexpr const char* scoresName = "ZQFastFPDatabase::GetScores()";
constexpr const char* sortedScoresName = "ZQFastFPDatabase::GetSortedScores()";
constexpr const char* rawScoresName = "ZQFastFPDatabase::GetRawScores()";
constexpr const char* allScoresName = "ZQFastFPDatabase::GetAllScores()";
constexpr const char* histogramName = "ZQFastFPDatabase::GetHistogram()";
constexpr const char* variogramName = "ZQFastFPDatabase::GetVariogram()";
constexpr const char* sparseMatrixName = "ZQFastFPDatabase::GetSparseMatrix()";

/// Device memory for the driver's own use.
constexpr std::uint64_t reservedBytes = 0xA00000;
constexpr std::uint64_t bytesPerElement = 4;
/// The buffer has room for whole groups of this many records.
constexpr std::uint64_t recordsPerGroup = 32;
/// Sizes of pieces and bands are multiples of this, unless all records are fewer: kernels score
/// pairs in tiles of this side.
constexpr std::uint64_t recordsPerUnit = 64;
/// Records that are uploaded in one piece: enough to keep the device busy, while many pieces let
/// uploads overlap with work.
constexpr std::uint64_t maxUpload = std::uint64_t{1} << 20;
/// Pairs that are scored by one kernel: under a second of work, as some drivers end longer ones.
constexpr std::uint64_t maxPairs = std::uint64_t{1} << 32;

std::uint64_t RoundDown(std::uint64_t n) {
  return std::max(n / recordsPerUnit * recordsPerUnit, recordsPerUnit);
}

template <class Kernel>
void SetCommonFields(Kernel& kernel, const ZQRecordSource& source,
                     const ZQFPDatabaseOptions& options) {
  kernel.device = source.device;
  kernel.stream = zqKernelStream;
  kernel.numWords = source.records.numWords;
  kernel.measure = {options.GetSimFunc(), ZQScoreTerms(options, source.records.numBits)};
}

/// A step of `ZQForPairs` that runs the kernel.
template <class Kernel>
auto RunsOnPairs(Kernel& kernel) {
  return [&kernel](const ZQCURecords& rows, const ZQCURecords& columns) {
    kernel.rows = rows;
    kernel.columns = columns;
    return kernel.RunKernel();
  };
}

/// A step that does nothing.
constexpr auto noStep = [](const auto&...) { return true; };

}  // namespace

// Opening.

ZQFastFPCUDADatabaseImpl::ZQFastFPCUDADatabaseImpl(const std::string& filename)
    : ZQFastFPMemoryMapDatabaseImpl(filename, constructorName) {
  if (!params_.IsValid() || popcountMethod_ == 0) {
    ZQThrow.Warning("%s cannot initialize object for CUDA search!", constructorName);
  }
  if (!valid_) return;
  valid_ = false;
  const std::uint64_t numWords = params_.NumWords();
  if ((numWords * 2 & 31) != 0) {
    ZQThrow.Warning("%s needs fpsize multiple of 1024 for CUDA implementation!", constructorName);
    return;
  }
  if (!ChooseDevice()) {
    ZQThrow.Warning("No compatible CUDA device found for %s.", constructorName);
    return;
  }
  valid_ = true;
  const std::uint64_t elements =
      ZQSaturatedSum(2 * numWords, ZQSaturatedProduct(2 * numWords, params_.NumFingerPrints()));
  cantAllocate_ = elements >= GetCapacity();
  if (!cantAllocate_) push_data();
}

bool ZQFastFPCUDADatabaseImpl::GetFingerPrint(std::vector<std::uint64_t>& words,
                                              std::uint64_t& moleculeIndex, std::uint64_t& popcount,
                                              std::uint64_t index) const {
  if (IsValid() && index < params_.NumFingerPrints()) {
    return ZQFastFPMemoryMapDatabaseImpl::GetFingerPrint(words, moleculeIndex, popcount, index);
  }
  words.clear();
  ZQThrow.Warning(
      IsValid() ? "%s fingerprint index out of range!" : "%s invalid ZQFastFPDatabase object!",
      "ZQFastFPDatabase::GetFingerPrint()");
  return false;
}

bool ZQFastFPCUDADatabaseImpl::ChooseDevice() {
  std::vector<int> devices;
  ZQCUGetAvailableDevices(devices, 0);
  for (const int device : devices) {
    cudaDeviceProp properties;
    if (cudaGetDeviceProperties(&properties, device) != 0 || properties.major <= 2) continue;
    // Another process may have the device for itself.
    if (!ZQCUSetDevice(device)) continue;
    device_ = device;
    ZQThrow.Debug("%s choose CUDA device %d.", constructorName, device);
    return true;
  }
  return false;
}

void ZQFastFPCUDADatabaseImpl::push_data() {
  ZQThrow.Debug("Pushing data onto device.");
  const auto start = std::chrono::steady_clock::now();
  const std::uint64_t count = params_.NumFingerPrints();
  const std::uint64_t numWords = params_.NumWords();
  const auto records = HasPagesFor(count) ? GetScanRecords(constructorName) : std::nullopt;
  if (!records) {
    ZQThrow.Warning("%s : cannot read all fingerprints!", constructorName);
    return;
  }
  // One group more than is full.
  const std::uint64_t room = (count / recordsPerGroup + 1) * recordsPerGroup;
  buffers_.words = ZQMakeBuffer(device_, room * numWords * 8);
  buffers_.counts = ZQMakeBuffer(device_, room * 4);
  if (!buffers_.AreValid()) {
    buffers_ = {};
    cantAllocate_ = true;
    return;
  }
  pushed_ = ZQUploadWords(*records, 0, count, *buffers_.words) &&
            ZQUploadCounts(*records, 0, count, *buffers_.counts) && ZQCUDeviceSynchronize();
  if (!pushed_) {
    buffers_ = {};
    return;
  }
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  ZQThrow.Debug("Push to device memory took %f seconds.", time.count());
}

// Room on the device.

std::uint64_t ZQFastFPCUDADatabaseImpl::GetCapacity() const {
  const std::uint64_t most = ZQCUGetMaxMemAlloc(device_, 1.0F);
  return most < reservedBytes ? 0 : (most - reservedBytes) / bytesPerElement;
}

bool ZQFastFPCUDADatabaseImpl::CanAllocateOutput(unsigned long elements) const {
  const std::uint64_t data =
      pushed_ ? 0 : ZQSaturatedProduct(2 * params_.NumWords(), params_.NumFingerPrints());
  return !cantAllocate_ && ZQSaturatedSum(elements, data) < GetCapacity();
}

std::uint64_t ZQFastFPCUDADatabaseImpl::GetPieceSize(std::uint64_t bytesPerRecord,
                                                     const char* caller) const {
  const std::uint64_t count = params_.NumFingerPrints();
  if (CanAllocateOutput(ZQSaturatedProduct(count, bytesPerRecord) / bytesPerElement)) {
    ZQThrow.Debug("Doing one-shot %s.", caller);
    return count;
  }
  // Two pieces are on the device at a time, each with its counts.
  const std::uint64_t bytesOfPieces = pushed_ ? 0 : 2 * (8 * params_.NumWords() + 4);
  const std::uint64_t size =
      RoundDown(GetCapacity() * bytesPerElement / (bytesPerRecord + bytesOfPieces));
  const std::uint64_t piece = std::min(count, pushed_ ? size : std::min(size, maxUpload));
  ZQThrow.Debug("Doing chunked %s with chunk size : %lu", caller, piece);
  return piece;
}

ZQPairBands ZQFastFPCUDADatabaseImpl::GetBands(std::uint64_t bytesPerPair,
                                               std::uint64_t bytesPerRow,
                                               const char* caller) const {
  const std::uint64_t count = params_.NumFingerPrints();
  const std::uint64_t capacity = GetCapacity() * bytesPerElement;
  const std::uint64_t bytesOfRecord = 4 + (pushed_ ? 0 : 8 * params_.NumWords());
  ZQPairBands bands{count, count};
  const auto outputBytes = [&] {
    return ZQSaturatedSum(ZQSaturatedProduct(bytesPerPair * bands.rows, bands.columns),
                          ZQSaturatedProduct(bytesPerRow, bands.rows));
  };
  const auto fit = [&] {
    const std::uint64_t records = bands.rows + (bands.columns < count ? 2 : 1) * bands.columns;
    return ZQSaturatedSum(outputBytes(), records * bytesOfRecord) <= capacity;
  };
  // Rows and columns have counts of their own, and words if these aren't on the device.
  bands.oneShot = CanAllocateOutput(outputBytes() / bytesPerElement) && fit();
  while (!fit() && std::max(bands.rows, bands.columns) > recordsPerUnit) {
    // Columns that are on the device take little room.
    const bool shrinkRows = pushed_ ? bands.rows > recordsPerUnit : bands.rows >= bands.columns;
    std::uint64_t& side = shrinkRows ? bands.rows : bands.columns;
    side = RoundDown(side / 2);
  }
  // Fewer columns, not rows, as many rows keep the device busy.
  if (count > 0) bands.columns = std::min(bands.columns, RoundDown(maxPairs / bands.rows));
  if (bands.oneShot) {
    ZQThrow.Debug("Doing one-shot %s.", caller);
  } else {
    ZQThrow.Debug("Doing chunked %s with chunk size : %lu", caller, bands.rows);
  }
  return bands;
}

// One query against all records.

/// The words of queries on the device, and their counts.
struct ZQFastFPCUDADatabaseImpl::Queries {
  std::unique_ptr<ZQCUBufferCache> words;
  std::vector<std::uint32_t> counts;
  std::vector<std::size_t> indices;  ///< among the caller's queries

  /// Sets the fields that depend on the query.
  void Set(ZQCUQueryFields& kernel, std::size_t number) const {
    kernel.query = words->GetKernelBuffer(8 * kernel.numWords * number);
    kernel.queryCount = counts[number];
  }
};

std::optional<ZQRecordSource> ZQFastFPCUDADatabaseImpl::Begin(const char* caller) const {
  if (!IsValid()) {
    ZQThrow.Warning("%s invalid ZQFastFPDatabase object!", caller);
    return {};
  }
  const auto records = GetScanRecords(caller);
  if (!records || !ZQCUSetDevice(device_)) return {};
  return ZQRecordSource{device_, *records, pushed_ ? &buffers_ : nullptr};
}

std::optional<ZQFastFPCUDADatabaseImpl::Queries> ZQFastFPCUDADatabaseImpl::Upload(
    std::span<const ZQFingerPrint> queries, const ZQRecordSource& source,
    const char* caller) const {
  const std::uint64_t numWords = source.records.numWords;
  Queries uploaded;
  std::vector<std::uint64_t> words;
  std::vector<std::uint64_t> all;
  for (std::size_t i = 0; i < queries.size(); ++i) {
    if (queries[i].GetFPTypeBase() != GetFPTypeBase()) {
      ZQThrow.Warning("%s fingerprint mismatch!", caller);
      continue;
    }
    ZQConvertFP(words, queries[i]);
    if (!ZQ_ASSERT(words.size() == numWords)) continue;
    uploaded.counts.push_back(
        ZQCheckedUnsigned(ZQGetPopCountFunc(popcountMethod_)(words.data(), words.size())));
    uploaded.indices.push_back(i);
    all.insert(all.end(), words.begin(), words.end());
  }
  if (all.empty()) return {};
  uploaded.words = ZQMakeBuffer(device_, 8 * all.size());
  if (!uploaded.words->WriteData(all.data(), 8 * all.size())) return {};
  return uploaded;
}

template <class GetBar, class Take>
bool ZQFastFPCUDADatabaseImpl::FindHits(const ZQRecordSource& source, const Queries& queries,
                                        const ZQFPDatabaseOptions& options, bool barGrows,
                                        const char* caller, GetBar getBar, Take take) const {
  // The first piece gives a bar; later ones are as long as all before times this, so that few
  // records of each reach the bar.
  constexpr std::uint64_t growth = 7;
  const std::uint64_t firstPiece = std::max<std::uint64_t>(1024, 4 * options.GetLimit());
  const std::uint64_t most = GetPieceSize(sizeof(ZQCUHit), caller);
  const auto hits = ZQMakeBuffer(device_, most * sizeof(ZQCUHit));
  const auto numHits = ZQMakeBuffer(device_, sizeof(std::uint64_t));
  if (!hits->IsValid() || !numHits->IsValid()) return false;
  ZQCUGetScoresKernel kernel;
  SetCommonFields(kernel, source, options);
  kernel.descending = options.GetDescendingOrder();
  kernel.hits = hits->GetKernelBuffer();
  kernel.numHits = numHits->GetKernelBuffer();
  const auto run = [&](const ZQCURecords& piece, std::size_t number) {
    kernel.records = piece;
    queries.Set(kernel, number);
    const std::optional<double> bar = getBar(number);
    kernel.hasBar = bar.has_value();
    kernel.bar = bar.value_or(0.0);
    kernel.strict = barGrows;
    return numHits->Clear() && kernel.RunKernel();
  };
  std::vector<ZQCUHit> found;
  const auto collect = [&](std::size_t number) {
    std::uint64_t n = 0;
    if (!numHits->ReadData(&n, sizeof n)) return false;
    found.resize(n);
    if (n > 0 && !hits->ReadData(found.data(), n * sizeof(ZQCUHit))) return false;
    std::sort(found.begin(), found.end(),
              [](const ZQCUHit& a, const ZQCUHit& b) { return a.index < b.index; });
    take(number, found);
    return true;
  };
  std::array<ZQDevicePiece, 2> pieces{ZQDevicePiece(source, most, false),
                                      ZQDevicePiece(source, most, false)};
  return ZQForPieces(
      pieces, 0, source.records.count,
      [&](std::uint64_t begin) {
        return barGrows && pushed_ ? std::min(most, std::max(firstPiece, growth * begin)) : most;
      },
      [&](const ZQCURecords& piece) { return run(piece, 0); },
      [&](const ZQCURecords& piece) {
        if (!collect(0)) return false;
        for (std::size_t number = 1; number < queries.counts.size(); ++number) {
          if (!run(piece, number) || !ZQCUDeviceSynchronize() || !collect(number)) return false;
        }
        return true;
      });
}

ZQIter<ZQSimScore> ZQFastFPCUDADatabaseImpl::GetScores(const ZQFingerPrint& query,
                                                       const ZQFPDatabaseOptions& options) const {
  const std::lock_guard lock(mutex_);
  const auto source = Begin(scoresName);
  if (!source) return {};
  const auto queries = Upload({&query, 1}, *source, scoresName);
  if (!queries) return {};
  std::optional<double> bar;
  if (options.HasCutoff()) bar = options.GetCutoff();
  std::vector<ZQSimScore> scores;
  const bool done = FindHits(
      *source, *queries, options, false, scoresName, [&](std::size_t) { return bar; },
      [&](std::size_t, const std::vector<ZQCUHit>& hits) {
        for (const ZQCUHit& hit : hits) {
          scores.emplace_back(source->records.Id(hit.index), hit.score);
        }
      });
  if (!done || scores.empty()) return {};
  return new ZQVectorIter<ZQSimScore>(std::move(scores));
}

ZQIter<ZQSimScore> ZQFastFPCUDADatabaseImpl::GetSortedScores(
    const ZQFingerPrint& query, const ZQFPDatabaseOptions& options) const {
  return std::move(GetSortedScores(std::vector<ZQFingerPrint>{query}, options)[0]);
}

std::vector<ZQIter<ZQSimScore>> ZQFastFPCUDADatabaseImpl::GetSortedScores(
    const std::vector<ZQFingerPrint>& given, const ZQFPDatabaseOptions& options) const {
  const std::lock_guard lock(mutex_);
  std::vector<ZQIter<ZQSimScore>> sorted(given.size());
  const auto source = Begin(sortedScoresName);
  if (!source) return sorted;
  const auto queries = Upload(given, *source, sortedScoresName);
  if (!queries) return sorted;
  const unsigned int count = ZQCheckedUnsigned(source->records.count);
  std::vector<std::unique_ptr<ZQHitList<ZQSimScore>>> lists(queries->counts.size());
  for (auto& list : lists) list = ZQInitFPDatabaseHitList(count, options);
  // The lists take the same records as those of the other back ends: of all that beat their bar at
  // the time, the hits leave none out.
  const bool done = FindHits(
      *source, *queries, options, true, sortedScoresName,
      [&](std::size_t number) { return std::optional<double>(lists[number]->GetBar().GetScore()); },
      [&](std::size_t number, const std::vector<ZQCUHit>& hits) {
        for (const ZQCUHit& hit : hits) {
          lists[number]->UpdateScores(ZQSimScore(source->records.Id(hit.index), hit.score));
        }
      });
  if (!done) return sorted;
  for (std::size_t i = 0; i < lists.size(); ++i) {
    sorted[queries->indices[i]] = ZQMakeHitIter(std::move(lists[i]));
  }
  return sorted;
}

ZQIter<double> ZQFastFPCUDADatabaseImpl::GetRawScores(const ZQFingerPrint& query,
                                                      const ZQFPDatabaseOptions& options) const {
  const std::lock_guard lock(mutex_);
  const auto source = Begin(rawScoresName);
  if (!source) return {};
  const auto queries = Upload({&query, 1}, *source, rawScoresName);
  if (!queries) return {};
  const std::uint64_t size = GetPieceSize(sizeof(double), rawScoresName);
  const auto output = ZQMakeBuffer(device_, size * sizeof(double));
  if (!output->IsValid()) return {};
  std::vector<double> scores(source->records.count);
  ZQCUGetRawScoresKernel kernel;
  SetCommonFields(kernel, *source, options);
  queries->Set(kernel, 0);
  kernel.scores = output->GetKernelBuffer();
  std::array<ZQDevicePiece, 2> pieces{ZQDevicePiece(*source, size, false),
                                      ZQDevicePiece(*source, size, false)};
  const bool done = ZQForPieces(
      pieces, 0, source->records.count, [&](std::uint64_t) { return size; },
      [&](const ZQCURecords& piece) {
        kernel.records = piece;
        return kernel.RunKernel();
      },
      [&](const ZQCURecords& piece) {
        return output->ReadData(&scores[piece.first], piece.count * sizeof(double));
      });
  if (!done) return {};
  return new ZQVectorIter<double>(std::move(scores));
}

// All pairs of records.

ZQIter<float> ZQFastFPCUDADatabaseImpl::GetAllScores(const ZQFPDatabaseOptions& options) const {
  const std::lock_guard lock(mutex_);
  const auto source = Begin(allScoresName);
  if (!source) return {};
  const std::uint64_t count = source->records.count;
  std::vector<float> scores;
  const bool allocated = ZQCatch(
      [&] {
        scores.resize(ZQSaturatedProduct(count, count));
        return true;
      },
      [](const std::exception&) {
        ZQThrow.Warning("Not enough system memory to store results!");
        return false;
      });
  if (!allocated) return {};
  const ZQPairBands bands = GetBands(sizeof(float), 0, allScoresName);
  if (!bands.oneShot) ZQThrow.Debug("Doing chunked %s.", allScoresName);
  const auto output = ZQMakeBuffer(device_, bands.rows * bands.columns * sizeof(float));
  if (!output->IsValid()) return {};
  ZQCUGetAllScoresKernel kernel;
  SetCommonFields(kernel, *source, options);
  kernel.scores = output->GetKernelBuffer();
  const bool done = ZQForPairs(
      *source, options, bands, false, noStep, RunsOnPairs(kernel),
      [&](const ZQCURecords& rows, const ZQCURecords& columns) {
        const std::uint64_t rowBytes = columns.count * sizeof(float);
        return output->ReadData2D(&scores[rows.first * count + columns.first],
                                  count * sizeof(float), rowBytes, rowBytes, rows.count);
      },
      noStep);
  if (!done) return {};
  return new ZQVectorIter<float>(std::move(scores));
}

namespace {

/// Whether the kernels have so many bins. False after a warning.
bool CheckBins(unsigned long bins, const char* caller) {
  if (bins <= zqCUMaxBins) return true;
  ZQThrow.Warning("%s is limited to %d bins with CUDA.", caller, static_cast<int>(zqCUMaxBins));
  return false;
}

}  // namespace

ZQFPHistogram ZQFastFPCUDADatabaseImpl::GetHistogram(const ZQFPDatabaseOptions& options,
                                                     unsigned long bins) const {
  const std::lock_guard lock(mutex_);
  ZQFPHistogram histogram(bins, 0.0, 1.0);
  const auto source = Begin(histogramName);
  if (!source || !CheckBins(bins, histogramName) || histogram.NumBins() == 0) return histogram;
  const std::uint64_t bytes = bins * sizeof(std::uint64_t);
  const auto output = ZQMakeBuffer(device_, bytes);
  if (!output->Clear()) return histogram;
  ZQCUHistogramKernel kernel;
  SetCommonFields(kernel, *source, options);
  kernel.upperTriangle = ZQIsSymmetric(options.GetSimFunc());
  kernel.numBins = static_cast<unsigned int>(bins);
  kernel.binSize = histogram.GetBinSize();
  kernel.counts = output->GetKernelBuffer();
  const bool done = ZQForPairs(*source, options, GetBands(0, 0, histogramName),
                               kernel.upperTriangle, noStep, RunsOnPairs(kernel), noStep, noStep);
  std::vector<unsigned long> counts(bins);
  if (done && output->ReadData(counts.data(), bytes)) {
    histogram += ZQFPHistogram(std::move(counts), 0.0, 1.0);
  }
  return histogram;
}

ZQFPVariogram ZQFastFPCUDADatabaseImpl::GetVariogram(const std::vector<float>& values,
                                                     const ZQFPDatabaseOptions& options,
                                                     unsigned long bins) const {
  const std::lock_guard lock(mutex_);
  ZQFPVariogram none(bins, 0.0, 1.0);
  const auto source = Begin(variogramName);
  if (!source || !CheckBins(bins, variogramName) || none.NumBins() == 0) return none;
  const std::uint64_t count = source->records.count;
  if (!ZQ_ASSERT(ZQIsSymmetric(options.GetSimFunc())) || !ZQ_ASSERT(values.size() == count)) {
    return none;
  }
  // The device finds the bins; the sums depend on the order of their terms, and are made here.
  using Bin = std::uint16_t;
  constexpr std::uint64_t maxBinsOfBand = std::uint64_t{1} << 25;
  ZQPairBands bands = GetBands(sizeof(Bin), 0, variogramName);
  if (count > 0) bands.rows = std::min(bands.rows, RoundDown(maxBinsOfBand / count));
  const auto output = ZQMakeBuffer(device_, bands.rows * bands.columns * sizeof(Bin));
  if (!output->IsValid()) return none;
  ZQCUVariogramKernel kernel;
  SetCommonFields(kernel, *source, options);
  kernel.numBins = static_cast<unsigned int>(bins);
  kernel.binSize = ZQCheckedFloat(none.GetBinSize());
  kernel.bins = output->GetKernelBuffer();
  std::vector<Bin> found(bands.rows * count);
  std::vector<unsigned long> counts(bins);
  std::vector<double> sums(bins);
  const bool done = ZQForPairs(
      *source, options, bands, true, noStep, RunsOnPairs(kernel),
      [&](const ZQCURecords& rows, const ZQCURecords& columns) {
        const std::uint64_t rowBytes = columns.count * sizeof(Bin);
        return output->ReadData2D(&found[columns.first], count * sizeof(Bin), rowBytes, rowBytes,
                                  rows.count);
      },
      [&](const ZQCURecords& rows) {
        for (std::uint64_t i = 0; i < rows.count; ++i) {
          const std::uint64_t row = rows.first + i;
          for (std::uint64_t column = row + 1; column < count; ++column) {
            const Bin bin = found[i * count + column];
            const float difference = values[row] - values[column];
            ++counts[bin];
            sums[bin] += double{difference * difference};
          }
        }
        return true;
      });
  return done ? ZQFPVariogram(counts, sums, 0.0, 1.0) : none;
}

unsigned long ZQFastFPCUDADatabaseImpl::GetMaxCount(const ZQFPDatabaseOptions& options) const {
  const std::lock_guard lock(mutex_);
  const auto source = Begin(sparseMatrixName);
  return source ? CountMaxNeighbors(*source, options).value_or(0) : 0;
}

std::optional<unsigned long> ZQFastFPCUDADatabaseImpl::CountMaxNeighbors(
    const ZQRecordSource& source, const ZQFPDatabaseOptions& options) const {
  const std::uint64_t count = source.records.count;
  if (!options.HasCutoff()) return count;
  constexpr std::uint64_t bytesPerRow = sizeof(std::uint32_t);
  const ZQPairBands bands = GetBands(0, bytesPerRow, "ZQFastFPDatabase::GetMaxCount()");
  const auto output = ZQMakeBuffer(device_, bands.rows * bytesPerRow);
  if (!output->IsValid()) return {};
  ZQCUCountsKernel kernel;
  SetCommonFields(kernel, source, options);
  kernel.cutoff = options.GetCutoff();
  kernel.numNeighbors = output->GetKernelBuffer();
  std::vector<std::uint32_t> counts(bands.rows);
  std::uint32_t most = 0;
  const bool done = ZQForPairs(
      source, options, bands, false, [&](const ZQCURecords&) { return output->Clear(); },
      RunsOnPairs(kernel), noStep,
      [&](const ZQCURecords& rows) {
        if (!output->ReadData(counts.data(), rows.count * bytesPerRow)) return false;
        most = std::max(most, *std::max_element(counts.begin(), counts.begin() + rows.count));
        return true;
      });
  if (!done) return {};
  return most;
}

bool ZQFastFPCUDADatabaseImpl::FindNeighbors(std::vector<ZQSimScorePair>& out,
                                             const ZQRecordSource& source,
                                             const ZQFPDatabaseOptions& options,
                                             unsigned int k) const {
  const std::uint64_t bytesPerRow =
      k * (sizeof(float) + sizeof(std::uint64_t)) + sizeof(std::uint32_t);
  const ZQPairBands bands = GetBands(0, bytesPerRow, sparseMatrixName);
  const std::uint64_t slots = bands.rows * k;
  const auto scores = ZQMakeBuffer(device_, slots * sizeof(float));
  const auto indices = ZQMakeBuffer(device_, slots * sizeof(std::uint64_t));
  const auto sizes = ZQMakeBuffer(device_, bands.rows * sizeof(std::uint32_t));
  if (!scores->IsValid() || !indices->IsValid() || !sizes->IsValid()) return false;
  ZQCUSparseKernel kernel;
  SetCommonFields(kernel, source, options);
  kernel.k = k;
  // Lists of all neighbours within the cutoff needn't have any other column.
  kernel.hasCutoff = options.HasCutoff() && (options.GetLimit() == 0 || k < options.GetLimit());
  kernel.cutoff = options.GetCutoff();
  kernel.scores = scores->GetKernelBuffer();
  kernel.indices = indices->GetKernelBuffer();
  kernel.sizes = sizes->GetKernelBuffer();
  cudaDeviceProp properties;
  ZQThrow.Debug("shared memory requested: %lu", kernel.GetSharedMemory());
  if (cudaGetDeviceProperties(&properties, device_) != 0 ||
      kernel.GetSharedMemory() > properties.sharedMemPerBlock) {
    ZQThrow.Warning("Not enough shared memory!");
    return false;
  }
  std::vector<float> foundScores(slots);
  std::vector<std::uint64_t> foundIndices(slots);
  std::vector<std::uint32_t> foundSizes(bands.rows);
  std::vector<std::pair<float, std::uint64_t>> entries;
  // As on a processor, the first columns, which fill a list, have their ids, and those that replace
  // others their positions.
  const std::uint64_t listSize =
      options.GetLimit() == 0 ? source.records.count : options.GetLimit();
  return ZQForPairs(
      source, options, bands, false, [&](const ZQCURecords&) { return sizes->Clear(); },
      RunsOnPairs(kernel), noStep,
      [&](const ZQCURecords& rows) {
        if (!scores->ReadData(foundScores.data(), rows.count * k * sizeof(float)) ||
            !indices->ReadData(foundIndices.data(), rows.count * k * sizeof(std::uint64_t)) ||
            !sizes->ReadData(foundSizes.data(), rows.count * sizeof(std::uint32_t))) {
          return false;
        }
        for (std::uint64_t row = 0; row < rows.count; ++row) {
          entries.clear();
          for (std::uint64_t slot = row * k; slot < row * k + foundSizes[row]; ++slot) {
            const std::uint64_t column = foundIndices[slot];
            entries.emplace_back(foundScores[slot],
                                 column < listSize ? source.records.Id(column) : column);
          }
          ZQAppendNeighbors(out, source.records.Id(rows.first + row), entries, options);
        }
        return true;
      });
}

ZQIter<ZQSimScorePair> ZQFastFPCUDADatabaseImpl::GetSparseMatrix(
    const ZQFPDatabaseOptions& options) const {
  const std::lock_guard lock(mutex_);
  const auto source = Begin(sparseMatrixName);
  if (!source) return {};
  const std::uint64_t count = source->records.count;
  if (options.GetLimit() > count) {
    // The message has signed numbers of 32 bits.
    ZQThrow.Warning(
        "%s is set to retrieve more nearest neighbors (%d) than there are fingerprints (%d).",
        sparseMatrixName, static_cast<int>(options.GetLimit()), static_cast<int>(count));
    return {};
  }
  if (options.GetLimit() == 0) {
    ZQThrow.Warning("%s is set to retrieve all nxn scores.", sparseMatrixName);
    if (!options.HasCutoff()) {
      ZQThrow.Warning("No cutoff specified! Terminating.");
      return {};
    }
  }
  if (!ZQIsKnownMeasure(options, sparseMatrixName)) return {};
  const auto most = CountMaxNeighbors(*source, options);
  if (!most) return {};
  ZQThrow.Debug("GetMaxCount discovered %lu max nrnn", *most);
  if (*most == 0) {
    ZQThrow.Info(
        "No nearest neighbors within the given cutoff, please adjust your parameters Terminating.");
    return {};
  }
  const unsigned int k = ZQCheckedUnsigned(
      options.GetLimit() == 0 ? *most : std::min<std::uint64_t>(*most, options.GetLimit()));
  std::vector<ZQSimScorePair> pairs;
  if (!FindNeighbors(pairs, *source, options, k)) return {};
  return new ZQVectorIter<ZQSimScorePair>(std::move(pairs));
}

unsigned int ZQFastFPCUDADatabaseImpl::SortedSearch(ZQSimSearchResult& result,
                                                    const ZQFingerPrint& /*query*/,
                                                    const ZQFPDatabaseOptions& /*options*/) const {
  const unsigned int status = result.GetSearchStatus();
  ZQ_ASSERT(status == ZQSimSearchStatus::Uninitialized);
  ZQThrow.Warning("ZQFastDatabase::SortedSearch() is not available in 'cuda' mode!");
  return status;
}

}  // namespace ZQKorvex
