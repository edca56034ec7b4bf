#pragma once

/// Memory of a GPU, and events in its work. All work of a device is in a few streams, numbered from
/// 0: that of one stream is done in order, that of two streams may overlap. An object is for one
/// thread at a time. Failures are reported as in gpu.h.

#include "contract/bostrel/export.h"

namespace Nubrel {

/// The streams of a device. Copies and kernels name the stream that they are part of.
inline constexpr int zqNumStreams = 2;

/// An address in a device's memory, as kernels take it. Not to be dereferenced.
using ZQCUAddress = unsigned long long;

/// Who uses a buffer.
namespace ZQCUAccess {
inline constexpr unsigned int Host = 1;    ///< the host writes or reads it
inline constexpr unsigned int Kernel = 4;  ///< kernels read or write it
}  // namespace ZQCUAccess

class ZQ_EXPORT ZQCUBufferCache {
 public:
  /// Allocates memory of the device, aligned to 256 bytes; copies use this stream. After a failure
  /// the buffer isn't valid, and every operation returns false without a report.
  ZQCUBufferCache(int device, unsigned long bytes, int stream, unsigned int access);
  /// Waits for the work of its stream, then frees the memory.
  ~ZQCUBufferCache();
  ZQCUBufferCache(const ZQCUBufferCache&) = delete;
  ZQCUBufferCache& operator=(const ZQCUBufferCache&) = delete;

  bool IsValid() const { return address_ != 0; }
  unsigned long GetSize() const { return bytes_; }
  /// The address that kernels take, `offset` bytes into the buffer.
  ZQCUAddress GetKernelBuffer(unsigned long offset = 0) const { return address_ + offset; }

  /// Sets all bytes to 0.
  bool Clear();

  // Copies between host and device. Host memory may be freed or changed once they return; a write
  // reaches the device in the order of the stream, and a read waits for the stream. A copy that
  // isn't inside the buffer is an assertion failure, and copies nothing.

  bool WriteData(const void* data, unsigned long bytes, unsigned long offset = 0);
  /// Copies `rows` rows of `rowBytes`: `sourceStride` bytes apart on the host, `stride` on the
  /// device. The rows are packed on the host while those before them are on their way, so that the
  /// bus carries nothing else.
  bool WriteData2D(const void* data, unsigned long sourceStride, unsigned long rowBytes,
                   unsigned long stride, unsigned long rows, unsigned long offset = 0);
  bool ReadData(void* data, unsigned long bytes, unsigned long offset = 0) const;
  /// The opposite of `WriteData2D`.
  bool ReadData2D(void* data, unsigned long targetStride, unsigned long rowBytes,
                  unsigned long stride, unsigned long rows, unsigned long offset = 0) const;

 private:
  bool IsInside(unsigned long stride, unsigned long rowBytes, unsigned long rows,
                unsigned long offset) const;

  int device_;
  int stream_;
  unsigned long bytes_;
  ZQCUAddress address_ = 0;
};

/// A point in the work of a stream.
class ZQ_EXPORT ZQCUEvent {
 public:
  explicit ZQCUEvent(int device) : device_(device) {}
  ~ZQCUEvent();
  ZQCUEvent(const ZQCUEvent&) = delete;
  ZQCUEvent& operator=(const ZQCUEvent&) = delete;

  /// Makes the event; the other operations need this first. Once is enough.
  bool EventCreate();
  /// Marks the point after all work that the stream has so far.
  bool Record(int stream);
  /// Waits until the device has reached that point; at once if none was recorded.
  bool Synchronize() const;

 private:
  int device_;
  void* event_ = nullptr;
};

}  // namespace Nubrel
