#include "platform/nubrel/device_local.h"

#include <map>
#include <new>
#include <utility>

#include "contract/bostrel/throw.h"
#include "platform/nubrel/kernels/image_local.h"

namespace Nubrel {

namespace {

#define ZQ_NAME(name, Fields) #name,
constexpr std::array<const char*, ZQCUPlace::Count> kernelNames{ZQ_KERNELS(ZQ_NAME)};
#undef ZQ_NAME

// Never destroyed: at the end of the process the driver may be gone before static objects are.
struct DeviceTable {
  std::mutex mutex;
  std::map<int, ZQCUDevice> devices;
  unsigned long stagingBytes = zqStagingBytes;
};
DeviceTable& Table() {
  static auto* table = new DeviceTable;
  return *table;
}

template <std::size_t... i>
std::array<ZQCUStream, sizeof...(i)> MakeStreams(int number, unsigned long stagingBytes,
                                                 std::index_sequence<i...> /*places*/) {
  return {((void)i, ZQCUStream(number, stagingBytes))...};
}

}  // namespace

ZQCUDevice::ZQCUDevice(int number, CUcontext context, unsigned long stagingBytes)
    : number_(number),
      context_(context),
      streams_(MakeStreams(number, stagingBytes, std::make_index_sequence<zqNumStreams>())) {}

ZQCUDevice* ZQCUDevice::Find(int number) {
  DeviceTable& table = Table();
  const std::lock_guard<std::mutex> lock(table.mutex);
  const auto found = table.devices.find(number);
  if (found != table.devices.end()) return &found->second;
  const ZQCUDADriver* driver = ZQGetCUDADriver();
  if (!driver) {
    ZQReportGPUFailure(number, "cuInit", "no driver");
    return nullptr;
  }
  CUdevice device = 0;
  CUcontext context = nullptr;
  if (!driver->cuDeviceGet.Run(number, &device, number) ||
      !driver->cuDevicePrimaryCtxRetain.Run(number, &context, device)) {
    return nullptr;
  }
  try {
    return &table.devices.try_emplace(number, number, context, table.stagingBytes).first->second;
  } catch (const std::bad_alloc&) {
    ZQReportGPUFailure(number, "operator new", "out of memory");
    return nullptr;
  }
}

bool ZQCUDevice::MakeCurrent() const {
  return ZQGetCUDADriver()->cuCtxSetCurrent.Run(number_, context_);
}

ZQCUDevice* ZQCUDevice::Use(int number) {
  ZQCUDevice* device = Find(number);
  return device && device->MakeCurrent() ? device : nullptr;
}

ZQCUStream* ZQCUDevice::GetStream(int stream) {
  if (!ZQ_ASSERT(stream >= 0 && stream < zqNumStreams)) return nullptr;
  return &streams_[stream];
}

CUstream ZQCUDevice::GetHandle(int stream) {
  ZQCUStream* found = GetStream(stream);
  return found ? found->GetHandle() : nullptr;
}

CUfunction ZQCUDevice::GetKernel(ZQCUPlace::Place place) {
  const ZQCUDADriver& driver = *ZQGetCUDADriver();
  const std::lock_guard<std::mutex> lock(kernelsMutex_);
  if (!module_ && !driver.cuModuleLoadData.Run(number_, &module_, zqKernelImage)) return nullptr;
  CUfunction& kernel = kernels_[place];
  if (!kernel && !driver.cuModuleGetFunction.Run(number_, &kernel, module_, kernelNames[place]))
    return nullptr;
  return kernel;
}

void ZQReleaseDevices(unsigned long stagingBytes) {
  DeviceTable& table = Table();
  const std::lock_guard<std::mutex> lock(table.mutex);
  while (!table.devices.empty()) {
    table.devices.begin()->second.MakeCurrent();
    table.devices.erase(table.devices.begin());
  }
  table.stagingBytes = stagingBytes;
}

}  // namespace Nubrel
