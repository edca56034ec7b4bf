#include "platform/nubrel/cuda_driver_local.h"

#include <dlfcn.h>

#include <atomic>
#include <exception>
#include <string>

#include "contract/bostrel/throw.h"

namespace Nubrel {

namespace {

template <class Signature>
bool Find(void* library, ZQCUDACall<Signature>& call) {
  call.function = reinterpret_cast<Signature*>(dlsym(library, call.name));
  return call.function != nullptr;
}

// The library is never closed: its threads and contexts last as long as the process.
bool Open(ZQCUDADriver& driver) {
  void* library = dlopen("libcuda.so.1", RTLD_NOW | RTLD_LOCAL);
  if (!library) return false;
#define ZQ_CUDA_FIND(name, arguments) &&Find(library, driver.name)
  return true ZQ_CUDA_CALLS(ZQ_CUDA_FIND);
#undef ZQ_CUDA_FIND
}

}  // namespace

const ZQCUDADriver* ZQGetCUDADriver() {
  static ZQCUDADriver driver;
  static const bool isOpen = Open(driver);
  static std::atomic<bool> isInitialised{false};
  if (isOpen && !isInitialised) isInitialised = driver.cuInit.function(0) == CUDA_SUCCESS;
  return isInitialised ? &driver : nullptr;
}

void ZQReportGPUFailure(int device, const char* call, const char* reason) noexcept {
  try {
    std::string name = call;
    // Calls that replaced older ones have a suffix, which the documentation leaves out.
    if (name.ends_with("_v2")) name.resize(name.size() - 3);
    Bostrel::ZQThrow.Warning("GPU %d : %s failed: %s!", device, name.c_str(), reason);
  } catch (const std::exception&) {  // no memory for the report
  }
}

CUresult ZQReportCUDAError(int device, const char* call, CUresult error) noexcept {
  if (error == CUDA_ERROR_DEINITIALIZED) return error;
  const char* text = nullptr;
  const ZQCUDADriver* driver = ZQGetCUDADriver();
  if (driver && driver->cuGetErrorString.function(error, &text) == CUDA_SUCCESS && text) {
    ZQReportGPUFailure(device, call, text);
  } else {
    ZQReportGPUFailure(device, call, std::to_string(error).c_str());
  }
  return error;
}

}  // namespace Nubrel
