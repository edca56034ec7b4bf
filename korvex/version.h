#pragma once

/// The version of this build of the library, and links to its documentation.

#include <string>

#include "korvex/siblings.h"

namespace ZQKorvex {

/// Build number, a date: 20230910.
ZQ_EXPORT unsigned int ZQKorvexGetVersion();
ZQ_EXPORT std::string ZQKorvexGetArch();
ZQ_EXPORT std::string ZQKorvexGetPlatform();
ZQ_EXPORT std::string ZQKorvexGetNonDebugRelease();
ZQ_EXPORT std::string ZQKorvexGetDebugRelease();
ZQ_EXPORT std::string ZQKorvexGetRelease();
ZQ_EXPORT std::string ZQKorvexGetConfigureArgs();

/// Toolkit, library and release.
struct ZQLibraryVersion {
  std::string toolkit;
  std::string library;
  std::string release;
};
ZQ_EXPORT ZQLibraryVersion ZQKorvexVersion();

/// Whether databases can be searched on a GPU here.
ZQ_EXPORT bool ZQKorvexIsGPUReady();
/// The GPU that databases use: name, memory, compute capability and the CUDA version of its driver,
/// such as "NVIDIA A100-SXM4-40GB, 39.4 GiB, compute capability 8.0, driver of CUDA 12.4". "none"
/// without one.
ZQ_EXPORT std::string ZQKorvexGetGPU();

/// The instruction set used here for scans, population counts and identifiers of atom sets, the
/// best that the library has code for: "AVX-512-VPOPCNTDQ", "AVX-512", "AVX2", "POPCNT" or
/// "portable". Results don't depend on it.
ZQ_EXPORT std::string ZQKorvexGetProcessor();

/// reStructuredText references to the documentation page of a class, and to a method on it.
ZQ_EXPORT std::string ZQGetKorvexClassHyperlink(const std::string& name);
ZQ_EXPORT std::string ZQGetKorvexMethodHyperlink(const std::string& className,
                                                 const std::string& methodName);

}  // namespace ZQKorvex
