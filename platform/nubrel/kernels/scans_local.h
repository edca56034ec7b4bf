#pragma once

/// The scans: each thread of a block has one record. Their time is that of reading the records.

#include "platform/nubrel/kernels/records_local.h"

namespace Nubrel {

/// Goes through the words of the block's records, and of the query for `withQuery`: the number of
/// common bits of each thread's record and the query, or of the record's bits.
template <bool withQuery, class Block>
PerThreadOf<Block, unsigned int> CountRecords(Block& block, const WordsOf<Block>& records,
                                              ZQCUAddress query) {
  const auto slab = block.template CarveShared<Word>(zqBlockThreads * zqSlabStride);
  const auto querySlab = block.template CarveShared<Word>(withQuery ? zqSlabWords : 0);
  const auto queryWords = block.template GetGlobal<Word>(query);
  const unsigned long first = block.GetX() * static_cast<unsigned long>(zqBlockThreads);
  PerThreadOf<Block, unsigned int> counts;
  for (unsigned long word = 0; word < records.numWords; word += zqSlabWords) {
    block.ForThreads([&](unsigned int t) {
      LoadSlab<zqBlockThreads>(t, records, first, word, slab);
      if (withQuery && t < zqSlabWords) querySlab.Set(t, queryWords.Get(word + t));
    });
    block.ForThreads([&](unsigned int t) {
      unsigned int count = 0;
      for (unsigned int i = 0; i < zqSlabWords; ++i) {
        const Word bits = slab.Get(t * zqSlabStride + i);
        count += __builtin_popcountll(withQuery ? bits & querySlab.Get(i) : bits);
      }
      counts[t] += count;
    });
  }
  return counts;
}

template <class Block>
void CountBits(Block& block, const ZQCUPopcountFields& fields) {
  const WordsOf<Block> records{block.template GetGlobal<WordPair>(fields.words), fields.count,
                               fields.numWords};
  const auto target = block.template GetGlobal<unsigned int>(fields.counts);
  auto counts = CountRecords<false>(block, records, 0);
  block.ForThreads([&](unsigned int t) {
    const unsigned long record = block.GetX() * static_cast<unsigned long>(zqBlockThreads) + t;
    if (record < fields.count) target.Set(record, counts[t]);
  });
}

/// Scores the block's records against the query; `consume(t, record, score)` runs in a phase.
template <class Block, class Consumer>
void ScoreBlock(Block& block, const ZQCUQueryFields& fields, const Consumer& consume) {
  const ZQCURecords& records = fields.records;
  const WordsOf<Block> words{block.template GetGlobal<WordPair>(records.words), records.count,
                             fields.numWords};
  const auto recordCounts = block.template GetGlobal<unsigned int>(records.counts);
  auto common = CountRecords<true>(block, words, fields.query);
  block.ForThreads([&](unsigned int t) {
    const unsigned long record = block.GetX() * static_cast<unsigned long>(zqBlockThreads) + t;
    if (record >= records.count) return;
    consume(t, record,
            ScoreOf(fields.measure, fields.queryCount, recordCounts.Get(record), common[t]));
  });
}

template <class Block>
void ScoreRecords(Block& block, const ZQCURawScoresFields& fields) {
  const auto scores = block.template GetGlobal<double>(fields.scores);
  ScoreBlock(block, fields, [&](unsigned int /*t*/, unsigned long record, double score) {
    scores.Set(record, score);
  });
}

inline bool IsHit(const ZQCUScoresFields& fields, double score) {
  if (!fields.hasBar) return true;
  const double better = fields.descending ? score : fields.bar;
  const double worse = fields.descending ? fields.bar : score;
  return fields.strict ? better > worse : better >= worse;
}

/// The hits of a block get consecutive places, so that there is one atomic addition to global
/// memory for each block.
template <class Block>
void FindHits(Block& block, const ZQCUScoresFields& fields) {
  const auto target = block.template GetGlobal<Word>(fields.hits);
  const auto numHits = block.template GetGlobal<Word>(fields.numHits);
  struct Hit {
    bool passes = false;
    unsigned int place = 0;  // in the block
    double score = 0.0;
  };
  PerThreadOf<Block, Hit> hits;
  ScoreBlock(block, fields, [&](unsigned int t, unsigned long /*record*/, double score) {
    if (IsHit(fields, score)) hits[t] = {true, 0, score};
  });
  const auto first = block.template CarveShared<Word>(1);
  const auto count = block.template CarveShared<unsigned int>(1);
  block.ForThreads([&](unsigned int t) {
    if (t == 0) count.Set(0, 0);
  });
  block.ForThreads([&](unsigned int t) {
    if (hits[t].passes) hits[t].place = count.Add(0, 1);
  });
  block.ForThreads([&](unsigned int t) {
    if (t == 0 && count.Get(0) != 0) first.Set(0, numHits.Add(0, count.Get(0)));
  });
  block.ForThreads([&](unsigned int t) {
    if (!hits[t].passes) return;
    const unsigned long place = first.Get(0) + hits[t].place;
    target.Set(2 * place, fields.records.first +
                              block.GetX() * static_cast<unsigned long>(zqBlockThreads) + t);
    target.Set(2 * place + 1, __builtin_bit_cast(Word, hits[t].score));
  });
}
static_assert(sizeof(ZQCUHit) == 2 * sizeof(Word) &&
              __builtin_offsetof(ZQCUHit, score) == sizeof(Word));

}  // namespace Nubrel
