#pragma once

/// The part of the CUDA driver's interface that is called here, declared from its published ABI, so
/// that a build needs no toolkit. The driver is opened at run time (cuda_driver.cpp); an emulated
/// one (platform/nubrel/emulated) has the same functions under the same names.

#include <cstddef>

namespace Nubrel {

// Opaque objects of the driver.
struct CUctx_st;
struct CUstream_st;
struct CUevent_st;
struct CUmod_st;
struct CUfunc_st;
using CUresult = int;
using CUdevice = int;
using CUdeviceptr = unsigned long long;
using CUcontext = CUctx_st*;
using CUstream = CUstream_st*;
using CUevent = CUevent_st*;
using CUmodule = CUmod_st*;
using CUfunction = CUfunc_st*;

inline constexpr CUresult CUDA_SUCCESS = 0;
inline constexpr CUresult CUDA_ERROR_INVALID_VALUE = 1;
inline constexpr CUresult CUDA_ERROR_OUT_OF_MEMORY = 2;
inline constexpr CUresult CUDA_ERROR_DEINITIALIZED = 4;
inline constexpr CUresult CUDA_ERROR_INVALID_IMAGE = 200;
inline constexpr CUresult CUDA_ERROR_INVALID_CONTEXT = 201;
inline constexpr CUresult CUDA_ERROR_NOT_FOUND = 500;
inline constexpr CUresult CUDA_ERROR_ILLEGAL_ADDRESS = 700;

// Attributes of a device.
inline constexpr int CU_DEVICE_ATTRIBUTE_MAX_SHARED_MEMORY_PER_BLOCK = 8;
inline constexpr int CU_DEVICE_ATTRIBUTE_COMPUTE_CAPABILITY_MAJOR = 75;
inline constexpr int CU_DEVICE_ATTRIBUTE_COMPUTE_CAPABILITY_MINOR = 76;

// Flags.
inline constexpr unsigned int CU_STREAM_NON_BLOCKING = 1;
inline constexpr unsigned int CU_EVENT_DISABLE_TIMING = 2;

/// Every call: its name, and the list of its arguments. All return a CUresult.
#define ZQ_CUDA_CALLS(CALL)                                                                      \
  CALL(cuInit, (unsigned int flags))                                                             \
  CALL(cuDriverGetVersion, (int* version))                                                       \
  CALL(cuDeviceGetCount, (int* count))                                                           \
  CALL(cuDeviceGet, (CUdevice * device, int ordinal))                                            \
  CALL(cuDeviceGetName, (char* name, int length, CUdevice device))                               \
  CALL(cuDeviceTotalMem_v2, (std::size_t * bytes, CUdevice device))                              \
  CALL(cuDeviceGetAttribute, (int* value, int attribute, CUdevice device))                       \
  CALL(cuDevicePrimaryCtxRetain, (CUcontext * context, CUdevice device))                         \
  CALL(cuCtxSetCurrent, (CUcontext context))                                                     \
  CALL(cuCtxSynchronize, (void))                                                                 \
  CALL(cuMemGetInfo_v2, (std::size_t * free, std::size_t * total))                               \
  CALL(cuMemAlloc_v2, (CUdeviceptr * address, std::size_t bytes))                                \
  CALL(cuMemFree_v2, (CUdeviceptr address))                                                      \
  CALL(cuMemAllocHost_v2, (void** address, std::size_t bytes))                                   \
  CALL(cuMemFreeHost, (void* address))                                                           \
  CALL(cuMemcpyHtoDAsync_v2,                                                                     \
       (CUdeviceptr target, const void* source, std::size_t bytes, CUstream stream))             \
  CALL(cuMemcpyDtoHAsync_v2,                                                                     \
       (void* target, CUdeviceptr source, std::size_t bytes, CUstream stream))                   \
  CALL(cuMemsetD8Async,                                                                          \
       (CUdeviceptr address, unsigned char value, std::size_t bytes, CUstream stream))           \
  CALL(cuStreamCreate, (CUstream * stream, unsigned int flags))                                  \
  CALL(cuStreamSynchronize, (CUstream stream))                                                   \
  CALL(cuStreamDestroy_v2, (CUstream stream))                                                    \
  CALL(cuEventCreate, (CUevent * event, unsigned int flags))                                     \
  CALL(cuEventRecord, (CUevent event, CUstream stream))                                          \
  CALL(cuEventSynchronize, (CUevent event))                                                      \
  CALL(cuEventDestroy_v2, (CUevent event))                                                       \
  CALL(cuModuleLoadData, (CUmodule * module, const void* image))                                 \
  CALL(cuModuleGetFunction, (CUfunction * function, CUmodule module, const char* name))          \
  CALL(cuLaunchKernel,                                                                           \
       (CUfunction function, unsigned int gridX, unsigned int gridY, unsigned int gridZ,         \
        unsigned int blockX, unsigned int blockY, unsigned int blockZ, unsigned int sharedBytes, \
        CUstream stream, void** arguments, void** extra))                                        \
  CALL(cuGetErrorString, (CUresult error, const char** text))

/// Reports that a call failed: "GPU %d : %s failed: %s!".
void ZQReportGPUFailure(int device, const char* call, const char* reason) noexcept;
/// The same with the driver's text for this error, which it returns. At the end of the process the
/// driver may be gone before static objects are: this isn't reported.
CUresult ZQReportCUDAError(int device, const char* call, CUresult error) noexcept;

/// A call of the opened driver.
template <class Signature>
struct ZQCUDACall;
template <class... Args>
struct ZQCUDACall<CUresult(Args...)> {
  const char* name;
  CUresult (*function)(Args...) = nullptr;

  /// Makes the call, which is about this device. A failure is reported.
  CUresult Call(int device, Args... args) const {
    const CUresult result = function(args...);
    return result == CUDA_SUCCESS ? result : ZQReportCUDAError(device, name, result);
  }
  bool Run(int device, Args... args) const { return Call(device, args...) == CUDA_SUCCESS; }
};

struct ZQCUDADriver {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a list of arguments
#define ZQ_CUDA_MEMBER(name, arguments) ZQCUDACall<CUresult arguments> name{#name};
  ZQ_CUDA_CALLS(ZQ_CUDA_MEMBER)
#undef ZQ_CUDA_MEMBER
};

/// The driver, initialised. Null if there is none, or if it has no device: this is ordinary, and
/// isn't reported. Any thread may call this.
const ZQCUDADriver* ZQGetCUDADriver();

}  // namespace Nubrel
