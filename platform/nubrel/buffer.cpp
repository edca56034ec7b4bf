#include "contract/nubrel/buffer.h"

#include <algorithm>

#include "contract/bostrel/throw.h"
#include "platform/nubrel/device_local.h"

namespace Nubrel {

// Where the driver places memory doesn't depend on who uses it.
ZQCUBufferCache::ZQCUBufferCache(int device, unsigned long bytes, int stream,
                                 unsigned int /*access*/)
    : device_(device), stream_(stream), bytes_(bytes) {
  ZQCUDevice* used = ZQCUDevice::Use(device);
  if (!used || !used->GetStream(stream)) return;
  // The driver refuses 0 bytes.
  ZQGetCUDADriver()->cuMemAlloc_v2.Run(device, &address_, std::max(bytes, 1UL));
}

ZQCUBufferCache::~ZQCUBufferCache() {
  if (!IsValid()) return;
  if (ZQCUDevice* device = ZQCUDevice::Use(device_)) device->GetStream(stream_)->Synchronize();
  ZQGetCUDADriver()->cuMemFree_v2.Run(device_, address_);
}

bool ZQCUBufferCache::Clear() {
  if (!IsValid()) return false;
  if (bytes_ == 0) return true;
  ZQCUDevice* device = ZQCUDevice::Use(device_);
  CUstream stream = device ? device->GetHandle(stream_) : nullptr;
  return stream && ZQGetCUDADriver()->cuMemsetD8Async.Run(device_, address_, 0, bytes_, stream);
}

// Rows that overlap aren't inside either.
bool ZQCUBufferCache::IsInside(unsigned long stride, unsigned long rowBytes, unsigned long rows,
                               unsigned long offset) const {
  if (offset > bytes_) return false;
  const unsigned long room = bytes_ - offset;
  if (rows == 0 || rowBytes == 0) return true;
  if (rowBytes > room) return false;
  return rows == 1 || (stride >= rowBytes && rows - 1 <= (room - rowBytes) / stride);
}

bool ZQCUBufferCache::WriteData(const void* data, unsigned long bytes, unsigned long offset) {
  return WriteData2D(data, bytes, bytes, bytes, 1, offset);
}

bool ZQCUBufferCache::WriteData2D(const void* data, unsigned long sourceStride,
                                  unsigned long rowBytes, unsigned long stride, unsigned long rows,
                                  unsigned long offset) {
  if (!IsValid() || !ZQ_ASSERT(IsInside(stride, rowBytes, rows, offset))) return false;
  if (rows == 0 || rowBytes == 0) return true;
  ZQCUDevice* device = ZQCUDevice::Use(device_);
  return device && device->GetStream(stream_)->Write(
                       {address_ + offset, stride, sourceStride, rowBytes, rows},
                       static_cast<const unsigned char*>(data));
}

bool ZQCUBufferCache::ReadData(void* data, unsigned long bytes, unsigned long offset) const {
  return ReadData2D(data, bytes, bytes, bytes, 1, offset);
}

bool ZQCUBufferCache::ReadData2D(void* data, unsigned long targetStride, unsigned long rowBytes,
                                 unsigned long stride, unsigned long rows,
                                 unsigned long offset) const {
  if (!IsValid() || !ZQ_ASSERT(IsInside(stride, rowBytes, rows, offset))) return false;
  if (rows == 0 || rowBytes == 0) return true;
  ZQCUDevice* device = ZQCUDevice::Use(device_);
  return device &&
         device->GetStream(stream_)->Read({address_ + offset, stride, targetStride, rowBytes, rows},
                                          static_cast<unsigned char*>(data));
}

ZQCUEvent::~ZQCUEvent() {
  if (!event_) return;
  ZQCUDevice::Use(device_);
  ZQGetCUDADriver()->cuEventDestroy_v2.Run(device_, static_cast<CUevent>(event_));
}

bool ZQCUEvent::EventCreate() {
  if (event_) return true;
  CUevent event = nullptr;
  if (!ZQCUDevice::Use(device_) ||
      !ZQGetCUDADriver()->cuEventCreate.Run(device_, &event, CU_EVENT_DISABLE_TIMING)) {
    return false;
  }
  event_ = event;
  return true;
}

bool ZQCUEvent::Record(int stream) {
  if (!event_) return false;
  ZQCUDevice* device = ZQCUDevice::Use(device_);
  CUstream handle = device ? device->GetHandle(stream) : nullptr;
  return handle &&
         ZQGetCUDADriver()->cuEventRecord.Run(device_, static_cast<CUevent>(event_), handle);
}

bool ZQCUEvent::Synchronize() const {
  return event_ && ZQCUDevice::Use(device_) &&
         ZQGetCUDADriver()->cuEventSynchronize.Run(device_, static_cast<CUevent>(event_));
}

}  // namespace Nubrel
