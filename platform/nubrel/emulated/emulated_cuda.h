#pragma once

/// An emulated GPU driver for tests: a shared library under the real one's SONAME, with the calls
/// of platform/nubrel/cuda_driver_local.h. A program that links it, or that is run with
/// LD_LIBRARY_PATH, finds it instead of the real one. Device memory is the host's, under other
/// addresses. Work is left undone until something waits for it, and that of different streams is
/// done in a varying order; kernels run by block_local.h. Unlike a real device, this one goes on
/// after the failure of a kernel. The functions below control it. Any thread may call them.
///
/// Environment variables set the devices of programs: KORVEX_EMULATED_GPUS is their number,
/// KORVEX_EMULATED_GPU_MEMORY the bytes of each.

#include <cstddef>
#include <string>
#include <vector>

#include "contract/bostrel/export.h"
#include "platform/nubrel/cuda_driver_local.h"

namespace Nubrel {

extern "C" {
#define ZQ_DECLARE(name, arguments) ZQ_EXPORT CUresult name arguments;
ZQ_CUDA_CALLS(ZQ_DECLARE)
#undef ZQ_DECLARE
}

struct ZQEmulatedDevice {
  std::string name = "Emulated GPU";
  std::size_t memory = std::size_t{1} << 30;  ///< bytes
  int major = 9;
  int minor = 0;
  std::size_t sharedMemory = std::size_t{48} << 10;  ///< bytes of a block
};
/// Replaces the devices, before the driver's first use by others: contexts and all that was made in
/// them are no longer valid.
ZQ_EXPORT void ZQSetEmulatedDevices(const std::vector<ZQEmulatedDevice>& devices);

/// The n-th call from now on fails with this error, and does nothing; 0 for none. All but
/// `cuGetErrorString` count.
ZQ_EXPORT void ZQFailEmulatedCall(unsigned long n, CUresult error = CUDA_ERROR_ILLEGAL_ADDRESS);
/// The names of all calls since the last `ZQResetEmulatedRecords`.
ZQ_EXPORT std::vector<std::string> ZQGetEmulatedCalls();

/// Objects that were made, and not freed.
struct ZQEmulatedObjects {
  std::size_t buffers = 0;
  std::size_t hostBuffers = 0;
  std::size_t streams = 0;
  std::size_t events = 0;
};
ZQ_EXPORT ZQEmulatedObjects ZQGetEmulatedObjects();

/// Bytes of the copies since the last `ZQResetEmulatedRecords`.
struct ZQEmulatedTraffic {
  std::size_t toDevice = 0;
  std::size_t fromDevice = 0;
};
ZQ_EXPORT ZQEmulatedTraffic ZQGetEmulatedTraffic();

/// What kernels did wrong since the last `ZQResetEmulatedRecords`: the first few of each launch. A
/// launch that has some fails.
ZQ_EXPORT std::vector<std::string> ZQGetEmulatedFindings();

/// Forgets calls, traffic and findings.
ZQ_EXPORT void ZQResetEmulatedRecords();

}  // namespace Nubrel
