#pragma once

/// The GPUs of this machine. A usable one has compute capability 7.0 or more and a driver that
/// loads the kernels of this build; where no driver is installed there is none. Any thread may call
/// these functions. All of this layer works in the device's primary context, which it leaves
/// current in the calling thread.
///
/// A call of the driver that fails reports the warning "GPU %d : %s failed: %s!", with the call and
/// the driver's reason. The function then returns false, 0 or nothing. After some failures of
/// kernels, such as an access outside of all buffers, the driver refuses all further work of the
/// process on that device.

#include <cstddef>
#include <string>
#include <vector>

#include "contract/bostrel/export.h"

namespace Nubrel {

/// Whether a usable device exists. Reports nothing.
ZQ_EXPORT bool ZQCUDAIsGPUReady();

/// The number of usable devices.
ZQ_EXPORT int ZQCUGetDeviceCount();
/// Their numbers, at most `maxDevices` of them, or all for 0. Returns how many these are. The
/// driver numbers all devices, so that those of usable ones may have gaps.
ZQ_EXPORT int ZQCUGetAvailableDevices(std::vector<int>& devices, int maxDevices);

/// The facts about a device that korvex uses.
struct cudaDeviceProp {
  std::string name;
  std::size_t totalGlobalMem = 0;     ///< bytes
  std::size_t sharedMemPerBlock = 0;  ///< bytes
  int major = 0;                      ///< of the compute capability
  int minor = 0;
  int driverVersion =
      0;  ///< 1000 * major + 10 * minor of the CUDA version that the driver supports
};
/// Returns 0, or the driver's error number: 1 without a report for a device that isn't there.
ZQ_EXPORT int cudaGetDeviceProperties(cudaDeviceProp* properties, int device);

/// Makes the device current in the calling thread.
ZQ_EXPORT bool ZQCUSetDevice(int device);
/// Bytes of the greatest buffer that the device could hold now: this fraction of its free memory.
ZQ_EXPORT unsigned long ZQCUGetMaxMemAlloc(int device, float fraction);
/// Waits for all work of the device that the calling thread set last, device 0 if none. False if
/// any of it failed.
ZQ_EXPORT bool ZQCUDeviceSynchronize();

}  // namespace Nubrel
