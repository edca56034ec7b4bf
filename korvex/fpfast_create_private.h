#pragma once

/// The work shared by the threads of one database creation.

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "contract/bostrel/dots.h"
#include "contract/quarnel/moldatabase.h"
#include "korvex/measuresim.h"

namespace ZQKorvex {

/// Used for one run. Threads take molecule indices in chunks and write each record at the offset
/// given by its index, so they may finish in any order.
class ZQFPGenerator {
 public:
  /// `output` is the mapped file, `tracer` may be null; the object owns none of its arguments.
  ZQFPGenerator(const ZQMolDatabase& molecules, const ZQFPTypeBase* type, ZQPopCountFunc popcount,
                std::uint64_t* output, unsigned int numThreads, ZQDots* tracer)
      : molecules_(molecules),
        type_(type),
        popcount_(popcount),
        output_(output),
        numThreads_(numThreads),
        tracer_(tracer) {}

  /// Makes all records, on threads from `ZQRunOnThreads`.
  void Run();
  /// The body of each thread: makes records until none are left.
  void ThreadWork();
  /// The numbers of records of failed molecules and of records with no bit set; final once all
  /// threads have ended.
  std::uint64_t NumFailed() const { return numFailed_; }
  std::uint64_t NumEmpty() const { return numEmpty_; }

 private:
  // Makes the fingerprint of a molecule index. On failure warns, returns false and clears all bits.
  bool MakeFingerPrint(ZQFingerPrint& fp, ZQMCMolBase& mol, unsigned int index,
                       unsigned int numbits) const;
  void WriteRecord(std::uint64_t index, std::uint64_t count,
                   const std::vector<std::uint64_t>& words);

  static constexpr unsigned int chunkSize = 5;  // molecule indices taken at a time

  std::atomic<std::uint64_t> next_{0};
  std::atomic<std::uint64_t> numFailed_{0};
  std::atomic<std::uint64_t> numEmpty_{0};
  const ZQMolDatabase& molecules_;
  const ZQFPTypeBase* type_;
  ZQPopCountFunc popcount_;
  std::uint64_t* output_;
  std::mutex outputMutex_;  // guards the tracer and the copy of a record
  unsigned int numThreads_;
  ZQDots* tracer_;
};

}  // namespace ZQKorvex
