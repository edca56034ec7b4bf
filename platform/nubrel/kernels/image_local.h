#pragma once

namespace Nubrel {

/// The compiled kernels, which a driver loads: PTX with an entry for each of `ZQ_KERNELS`. Empty if
/// this build has no GPU back end.
extern const char* const zqKernelImage;

}  // namespace Nubrel
