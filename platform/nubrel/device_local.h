#pragma once

/// What is made once for each device and kept for the process: its context, its streams with the
/// pinned memory of their copies, its kernels. All is made when first needed. What fails is
/// reported, and tried again at the next use. Any thread may use these objects.

#include <array>
#include <mutex>

#include "contract/nubrel/buffer.h"
#include "platform/nubrel/cuda_driver_local.h"
#include "platform/nubrel/kernels/geometry_local.h"

namespace Nubrel {

/// A copy between rows on the host and rows in a device's memory, of at least one byte. The
/// device's rows are inside one allocation, and don't overlap.
struct ZQCUCopy {
  CUdeviceptr address = 0;       ///< of the first row
  unsigned long stride = 0;      ///< bytes from row to row on the device
  unsigned long hostStride = 0;  ///< the same on the host
  unsigned long rowBytes = 0;
  unsigned long rows = 0;

  unsigned long GetBytes() const { return rowBytes * rows; }
};

/// A stream. Copies go through two blocks of pinned memory, where the driver doesn't stage them
/// again: the host fills or empties one while the device copies the other.
class ZQCUStream {
 public:
  ZQCUStream(int device, unsigned long blockBytes) : device_(device), blockBytes_(blockBytes) {}
  ~ZQCUStream();
  ZQCUStream(const ZQCUStream&) = delete;
  ZQCUStream& operator=(const ZQCUStream&) = delete;

  // The device's context must be current in the calling thread.

  /// Null after a report.
  CUstream GetHandle();
  /// Returns when the source is read; the device has the data in the order of the stream.
  bool Write(const ZQCUCopy& copy, const unsigned char* source);
  /// Returns when the target is written.
  bool Read(const ZQCUCopy& copy, unsigned char* target);
  /// Waits for all work. False if any of it failed.
  bool Synchronize();

 private:
  struct Block {
    unsigned char* memory = nullptr;
    CUevent copied = nullptr;
    bool isInFlight = false;  ///< a copy may be using it, until `copied`
  };

  bool Make();
  /// The next block in turn, which may be in flight. Null after a report.
  Block* TakeBlock();
  bool MarkInFlight(Block& block);
  bool WaitFor(Block& block);
  bool WritePieces(const ZQCUCopy& copy, const unsigned char* source);
  bool ReadPieces(const ZQCUCopy& copy, unsigned char* target);
  Block* StartRead(const ZQCUCopy& copy, unsigned long begin);
  bool Finish(bool isDone);

  const int device_;
  const unsigned long blockBytes_;
  std::mutex mutex_;  // of all that follows
  CUstream handle_ = nullptr;
  std::array<Block, 2> blocks_;
  unsigned int next_ = 0;
};

/// The kernels' places in their table.
namespace ZQCUPlace {
#define ZQ_PLACE(name, Fields) name,
enum Place : unsigned int { ZQ_KERNELS(ZQ_PLACE) Count };
#undef ZQ_PLACE
}  // namespace ZQCUPlace

class ZQCUDevice {
 public:
  /// The device of this number, its context current in the calling thread. Null after a report.
  static ZQCUDevice* Use(int number);

  ZQCUDevice(int number, CUcontext context, unsigned long stagingBytes);

  /// Null after a report; for a number that no stream has, an assertion failure.
  ZQCUStream* GetStream(int stream);
  CUstream GetHandle(int stream);
  /// Null after a report.
  CUfunction GetKernel(ZQCUPlace::Place place);

 private:
  friend void ZQReleaseDevices(unsigned long stagingBytes);

  static ZQCUDevice* Find(int number);
  bool MakeCurrent() const;

  const int number_;
  const CUcontext context_;
  std::array<ZQCUStream, zqNumStreams> streams_;
  std::mutex kernelsMutex_;
  CUmodule module_ = nullptr;
  std::array<CUfunction, ZQCUPlace::Count> kernels_{};
};

/// Bytes of a block of pinned memory: at 25 GB/s its copy takes 0.3 ms, far longer than starting
/// it.
inline constexpr unsigned long zqStagingBytes = 8UL << 20U;

/// Frees the streams, with their events and pinned memory, and forgets contexts and kernels, which
/// stay with the driver. Blocks made from now on have `stagingBytes`, at least 1. For tests; no
/// other call may run.
void ZQReleaseDevices(unsigned long stagingBytes = zqStagingBytes);

}  // namespace Nubrel
