#include "contract/nubrel/gpu.h"

#include <array>
#include <new>

#include "contract/nubrel/scores.h"
#include "platform/nubrel/device_local.h"
#include "platform/nubrel/kernels/image_local.h"

namespace Nubrel {

namespace {

// The least compute capability that kernels are compiled for. A driver that knows such a device
// (CUDA 9.0 and later) also reads the kernels' PTX.
constexpr int leastMajor = 7;

// The device of ZQCUSetDevice in this thread, at first number 0 as in the CUDA runtime.
thread_local int threadDevice = 0;

/// Makes a call for a device, with or without the report of a failure.
template <class Call, class... Args>
bool Query(bool reports, int device, const Call& call, Args... args) {
  return reports ? call.Run(device, args...) : call.function(args...) == CUDA_SUCCESS;
}

// Calls `found` for each usable device. Devices are counted anew each time, which is cheap.
template <class Found>
void ForDevices(bool reports, Found found) {
  const ZQCUDADriver* driver = ZQGetCUDADriver();
  int count = 0;
  if (!driver || zqKernelImage[0] == '\0' || !Query(reports, 0, driver->cuDeviceGetCount, &count)) {
    return;
  }
  for (int number = 0; number < count; ++number) {
    CUdevice device = 0;
    int major = 0;
    if (Query(reports, number, driver->cuDeviceGet, &device, number) &&
        Query(reports, number, driver->cuDeviceGetAttribute, &major,
              CU_DEVICE_ATTRIBUTE_COMPUTE_CAPABILITY_MAJOR, device) &&
        major >= leastMajor) {
      found(number);
    }
  }
}

}  // namespace

bool ZQCUDAIsGPUReady() {
  bool isReady = false;
  ForDevices(false, [&](int /*number*/) { isReady = true; });
  return isReady;
}

int ZQCUGetDeviceCount() {
  int count = 0;
  ForDevices(true, [&](int /*number*/) { ++count; });
  return count;
}

int ZQCUGetAvailableDevices(std::vector<int>& devices, int maxDevices) {
  devices.clear();
  try {
    ForDevices(true, [&](int number) {
      if (maxDevices <= 0 || devices.size() < static_cast<std::size_t>(maxDevices)) {
        devices.push_back(number);
      }
    });
  } catch (const std::bad_alloc&) {
    ZQReportGPUFailure(0, "operator new", "out of memory");
    devices.clear();
  }
  return static_cast<int>(devices.size());
}

int cudaGetDeviceProperties(cudaDeviceProp* properties, int device) {
  const ZQCUDADriver* driver = ZQGetCUDADriver();
  int count = 0;
  if (!properties || !driver) return CUDA_ERROR_INVALID_VALUE;
  CUresult result = driver->cuDeviceGetCount.Call(device, &count);
  if (result == CUDA_SUCCESS && (device < 0 || device >= count)) return CUDA_ERROR_INVALID_VALUE;

  CUdevice handle = 0;
  std::array<char, 256> name{};
  cudaDeviceProp found;
  int shared = 0;
  const auto get = [&](const auto& call, auto... args) {
    if (result == CUDA_SUCCESS) result = call.Call(device, args...);
  };
  get(driver->cuDeviceGet, &handle, device);
  get(driver->cuDeviceGetName, name.data(), static_cast<int>(name.size()), handle);
  get(driver->cuDeviceTotalMem_v2, &found.totalGlobalMem, handle);
  get(driver->cuDeviceGetAttribute, &shared, CU_DEVICE_ATTRIBUTE_MAX_SHARED_MEMORY_PER_BLOCK,
      handle);
  get(driver->cuDeviceGetAttribute, &found.major, CU_DEVICE_ATTRIBUTE_COMPUTE_CAPABILITY_MAJOR,
      handle);
  get(driver->cuDeviceGetAttribute, &found.minor, CU_DEVICE_ATTRIBUTE_COMPUTE_CAPABILITY_MINOR,
      handle);
  get(driver->cuDriverGetVersion, &found.driverVersion);
  if (result != CUDA_SUCCESS) return result;
  found.sharedMemPerBlock = static_cast<std::size_t>(shared);
  try {
    found.name = name.data();
  } catch (const std::bad_alloc&) {
    ZQReportGPUFailure(device, "operator new", "out of memory");
    return CUDA_ERROR_OUT_OF_MEMORY;
  }
  *properties = std::move(found);
  return CUDA_SUCCESS;
}

bool ZQCUSetDevice(int device) {
  if (!ZQCUDevice::Use(device)) return false;
  threadDevice = device;
  return true;
}

unsigned long ZQCUGetMaxMemAlloc(int device, float fraction) {
  std::size_t free = 0;
  std::size_t total = 0;
  if (!ZQCUDevice::Use(device) || !ZQGetCUDADriver()->cuMemGetInfo_v2.Run(device, &free, &total)) {
    return 0;
  }
  // In double precision, where a number of bytes isn't rounded up.
  return static_cast<unsigned long>(ZQCUClamp(fraction) * static_cast<double>(free));
}

bool ZQCUDeviceSynchronize() {
  return ZQCUDevice::Use(threadDevice) && ZQGetCUDADriver()->cuCtxSynchronize.Run(threadDevice);
}

}  // namespace Nubrel
