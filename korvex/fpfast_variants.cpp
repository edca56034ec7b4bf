#include "korvex/fpfast_variants_local.h"

#include <algorithm>
#include <cstring>

#include "korvex/fpfast_loops_local.h"

namespace ZQKorvex {

namespace {

/// Two words, which compilers keep in a vector register if there is one.
using Words [[gnu::vector_size(16)]] = std::uint64_t;

Words Load(const std::uint64_t* from) {
  Words words;
  std::memcpy(&words, from, sizeof(words));
  return words;
}

/// The common bits of two arrays: adds adjacent fields until each byte holds its count, then bytes
/// of several words.
std::uint64_t CountCommon(const std::uint64_t* a, const std::uint64_t* b, std::size_t numWords) {
  constexpr std::uint64_t bits = 0x5555555555555555;
  constexpr std::uint64_t pairs = 0x3333333333333333;
  constexpr std::uint64_t nibbles = 0x0F0F0F0F0F0F0F0F;
  constexpr std::uint64_t bytes = 0x00FF00FF00FF00FF;
  constexpr std::size_t wordsPerByteSum = 2 * 31;  // 31 additions of at most 8 fit a byte
  Words sum{};
  for (std::size_t begin = 0; begin < numWords; begin += wordsPerByteSum) {
    const std::size_t end = std::min(numWords, begin + wordsPerByteSum);
    Words byteSum{};
    for (std::size_t w = begin; w < end; w += 2) {
      Words x = Load(a + w) & Load(b + w);
      x = x - ((x >> 1) & bits);
      x = (x & pairs) + ((x >> 2) & pairs);
      byteSum += (x + (x >> 4)) & nibbles;
    }
    byteSum = (byteSum & bytes) + ((byteSum >> 8) & bytes);
    byteSum += byteSum >> 16;
    sum += (byteSum + (byteSum >> 32)) & 0xFFFF;
  }
  return sum[0] + sum[1];
}

void Scan(const std::uint64_t* query, const std::uint64_t* words, std::uintptr_t ahead,
          std::size_t stride, std::size_t n, std::size_t numWords, std::uint32_t* counts) {
  for (std::size_t i = 0; i < n; ++i, words += stride, ahead += 8 * stride) {
    for (std::size_t w = 0; w < numWords; w += 8) ZQPrefetch(ahead + 8 * w);
    counts[i] = static_cast<std::uint32_t>(CountCommon(query, words, numWords));
  }
}

ZQBitTerms Count(const std::uint64_t* a, const std::uint64_t* b, std::size_t numWords) {
  const std::size_t even = numWords - numWords % 2;
  ZQBitTerms terms{static_cast<std::uint32_t>(CountCommon(a, a, even)),
                   static_cast<std::uint32_t>(CountCommon(b, b, even)),
                   static_cast<std::uint32_t>(CountCommon(a, b, even))};
  if (even != numWords) terms.Add(a[even], b[even]);
  return terms;
}

template <std::size_t measure>
bool Scores(const ZQScoreTerms& terms, double q, const double* r, const std::uint32_t* counts,
            std::size_t n, double* scores) {
  return ZQScoreLoop<measure>(terms, q, r, counts, n, scores);
}

template <std::size_t... measures>
constexpr auto ScoresOf(std::index_sequence<measures...>) {
  return std::array<ZQScanVariant::ScoreLoop, sizeof...(measures)>{Scores<measures>...};
}

// Few blocks contain a good enough score; the first loop, vectorized, finds out whether one does.
template <class Reaches>
std::uint64_t MaskOf(std::size_t n, Reaches reaches) {
  int any = 0;
  for (std::size_t i = 0; i < n; ++i) any |= static_cast<int>(reaches(i));
  if (any == 0) return 0;
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < n; ++i) mask |= std::uint64_t{reaches(i)} << i;
  return mask;
}

}  // namespace

constinit const std::array<ZQScanVariant::ScoreLoop, zqMeasures.size()> zqPortableScores =
    ScoresOf(std::make_index_sequence<zqMeasures.size()>());

bool ZQPortableBins(const double* values, std::size_t n, double lower, double upper, double binSize,
                    std::uint32_t last, std::uint32_t* places) {
  return ZQBinLoop(values, n, lower, upper, binSize, last, places);
}

std::uint64_t ZQPortableReaching(const double* scores, std::size_t n, double bar, bool descending) {
  if (descending) return MaskOf(n, [=](std::size_t i) { return scores[i] >= bar; });
  return MaskOf(n, [=](std::size_t i) { return bar >= scores[i]; });
}

std::uint64_t ZQPortableReachingOwn(const double* scores, std::size_t n, const double* bars) {
  return MaskOf(n, [=](std::size_t i) { return !(scores[i] < bars[i]); });
}

constinit const ZQScanVariant zqScanPortable = ZQPortableBut(Scan, Count);

unsigned long ZQPopCountBitCount(const unsigned long* words, unsigned long count) {
  if (!ZQ_ASSERT(count % zqWordsPerUnit == 0)) return 0;
  return CountCommon(words, words, count);
}

}  // namespace ZQKorvex
