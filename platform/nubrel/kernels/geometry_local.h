#pragma once

/// The kernels' names, and the shapes of their launches, which the host and the device share.

#include "contract/nubrel/kernels.h"

namespace Nubrel {

/// Threads of a block.
inline constexpr unsigned int zqBlockThreads = 256;
/// Words of each fingerprint that a block holds in shared memory at a time.
inline constexpr unsigned int zqSlabWords = zqCUWordsPerUnit;
/// The distance of two fingerprints in shared memory, in words. An odd one, so that threads that
/// read the same word of consecutive fingerprints use different banks.
inline constexpr unsigned int zqSlabStride = zqSlabWords + 1;
/// Rows and columns of a tile of pairs, which one block scores at a time.
inline constexpr unsigned int zqTileSide = 64;
/// The distance of two rows of a tile's scores in shared memory, odd as well.
inline constexpr unsigned int zqTileStride = zqTileSide + 1;
/// The slots of a list of `FindNearest` are in at most so many groups; the distance of two lists'
/// groups in shared memory is odd, too.
inline constexpr unsigned int zqListGroups = 32;
inline constexpr unsigned int zqGroupsStride = zqListGroups + 1;
/// A block goes over at least this many tiles of a row of tiles, if there are so many: what it
/// adds to global memory at its end is little then.
inline constexpr unsigned int zqStripTiles = 8;
/// The most blocks of a grid in y.
inline constexpr unsigned int zqMaxGridY = 65535;

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

/// The launch of a kernel. Its blocks have `zqBlockThreads` threads in x; a grid has one block in
/// z.
struct ZQCUShape {
  unsigned int gridX = 0;  ///< 0 in x or y: there is nothing to do, and nothing to launch
  unsigned int gridY = 0;
  unsigned int sharedBytes = 0;  ///< dynamic shared memory of a block; at most 48 KiB
};

constexpr unsigned long ZQCUDivideUp(unsigned long count, unsigned long size) {
  return (count + size - 1) / size;
}
constexpr unsigned long ZQCUTilesOf(const ZQCURecords& records) {
  return ZQCUDivideUp(records.count, zqTileSide);
}
/// The tiles of a row of tiles that one block goes over.
constexpr unsigned long ZQCUStripTilesOf(const ZQCUPairFields& fields) {
  const unsigned long least = ZQCUDivideUp(ZQCUTilesOf(fields.columns), zqMaxGridY);
  return least > zqStripTiles ? least : zqStripTiles;
}
/// `FindNearest` adds to its lists in the order of the columns, so that one block does all.
constexpr unsigned long ZQCUStripTilesOf(const ZQCUSparseFields& fields) {
  return ZQCUTilesOf(fields.columns);
}

/// Bytes of this many fingerprints' words in shared memory.
constexpr unsigned int ZQCUSlabBytes(unsigned int records) {
  return records * zqSlabStride * static_cast<unsigned int>(sizeof(unsigned long long));
}

// One fingerprint of a scan for each thread, with the query's words.
constexpr ZQCUShape ZQCUScanShape(unsigned long count, unsigned int moreBytes) {
  return {static_cast<unsigned int>(ZQCUDivideUp(count, zqBlockThreads)), 1,
          ZQCUSlabBytes(zqBlockThreads) + moreBytes};
}
constexpr unsigned int zqQueryBytes = zqSlabWords * sizeof(unsigned long long);
/// A block's first place among the hits, and its number of hits.
constexpr unsigned int zqHitsBytes = sizeof(unsigned long long) + sizeof(unsigned int);

constexpr ZQCUShape ZQShapeOf(const ZQCURawScoresFields& fields) {
  return ZQCUScanShape(fields.records.count, zqQueryBytes);
}
constexpr ZQCUShape ZQShapeOf(const ZQCUScoresFields& fields) {
  return ZQCUScanShape(fields.records.count, zqQueryBytes + zqHitsBytes);
}
constexpr ZQCUShape ZQShapeOf(const ZQCUPopcountFields& fields) {
  return ZQCUScanShape(fields.count, 0);
}

// One row of tiles in x, one strip of columns in y.
template <class Fields>
constexpr ZQCUShape ZQCUPairShape(const Fields& fields, unsigned int moreBytes) {
  const unsigned long columnTiles = ZQCUTilesOf(fields.columns);
  return {static_cast<unsigned int>(ZQCUTilesOf(fields.rows)),
          columnTiles == 0
              ? 0
              : static_cast<unsigned int>(ZQCUDivideUp(columnTiles, ZQCUStripTilesOf(fields))),
          2 * ZQCUSlabBytes(zqTileSide) + moreBytes};
}

constexpr ZQCUShape ZQShapeOf(const ZQCUAllScoresFields& fields) {
  return ZQCUPairShape(fields, 0);
}
constexpr ZQCUShape ZQShapeOf(const ZQCUCountsFields& fields) {
  return ZQCUPairShape(fields, zqTileSide * sizeof(unsigned int));
}
constexpr ZQCUShape ZQShapeOf(const ZQCUSparseFields& fields) {
  return ZQCUPairShape(fields, zqTileSide * (zqTileStride + zqGroupsStride) * sizeof(float));
}
/// `numBins` is at most `zqCUMaxBins`.
constexpr ZQCUShape ZQShapeOf(const ZQCUHistogramFields& fields) {
  return ZQCUPairShape(fields, fields.numBins * static_cast<unsigned int>(sizeof(unsigned int)));
}
constexpr ZQCUShape ZQShapeOf(const ZQCUVariogramFields& fields) {
  return ZQCUPairShape(fields, 0);
}

}  // namespace Nubrel
