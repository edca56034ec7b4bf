#pragma once

/// What the kernels share. A kernel is a template over its block of threads, `Block`, that of a GPU
/// (device.cu) or an emulated one (platform/nubrel/emulated/block_local.h). The code of a block
/// consists of phases, each a function that `ForThreads` calls for every thread `t` and that ends
/// with a barrier. What lies between phases is the same for all threads. A variable of a thread
/// that lives through several phases is a `PerThread`.

#include "platform/nubrel/kernels/geometry_local.h"

/// Unrolls a loop, so that arrays that it indexes can be in registers; or keeps one, so that what
/// each pass loads isn't in registers all at once.
#ifdef __clang__
#define ZQ_UNROLL _Pragma("unroll")
#define ZQ_KEEP_LOOP _Pragma("nounroll")
#else
#define ZQ_UNROLL
#define ZQ_KEEP_LOOP
#endif

namespace Nubrel {

using Word = unsigned long long;
/// Two words that are read at once.
using WordPair = __attribute__((vector_size(16))) Word;

template <class Block, class T>
using GlobalOf = typename Block::template Global<T>;
template <class Block, class T>
using SharedOf = typename Block::template Shared<T>;
template <class Block, class T>
using PerThreadOf = typename Block::template PerThread<T>;

/// Fingerprints' words in a device's memory.
template <class Block>
struct WordsOf {
  GlobalOf<Block, WordPair> pairs;
  unsigned long count;  ///< of fingerprints
  unsigned long numWords;
};

/// Copies the words of a slab of `size` fingerprints from `first` on to `slab`, `zqSlabStride`
/// words apart; this is thread `t`'s part. Those past the last one get no bits; instead of a branch
/// there is a read of the last one. Neighbouring threads read neighbouring pairs of words. All
/// reads of a thread come before its writes, so that they are under way together.
template <unsigned int size, class Block>
void LoadSlab(unsigned int t, const WordsOf<Block>& words, unsigned long first,
              unsigned long firstWord, const SharedOf<Block, Word>& slab) {
  constexpr unsigned int pairsOfRecord = zqSlabWords / 2;
  constexpr unsigned int pairsOfThread = size * pairsOfRecord / zqBlockThreads;
  WordPair pairs[pairsOfThread];
  ZQ_UNROLL for (unsigned int i = 0; i < pairsOfThread; ++i) {
    const unsigned int place = i * zqBlockThreads + t;
    const unsigned long record = first + place / pairsOfRecord;
    const bool exists = record < words.count;
    const unsigned long source = exists ? record : words.count - 1;
    const WordPair pair =
        words.pairs.Get((source * words.numWords + firstWord) / 2 + place % pairsOfRecord);
    pairs[i] = exists ? pair : WordPair{};
  }
  ZQ_UNROLL for (unsigned int i = 0; i < pairsOfThread; ++i) {
    const unsigned int place = i * zqBlockThreads + t;
    const unsigned int target = place / pairsOfRecord * zqSlabStride + place % pairsOfRecord * 2;
    slab.Set(target, pairs[i][0]);
    slab.Set(target + 1, pairs[i][1]);
  }
}

/// The score of fingerprints with `q` and `r` bits, `c` of them common. All threads take the same
/// branch.
inline double ScoreOf(const ZQCUMeasure& measure, unsigned int q, unsigned int r, unsigned int c) {
  return ZQCUClamp(ZQCUScoreOf(measure.number, measure.terms, q, r, c));
}

}  // namespace Nubrel
