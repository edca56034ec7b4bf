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

/// A pair of a tile.
struct TilePair {
  unsigned int i;        ///< the number of its row among the thread's
  unsigned int tileRow;  ///< in the tile
  unsigned int tileColumn;
  unsigned long row;
  unsigned long column;
};

struct PairCounts {
  unsigned int of[zqThreadSide][zqThreadSide] = {};
};

inline unsigned int CountCommon(const Word (&a)[1], const Word (&b)[1]) {
  return __builtin_popcountll(a[0] & b[0]);
}
/// Three words with two counts: the bits of each place are added to a number of two bits. In a
/// clock a multiprocessor counts the bits of 16 words of 32 bits, but does 64 logical operations
/// (the throughputs of arithmetic instructions in the CUDA programming guide).
inline unsigned int CountCommon(const Word (&a)[3], const Word (&b)[3]) {
  const Word x = a[0] & b[0];
  const Word y = a[1] & b[1];
  const Word z = a[2] & b[2];
  const Word ones = x ^ y ^ z;
  const Word twos = (x & y) | (x & z) | (y & z);
  return __builtin_popcountll(ones) + 2 * __builtin_popcountll(twos);
}

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
        firstRow_(block.GetX() * static_cast<unsigned long>(zqTileSide)),
        numRows_(ClipTile(fields.rows.count - firstRow_)) {
    const unsigned long strip = ZQCUStripTilesOf(fields) * zqTileSide;
    beginColumn_ = block.GetY() * strip;
    endColumn_ =
        beginColumn_ + strip < fields.columns.count ? beginColumn_ + strip : fields.columns.count;
  }

  unsigned long GetFirstRow() const { return firstRow_; }
  unsigned int GetNumRows() const { return numRows_; }
  /// Tiles begin at the columns from here on, in steps of `zqTileSide`.
  unsigned long GetBeginColumn() const { return beginColumn_; }
  unsigned long GetEndColumn() const { return endColumn_; }
  unsigned int GetNumColumns(unsigned long firstColumn) const {
    return ClipTile(endColumn_ - firstColumn);
  }

  /// Scores a tile. `consume(t, pair, score)` runs in a phase for each pair of thread t.
  template <class Consumer>
  void ScoreTile(Block& block, unsigned long firstColumn, const Consumer& consume) const {
    PerThreadOf<Block, PairCounts> common;
    for (unsigned long word = 0; word < fields_.numWords; word += zqSlabWords) {
      block.ForThreads([&](unsigned int t) {
        LoadSlab<zqTileSide>(t, rows_, firstRow_, word, rowSlab_);
        LoadSlab<zqTileSide>(t, columns_, firstColumn, word, columnSlab_);
      });
      block.ForThreads([&](unsigned int t) { CountSlab(t, common[t]); });
    }
    const unsigned int numColumns = GetNumColumns(firstColumn);
    block.ForThreads([&](unsigned int t) {
      unsigned int columnCounts[zqThreadSide];
      ZQ_UNROLL for (unsigned int j = 0; j < zqThreadSide; ++j) {
        const unsigned int column = t % zqTileThreads + j * zqTileThreads;
        columnCounts[j] = column < numColumns ? columnCounts_.Get(firstColumn + column) : 0;
      }
      ZQ_UNROLL for (unsigned int i = 0; i < zqThreadSide; ++i) {
        const unsigned int row = t / zqTileThreads + i * zqTileThreads;
        if (row >= numRows_) continue;
        const unsigned int rowCount = rowCounts_.Get(firstRow_ + row);
        ZQ_UNROLL for (unsigned int j = 0; j < zqThreadSide; ++j) {
          const unsigned int column = t % zqTileThreads + j * zqTileThreads;
          if (column >= numColumns) continue;
          consume(t, TilePair{i, row, column, firstRow_ + row, firstColumn + column},
                  ScoreOf(fields_.measure, rowCount, columnCounts[j], common[t].of[i][j]));
        }
      }
    });
  }

  /// Scores all tiles; with `upperTriangle`, only pairs whose row has a lower index than the
  /// column.
  template <class Consumer>
  void ScoreAll(Block& block, bool upperTriangle, const Consumer& consume) const {
    const auto isUpper = [&](unsigned long row, unsigned long column) {
      return fields_.rows.first + row < fields_.columns.first + column;
    };
    for (unsigned long first = beginColumn_; first < endColumn_; first += zqTileSide) {
      if (upperTriangle && !isUpper(firstRow_, first + GetNumColumns(first) - 1)) continue;
      ScoreTile(block, first, [&](unsigned int t, const TilePair& pair, double score) {
        if (!upperTriangle || isUpper(pair.row, pair.column)) consume(t, pair, score);
      });
    }
  }

 private:
  static unsigned int ClipTile(unsigned long left) {
    return left < zqTileSide ? static_cast<unsigned int>(left) : zqTileSide;
  }

  void CountSlab(unsigned int t, PairCounts& common) const {
    unsigned int word = 0;
    ZQ_KEEP_LOOP for (; word + 3 <= zqSlabWords; word += 3) CountWords<3>(t, word, common);
    for (; word < zqSlabWords; ++word) CountWords<1>(t, word, common);
  }
  template <unsigned int numWords>
  void CountWords(unsigned int t, unsigned int firstWord, PairCounts& common) const {
    Word columns[zqThreadSide][numWords];
    ZQ_UNROLL for (unsigned int j = 0; j < zqThreadSide; ++j) {
      const unsigned int column = t % zqTileThreads + j * zqTileThreads;
      ZQ_UNROLL for (unsigned int n = 0; n < numWords; ++n) {
        columns[j][n] = columnSlab_.Get(column * zqSlabStride + firstWord + n);
      }
    }
    ZQ_UNROLL for (unsigned int i = 0; i < zqThreadSide; ++i) {
      const unsigned int row = t / zqTileThreads + i * zqTileThreads;
      Word words[numWords];
      ZQ_UNROLL for (unsigned int n = 0; n < numWords; ++n) {
        words[n] = rowSlab_.Get(row * zqSlabStride + firstWord + n);
      }
      ZQ_UNROLL for (unsigned int j = 0; j < zqThreadSide; ++j) {
        common.of[i][j] += CountCommon(words, columns[j]);
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
  unsigned int numRows_;
  unsigned long beginColumn_;
  unsigned long endColumn_;
};

template <class Block>
void ScorePairs(Block& block, const ZQCUAllScoresFields& fields) {
  const TilesOf<Block> tiles(block, fields);
  const auto scores = block.template GetGlobal<float>(fields.scores);
  tiles.ScoreAll(block, false, [&](unsigned int /*t*/, const TilePair& pair, double score) {
    scores.Set(pair.row * fields.columns.count + pair.column, static_cast<float>(score));
  });
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
  tiles.ScoreAll(block, false, [&](unsigned int t, const TilePair& pair, double score) {
    if (!(static_cast<float>(score) < fields.cutoff)) ++counts[t].of[pair.i];
  });
  block.ForThreads([&](unsigned int t) {
    if (t < zqTileSide) sums.Set(t, 0);
  });
  block.ForThreads([&](unsigned int t) {
    ZQ_UNROLL for (unsigned int i = 0; i < zqThreadSide; ++i) {
      sums.Add(t / zqTileThreads + i * zqTileThreads, counts[t].of[i]);
    }
  });
  block.ForThreads([&](unsigned int t) {
    if (t < tiles.GetNumRows()) numNeighbors.Add(tiles.GetFirstRow() + t, sums.Get(t));
  });
}

/// The bins of a block's pairs are counted in shared memory: below 2^32, as a strip has fewer than
/// 2^11 tiles of 2^12 pairs.
template <class Block>
void CountBins(Block& block, const ZQCUHistogramFields& fields) {
  const TilesOf<Block> tiles(block, fields);
  const auto bins = block.template CarveShared<unsigned int>(fields.numBins);
  const auto counts = block.template GetGlobal<Word>(fields.counts);
  block.ForThreads([&](unsigned int t) {
    for (unsigned int bin = t; bin < fields.numBins; bin += zqBlockThreads) bins.Set(bin, 0);
  });
  tiles.ScoreAll(block, fields.upperTriangle,
                 [&](unsigned int /*t*/, const TilePair& /*pair*/, double score) {
                   bins.Add(ZQCUBinOf(score, fields.binSize, fields.numBins), 1);
                 });
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
  tiles.ScoreAll(block, true, [&](unsigned int /*t*/, const TilePair& pair, double score) {
    const float distance = 1.0F - static_cast<float>(score);
    const unsigned int bin = ZQCUBinOf(distance, fields.binSize, fields.numBins);
    bins.Set(pair.row * fields.columns.count + pair.column, static_cast<unsigned short>(bin));
  });
}

/// The first of the lowest scores.
struct LowestScore {
  /// Above all scores: lists of no slots take nothing.
  static constexpr float none = 2.0F;

  float score = none;
  unsigned int place = 0;
};

template <class View>
LowestScore FindLowest(const View& scores, unsigned long begin, unsigned int count) {
  LowestScore lowest;
  for (unsigned int i = 0; i < count; ++i) {
    const float score = scores.Get(begin + i);
    if (score < lowest.score) lowest = {score, i};
  }
  return lowest;
}

/// The lists of a block's rows, in global memory. The slots of a list are in groups of equal size,
/// and a full list has the lowest score of each group in shared memory: to replace the lowest score
/// of all takes a look at one group and at the scores of the groups.
template <class Block>
class NearestLists {
 public:
  /// What the thread of a row knows of its list.
  struct List {
    unsigned int size = 0;
    LowestScore lowest;  ///< of the groups; kept if the list is full
  };

  NearestLists(Block& block, const ZQCUSparseFields& fields)
      : scores_(block.template GetGlobal<float>(fields.scores)),
        indices_(block.template GetGlobal<Word>(fields.indices)),
        lowest_(block.template CarveShared<float>(zqTileSide * zqGroupsStride)),
        k_(fields.k),
        groupSlots_(fields.k / zqListGroups + 1) {}

  /// A list that has so many scores.
  List Open(unsigned int tileRow, unsigned long row, unsigned int size) const {
    List list{size, {}};
    if (size == k_) FindAllLowest(list, tileRow, row);
    return list;
  }
  void Offer(List& list, unsigned int tileRow, unsigned long row, float score, Word index) const {
    if (list.size < k_) {
      Set(row, list.size++, score, index);
      if (list.size == k_) FindAllLowest(list, tileRow, row);
    } else if (score > list.lowest.score) {
      const unsigned int group = list.lowest.place;
      Set(row, group * groupSlots_ + FindLowestOf(row, group).place, score, index);
      lowest_.Set(tileRow * zqGroupsStride + group, FindLowestOf(row, group).score);
      list.lowest = FindLowest(lowest_, tileRow * zqGroupsStride, GetNumGroups());
    }
  }

 private:
  unsigned int GetNumGroups() const {
    return static_cast<unsigned int>(ZQCUDivideUp(k_, groupSlots_));
  }
  void Set(unsigned long row, unsigned int slot, float score, Word index) const {
    scores_.Set(row * k_ + slot, score);
    indices_.Set(row * k_ + slot, index);
  }
  LowestScore FindLowestOf(unsigned long row, unsigned int group) const {
    const unsigned int begin = group * groupSlots_;
    const unsigned int left = k_ - begin;
    return FindLowest(scores_, row * k_ + begin, left < groupSlots_ ? left : groupSlots_);
  }
  void FindAllLowest(List& list, unsigned int tileRow, unsigned long row) const {
    for (unsigned int group = 0; group < GetNumGroups(); ++group) {
      lowest_.Set(tileRow * zqGroupsStride + group, FindLowestOf(row, group).score);
    }
    list.lowest = FindLowest(lowest_, tileRow * zqGroupsStride, GetNumGroups());
  }

  GlobalOf<Block, float> scores_;
  GlobalOf<Block, Word> indices_;
  SharedOf<Block, float> lowest_;
  unsigned int k_;
  unsigned int groupSlots_;
};

/// The block's threads score a tile; then one thread for each row goes through the scores in the
/// order of the columns. These are spread over all warps, as the threads of a warp wait for each
/// other's changes.
template <class Block>
void FindNearest(Block& block, const ZQCUSparseFields& fields) {
  constexpr unsigned int threadsOfRow = zqBlockThreads / zqTileSide;
  const TilesOf<Block> tiles(block, fields);
  const auto tile = block.template CarveShared<float>(zqTileSide * zqTileStride);
  const auto sizes = block.template GetGlobal<unsigned int>(fields.sizes);
  const NearestLists<Block> nearest(block, fields);
  PerThreadOf<Block, typename NearestLists<Block>::List> lists;
  // A phase of the threads that have a row: `body(tileRow, row, list)`.
  const auto forRows = [&](const auto& body) {
    block.ForThreads([&](unsigned int t) {
      const unsigned int tileRow = t / threadsOfRow;
      if (t % threadsOfRow == 0 && tileRow < tiles.GetNumRows()) {
        body(tileRow, tiles.GetFirstRow() + tileRow, lists[t]);
      }
    });
  };
  forRows([&](unsigned int tileRow, unsigned long row, auto& list) {
    list = nearest.Open(tileRow, row, sizes.Get(row));
  });
  for (unsigned long first = tiles.GetBeginColumn(); first < tiles.GetEndColumn();
       first += zqTileSide) {
    tiles.ScoreTile(block, first, [&](unsigned int /*t*/, const TilePair& pair, double score) {
      tile.Set(pair.tileRow * zqTileStride + pair.tileColumn, static_cast<float>(score));
    });
    forRows([&](unsigned int tileRow, unsigned long row, auto& list) {
      const unsigned int numColumns = tiles.GetNumColumns(first);
      for (unsigned int column = 0; column < numColumns; ++column) {
        const float score = tile.Get(tileRow * zqTileStride + column);
        if (fields.hasCutoff && score < fields.cutoff) continue;
        nearest.Offer(list, tileRow, row, score, fields.columns.first + first + column);
      }
    });
  }
  forRows(
      [&](unsigned int /*tileRow*/, unsigned long row, auto& list) { sizes.Set(row, list.size); });
}

}  // namespace Nubrel
