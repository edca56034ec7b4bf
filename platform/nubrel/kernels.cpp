#include "contract/nubrel/kernels.h"

#include <array>

#include "platform/nubrel/device_local.h"

namespace Nubrel {

namespace {

// The type of its fields determines a kernel.
template <class Fields>
constexpr ZQCUPlace::Place placeOf = ZQCUPlace::Count;
#define ZQ_PLACE_OF(name, Fields) \
  template <>                     \
  constexpr ZQCUPlace::Place placeOf<Fields> = ZQCUPlace::name;
ZQ_KERNELS(ZQ_PLACE_OF)
#undef ZQ_PLACE_OF

template <class Fields>
bool Launch(const ZQCULaunch& launch, Fields fields) {
  const ZQCUShape shape = ZQShapeOf(fields);
  if (shape.gridX == 0 || shape.gridY == 0) return true;
  ZQCUDevice* device = ZQCUDevice::Use(launch.device);
  CUstream stream = device ? device->GetHandle(launch.stream) : nullptr;
  CUfunction kernel = stream ? device->GetKernel(placeOf<Fields>) : nullptr;
  std::array<void*, 1> arguments{&fields};
  return kernel && ZQGetCUDADriver()->cuLaunchKernel.Run(
                       launch.device, kernel, shape.gridX, shape.gridY, 1, zqBlockThreads, 1, 1,
                       shape.sharedBytes, stream, arguments.data(), nullptr);
}

}  // namespace

bool ZQCUGetRawScoresKernel::RunKernel() const { return Launch<ZQCURawScoresFields>(*this, *this); }
bool ZQCUGetScoresKernel::RunKernel() const { return Launch<ZQCUScoresFields>(*this, *this); }
bool ZQCUPopcountKernel::RunKernel() const { return Launch<ZQCUPopcountFields>(*this, *this); }
bool ZQCUGetAllScoresKernel::RunKernel() const { return Launch<ZQCUAllScoresFields>(*this, *this); }
bool ZQCUCountsKernel::RunKernel() const { return Launch<ZQCUCountsFields>(*this, *this); }
bool ZQCUSparseKernel::RunKernel() const { return Launch<ZQCUSparseFields>(*this, *this); }
bool ZQCUHistogramKernel::RunKernel() const { return Launch<ZQCUHistogramFields>(*this, *this); }
bool ZQCUVariogramKernel::RunKernel() const { return Launch<ZQCUVariogramFields>(*this, *this); }

unsigned long ZQCUSparseKernel::GetSharedMemory() const {
  return ZQShapeOf(static_cast<const ZQCUSparseFields&>(*this)).sharedBytes;
}

}  // namespace Nubrel
