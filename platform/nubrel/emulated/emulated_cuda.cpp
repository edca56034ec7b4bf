#include "platform/nubrel/emulated/emulated_cuda.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <span>
#include <utility>

#include "platform/nubrel/emulated/block_local.h"
#include "platform/nubrel/kernels/pairs_local.h"
#include "platform/nubrel/kernels/scans_local.h"

namespace Nubrel {

struct CUctx_st {
  int device;
};

/// Work in order: that before `done` is done, and that from there to `added` is in the queue.
struct CUstream_st {
  int device = 0;
  std::deque<std::function<CUresult()>> queue;
  unsigned long added = 0;
  unsigned long done = 0;
  CUresult error = CUDA_SUCCESS;  ///< of work that failed since the last wait
};

struct CUevent_st {
  CUstream stream = nullptr;  ///< null: nothing was recorded
  unsigned long number = 0;   ///< of the work of the stream before it
};

struct CUmod_st {};

struct CUfunc_st {
  const char* name;
  /// The kernel with a copy of its fields.
  std::function<void(EmulatedBlock&)> (*bind)(const void* fields);
};

namespace {

// Errors and limits of the driver that only the emulation knows.
constexpr CUresult CUDA_ERROR_NOT_INITIALIZED = 3;
constexpr CUresult CUDA_ERROR_NO_DEVICE = 100;
constexpr int zqDriverVersion = 12020;
constexpr std::size_t zqGranularity = 256;
constexpr CUdeviceptr zqFirstAddress = 0x00A0'0000'0000'0000;  // no address of a process

CUfunc_st zqKernels[] = {
#define ZQ_ROW(name, Fields)                                                       \
  {#name, [](const void* fields) -> std::function<void(EmulatedBlock&)> {          \
     return [fields = *static_cast<const Fields*>(fields)](EmulatedBlock& block) { \
       Nubrel::name(block, fields);                                                \
     };                                                                            \
   }},
    ZQ_KERNELS(ZQ_ROW)
#undef ZQ_ROW
};

struct Buffer {
  int device;
  std::vector<std::byte> bytes;
};

/// Objects by their address.
template <class T>
using Objects = std::map<const T*, std::unique_ptr<T>>;
template <class T>
T* Add(Objects<T>& objects, T object) {
  auto owned = std::make_unique<T>(std::move(object));
  T* const address = owned.get();
  objects.emplace(address, std::move(owned));
  return address;
}

std::size_t RoundUp(std::size_t bytes) {
  return ZQCUDivideUp(bytes, zqGranularity) * zqGranularity;
}

/// A number of the environment.
std::size_t GetNumber(const char* variable, std::size_t value) {
  const char* const text = std::getenv(variable);
  return text ? std::strtoull(text, nullptr, 10) : value;
}

std::vector<ZQEmulatedDevice> GetDefaultDevices() {
  ZQEmulatedDevice device;
  device.memory = GetNumber("KORVEX_EMULATED_GPU_MEMORY", device.memory);
  return std::vector<ZQEmulatedDevice>(GetNumber("KORVEX_EMULATED_GPUS", 1), device);
}

/// The driver and its devices, under one lock.
struct Driver {
  Driver() { SetDevices(GetDefaultDevices()); }

  void SetDevices(const std::vector<ZQEmulatedDevice>& newDevices) {
    devices = newDevices;
    buffers.clear();
    hostBuffers.clear();
    events.clear();
    streams.clear();
    contexts.clear();
    defaultStreams.clear();
    for (std::size_t i = 0; i < devices.size(); ++i) {
      const int device = static_cast<int>(i);
      contexts.push_back(Add(allContexts, CUctx_st{device}));
      CUstream_st stream;
      stream.device = device;
      defaultStreams.push_back(Add(streams, std::move(stream)));
    }
  }

  bool HasDevice(int device) const {
    return device >= 0 && static_cast<std::size_t>(device) < devices.size();
  }

  std::size_t GetUsedMemory(int device) const {
    std::size_t used = 0;
    for (const auto& [address, buffer] : buffers) {
      if (buffer.device == device) used += RoundUp(buffer.bytes.size());
    }
    return used;
  }
  /// The bytes from an address on, to the end of its live buffer on this device.
  std::span<std::byte> GetMemory(int device, CUdeviceptr address) {
    auto next = buffers.upper_bound(address);
    if (next == buffers.begin()) return {};
    auto& [begin, buffer] = *std::prev(next);
    if (buffer.device != device || address - begin >= buffer.bytes.size()) return {};
    return std::span(buffer.bytes).subspan(address - begin);
  }
  bool IsPinned(const void* data, std::size_t bytes) const {
    const auto* const begin = static_cast<const std::byte*>(data);
    auto next = hostBuffers.upper_bound(begin);
    if (next == hostBuffers.begin()) return false;
    const auto& buffer = std::prev(next)->second;
    return begin + bytes <= buffer.data() + buffer.size();
  }

  /// The stream of a handle, null being the default one; null if it isn't one of this device.
  CUstream FindStream(int device, CUstream stream) {
    if (!stream) return defaultStreams[static_cast<std::size_t>(device)];
    return streams.contains(stream) && stream->device == device ? stream : nullptr;
  }
  CUresult AddWork(int device, CUstream handle, std::function<CUresult()> work) {
    CUstream stream = FindStream(device, handle);
    if (!stream) return CUDA_ERROR_INVALID_VALUE;
    stream->queue.push_back(std::move(work));
    ++stream->added;
    return CUDA_SUCCESS;
  }
  static void RunOne(CUstream_st& stream) {
    const std::function<CUresult()> work = std::move(stream.queue.front());
    stream.queue.pop_front();
    ++stream.done;
    const CUresult result = work();
    if (stream.error == CUDA_SUCCESS) stream.error = result;
  }
  /// Does the stream's work up to this number. Of the others' work, any part may be done before.
  void RunUntil(CUstream_st& stream, unsigned long number) {
    for (auto& [handle, other] : streams) {
      if (other.get() == &stream || random() % 2 == 0) continue;
      for (std::size_t n = random() % (other->queue.size() + 1); n > 0; --n) RunOne(*other);
    }
    while (stream.done < number) RunOne(stream);
  }
  void RunAll(int device) {
    for (auto& [handle, stream] : streams) {
      if (stream->device == device) RunUntil(*stream, stream->added);
    }
  }
  CUresult RunKernel(int device, const CUfunc_st& kernel, unsigned int gridX, unsigned int gridY,
                     unsigned int sharedBytes, const std::function<void(EmulatedBlock&)>& body) {
    EmulatedLaunch launch;
    launch.kernel = kernel.name;
    launch.getMemory = [&](ZQCUAddress address) { return GetMemory(device, address); };
    launch.sharedBytes = sharedBytes;
    launch.backward = random() % 2 != 0;
    RunBlocks(launch, gridX, gridY, body);
    findings.insert(findings.end(), launch.findings.begin(), launch.findings.end());
    return launch.numFindings == 0 ? CUDA_SUCCESS : CUDA_ERROR_ILLEGAL_ADDRESS;
  }

  std::mutex mutex;
  std::vector<ZQEmulatedDevice> devices;
  bool isInitialized = false;
  Objects<CUctx_st> allContexts;    ///< those of former devices too, so that handles stay unique
  std::vector<CUcontext> contexts;  ///< by device
  std::vector<CUstream> defaultStreams;
  Objects<CUstream_st> streams;  ///< the default ones too
  Objects<CUevent_st> events;
  CUmod_st module;
  std::map<CUdeviceptr, Buffer> buffers;
  CUdeviceptr nextAddress = zqFirstAddress;
  std::map<const std::byte*, std::vector<std::byte>> hostBuffers;
  std::minstd_rand random;

  unsigned long callsToFailure = 0;
  CUresult failure = CUDA_SUCCESS;
  std::vector<std::string> calls;
  std::vector<std::string> findings;
  ZQEmulatedTraffic traffic;
};

/// Never destroyed: objects of other libraries free their memory late.
Driver& GetDriver() {
  static Driver& driver = *new Driver;
  return driver;
}

thread_local CUcontext zqCurrent = nullptr;

/// A call of the driver: `body(driver)` under its lock.
template <class Body>
CUresult Call(const char* name, const Body& body) {
  Driver& driver = GetDriver();
  const std::lock_guard lock(driver.mutex);
  driver.calls.emplace_back(name);
  if (driver.callsToFailure != 0 && --driver.callsToFailure == 0) return driver.failure;
  return body(driver);
}
/// A call that needs `cuInit`.
template <class Body>
CUresult CallInitialized(const char* name, const Body& body) {
  return Call(name, [&](Driver& driver) {
    return driver.isInitialized ? body(driver) : CUDA_ERROR_NOT_INITIALIZED;
  });
}
/// A call that needs a current context: `body(driver, device)`.
template <class Body>
CUresult CallInContext(const char* name, const Body& body) {
  return CallInitialized(name, [&](Driver& driver) {
    const bool isLive = std::find(driver.contexts.begin(), driver.contexts.end(), zqCurrent) !=
                        driver.contexts.end();
    return isLive ? body(driver, zqCurrent->device) : CUDA_ERROR_INVALID_CONTEXT;
  });
}
/// A call about one device.
template <class Body>
CUresult CallOnDevice(const char* name, CUdevice device, const Body& body) {
  return CallInitialized(name, [&](Driver& driver) {
    return driver.HasDevice(device) ? body(driver, driver.devices[static_cast<std::size_t>(device)])
                                    : CUDA_ERROR_INVALID_VALUE;
  });
}

template <class T>
CUresult Return(T* target, T value) {
  if (!target) return CUDA_ERROR_INVALID_VALUE;
  *target = std::move(value);
  return CUDA_SUCCESS;
}

}  // namespace

CUresult cuInit(unsigned int flags) {
  return Call("cuInit", [&](Driver& driver) {
    if (flags != 0) return CUDA_ERROR_INVALID_VALUE;
    if (driver.devices.empty()) return CUDA_ERROR_NO_DEVICE;
    driver.isInitialized = true;
    return CUDA_SUCCESS;
  });
}

CUresult cuDriverGetVersion(int* version) {
  return Call("cuDriverGetVersion", [&](Driver&) { return Return(version, zqDriverVersion); });
}

CUresult cuDeviceGetCount(int* count) {
  return CallInitialized("cuDeviceGetCount", [&](Driver& driver) {
    return Return(count, static_cast<int>(driver.devices.size()));
  });
}

CUresult cuDeviceGet(CUdevice* device, int ordinal) {
  return CallOnDevice("cuDeviceGet", ordinal, [&](Driver&, const ZQEmulatedDevice&) {
    return Return(device, CUdevice{ordinal});
  });
}

CUresult cuDeviceGetName(char* name, int length, CUdevice device) {
  return CallOnDevice("cuDeviceGetName", device, [&](Driver&, const ZQEmulatedDevice& facts) {
    if (!name || length <= 0) return CUDA_ERROR_INVALID_VALUE;
    const std::size_t copied = facts.name.copy(name, static_cast<std::size_t>(length) - 1);
    name[copied] = '\0';
    return CUDA_SUCCESS;
  });
}

CUresult cuDeviceTotalMem_v2(std::size_t* bytes, CUdevice device) {
  return CallOnDevice("cuDeviceTotalMem_v2", device, [&](Driver&, const ZQEmulatedDevice& facts) {
    return Return(bytes, std::size_t{facts.memory});
  });
}

CUresult cuDeviceGetAttribute(int* value, int attribute, CUdevice device) {
  return CallOnDevice("cuDeviceGetAttribute", device, [&](Driver&, const ZQEmulatedDevice& facts) {
    switch (attribute) {
      case CU_DEVICE_ATTRIBUTE_MAX_SHARED_MEMORY_PER_BLOCK:
        return Return(value, static_cast<int>(facts.sharedMemory));
      case CU_DEVICE_ATTRIBUTE_COMPUTE_CAPABILITY_MAJOR:
        return Return(value, int{facts.major});
      case CU_DEVICE_ATTRIBUTE_COMPUTE_CAPABILITY_MINOR:
        return Return(value, int{facts.minor});
      default:
        return CUDA_ERROR_INVALID_VALUE;
    }
  });
}

CUresult cuDevicePrimaryCtxRetain(CUcontext* context, CUdevice device) {
  return CallOnDevice("cuDevicePrimaryCtxRetain", device,
                      [&](Driver& driver, const ZQEmulatedDevice&) {
                        return Return(context, driver.contexts[static_cast<std::size_t>(device)]);
                      });
}

CUresult cuCtxSetCurrent(CUcontext context) {
  return CallInitialized("cuCtxSetCurrent", [&](Driver& driver) {
    if (context && !driver.allContexts.contains(context)) return CUDA_ERROR_INVALID_CONTEXT;
    zqCurrent = context;
    return CUDA_SUCCESS;
  });
}

CUresult cuCtxSynchronize() {
  return CallInContext("cuCtxSynchronize", [&](Driver& driver, int device) {
    driver.RunAll(device);
    CUresult result = CUDA_SUCCESS;
    for (auto& [handle, stream] : driver.streams) {
      if (stream->device != device) continue;
      const CUresult error = std::exchange(stream->error, CUDA_SUCCESS);
      if (result == CUDA_SUCCESS) result = error;
    }
    return result;
  });
}

CUresult cuMemGetInfo_v2(std::size_t* free, std::size_t* total) {
  return CallInContext("cuMemGetInfo_v2", [&](Driver& driver, int device) {
    const std::size_t memory = driver.devices[static_cast<std::size_t>(device)].memory;
    const CUresult result = Return(free, memory - driver.GetUsedMemory(device));
    return result == CUDA_SUCCESS ? Return(total, std::size_t{memory}) : result;
  });
}

CUresult cuMemAlloc_v2(CUdeviceptr* address, std::size_t bytes) {
  return CallInContext("cuMemAlloc_v2", [&](Driver& driver, int device) {
    if (!address || bytes == 0) return CUDA_ERROR_INVALID_VALUE;
    const std::size_t memory = driver.devices[static_cast<std::size_t>(device)].memory;
    if (bytes > memory || RoundUp(bytes) > memory - driver.GetUsedMemory(device)) {
      return CUDA_ERROR_OUT_OF_MEMORY;
    }
    *address = driver.nextAddress;
    // A gap between buffers, so that no address is the end of one and the begin of another.
    driver.nextAddress += RoundUp(bytes) + zqGranularity;
    constexpr std::byte garbage{0x5A};
    driver.buffers[*address] = {device, std::vector<std::byte>(bytes, garbage)};
    return CUDA_SUCCESS;
  });
}

CUresult cuMemFree_v2(CUdeviceptr address) {
  return CallInContext("cuMemFree_v2", [&](Driver& driver, int device) {
    const auto found = driver.buffers.find(address);
    if (found == driver.buffers.end() || found->second.device != device) {
      return address == 0 ? CUDA_SUCCESS : CUDA_ERROR_INVALID_VALUE;
    }
    driver.RunAll(device);
    driver.buffers.erase(found);
    return CUDA_SUCCESS;
  });
}

CUresult cuMemAllocHost_v2(void** address, std::size_t bytes) {
  return CallInContext("cuMemAllocHost_v2", [&](Driver& driver, int) {
    if (!address || bytes == 0) return CUDA_ERROR_INVALID_VALUE;
    std::vector<std::byte> buffer(bytes);
    *address = buffer.data();
    driver.hostBuffers.emplace(buffer.data(), std::move(buffer));
    return CUDA_SUCCESS;
  });
}

CUresult cuMemFreeHost(void* address) {
  return CallInContext("cuMemFreeHost", [&](Driver& driver, int device) {
    const auto found = driver.hostBuffers.find(static_cast<const std::byte*>(address));
    if (found == driver.hostBuffers.end()) return CUDA_ERROR_INVALID_VALUE;
    driver.RunAll(device);
    driver.hostBuffers.erase(found);
    return CUDA_SUCCESS;
  });
}

CUresult cuMemcpyHtoDAsync_v2(CUdeviceptr target, const void* source, std::size_t bytes,
                              CUstream stream) {
  return CallInContext("cuMemcpyHtoDAsync_v2", [&](Driver& driver, int device) {
    const std::span<std::byte> memory = driver.GetMemory(device, target);
    if (!source || bytes > memory.size()) return CUDA_ERROR_INVALID_VALUE;
    driver.traffic.toDevice += bytes;
    if (driver.IsPinned(source, bytes)) {
      return driver.AddWork(device, stream, [=] {
        std::memcpy(memory.data(), source, bytes);
        return CUDA_SUCCESS;
      });
    }
    // Other memory is staged at once.
    const auto* const begin = static_cast<const std::byte*>(source);
    return driver.AddWork(device, stream,
                          [memory, staged = std::vector<std::byte>(begin, begin + bytes)] {
                            std::copy(staged.begin(), staged.end(), memory.begin());
                            return CUDA_SUCCESS;
                          });
  });
}

CUresult cuMemcpyDtoHAsync_v2(void* target, CUdeviceptr source, std::size_t bytes,
                              CUstream stream) {
  return CallInContext("cuMemcpyDtoHAsync_v2", [&](Driver& driver, int device) {
    const std::span<std::byte> memory = driver.GetMemory(device, source);
    if (!target || bytes > memory.size()) return CUDA_ERROR_INVALID_VALUE;
    driver.traffic.fromDevice += bytes;
    return driver.AddWork(device, stream, [=] {
      std::memcpy(target, memory.data(), bytes);
      return CUDA_SUCCESS;
    });
  });
}

CUresult cuMemsetD8Async(CUdeviceptr address, unsigned char value, std::size_t bytes,
                         CUstream stream) {
  return CallInContext("cuMemsetD8Async", [&](Driver& driver, int device) {
    const std::span<std::byte> memory = driver.GetMemory(device, address);
    if (bytes > memory.size()) return CUDA_ERROR_INVALID_VALUE;
    return driver.AddWork(device, stream, [=] {
      std::memset(memory.data(), value, bytes);
      return CUDA_SUCCESS;
    });
  });
}

CUresult cuStreamCreate(CUstream* stream, unsigned int flags) {
  return CallInContext("cuStreamCreate", [&](Driver& driver, int device) {
    if (!stream || flags > CU_STREAM_NON_BLOCKING) return CUDA_ERROR_INVALID_VALUE;
    CUstream_st object;
    object.device = device;
    *stream = Add(driver.streams, std::move(object));
    return CUDA_SUCCESS;
  });
}

CUresult cuStreamSynchronize(CUstream stream) {
  return CallInContext("cuStreamSynchronize", [&](Driver& driver, int device) {
    CUstream found = driver.FindStream(device, stream);
    if (!found) return CUDA_ERROR_INVALID_VALUE;
    driver.RunUntil(*found, found->added);
    return std::exchange(found->error, CUDA_SUCCESS);
  });
}

CUresult cuStreamDestroy_v2(CUstream stream) {
  return CallInContext("cuStreamDestroy_v2", [&](Driver& driver, int device) {
    if (!stream || !driver.FindStream(device, stream)) return CUDA_ERROR_INVALID_VALUE;
    driver.RunUntil(*stream, stream->added);
    for (auto& [handle, event] : driver.events) {
      if (event->stream == stream) event->stream = nullptr;
    }
    driver.streams.erase(stream);
    return CUDA_SUCCESS;
  });
}

CUresult cuEventCreate(CUevent* event, unsigned int flags) {
  return CallInContext("cuEventCreate", [&](Driver& driver, int) {
    if (!event || (flags & ~CU_EVENT_DISABLE_TIMING) != 0) return CUDA_ERROR_INVALID_VALUE;
    *event = Add(driver.events, CUevent_st{});
    return CUDA_SUCCESS;
  });
}

CUresult cuEventRecord(CUevent event, CUstream stream) {
  return CallInContext("cuEventRecord", [&](Driver& driver, int device) {
    CUstream found = driver.FindStream(device, stream);
    if (!found || !driver.events.contains(event)) return CUDA_ERROR_INVALID_VALUE;
    *event = {found, found->added};
    return CUDA_SUCCESS;
  });
}

CUresult cuEventSynchronize(CUevent event) {
  return CallInContext("cuEventSynchronize", [&](Driver& driver, int) {
    if (!driver.events.contains(event)) return CUDA_ERROR_INVALID_VALUE;
    if (!event->stream) return CUDA_SUCCESS;
    driver.RunUntil(*event->stream, event->number);
    return std::exchange(event->stream->error, CUDA_SUCCESS);
  });
}

CUresult cuEventDestroy_v2(CUevent event) {
  return CallInContext("cuEventDestroy_v2", [&](Driver& driver, int) {
    return driver.events.erase(event) == 1 ? CUDA_SUCCESS : CUDA_ERROR_INVALID_VALUE;
  });
}

CUresult cuModuleLoadData(CUmodule* module, const void* image) {
  return CallInContext("cuModuleLoadData", [&](Driver& driver, int) {
    if (!image || *static_cast<const char*>(image) == '\0') return CUDA_ERROR_INVALID_IMAGE;
    return Return(module, CUmodule{&driver.module});
  });
}

CUresult cuModuleGetFunction(CUfunction* function, CUmodule module, const char* name) {
  return CallInContext("cuModuleGetFunction", [&](Driver& driver, int) {
    if (module != &driver.module || !name) return CUDA_ERROR_INVALID_VALUE;
    const auto found =
        std::find_if(std::begin(zqKernels), std::end(zqKernels),
                     [&](const CUfunc_st& kernel) { return std::strcmp(kernel.name, name) == 0; });
    return found == std::end(zqKernels) ? CUDA_ERROR_NOT_FOUND
                                        : Return(function, CUfunction{found});
  });
}

CUresult cuLaunchKernel(CUfunction function, unsigned int gridX, unsigned int gridY,
                        unsigned int gridZ, unsigned int blockX, unsigned int blockY,
                        unsigned int blockZ, unsigned int sharedBytes, CUstream stream,
                        void** arguments, void** extra) {
  return CallInContext("cuLaunchKernel", [&](Driver& driver, int device) {
    const bool isKernel = std::any_of(std::begin(zqKernels), std::end(zqKernels),
                                      [&](const CUfunc_st& kernel) { return &kernel == function; });
    constexpr unsigned int maxGridX = 0x7FFFFFFF;
    const bool isGrid = gridX - 1 < maxGridX && gridY - 1 < zqMaxGridY && gridZ == 1;
    const bool isBlock =
        blockX == zqBlockThreads && blockY == 1 && blockZ == 1 &&
        sharedBytes <= driver.devices[static_cast<std::size_t>(device)].sharedMemory;
    if (!isKernel || !isGrid || !isBlock || !arguments || !arguments[0] || extra) {
      return CUDA_ERROR_INVALID_VALUE;
    }
    return driver.AddWork(device, stream, [=, &driver, body = function->bind(arguments[0])] {
      return driver.RunKernel(device, *function, gridX, gridY, sharedBytes, body);
    });
  });
}

CUresult cuGetErrorString(CUresult error, const char** text) {
  static const std::map<CUresult, const char*> texts = {
      {CUDA_SUCCESS, "no error"},
      {CUDA_ERROR_INVALID_VALUE, "invalid argument"},
      {CUDA_ERROR_OUT_OF_MEMORY, "out of memory"},
      {CUDA_ERROR_NOT_INITIALIZED, "initialization error"},
      {CUDA_ERROR_NO_DEVICE, "no CUDA-capable device is detected"},
      {CUDA_ERROR_INVALID_IMAGE, "device kernel image is invalid"},
      {CUDA_ERROR_INVALID_CONTEXT, "invalid device context"},
      {CUDA_ERROR_NOT_FOUND, "named symbol not found"},
      {CUDA_ERROR_ILLEGAL_ADDRESS, "an illegal memory access was encountered"}};
  const auto found = texts.find(error);
  if (!text) return CUDA_ERROR_INVALID_VALUE;
  *text = found == texts.end() ? nullptr : found->second;
  return found == texts.end() ? CUDA_ERROR_INVALID_VALUE : CUDA_SUCCESS;
}

void ZQSetEmulatedDevices(const std::vector<ZQEmulatedDevice>& devices) {
  Driver& driver = GetDriver();
  const std::lock_guard lock(driver.mutex);
  driver.SetDevices(devices);
}

void ZQFailEmulatedCall(unsigned long n, CUresult error) {
  Driver& driver = GetDriver();
  const std::lock_guard lock(driver.mutex);
  driver.callsToFailure = n;
  driver.failure = error;
}

std::vector<std::string> ZQGetEmulatedCalls() {
  Driver& driver = GetDriver();
  const std::lock_guard lock(driver.mutex);
  return driver.calls;
}

ZQEmulatedObjects ZQGetEmulatedObjects() {
  Driver& driver = GetDriver();
  const std::lock_guard lock(driver.mutex);
  return {driver.buffers.size(), driver.hostBuffers.size(),
          driver.streams.size() - driver.defaultStreams.size(), driver.events.size()};
}

ZQEmulatedTraffic ZQGetEmulatedTraffic() {
  Driver& driver = GetDriver();
  const std::lock_guard lock(driver.mutex);
  return driver.traffic;
}

std::vector<std::string> ZQGetEmulatedFindings() {
  Driver& driver = GetDriver();
  const std::lock_guard lock(driver.mutex);
  return driver.findings;
}

void ZQResetEmulatedRecords() {
  Driver& driver = GetDriver();
  const std::lock_guard lock(driver.mutex);
  driver.calls.clear();
  driver.findings.clear();
  driver.traffic = {};
}

}  // namespace Nubrel
