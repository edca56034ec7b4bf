#pragma once

#include "contract/bostrel/export.h"

namespace Nubrel {

/// Whether a usable GPU device is present.
ZQ_EXPORT bool ZQCUDAIsGPUReady();

}  // namespace Nubrel
