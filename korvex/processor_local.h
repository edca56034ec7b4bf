#pragma once

/// The table of code with versions for several processors: the inner loops of the scans, the
/// population counts and the identifiers of small sets of atoms. A row is one instruction set, best
/// first, and the last runs on any processor of its kind. All rows give the same results, bit for
/// bit. A new row needs a line in processor_x86.cpp and its new functions.
///
/// Headers and instructions of one processor stay in files named after it (`*_x86.cpp`), which
/// compile to nothing elsewhere. The instructions are enabled for single functions there, never for
/// a file, and helpers have internal linkage or are always inlined: no function shared with other
/// files is ever compiled for more than the minimal processor.

#include <atomic>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace ZQKorvex {

/// Words per step of the population counts; scans process whole multiples.
inline constexpr unsigned long zqWordsPerUnit = 4;

struct ZQScanVariant;
struct ZQSmallSet;

struct ZQProcessor {
  const char* name;
  /// Whether this processor has the instructions.
  bool (*runs)();
  /// The inner loops of the scans (fpfast_variants_local.h).
  const ZQScanVariant* scans;
  /// The identifier of a set of `count` atoms (canonicalset_local.h). Null where the general
  /// function is as good.
  unsigned int (*nameSmallSet)(const ZQSmallSet& set, std::size_t count);
  /// For `ZQGetPopCountFunc`.
  unsigned int popCountMethod;
};

/// The rows for this kind of processor, whether or not they can run here.
std::span<const ZQProcessor> ZQProcessorTable();

/// The row in use; null before the first use and after a test has forced another.
extern std::atomic<const ZQProcessor*> zqChosenProcessor;
const ZQProcessor& ZQChooseProcessor();

/// The best row that can run here, determined once, or the one forced by a test. Any thread may
/// call.
inline const ZQProcessor& ZQGetProcessor() {
  const ZQProcessor* chosen = zqChosenProcessor;
  return chosen ? *chosen : ZQChooseProcessor();
}

/// About 1 / sqrt(x): on x86 the processor's estimate, which ZQCosine refines and whose last bits
/// affect its result; elsewhere the rounded value.
float ZQReciprocalRootEstimate(float x);

// For tests and benchmarks: the names of the rows that can run here, best first; forcing one by
// name, or none by null; the name of the row used last.
std::vector<std::string> ZQGetProcessorNames();
bool ZQForceProcessor(const char* name);
const char* ZQGetLatestProcessor();

}  // namespace ZQKorvex
