#include "contract/nubrel/gpu.h"

namespace Nubrel {

// This build has no GPU kernels.
bool ZQCUDAIsGPUReady() { return false; }

}  // namespace Nubrel
