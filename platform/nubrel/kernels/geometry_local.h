#pragma once

/// The kernels' names, and the shape of their blocks of threads, which the host and the device
/// share.

#include "contract/nubrel/kernels.h"

namespace Nubrel {

/// Threads of a block.
inline constexpr unsigned int zqBlockThreads = 256;
/// Words of each fingerprint that a block holds in shared memory at a time.
inline constexpr unsigned int zqSlabWords = zqCUWordsPerUnit;
/// Rows and columns of a tile of pairs, which one block scores at a time.
inline constexpr unsigned int zqTileSide = 64;

/// Every kernel: its name in the compiled code, and its fields, of which it takes one object.
#define ZQ_KERNELS(KERNEL)                  \
  KERNEL(ScoreRecords, ZQCURawScoresFields) \
  KERNEL(FindHits, ZQCUScoresFields)        \
  KERNEL(CountBits, ZQCUPopcountFields)     \
  KERNEL(ScorePairs, ZQCUAllScoresFields)   \
  KERNEL(CountNeighbors, ZQCUCountsFields)  \
  KERNEL(FindNearest, ZQCUSparseFields)     \
  KERNEL(CountBins, ZQCUHistogramFields)    \
  KERNEL(FindBins, ZQCUVariogramFields)

}  // namespace Nubrel
