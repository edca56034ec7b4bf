#pragma once

/// The code that is written for several processors, in one table: the inner loops of the scans, the
/// population counts and the naming of small sets of atoms. A row is one set of instructions, best
/// first, and the last runs on any processor of its kind. All rows give the same results, bit for
/// bit. A new row is a line in processor_x86.cpp, and the functions that are new with it.
///
/// Headers and instructions of one processor stay in files named after it (`*_x86.cpp`), which
/// compile to nothing elsewhere. There the instructions are turned on function by function, never
/// for a file, and helpers have internal linkage or are always inlined: no function that other
/// files share is ever compiled for more than the least processor.

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace ZQKorvex {

/// The population counts take this many words at a time, and scans whole multiples.
inline constexpr unsigned long zqWordsPerUnit = 4;

struct ZQScanVariant;
struct ZQSmallSet;

struct ZQProcessor {
  const char* name;
  /// Whether this processor has the instructions.
  bool (*runs)();
  /// The inner loops of the scans (fpfast_variants_local.h).
  const ZQScanVariant* scans;
  /// The identifier of a set of `count` atoms (canonicalset_local.h). Null where the general way is
  /// as good.
  unsigned int (*nameSmallSet)(const ZQSmallSet& set, std::size_t count);
  /// For `ZQGetPopCountFunc`.
  unsigned int popCountMethod;
};

/// The rows for this kind of processor, whether they run here or not.
std::span<const ZQProcessor> ZQProcessorTable();

/// The best row that runs here, found once, or the one that a test forces. Any thread may call.
const ZQProcessor& ZQGetProcessor();

/// About 1 / sqrt(x): on x86 the processor's estimate, which ZQCosine refines and whose last bits
/// are part of its result; elsewhere the rounded value.
float ZQReciprocalRootEstimate(float x);

// For tests and benchmarks: the names of the rows that run here, best first; forcing one by its
// name, or none by null; the name of the row that was last taken.
std::vector<std::string> ZQGetProcessorNames();
bool ZQForceProcessor(const char* name);
const char* ZQGetLatestProcessor();

}  // namespace ZQKorvex
