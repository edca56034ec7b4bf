#include "korvex/fpfast_variants_local.h"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstring>

namespace ZQKorvex {

namespace {

#ifdef __clang__
#define ZQ_FULL_WIDTH  // its loops are as wide as the target allows
#else
#define ZQ_FULL_WIDTH ",prefer-vector-width=512"
#endif
#define ZQ_TARGET_AVX512 \
  __attribute__((target("avx512f,avx512dq,avx512vl,avx512vpopcntdq" ZQ_FULL_WIDTH)))
#define ZQ_TARGET_AVX2 __attribute__((target("avx2")))
#define ZQ_TARGET_POPCNT __attribute__((target("popcnt")))

/// Asks for a line of memory, into the second cache.
[[gnu::always_inline]] inline void Prefetch(std::uintptr_t address) {
  // Beyond the last record it is no pointer, only a hint.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  __builtin_prefetch(reinterpret_cast<const void*>(address), 0, 2);
}

// Loops over doubles, which the compiler turns into vectors of the width of the function that
// they are inlined into.

template <unsigned int measure>
[[gnu::always_inline]] inline bool ScoreLoop(const ZQScoreTerms& terms, double q,
                                             const double* __restrict r,
                                             const std::uint32_t* __restrict counts, std::size_t n,
                                             double* __restrict scores) {
  const ZQScoreTerms local = terms;
  // The bits of a number from 0.0 to 1.0 have no sign, nor do they with this added.
  constexpr std::uint64_t fromOne =
      (std::uint64_t{1} << 63) - 1 - std::bit_cast<std::uint64_t>(1.0);
  std::uint64_t outside = 0;
  for (std::size_t i = 0; i < n; ++i) {
    scores[i] = ZQScoreOf<measure>(local, q, r[i], static_cast<std::int32_t>(counts[i]));
    const auto bits = std::bit_cast<std::uint64_t>(scores[i]);
    outside |= bits | (bits + fromOne);
  }
  return outside >> 63 == 0;
}

[[gnu::always_inline]] inline bool BinLoop(const double* __restrict values, std::size_t n,
                                           double lower, double upper, double binSize,
                                           std::uint32_t last, std::uint32_t* __restrict places) {
  constexpr auto lanes = static_cast<std::int32_t>(zqBinLanes);
  const auto lastBin = static_cast<std::int32_t>(last);
  std::int32_t outside = 0;
  for (std::size_t i = 0; i < n; ++i) {
    outside |= static_cast<std::int32_t>(!(values[i] >= lower)) |
               static_cast<std::int32_t>(!(values[i] <= upper));
    const auto bin = static_cast<std::int32_t>((values[i] - lower) / binSize);
    const std::int32_t place =
        lanes * (bin < lastBin ? bin : lastBin) + static_cast<std::int32_t>(i) % lanes;
    places[i] = static_cast<std::uint32_t>(place);
  }
  return outside == 0;
}

// Any x86-64 processor.

bool RunsAlways() { return true; }

/// Counts both 64-bit lanes by adding neighbours, pairs, nibbles and so on.
inline __m128i CountLanes(__m128i x) {
  const __m128i pairs = _mm_set1_epi8(0x55);
  const __m128i nibbles = _mm_set1_epi8(0x33);
  const __m128i bytes = _mm_set1_epi8(0x0F);
  x = _mm_add_epi8(_mm_and_si128(x, pairs), _mm_and_si128(_mm_srli_epi64(x, 1), pairs));
  x = _mm_add_epi8(_mm_and_si128(x, nibbles), _mm_and_si128(_mm_srli_epi64(x, 2), nibbles));
  x = _mm_and_si128(_mm_add_epi8(x, _mm_srli_epi64(x, 4)), bytes);
  return _mm_sad_epu8(x, _mm_setzero_si128());
}

void ScanSse2(const std::uint64_t* query, const std::uint64_t* words, std::uintptr_t ahead,
              std::size_t stride, std::size_t n, std::size_t numWords, std::uint32_t* counts) {
  for (std::size_t i = 0; i < n; ++i, words += stride, ahead += 8 * stride) {
    __m128i sum = _mm_setzero_si128();
    for (std::size_t w = 0; w < numWords; w += 2) {
      if (w % 8 == 0) Prefetch(ahead + 8 * w);
      const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(query + w));
      const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(words + w));
      sum = _mm_add_epi64(sum, CountLanes(_mm_and_si128(a, b)));
    }
    sum = _mm_add_epi64(sum, _mm_unpackhi_epi64(sum, sum));
    counts[i] = static_cast<std::uint32_t>(_mm_cvtsi128_si32(sum));
  }
}

template <unsigned int measure>
bool Scores(const ZQScoreTerms& terms, double q, const double* r, const std::uint32_t* counts,
            std::size_t n, double* scores) {
  return ScoreLoop<measure>(terms, q, r, counts, n, scores);
}

bool Bins(const double* values, std::size_t n, double lower, double upper, double binSize,
          std::uint32_t last, std::uint32_t* places) {
  return BinLoop(values, n, lower, upper, binSize, last, places);
}

// Few blocks hold a score that is good enough, and the first loop, in vectors, tells which.
template <class Reaches>
std::uint64_t MaskOf(std::size_t n, Reaches reaches) {
  int any = 0;
  for (std::size_t i = 0; i < n; ++i) any |= static_cast<int>(reaches(i));
  if (any == 0) return 0;
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < n; ++i) mask |= std::uint64_t{reaches(i)} << i;
  return mask;
}

std::uint64_t Reaching(const double* scores, std::size_t n, double bar, bool descending) {
  if (descending) return MaskOf(n, [=](std::size_t i) { return scores[i] >= bar; });
  return MaskOf(n, [=](std::size_t i) { return bar >= scores[i]; });
}

std::uint64_t ReachingOwn(const double* scores, std::size_t n, const double* bars) {
  return MaskOf(n, [=](std::size_t i) { return !(scores[i] < bars[i]); });
}

// The population count instruction.

bool RunsPopcnt() { return __builtin_cpu_supports("popcnt"); }

ZQ_TARGET_POPCNT void ScanPopcnt(const std::uint64_t* query, const std::uint64_t* words,
                                 std::uintptr_t ahead, std::size_t stride, std::size_t n,
                                 std::size_t numWords, std::uint32_t* counts) {
  for (std::size_t i = 0; i < n; ++i, words += stride, ahead += 8 * stride) {
    std::array<std::uint64_t, 4> sums{};  // so that additions don't wait on one another
    for (std::size_t w = 0; w < numWords; w += 4) {
      if (w % 8 == 0) Prefetch(ahead + 8 * w);
      for (std::size_t k = 0; k < 4; ++k) {
        sums[k] += static_cast<std::uint64_t>(_mm_popcnt_u64(query[w + k] & words[w + k]));
      }
    }
    counts[i] = static_cast<std::uint32_t>(sums[0] + sums[1] + sums[2] + sums[3]);
  }
}

// AVX2: the counts of the 16 nibbles in a table that one shuffle looks up for 32 nibbles.

bool RunsAvx2() { return __builtin_cpu_supports("avx2"); }

ZQ_TARGET_AVX2 void ScanAvx2(const std::uint64_t* query, const std::uint64_t* words,
                             std::uintptr_t ahead, std::size_t stride, std::size_t n,
                             std::size_t numWords, std::uint32_t* counts) {
  const __m256i table = _mm256_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4,  //
                                         0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4);
  const __m256i low = _mm256_set1_epi8(0x0F);
  constexpr std::size_t wordsPerByteSum = 4 * 31;  // 31 additions of at most 8 fit a byte
  for (std::size_t i = 0; i < n; ++i, words += stride, ahead += 8 * stride) {
    __m256i sum = _mm256_setzero_si256();
    for (std::size_t begin = 0; begin < numWords; begin += wordsPerByteSum) {
      const std::size_t end = std::min(numWords, begin + wordsPerByteSum);
      __m256i bytes = _mm256_setzero_si256();
      for (std::size_t w = begin; w < end; w += 4) {
        if (w % 8 == 0) Prefetch(ahead + 8 * w);
        const __m256i common =
            _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(query + w)),
                             _mm256_loadu_si256(reinterpret_cast<const __m256i*>(words + w)));
        const __m256i lower = _mm256_shuffle_epi8(table, _mm256_and_si256(common, low));
        const __m256i upper =
            _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi64(common, 4), low));
        bytes = _mm256_add_epi8(bytes, _mm256_add_epi8(lower, upper));
      }
      sum = _mm256_add_epi64(sum, _mm256_sad_epu8(bytes, _mm256_setzero_si256()));
    }
    const __m128i half =
        _mm_add_epi64(_mm256_castsi256_si128(sum), _mm256_extracti128_si256(sum, 1));
    counts[i] = static_cast<std::uint32_t>(
        _mm_cvtsi128_si32(_mm_add_epi64(half, _mm_unpackhi_epi64(half, half))));
  }
}

// AVX-512 with VPOPCNTDQ, which counts eight words at once.

// The compiler's own header trips these warnings wherever its intrinsics are inlined.
#pragma GCC diagnostic push
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

bool RunsAvx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vpopcntdq");
}

/// The first `left` of eight lanes.
[[gnu::always_inline]] inline __mmask8 LanesLeft(std::size_t left) {
  return static_cast<__mmask8>(left < 8 ? (1U << left) - 1 : 0xFF);
}

/// The common bits of two fingerprints in eight partial sums. A single load in a plain loop is
/// what the processor's own prefetchers follow best.
[[gnu::always_inline]] ZQ_TARGET_AVX512 inline __m512i CountAvx512(const std::uint64_t* query,
                                                                   const std::uint64_t* words,
                                                                   std::uintptr_t ahead,
                                                                   std::size_t numWords) {
  __m512i sum = _mm512_setzero_si512();
  std::size_t w = 0;
#pragma GCC unroll 1
  for (; w + 8 <= numWords; w += 8) {
    Prefetch(ahead + 8 * w);
    const __m512i common =
        _mm512_and_si512(_mm512_loadu_si512(query + w), _mm512_loadu_si512(words + w));
    sum = _mm512_add_epi64(sum, _mm512_popcnt_epi64(common));
  }
  if (w < numWords) {
    const __mmask8 left = LanesLeft(numWords - w);
    const __m512i common = _mm512_and_si512(_mm512_maskz_loadu_epi64(left, query + w),
                                            _mm512_maskz_loadu_epi64(left, words + w));
    sum = _mm512_add_epi64(sum, _mm512_popcnt_epi64(common));
  }
  return sum;
}

/// The 128-bit lanes of `a`, then of `b`, each added to its neighbour.
[[gnu::always_inline]] ZQ_TARGET_AVX512 inline __m512i FoldAvx512(__m512i a, __m512i b) {
  return _mm512_add_epi64(_mm512_shuffle_i64x2(a, b, 0x88), _mm512_shuffle_i64x2(a, b, 0xDD));
}

ZQ_TARGET_AVX512 void ScanAvx512(const std::uint64_t* query, const std::uint64_t* words,
                                 std::uintptr_t ahead, std::size_t stride, std::size_t n,
                                 std::size_t numWords, std::uint32_t* counts) {
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    // Eight records at a time, so that their partial sums are added up in one tree.
    __m512i sums[8];
#pragma GCC unroll 1
    for (std::size_t k = 0; k < 8; ++k, words += stride, ahead += 8 * stride) {
      sums[k] = CountAvx512(query, words, ahead, numWords);
    }
    __m512i pairs[4];
#pragma GCC unroll 4
    for (std::size_t k = 0; k < 4; ++k) {
      pairs[k] = _mm512_add_epi64(_mm512_unpacklo_epi64(sums[2 * k], sums[2 * k + 1]),
                                  _mm512_unpackhi_epi64(sums[2 * k], sums[2 * k + 1]));
    }
    const __m512i totals =
        FoldAvx512(FoldAvx512(pairs[0], pairs[1]), FoldAvx512(pairs[2], pairs[3]));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(counts + i), _mm512_cvtepi64_epi32(totals));
  }
  for (; i < n; ++i, words += stride, ahead += 8 * stride) {
    counts[i] = static_cast<std::uint32_t>(
        _mm512_reduce_add_epi64(CountAvx512(query, words, ahead, numWords)));
  }
}

/// Eight words of eight records at a time: a transposition of 8 by 8 words.
ZQ_TARGET_AVX512 void PackAvx512(const std::uint64_t* words, std::size_t stride, std::size_t n,
                                 std::size_t numWords, std::uint64_t* packed) {
  for (std::size_t first = 0; first < n; first += 8) {
    for (std::size_t w = 0; w < numWords; w += 8) {
      const __mmask8 here = LanesLeft(numWords - w);
      __m512i in[8];
#pragma GCC unroll 8
      for (std::size_t k = 0; k < 8; ++k) {
        const __mmask8 exists = first + k < n ? here : __mmask8{0};
        in[k] = _mm512_maskz_loadu_epi64(exists, words + (first + k) * stride + w);
      }
      // Words of equal place of two records, of four, then of all eight stand side by side.
      __m512i two[8];
      __m512i four[8];
#pragma GCC unroll 4
      for (std::size_t k = 0; k < 8; k += 2) {
        two[k] = _mm512_unpacklo_epi64(in[k], in[k + 1]);
        two[k + 1] = _mm512_unpackhi_epi64(in[k], in[k + 1]);
      }
#pragma GCC unroll 2
      for (std::size_t k = 0; k < 8; k += 4) {
        four[k] = _mm512_shuffle_i64x2(two[k], two[k + 2], 0x88);
        four[k + 1] = _mm512_shuffle_i64x2(two[k + 1], two[k + 3], 0x88);
        four[k + 2] = _mm512_shuffle_i64x2(two[k], two[k + 2], 0xDD);
        four[k + 3] = _mm512_shuffle_i64x2(two[k + 1], two[k + 3], 0xDD);
      }
      const std::size_t left = numWords - w;
      std::uint64_t* out = packed + w * zqBlockRecords + first;
#pragma GCC unroll 4
      for (std::size_t k = 0; k < 4; ++k) {
        _mm512_store_si512(out + k * zqBlockRecords,
                           _mm512_shuffle_i64x2(four[k], four[4 + k], 0x88));
      }
      if (left == 4) break;  // half a vector of words was left
#pragma GCC unroll 4
      for (std::size_t k = 0; k < 4; ++k) {
        _mm512_store_si512(out + (4 + k) * zqBlockRecords,
                           _mm512_shuffle_i64x2(four[k], four[4 + k], 0xDD));
      }
    }
  }
}

/// Eight records to a vector, so that nothing is left to add up across lanes. What bounds it is
/// the AND, count and add of each vector, three operations on two ports.
ZQ_TARGET_AVX512 void RowAvx512(const std::uint64_t* row, const std::uint64_t* packed,
                                std::size_t numWords, std::uint32_t* counts) {
  constexpr std::size_t groups = 4;
  for (std::size_t first = 0; first < zqBlockRecords; first += 8 * groups) {
    __m512i sums[groups];
#pragma GCC unroll 4
    for (std::size_t g = 0; g < groups; ++g) sums[g] = _mm512_setzero_si512();
#pragma GCC unroll 4
    for (std::size_t w = 0; w < numWords; ++w) {
      const __m512i word = _mm512_set1_epi64(static_cast<long long>(row[w]));
      const std::uint64_t* columns = packed + w * zqBlockRecords + first;
#pragma GCC unroll 4
      for (std::size_t g = 0; g < groups; ++g) {
        const __m512i common = _mm512_and_si512(word, _mm512_load_si512(columns + 8 * g));
        sums[g] = _mm512_add_epi64(sums[g], _mm512_popcnt_epi64(common));
      }
    }
#pragma GCC unroll 4
    for (std::size_t g = 0; g < groups; ++g) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(counts + first + 8 * g),
                          _mm512_cvtepi64_epi32(sums[g]));
    }
  }
}

template <unsigned int measure>
ZQ_TARGET_AVX512 bool ScoresAvx512(const ZQScoreTerms& terms, double q, const double* r,
                                   const std::uint32_t* counts, std::size_t n, double* scores) {
  return ScoreLoop<measure>(terms, q, r, counts, n, scores);
}

/// A division takes as long as all else here together. So values are multiplied by the inverse
/// of the bin's size, and divided only where that comes so near to a bin's edge that rounding
/// could put it on the wrong side.
ZQ_TARGET_AVX512 bool BinsAvx512(const double* values, std::size_t n, double lower, double upper,
                                 double binSize, std::uint32_t last, std::uint32_t* places) {
  const __m512d nearness = _mm512_set1_pd(1e-9);  // well above the rounding of 2^16 bins
  const __m512d lowest = _mm512_set1_pd(lower);
  const __m512d highest = _mm512_set1_pd(upper);
  const __m512d size = _mm512_set1_pd(binSize);
  const __m512d inverse = _mm512_set1_pd(1.0 / binSize);
  const __m256i lastBin = _mm256_set1_epi32(static_cast<int>(last));
  const __m256i lanes = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
  unsigned int outside = 0;
  for (std::size_t i = 0; i < n; i += 8) {
    const __mmask8 here = LanesLeft(n - i);
    const __m512d value = _mm512_mask_loadu_pd(lowest, here, values + i);
    outside |= _mm512_cmp_pd_mask(value, lowest, _CMP_NGE_UQ);
    outside |= _mm512_cmp_pd_mask(value, highest, _CMP_NLE_UQ);
    const __m512d offset = _mm512_sub_pd(value, lowest);
    __m512d position = _mm512_mul_pd(offset, inverse);
    const __m512d edge = _mm512_roundscale_pd(position, _MM_FROUND_TO_NEAREST_INT);
    const __m512d distance = _mm512_abs_pd(_mm512_sub_pd(position, edge));
    if (_mm512_cmp_pd_mask(distance, nearness, _CMP_LT_OQ) != 0) {
      position = _mm512_div_pd(offset, size);
    }
    const __m256i bin = _mm256_min_epi32(_mm512_cvttpd_epi32(position), lastBin);
    _mm256_mask_storeu_epi32(places + i, here, _mm256_add_epi32(_mm256_slli_epi32(bin, 3), lanes));
  }
  return outside == 0;
}
static_assert(zqBinLanes == 8);

ZQ_TARGET_AVX512 std::uint64_t ReachingAvx512(const double* scores, std::size_t n, double bar,
                                              bool descending) {
  const __m512d bars = _mm512_set1_pd(bar);
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < n; i += 8) {
    const __mmask8 here = LanesLeft(n - i);
    const __m512d score = _mm512_maskz_loadu_pd(here, scores + i);
    const __mmask8 reaching = descending ? _mm512_mask_cmp_pd_mask(here, score, bars, _CMP_GE_OQ)
                                         : _mm512_mask_cmp_pd_mask(here, score, bars, _CMP_LE_OQ);
    mask |= std::uint64_t{reaching} << i;
  }
  return mask;
}

ZQ_TARGET_AVX512 std::uint64_t ReachingOwnAvx512(const double* scores, std::size_t n,
                                                 const double* bars) {
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < n; i += 8) {
    const __mmask8 here = LanesLeft(n - i);
    const __mmask8 reaching =
        _mm512_mask_cmp_pd_mask(here, _mm512_maskz_loadu_pd(here, scores + i),
                                _mm512_maskz_loadu_pd(here, bars + i), _CMP_NLT_UQ);
    mask |= std::uint64_t{reaching} << i;
  }
  return mask;
}

#pragma GCC diagnostic pop

// The table of variants, best first: a new processor is one row.

constexpr std::array<ZQScanVariant::ScoreLoop, 6> plainScores = {Scores<1>, Scores<2>, Scores<3>,
                                                                 Scores<4>, Scores<5>, Scores<6>};
constexpr std::array<ZQScanVariant::ScoreLoop, 6> avx512Scores = {ScoresAvx512<1>, ScoresAvx512<2>,
                                                                  ScoresAvx512<3>, ScoresAvx512<4>,
                                                                  ScoresAvx512<5>, ScoresAvx512<6>};

constexpr std::array<ZQScanVariant, 4> variants = {{
    {"AVX-512", RunsAvx512, ScanAvx512, PackAvx512, RowAvx512, avx512Scores.data(), BinsAvx512,
     ReachingAvx512, ReachingOwnAvx512},
    {"AVX2", RunsAvx2, ScanAvx2, nullptr, nullptr, plainScores.data(), Bins, Reaching, ReachingOwn},
    {"POPCNT", RunsPopcnt, ScanPopcnt, nullptr, nullptr, plainScores.data(), Bins, Reaching,
     ReachingOwn},
    {"SSE2", RunsAlways, ScanSse2, nullptr, nullptr, plainScores.data(), Bins, Reaching,
     ReachingOwn},
}};

std::atomic<const ZQScanVariant*> forced = nullptr;
std::atomic<const char*> latest = "";

}  // namespace

const ZQScanVariant& ZQGetScanVariant() {
  static const ZQScanVariant* const best =
      std::find_if(variants.begin(), variants.end(), [](const auto& v) { return v.runs(); });
  const ZQScanVariant* chosen = forced;
  if (!chosen) chosen = best;
  latest = chosen->name;
  return *chosen;
}

std::vector<std::string> ZQGetScanVariantNames() {
  std::vector<std::string> names;
  for (const ZQScanVariant& variant : variants) {
    if (variant.runs()) names.emplace_back(variant.name);
  }
  return names;
}

bool ZQForceScanVariant(const char* name) {
  forced = nullptr;
  if (!name) return true;
  for (const ZQScanVariant& variant : variants) {
    if (std::strcmp(variant.name, name) == 0 && variant.runs()) forced = &variant;
  }
  return forced != nullptr;
}

const char* ZQGetLatestScanVariant() { return latest; }

}  // namespace ZQKorvex
