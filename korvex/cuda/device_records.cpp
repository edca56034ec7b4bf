#include "korvex/cuda/device_records_local.h"

namespace ZQKorvex {

std::unique_ptr<ZQCUBufferCache> ZQMakeBuffer(int device, std::uint64_t bytes, int stream) {
  return std::make_unique<ZQCUBufferCache>(device, std::max<std::uint64_t>(bytes, 1), stream,
                                           ZQCUAccess::Host | ZQCUAccess::Kernel);
}

bool ZQUploadWords(const ZQRecords& records, std::uint64_t begin, std::uint64_t n,
                   ZQCUBufferCache& words) {
  const std::uint64_t rowBytes = 8 * records.numWords;
  return n == 0 ||
         words.WriteData2D(records.Words(begin), 8 * records.Stride(), rowBytes, rowBytes, n);
}

bool ZQUploadCounts(const ZQRecords& records, std::uint64_t begin, std::uint64_t n,
                    ZQCUBufferCache& counts) {
  std::array<std::uint32_t, 16384> values;
  for (std::uint64_t i = 0; i < n; i += values.size()) {
    const std::uint64_t some = std::min<std::uint64_t>(values.size(), n - i);
    for (std::uint64_t j = 0; j < some; ++j) {
      values[j] = static_cast<std::uint32_t>(records.Count(begin + i + j));
    }
    if (!counts.WriteData(values.data(), 4 * some, 4 * i)) return false;
  }
  return true;
}

bool ZQDevicePiece::MakeBuffers() {
  if (!own_.counts && (countBits_ || !source_.pushed)) {
    own_.counts = ZQMakeBuffer(source_.device, 4 * capacity_, zqUploadStream);
  }
  if (!own_.words && !source_.pushed) {
    own_.words =
        ZQMakeBuffer(source_.device, 8 * source_.records.numWords * capacity_, zqUploadStream);
  }
  return (!own_.counts || own_.counts->IsValid()) && (!own_.words || own_.words->IsValid());
}

bool ZQDevicePiece::Load(std::uint64_t begin, std::uint64_t n) {
  if (!MakeBuffers()) return false;
  const ZQRecords& records = source_.records;
  piece_ = {.count = n, .first = begin};
  if (source_.pushed) {
    piece_.words = source_.pushed->words->GetKernelBuffer(8 * records.numWords * begin);
    piece_.counts = source_.pushed->counts->GetKernelBuffer(4 * begin);
  } else {
    piece_.words = own_.words->GetKernelBuffer();
    if (!ZQUploadWords(records, begin, n, *own_.words)) return false;
  }
  if (!own_.counts) return true;
  piece_.counts = own_.counts->GetKernelBuffer();
  if (!countBits_) return ZQUploadCounts(records, begin, n, *own_.counts);
  ZQCUPopcountKernel kernel;
  kernel.device = source_.device;
  kernel.stream = zqUploadStream;
  kernel.words = piece_.words;
  kernel.count = n;
  kernel.numWords = records.numWords;
  kernel.counts = piece_.counts;
  return kernel.RunKernel();
}

}  // namespace ZQKorvex
