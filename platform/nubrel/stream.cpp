#include <algorithm>
#include <cstring>

#include "platform/nubrel/device_local.h"

namespace Nubrel {

namespace {

// A copy's bytes, one row after another, go in pieces of `pieceBytes`. Calls
// `copyRun(offset, at, bytes)` for each run of the piece from `begin` that is contiguous where rows
// are `stride` apart: `offset` is its distance from the first row, `at` that from the piece's
// begin. Stops where it returns false.
template <class CopyRun>
bool ForRuns(const ZQCUCopy& copy, unsigned long stride, unsigned long begin,
             unsigned long pieceBytes, CopyRun copyRun) {
  const unsigned long end = begin + std::min(pieceBytes, copy.GetBytes() - begin);
  if (stride == copy.rowBytes) return copyRun(begin, 0UL, end - begin);
  for (unsigned long i = begin; i < end;) {
    const unsigned long inRow = i % copy.rowBytes;
    const unsigned long bytes = std::min(copy.rowBytes - inRow, end - i);
    if (!copyRun(i / copy.rowBytes * stride + inRow, i - begin, bytes)) return false;
    i += bytes;
  }
  return true;
}

}  // namespace

ZQCUStream::~ZQCUStream() {
  const ZQCUDADriver* driver = ZQGetCUDADriver();
  if (!driver || !handle_) return;
  driver->cuStreamSynchronize.Run(device_, handle_);
  for (const Block& block : blocks_) {
    if (block.copied) driver->cuEventDestroy_v2.Run(device_, block.copied);
    if (block.memory) driver->cuMemFreeHost.Run(device_, block.memory);
  }
  driver->cuStreamDestroy_v2.Run(device_, handle_);
}

bool ZQCUStream::Make() {
  return handle_ ||
         ZQGetCUDADriver()->cuStreamCreate.Run(device_, &handle_, CU_STREAM_NON_BLOCKING);
}

CUstream ZQCUStream::GetHandle() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return Make() ? handle_ : nullptr;
}

bool ZQCUStream::Write(const ZQCUCopy& copy, const unsigned char* source) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return Make() && Finish(WritePieces(copy, source));
}

bool ZQCUStream::Read(const ZQCUCopy& copy, unsigned char* target) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return Make() && Finish(ReadPieces(copy, target));
}

bool ZQCUStream::Synchronize() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return !handle_ || ZQGetCUDADriver()->cuStreamSynchronize.Run(device_, handle_);
}

ZQCUStream::Block* ZQCUStream::TakeBlock() {
  const ZQCUDADriver& driver = *ZQGetCUDADriver();
  Block& block = blocks_[next_];
  if (!block.memory) {
    void* memory = nullptr;
    if (!driver.cuMemAllocHost_v2.Run(device_, &memory, blockBytes_)) return nullptr;
    block.memory = static_cast<unsigned char*>(memory);
  }
  if (!block.copied && !driver.cuEventCreate.Run(device_, &block.copied, CU_EVENT_DISABLE_TIMING)) {
    return nullptr;
  }
  next_ = (next_ + 1) % blocks_.size();
  return &block;
}

bool ZQCUStream::MarkInFlight(Block& block) {
  block.isInFlight = ZQGetCUDADriver()->cuEventRecord.Run(device_, block.copied, handle_);
  return block.isInFlight;
}

bool ZQCUStream::WaitFor(Block& block) {
  if (block.isInFlight && !ZQGetCUDADriver()->cuEventSynchronize.Run(device_, block.copied)) {
    return false;
  }
  block.isInFlight = false;
  return true;
}

bool ZQCUStream::WritePieces(const ZQCUCopy& copy, const unsigned char* source) {
  const ZQCUDADriver& driver = *ZQGetCUDADriver();
  for (unsigned long begin = 0; begin < copy.GetBytes(); begin += blockBytes_) {
    Block* block = TakeBlock();
    if (!block || !WaitFor(*block)) return false;
    ForRuns(copy, copy.hostStride, begin, blockBytes_,
            [&](unsigned long offset, unsigned long at, unsigned long bytes) {
              std::memcpy(block->memory + at, source + offset, bytes);
              return true;
            });
    const bool isStarted =
        ForRuns(copy, copy.stride, begin, blockBytes_,
                [&](unsigned long offset, unsigned long at, unsigned long bytes) {
                  return driver.cuMemcpyHtoDAsync_v2.Run(device_, copy.address + offset,
                                                         block->memory + at, bytes, handle_);
                });
    if (!isStarted || !MarkInFlight(*block)) return false;
  }
  return true;
}

// A write may still use the block: it is before this read in the order of the stream.
ZQCUStream::Block* ZQCUStream::StartRead(const ZQCUCopy& copy, unsigned long begin) {
  const ZQCUDADriver& driver = *ZQGetCUDADriver();
  Block* block = TakeBlock();
  const bool isStarted =
      block && ForRuns(copy, copy.stride, begin, blockBytes_,
                       [&](unsigned long offset, unsigned long at, unsigned long bytes) {
                         return driver.cuMemcpyDtoHAsync_v2.Run(
                             device_, block->memory + at, copy.address + offset, bytes, handle_);
                       });
  return isStarted ? block : nullptr;
}

bool ZQCUStream::ReadPieces(const ZQCUCopy& copy, unsigned char* target) {
  unsigned long begin = 0;
  Block* block = StartRead(copy, begin);
  const auto unpack = [&] {
    ForRuns(copy, copy.hostStride, begin, blockBytes_,
            [&](unsigned long offset, unsigned long at, unsigned long bytes) {
              std::memcpy(target + offset, block->memory + at, bytes);
              return true;
            });
  };
  while (block && copy.GetBytes() - begin > blockBytes_) {
    Block* next = MarkInFlight(*block) ? StartRead(copy, begin + blockBytes_) : nullptr;
    if (!next || !WaitFor(*block)) return false;
    unpack();
    block = next;
    begin += blockBytes_;
  }
  if (!block || !ZQGetCUDADriver()->cuStreamSynchronize.Run(device_, handle_)) return false;
  unpack();
  return true;
}

// After a failure, copies without an event may still use the blocks. A further failure here has the
// same cause, and isn't reported again.
bool ZQCUStream::Finish(bool isDone) {
  if (!isDone) ZQGetCUDADriver()->cuStreamSynchronize.function(handle_);
  return isDone;
}

}  // namespace Nubrel
