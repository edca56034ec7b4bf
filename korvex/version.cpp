#include "korvex/version.h"

#include <array>
#include <cstdio>
#include <vector>

#include "contract/nubrel/gpu.h"
#include "korvex/processor_local.h"

namespace ZQKorvex {

namespace {

// The documentation page of a class.
std::string ClassPage(const std::string& name) {
  return "toolkits/python/korvextk/ZQKorvexClasses/" + name + ".html";
}

std::string Reference(const std::string& text, const std::string& target) {
  return ":ref:`" + text + " <" + target + ">`";
}

}  // namespace

unsigned int ZQKorvexGetVersion() { return 20230910; }
std::string ZQKorvexGetArch() { return "linux-x64"; }
std::string ZQKorvexGetPlatform() { return "linux-g++10.x-x64"; }
std::string ZQKorvexGetNonDebugRelease() { return "2.5.6.1"; }
std::string ZQKorvexGetDebugRelease() { return "2.5.6.1 debug"; }
std::string ZQKorvexGetRelease() { return ZQKorvexGetDebugRelease(); }
std::string ZQKorvexGetConfigureArgs() {
#ifdef __clang__
  return "-std=c++20 -ffp-contract=off, " __VERSION__;
#else
  return "-std=c++20 -ffp-contract=off, g++ " __VERSION__;
#endif
}

ZQLibraryVersion ZQKorvexVersion() { return {"zqtoolkit", "ZQKorvex", ZQKorvexGetRelease()}; }

std::string ZQKorvexGetProcessor() { return ZQGetProcessor().name; }

bool ZQKorvexIsGPUReady() { return Nubrel::ZQCUDAIsGPUReady(); }

std::string ZQKorvexGetGPU() {
  std::vector<int> devices;
  Nubrel::cudaDeviceProp gpu;
  if (Nubrel::ZQCUGetAvailableDevices(devices, 1) == 0 ||
      cudaGetDeviceProperties(&gpu, devices[0]) != 0) {
    return "none";
  }
  constexpr double gib = 1 << 30;
  const int major = gpu.driverVersion / 1000;
  const int minor = gpu.driverVersion % 1000 / 10;
  std::array<char, 96> facts{};
  std::snprintf(facts.data(), facts.size(),
                ", %.1f GiB, compute capability %d.%d, driver of CUDA %d.%d",
                static_cast<double>(gpu.totalGlobalMem) / gib, gpu.major, gpu.minor, major, minor);
  return gpu.name + facts.data();
}

std::string ZQGetKorvexClassHyperlink(const std::string& name) {
  return Reference(name, ClassPage(name));
}

std::string ZQGetKorvexMethodHyperlink(const std::string& className,
                                       const std::string& methodName) {
  return Reference(className + "::" + methodName,
                   ClassPage(className) + "#ZQKorvex::" + className + "::" + methodName);
}

}  // namespace ZQKorvex
