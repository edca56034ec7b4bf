#pragma once

/// The kernels of a scan on a GPU. Each is an object: set its fields, then call `RunKernel`, which
/// adds it to the work of a stream and returns. False, after the report of gpu.h, if it couldn't be
/// started; a failure of the kernel itself is reported by the next call that waits for the stream.
///
/// All addresses are of buffers on the kernel's device (buffer.h), aligned to their elements, those
/// of words to 16 bytes. The buffers must live until the stream has done the work. Scores equal
/// those of a processor to the last bit (scores.h).

#include "contract/bostrel/export.h"
#include "contract/nubrel/buffer.h"
#include "contract/nubrel/scores.h"

namespace Nubrel {

/// Fingerprints have a multiple of this many words.
inline constexpr unsigned long zqCUWordsPerUnit = 16;
/// The most bins of `ZQCUHistogramKernel` and `ZQCUVariogramKernel`.
inline constexpr unsigned int zqCUMaxBins = 4096;

/// Fingerprints on a device.
struct ZQCURecords {
  ZQCUAddress words = 0;    ///< of 64 bits: `numWords` for each, one after another
  ZQCUAddress counts = 0;   ///< of 32 bits: the number of bits of each
  unsigned long count = 0;  ///< of fingerprints, below 2^32
  unsigned long first = 0;  ///< the index of the first one in its database
};

struct ZQCUMeasure {
  unsigned int number = 0;  ///< as in `ZQSimMeasure`, 1 to 6; any other scores 0.0
  ZQCUScoreTerms terms;
};

// The fields of the kernels, as the device gets them.

/// One query against records.
struct ZQCUQueryFields {
  ZQCURecords records;
  unsigned long numWords = 0;  ///< of each fingerprint and of the query
  ZQCUAddress query = 0;       ///< its words
  unsigned int queryCount = 0;
  ZQCUMeasure measure;
};

struct ZQCURawScoresFields : ZQCUQueryFields {
  ZQCUAddress scores = 0;  ///< out: one double for each record
};

struct ZQCUHit {
  unsigned long index = 0;  ///< in the database
  double score = 0.0;
};

struct ZQCUScoresFields : ZQCUQueryFields {
  /// Hits reach the bar: they are no worse than it, or better if `strict`.
  double bar = 0.0;
  bool hasBar = false;  ///< false: every record is a hit
  bool strict = false;
  bool descending = true;  ///< greater scores are better
  ZQCUAddress hits = 0;    ///< out: `ZQCUHit`s in any order, with room for all records
  ZQCUAddress numHits =
      0;  ///< their number, of 64 bits; the kernel appends to those that are there
};

struct ZQCUPopcountFields {
  ZQCUAddress words = 0;
  unsigned long count = 0;
  unsigned long numWords = 0;
  ZQCUAddress counts = 0;  ///< out: the number of bits of each fingerprint, of 32 bits
};

/// All pairs of a row and a column.
struct ZQCUPairFields {
  ZQCURecords rows;  ///< the first fingerprint of a pair
  ZQCURecords columns;
  unsigned long numWords = 0;
  ZQCUMeasure measure;
};

struct ZQCUAllScoresFields : ZQCUPairFields {
  ZQCUAddress scores = 0;  ///< out: floats, row by row, as many in each as there are columns
};

struct ZQCUCountsFields : ZQCUPairFields {
  float cutoff = 0.0F;
  /// Of 32 bits, one for each row: the kernel adds the number of columns whose score, as a float,
  /// isn't below the cutoff.
  ZQCUAddress numNeighbors = 0;
};

/// The `k` greatest scores of each row, as floats. The lists start empty, and further columns may
/// be added by further runs, in the order of their indices. While a list isn't full it takes every
/// column; then a column with a score above the lowest takes that entry's slot, of equal ones the
/// first.
struct ZQCUSparseFields : ZQCUPairFields {
  unsigned int k = 0;
  bool hasCutoff = false;  ///< columns whose score is below the cutoff are passed over
  float cutoff = 0.0F;
  ZQCUAddress scores = 0;   ///< floats, `k` slots for each row
  ZQCUAddress indices = 0;  ///< of 64 bits, `k` slots for each row: the column's index
  ZQCUAddress sizes = 0;    ///< of 32 bits, one for each row: the slots in use; 0 at first
};

/// Only pairs whose row has a lower index than the column, if `upperTriangle`.
struct ZQCUHistogramFields : ZQCUPairFields {
  bool upperTriangle = false;
  unsigned int numBins = 0;
  double binSize = 0.0;    ///< of bins from 0.0 on
  ZQCUAddress counts = 0;  ///< of 64 bits, one for each bin: the kernel adds to them
};

struct ZQCUVariogramFields : ZQCUPairFields {
  unsigned int numBins = 0;
  float binSize = 0.0F;
  /// Out: of 16 bits, row by row, as many in each as there are columns: the bin of 1 less the
  /// score. Only those whose row has a lower index than the column are set.
  ZQCUAddress bins = 0;
};

/// Where a kernel runs.
struct ZQCULaunch {
  int device = 0;
  int stream = 0;
};

struct ZQ_EXPORT ZQCUGetRawScoresKernel : ZQCULaunch, ZQCURawScoresFields {
  bool RunKernel() const;
};
struct ZQ_EXPORT ZQCUGetScoresKernel : ZQCULaunch, ZQCUScoresFields {
  bool RunKernel() const;
};
struct ZQ_EXPORT ZQCUPopcountKernel : ZQCULaunch, ZQCUPopcountFields {
  bool RunKernel() const;
};
struct ZQ_EXPORT ZQCUGetAllScoresKernel : ZQCULaunch, ZQCUAllScoresFields {
  bool RunKernel() const;
};
struct ZQ_EXPORT ZQCUCountsKernel : ZQCULaunch, ZQCUCountsFields {
  bool RunKernel() const;
};
struct ZQ_EXPORT ZQCUSparseKernel : ZQCULaunch, ZQCUSparseFields {
  /// Bytes of shared memory that a block of threads needs.
  unsigned long GetSharedMemory() const;
  bool RunKernel() const;
};
struct ZQ_EXPORT ZQCUHistogramKernel : ZQCULaunch, ZQCUHistogramFields {
  bool RunKernel() const;
};
struct ZQ_EXPORT ZQCUVariogramKernel : ZQCULaunch, ZQCUVariogramFields {
  bool RunKernel() const;
};

}  // namespace Nubrel
