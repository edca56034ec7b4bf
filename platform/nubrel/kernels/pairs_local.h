#pragma once

/// The kernels over pairs. A block scores tiles of `zqTileSide` rows and columns: with the words of
/// both in shared memory, each thread reads 4 rows and 4 columns for 16 pairs. Their time is that
/// of counting bits.

#include "platform/nubrel/kernels/records_local.h"

namespace Nubrel {

/// Threads in a row of a tile, which is as many as in a column. Thread t has the rows
/// t / 16 + 16 i and the columns t % 16 + 16 j.
inline constexpr unsigned int zqTileThreads = 16;
/// Rows, and columns, of a thread.
inline constexpr unsigned int zqThreadSide = zqTileSide / zqTileThreads;
static_assert(zqTileThreads * zqTileThreads == zqBlockThreads);

struct PairCounts {
  unsigned int of[zqThreadSide][zqThreadSide] = {};
};

/// The tiles of one block: one row of tiles, and a strip of it.
template <class Block>
class TilesOf {
 public:
  template <class Fields>
  TilesOf(Block& block, const Fields& fields)
      : fields_(fields),
        rows_{block.template GetGlobal<WordPair>(fields.rows.words), fields.rows.count,
              fields.numWords},
        columns_{block.template GetGlobal<WordPair>(fields.columns.words), fields.columns.count,
                 fields.numWords},
        rowCounts_(block.template GetGlobal<unsigned int>(fields.rows.counts)),
        columnCounts_(block.template GetGlobal<unsigned int>(fields.columns.counts)),
        rowSlab_(block.template CarveShared<Word>(zqTileSide * zqSlabStride)),
        columnSlab_(block.template CarveShared<Word>(zqTileSide * zqSlabStride)),
        firstRow_(block.GetX() * static_cast<unsigned long>(zqTileSide)) {
    const unsigned long strip = ZQCUStripTilesOf(fields) * zqTileSide;
    beginColumn_ = block.GetY() * strip;
    endColumn_ =
        beginColumn_ + strip < fields.columns.count ? beginColumn_ + strip : fields.columns.count;
  }

  unsigned long GetFirstRow() const { return firstRow_; }
  /// Tiles begin at the columns from here on, in steps of `zqTileSide`.
  unsigned long GetBeginColumn() const { return beginColumn_; }
  unsigned long GetEndColumn() const { return endColumn_; }

  /// Whether a pair of the tile has a row whose index is lower than the column's.
  bool ReachesUpperTriangle(unsigned long firstColumn) const {
    const unsigned long end =
        firstColumn + zqTileSide < endColumn_ ? firstColumn + zqTileSide : endColumn_;
    return fields_.rows.first + firstRow_ + 1 < fields_.columns.first + end;
  }
  bool IsUpperTriangle(unsigned long row, unsigned long column) const {
    return fields_.rows.first + row < fields_.columns.first + column;
  }

  /// Scores a tile. `consume(t, i, row, column, score)` runs in a phase for each pair of thread t,
  /// `i` being the number of the row among the thread's.
  template <class Consumer>
  void Score(Block& block, unsigned long firstColumn, const Consumer& consume) const {
    PerThreadOf<Block, PairCounts> common;
    for (unsigned long word = 0; word < fields_.numWords; word += zqSlabWords) {
      block.ForThreads([&](unsigned int t) {
        LoadSlab<zqTileSide>(t, rows_, firstRow_, word, rowSlab_);
        LoadSlab<zqTileSide>(t, columns_, firstColumn, word, columnSlab_);
      });
      block.ForThreads([&](unsigned int t) { CountSlab(t, common[t]); });
    }
    block.ForThreads([&](unsigned int t) {
      const unsigned long row = firstRow_ + t / zqTileThreads;
      const unsigned long column = firstColumn + t % zqTileThreads;
      unsigned int columnCounts[zqThreadSide];
      ZQ_UNROLL for (unsigned int j = 0; j < zqThreadSide; ++j) {
        const unsigned long theColumn = column + j * zqTileThreads;
        columnCounts[j] = theColumn < endColumn_ ? columnCounts_.Get(theColumn) : 0;
      }
      ZQ_UNROLL for (unsigned int i = 0; i < zqThreadSide; ++i) {
        const unsigned long theRow = row + i * zqTileThreads;
        if (theRow >= fields_.rows.count) continue;
        const unsigned int rowCount = rowCounts_.Get(theRow);
        ZQ_UNROLL for (unsigned int j = 0; j < zqThreadSide; ++j) {
          const unsigned long theColumn = column + j * zqTileThreads;
          if (theColumn >= endColumn_) continue;
          consume(t, i, theRow, theColumn,
                  ScoreOf(fields_.measure, rowCount, columnCounts[j], common[t].of[i][j]));
        }
      }
    });
  }

 private:
  void CountSlab(unsigned int t, PairCounts& common) const {
    for (unsigned int word = 0; word < zqSlabWords; ++word) {
      Word rows[zqThreadSide];
      Word columns[zqThreadSide];
      ZQ_UNROLL for (unsigned int i = 0; i < zqThreadSide; ++i) {
        const unsigned int step = i * zqTileThreads;
        rows[i] = rowSlab_.Get((t / zqTileThreads + step) * zqSlabStride + word);
        columns[i] = columnSlab_.Get((t % zqTileThreads + step) * zqSlabStride + word);
      }
      ZQ_UNROLL for (unsigned int i = 0; i < zqThreadSide; ++i) {
        ZQ_UNROLL for (unsigned int j = 0; j < zqThreadSide; ++j) {
          common.of[i][j] += __builtin_popcountll(rows[i] & columns[j]);
        }
      }
    }
  }

  const ZQCUPairFields& fields_;
  WordsOf<Block> rows_;
  WordsOf<Block> columns_;
  GlobalOf<Block, unsigned int> rowCounts_;
  GlobalOf<Block, unsigned int> columnCounts_;
  SharedOf<Block, Word> rowSlab_;
  SharedOf<Block, Word> columnSlab_;
  unsigned long firstRow_;
  unsigned long beginColumn_;
  unsigned long endColumn_;
};

template <class Block>
void ScorePairs(Block& block, const ZQCUAllScoresFields& fields) {
  const TilesOf<Block> tiles(block, fields);
  const auto scores = block.template GetGlobal<float>(fields.scores);
  for (unsigned long first = tiles.GetBeginColumn(); first < tiles.GetEndColumn();
       first += zqTileSide) {
    tiles.Score(block, first,
                [&](unsigned int /*t*/, unsigned int /*i*/, unsigned long row, unsigned long column,
                    double score) {
                  scores.Set(row * fields.columns.count + column, static_cast<float>(score));
                });
  }
}

/// Each thread counts the neighbours of its 4 rows in all tiles; then the block adds them up.
template <class Block>
void CountNeighbors(Block& block, const ZQCUCountsFields& fields) {
  const TilesOf<Block> tiles(block, fields);
  const auto sums = block.template CarveShared<unsigned int>(zqTileSide);
  const auto numNeighbors = block.template GetGlobal<unsigned int>(fields.numNeighbors);
  struct Counts {
    unsigned int of[zqThreadSide] = {};
  };
  PerThreadOf<Block, Counts> counts;
  for (unsigned long first = tiles.GetBeginColumn(); first < tiles.GetEndColumn();
       first += zqTileSide) {
    tiles.Score(block, first,
                [&](unsigned int t, unsigned int i, unsigned long /*row*/, unsigned long /*column*/,
                    double score) {
                  if (!(static_cast<float>(score) < fields.cutoff)) ++counts[t].of[i];
                });
  }
  block.ForThreads([&](unsigned int t) {
    if (t < zqTileSide) sums.Set(t, 0);
  });
  block.ForThreads([&](unsigned int t) {
    ZQ_UNROLL for (unsigned int i = 0; i < zqThreadSide; ++i) {
      sums.Add(t / zqTileThreads + i * zqTileThreads, counts[t].of[i]);
    }
  });
  block.ForThreads([&](unsigned int t) {
    const unsigned long row = tiles.GetFirstRow() + t;
    if (t < zqTileSide && row < fields.rows.count) numNeighbors.Add(row, sums.Get(t));
  });
}

/// The bins of a block's pairs are counted in shared memory: below 2^32, as a strip has at most
/// 2^16 tiles of 2^12 pairs.
template <class Block>
void CountBins(Block& block, const ZQCUHistogramFields& fields) {
  const TilesOf<Block> tiles(block, fields);
  const auto bins = block.template CarveShared<unsigned int>(fields.numBins);
  const auto counts = block.template GetGlobal<Word>(fields.counts);
  block.ForThreads([&](unsigned int t) {
    for (unsigned int bin = t; bin < fields.numBins; bin += zqBlockThreads) bins.Set(bin, 0);
  });
  for (unsigned long first = tiles.GetBeginColumn(); first < tiles.GetEndColumn();
       first += zqTileSide) {
    if (fields.upperTriangle && !tiles.ReachesUpperTriangle(first)) continue;
    tiles.Score(block, first,
                [&](unsigned int /*t*/, unsigned int /*i*/, unsigned long row, unsigned long column,
                    double score) {
                  if (fields.upperTriangle && !tiles.IsUpperTriangle(row, column)) return;
                  bins.Add(ZQCUBinOf(score, fields.binSize, fields.numBins), 1);
                });
  }
  block.ForThreads([&](unsigned int t) {
    for (unsigned int bin = t; bin < fields.numBins; bin += zqBlockThreads) {
      const unsigned int count = bins.Get(bin);
      if (count != 0) counts.Add(bin, count);
    }
  });
}

template <class Block>
void FindBins(Block& block, const ZQCUVariogramFields& fields) {
  const TilesOf<Block> tiles(block, fields);
  const auto bins = block.template GetGlobal<unsigned short>(fields.bins);
  for (unsigned long first = tiles.GetBeginColumn(); first < tiles.GetEndColumn();
       first += zqTileSide) {
    if (!tiles.ReachesUpperTriangle(first)) continue;
    tiles.Score(block, first,
                [&](unsigned int /*t*/, unsigned int /*i*/, unsigned long row, unsigned long column,
                    double score) {
                  if (!tiles.IsUpperTriangle(row, column)) return;
                  const float distance = 1.0F - static_cast<float>(score);
                  const unsigned int bin = ZQCUBinOf(distance, fields.binSize, fields.numBins);
                  bins.Set(row * fields.columns.count + column, static_cast<unsigned short>(bin));
                });
  }
}

/// The list of one row, in global memory; its lowest score is kept at hand.
template <class Block>
struct NearestOf {
  /// Lists of no slots take nothing: no score is above this.
  static constexpr float aboveAll = 2.0F;

  unsigned int size = 0;
  float lowest = aboveAll;  ///< of a full list
  unsigned int slot = 0;    ///< of the lowest, the first of equal ones

  void FindLowest(const GlobalOf<Block, float>& scores, unsigned long begin, unsigned int k) {
    lowest = aboveAll;
    for (unsigned int i = 0; i < k; ++i) {
      const float score = scores.Get(begin + i);
      if (score < lowest) {
        lowest = score;
        slot = i;
      }
    }
  }
};

/// The block's threads score a tile; then one thread for each row goes through the scores in the
/// order of the columns.
template <class Block>
void FindNearest(Block& block, const ZQCUSparseFields& fields) {
  const TilesOf<Block> tiles(block, fields);
  const auto tile = block.template CarveShared<float>(zqTileSide * zqTileStride);
  const auto scores = block.template GetGlobal<float>(fields.scores);
  const auto indices = block.template GetGlobal<Word>(fields.indices);
  const auto sizes = block.template GetGlobal<unsigned int>(fields.sizes);
  const unsigned int k = fields.k;
  PerThreadOf<Block, NearestOf<Block>> lists;
  // A phase of the threads that have a row.
  const auto forRows = [&](const auto& body) {
    block.ForThreads([&](unsigned int t) {
      const unsigned long row = tiles.GetFirstRow() + t;
      if (t < zqTileSide && row < fields.rows.count) body(t, row, lists[t]);
    });
  };
  forRows([&](unsigned int /*t*/, unsigned long row, NearestOf<Block>& list) {
    list.size = sizes.Get(row);
    if (list.size == k) list.FindLowest(scores, row * k, k);
  });
  for (unsigned long first = tiles.GetBeginColumn(); first < tiles.GetEndColumn();
       first += zqTileSide) {
    tiles.Score(block, first,
                [&](unsigned int /*t*/, unsigned int /*i*/, unsigned long row, unsigned long column,
                    double score) {
                  tile.Set(static_cast<unsigned int>(row - tiles.GetFirstRow()) * zqTileStride +
                               static_cast<unsigned int>(column - first),
                           static_cast<float>(score));
                });
    forRows([&](unsigned int t, unsigned long row, NearestOf<Block>& list) {
      const unsigned long left = tiles.GetEndColumn() - first;
      const unsigned int numColumns =
          left < zqTileSide ? static_cast<unsigned int>(left) : zqTileSide;
      for (unsigned int column = 0; column < numColumns; ++column) {
        const float score = tile.Get(t * zqTileStride + column);
        if (fields.hasCutoff && score < fields.cutoff) continue;
        const bool isFull = list.size == k;
        if (isFull && !(score > list.lowest)) continue;
        const unsigned long slot = row * k + (isFull ? list.slot : list.size++);
        scores.Set(slot, score);
        indices.Set(slot, fields.columns.first + first + column);
        if (list.size == k) list.FindLowest(scores, row * k, k);
      }
    });
  }
  forRows([&](unsigned int /*t*/, unsigned long row, NearestOf<Block>& list) {
    sizes.Set(row, list.size);
  });
}

}  // namespace Nubrel
