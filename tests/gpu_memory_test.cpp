// Devices, memory and copies over the emulated driver, whose copies are done as late as a driver
// may do them.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>

#include "contract/nubrel/gpu.h"
#include "contract/nubrel/kernels.h"
#include "platform/nubrel/device_local.h"
#include "platform/nubrel/emulated/emulated_cuda.h"
#include "platform/nubrel/kernels/image_local.h"
#include "tests/mol_helpers.h"

namespace {

using namespace Nubrel;
using Bytes = std::vector<unsigned char>;

constexpr unsigned int forBoth = ZQCUAccess::Host | ZQCUAccess::Kernel;

Bytes RandomBytes(unsigned long count, unsigned int seed) {
  std::mt19937 random(seed);
  Bytes bytes(count);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
  return bytes;
}

// Starts without state, and with blocks of pinned memory that many copies don't fit into.
class GpuMemoryTest : public testing::Test {
 protected:
  GpuMemoryTest() { SetDevices({{}, {}}); }
  void SetUp() override {
    if (zqKernelImage[0] == '\0') GTEST_SKIP() << "without kernels no device is usable";
  }
  ~GpuMemoryTest() override { EXPECT_EQ(reports.Take(), Texts()); }

  static void SetDevices(const std::vector<ZQEmulatedDevice>& devices) {
    ZQReleaseDevices(1000);
    ZQSetEmulatedDevices(devices);
    ZQResetEmulatedRecords();
  }

  CapturedReports reports;
};

struct Shape {
  unsigned long rowBytes, hostStride, stride, rows, offset;
};

const std::vector<Shape> shapes{
    {8, 8, 8, 1, 0},           // a number
    {1000, 1000, 1000, 4, 0},  // whole blocks
    {128, 144, 128, 100, 0},   // records, of which a block doesn't take a whole number
    {128, 128, 160, 37, 256},  // apart on the device
    {3001, 3001, 3001, 3, 7},  // many blocks, a ragged end
    {2500, 2600, 2700, 5, 1},  // rows of several blocks, apart on both sides
    {1, 3, 5, 2003, 2},
};

TEST_F(GpuMemoryTest, CopiesKeepRowsAndWhatIsBetween) {
  int device = 0;
  for (const Shape& shape : shapes) {
    device = 1 - device;
    const auto [rowBytes, hostStride, stride, rows, offset] = shape;
    const Bytes source = RandomBytes(hostStride * rows, 1);
    Bytes onDevice(offset + stride * rows + 77);
    Bytes unpacked(hostStride * rows, 9);
    Bytes expected = unpacked;
    for (unsigned long row = 0; row < rows; ++row) {
      const auto from = source.begin() + row * hostStride;
      std::copy_n(from, rowBytes, onDevice.begin() + offset + row * stride);
      std::copy_n(from, rowBytes, expected.begin() + row * hostStride);
    }

    ZQCUBufferCache buffer(device, onDevice.size(), 1, forBoth);
    EXPECT_EQ(buffer.GetKernelBuffer() % 256, 0U);
    EXPECT_TRUE(buffer.Clear());
    Bytes passed = source;
    EXPECT_TRUE(buffer.WriteData2D(passed.data(), hostStride, rowBytes, stride, rows, offset));
    passed.assign(passed.size(), 0);  // it is the caller's again
    EXPECT_TRUE(buffer.ReadData2D(unpacked.data(), hostStride, rowBytes, stride, rows, offset));
    EXPECT_EQ(unpacked, expected) << rowBytes;
    Bytes read(onDevice.size(), 9);
    EXPECT_TRUE(buffer.ReadData(read.data(), read.size()));
    EXPECT_EQ(read, onDevice) << rowBytes;
  }
}

TEST_F(GpuMemoryTest, ManyThreadsShareDevicesAndStreams) {
  OnThreads(8, [](unsigned int t) {
    const int stream = static_cast<int>(t / 2 % zqNumStreams);
    ZQCUBufferCache buffer(static_cast<int>(t % 2), 5000, stream, forBoth);
    for (unsigned int round = 0; round < 200; ++round) {
      const Bytes written = RandomBytes(5000, t + 100 * round);
      EXPECT_TRUE(buffer.WriteData(written.data(), 2222));
      EXPECT_TRUE(buffer.WriteData(written.data() + 2222, 2778, 2222));
      Bytes read(5000);
      EXPECT_TRUE(buffer.ReadData(read.data(), 5000));
      EXPECT_EQ(read, written) << t << " " << round;
    }
  });
}

// Calls everything that may report, with several blocks each way. Returns whether all went well;
// `numCalls` is the number of the driver's calls before objects go.
bool UseEverything(std::size_t& numCalls) {
  ZQResetEmulatedRecords();
  const Bytes written = RandomBytes(4500, 1);
  Bytes read(4500);
  ZQCUBufferCache words(0, 4500, 1, forBoth);
  ZQCUBufferCache counts(0, 100, 1, forBoth);
  ZQCUEvent event(0);
  cudaDeviceProp properties;
  std::vector<int> devices;
  ZQCUPopcountKernel kernel;
  kernel.stream = 1;
  kernel.words = words.GetKernelBuffer();
  kernel.counts = counts.GetKernelBuffer();
  kernel.count = 2;
  kernel.numWords = zqCUWordsPerUnit;
  const bool canRun = words.IsValid() && counts.IsValid();
  const std::vector<bool> done{
      ZQCUGetDeviceCount() == 1,
      ZQCUGetAvailableDevices(devices, 0) == 1,
      cudaGetDeviceProperties(&properties, 0) == CUDA_SUCCESS,
      ZQCUSetDevice(0),
      ZQCUGetMaxMemAlloc(0, 1.0F) > 0,
      words.Clear(),
      words.WriteData(written.data(), 4500),
      event.EventCreate(),
      event.Record(1),
      event.Synchronize(),
      canRun && kernel.RunKernel(),
      ZQCUDeviceSynchronize(),
      words.ReadData(read.data(), 4500),
      read == written,
  };
  numCalls = ZQGetEmulatedCalls().size();
  return std::count(done.begin(), done.end(), true) == std::ssize(done);
}

TEST_F(GpuMemoryTest, EveryCallMayFailOnce) {
  SetDevices({{}});
  ZQEmulatedObjects lost;  // what the driver wouldn't free
  for (std::size_t call = 1;; ++call) {
    ZQReleaseDevices(1000);
    ZQFailEmulatedCall(call, CUDA_ERROR_OUT_OF_MEMORY);
    std::size_t numCalls = 0;
    const bool isDone = UseEverything(numCalls);
    const std::vector<std::string> calls = ZQGetEmulatedCalls();
    if (call > calls.size()) {
      ZQFailEmulatedCall(0);
      EXPECT_TRUE(isDone);
      EXPECT_GT(call, 60U);
      break;
    }
    std::string name = calls[call - 1];
    lost.buffers += name == "cuMemFree_v2" ? 1 : 0;
    lost.events += name == "cuEventDestroy_v2" ? 1 : 0;
    if (name.ends_with("_v2")) name.resize(name.size() - 3);
    EXPECT_EQ(isDone, call > numCalls) << name;
    ASSERT_EQ(reports.Reports().size(), 1U) << name;
    EXPECT_EQ(reports.Reports()[0].text, "GPU 0 : " + name + " failed: out of memory!");
    reports.Take();

    EXPECT_TRUE(UseEverything(numCalls)) << "after " << name;
    ZQReleaseDevices(1000);
    const ZQEmulatedObjects left = ZQGetEmulatedObjects();
    EXPECT_EQ(left.buffers, lost.buffers) << name;
    EXPECT_EQ(left.hostBuffers, lost.hostBuffers) << name;
    EXPECT_EQ(left.streams, lost.streams) << name;
    EXPECT_EQ(left.events, lost.events) << name;
  }
}

// What a failed read has started must not arrive in the memory of a later copy.
TEST_F(GpuMemoryTest, CopiesAfterAFailedRead) {
  const Bytes first = RandomBytes(2100, 1);
  const Bytes second = RandomBytes(2100, 2);
  Bytes read(2100);
  ZQCUBufferCache buffer(0, 3000, 0, forBoth);
  bool isRead = false;
  for (unsigned long call = 1; !isRead; ++call) {
    EXPECT_TRUE(buffer.WriteData2D(first.data(), 700, 700, 900, 3));
    ZQFailEmulatedCall(call);
    isRead = buffer.ReadData2D(read.data(), 700, 700, 900, 3);
    ZQFailEmulatedCall(0);
    EXPECT_EQ(reports.Take().size(), isRead ? 0U : 1U);
    EXPECT_TRUE(buffer.WriteData(second.data(), 2100));
    EXPECT_TRUE(buffer.ReadData(read.data(), 2100));
    EXPECT_EQ(read, second) << call;
  }
}

TEST_F(GpuMemoryTest, FailureOfAKernelIsReportedByTheNextWait) {
  ZQCUBufferCache buffer(1, 128, 0, forBoth);
  ZQCUPopcountKernel kernel;
  kernel.device = 1;
  kernel.words = kernel.counts = buffer.GetKernelBuffer();
  kernel.count = 2;  // the buffer has the words of one
  kernel.numWords = zqCUWordsPerUnit;
  std::uint64_t word = 0;
  EXPECT_TRUE(kernel.RunKernel());
  EXPECT_EQ(reports.Take(), Texts());
  EXPECT_FALSE(buffer.ReadData(&word, sizeof(word)));
  EXPECT_EQ(reports.Take().size(), 1U);
  EXPECT_TRUE(buffer.Clear());
  EXPECT_TRUE(buffer.ReadData(&word, sizeof(word)));
  EXPECT_EQ(word, 0U);
  {
    const ZQCUBufferCache freed(1, 128, 0, forBoth);
    EXPECT_TRUE(kernel.RunKernel());
  }
  EXPECT_EQ(reports.Take().size(), 1U);

  EXPECT_TRUE(ZQCUSetDevice(1));
  EXPECT_TRUE(kernel.RunKernel());
  EXPECT_FALSE(ZQCUDeviceSynchronize());
  EXPECT_EQ(reports.Take().size(), 1U);
  EXPECT_TRUE(ZQCUSetDevice(0));
}

// A static object may outlive the driver, which then refuses all calls.
TEST_F(GpuMemoryTest, TheEndOfTheDriverIsntReported) {
  for (const unsigned long call : {1, 2}) {
    const ZQCUBufferCache buffer(0, 8, 0, forBoth);
    ZQFailEmulatedCall(call, CUDA_ERROR_DEINITIALIZED);
  }
}

TEST_F(GpuMemoryTest, UsableDevices) {
  struct Case {
    std::vector<int> majors, usable;
    int maxDevices;
  };
  for (const Case& c :
       std::vector<Case>{{{}, {}, 0}, {{6}, {}, 0}, {{6, 7, 9}, {1, 2}, 0}, {{9, 6, 8}, {0}, 1}}) {
    std::vector<ZQEmulatedDevice> devices;
    for (const int major : c.majors) devices.push_back({.name = "GPU", .major = major, .minor = 1});
    SetDevices(devices);
    std::vector<int> found{77};
    EXPECT_EQ(ZQCUGetAvailableDevices(found, c.maxDevices), std::ssize(c.usable));
    EXPECT_EQ(found, c.usable);
    EXPECT_EQ(ZQCUDAIsGPUReady(), !c.usable.empty());
    EXPECT_GE(ZQCUGetDeviceCount(), std::ssize(c.usable));
    cudaDeviceProp properties;
    for (const int outside : {-1, static_cast<int>(devices.size())}) {
      EXPECT_EQ(cudaGetDeviceProperties(&properties, outside), CUDA_ERROR_INVALID_VALUE);
    }
    if (devices.empty()) continue;
    EXPECT_EQ(cudaGetDeviceProperties(&properties, 0), CUDA_SUCCESS);
    EXPECT_EQ(properties.name, "GPU");
    EXPECT_EQ(properties.totalGlobalMem, devices[0].memory);
    EXPECT_EQ(properties.sharedMemPerBlock, devices[0].sharedMemory);
    EXPECT_EQ(properties.major, c.majors[0]);
    EXPECT_EQ(properties.minor, 1);
  }
  for (const unsigned long call : {1, 2, 3}) {
    ZQFailEmulatedCall(call);
    ZQCUDAIsGPUReady();  // reports nothing
  }
}

TEST_F(GpuMemoryTest, FreeMemory) {
  SetDevices({{.memory = 1UL << 20}});
  for (const float none : {0.0F, -1.0F, std::nanf("")}) EXPECT_EQ(ZQCUGetMaxMemAlloc(0, none), 0U);
  const unsigned long free = ZQCUGetMaxMemAlloc(0, 1.0F);
  EXPECT_EQ(ZQCUGetMaxMemAlloc(0, 2.0F), free);
  EXPECT_EQ(ZQCUGetMaxMemAlloc(0, 0.5F), free / 2);
  {
    const ZQCUBufferCache all(0, free, 0, forBoth);
    EXPECT_TRUE(all.IsValid());
    EXPECT_EQ(ZQCUGetMaxMemAlloc(0, 1.0F), 0U);
    ZQCUBufferCache none(0, 1, 0, forBoth);
    EXPECT_EQ(reports.Take(), Texts{"GPU 0 : cuMemAlloc failed: out of memory!"});
    EXPECT_FALSE(none.IsValid() || none.Clear() || none.WriteData(&free, 1));
  }
  EXPECT_EQ(ZQCUGetMaxMemAlloc(0, 1.0F), free);
}

TEST_F(GpuMemoryTest, CopiesOutsideOfTheBufferAreAssertions) {
  constexpr unsigned long most = ~0UL;
  ZQCUBufferCache buffer(0, 1000, 0, forBoth);
  Bytes host(1000, 9);
  for (const Shape& shape :
       std::vector<Shape>{{1001, 1, 1001, 1, 0},
                          {1000, 1, 1000, 1, 1},
                          {1, 1, 1, 1, most},
                          {most, 1, most, 1, 1},
                          {100, 100, 100, 10, 1},
                          {100, 100, 101, 10, 0},  // the last row ends at 1009
                          {100, 100, 50, 2, 0},    // the rows overlap
                          {10, 10, 10, most, 0},
                          {2, 2, 1UL << 63, 3, 0},  // 2 strides are 0 in 64 bits
                          {10, 10, 0, 2, 0}}) {
    const auto [rowBytes, hostStride, stride, rows, offset] = shape;
    EXPECT_FALSE(buffer.WriteData2D(host.data(), hostStride, rowBytes, stride, rows, offset));
    EXPECT_FALSE(buffer.ReadData2D(host.data(), hostStride, rowBytes, stride, rows, offset));
    EXPECT_EQ(reports.Take(), (Texts{"Assertion", "Assertion"})) << rowBytes << " " << rows;
  }
  EXPECT_TRUE(buffer.WriteData2D(host.data(), 0, 100, 100, 10));
  EXPECT_TRUE(buffer.WriteData2D(host.data(), 0, 1000, 0, 1));
  EXPECT_TRUE(buffer.WriteData({}, 0, 1000));
  EXPECT_TRUE(buffer.WriteData2D({}, most, most, most, 0));
  EXPECT_EQ(host, Bytes(1000, 9));
}

}  // namespace
