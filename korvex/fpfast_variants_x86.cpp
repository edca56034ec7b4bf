#ifdef __x86_64__

#include <algorithm>
#include <array>

#include "korvex/fpfast_loops_local.h"
#include "korvex/processor_x86_local.h"

namespace ZQKorvex {

namespace {

// The population count instruction.

[[gnu::always_inline]] ZQ_TARGET_POPCNT inline std::uint64_t CountPopcnt(const std::uint64_t* a,
                                                                         const std::uint64_t* b,
                                                                         std::size_t numWords) {
  std::uint64_t sums[zqWordsPerUnit] = {};  // so that additions don't wait for one another
  for (std::size_t w = 0; w < numWords; w += zqWordsPerUnit) {
    for (std::size_t k = 0; k < zqWordsPerUnit; ++k) {
      sums[k] += static_cast<std::uint64_t>(_mm_popcnt_u64(a[w + k] & b[w + k]));
    }
  }
  return sums[0] + sums[1] + sums[2] + sums[3];
}

ZQ_TARGET_POPCNT void ScanPopcnt(const std::uint64_t* query, const std::uint64_t* words,
                                 std::uintptr_t ahead, std::size_t stride, std::size_t n,
                                 std::size_t numWords, std::uint32_t* counts) {
  for (std::size_t i = 0; i < n; ++i, words += stride, ahead += 8 * stride) {
    for (std::size_t w = 0; w < numWords; w += 8) ZQPrefetch(ahead + 8 * w);
    counts[i] = static_cast<std::uint32_t>(CountPopcnt(query, words, numWords));
  }
}

ZQ_TARGET_POPCNT ZQBitTerms CountsPopcnt(const std::uint64_t* a, const std::uint64_t* b,
                                         std::size_t numWords) {
  ZQBitTerms terms;
#pragma GCC unroll 4
  for (std::size_t w = 0; w < numWords; ++w) terms.Add(a[w], b[w]);
  return terms;
}

// AVX2: one shuffle looks up the counts of 32 nibbles in a table of 16.

/// The counts of the bits of each byte.
[[gnu::always_inline]] ZQ_TARGET_AVX2 inline __m256i CountBytesAvx2(__m256i words) {
  const __m256i table = _mm256_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4,  //
                                         0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4);
  const __m256i low = _mm256_set1_epi8(0x0F);
  return _mm256_add_epi8(
      _mm256_shuffle_epi8(table, _mm256_and_si256(words, low)),
      _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi64(words, 4), low)));
}

/// The sum of the four words.
[[gnu::always_inline]] ZQ_TARGET_AVX2 inline std::uint32_t SumAvx2(__m256i words) {
  const __m128i half =
      _mm_add_epi64(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
  return static_cast<std::uint32_t>(
      _mm_cvtsi128_si32(_mm_add_epi64(half, _mm_unpackhi_epi64(half, half))));
}

constexpr std::size_t wordsPerByteSum = 4 * 31;  // 31 additions of at most 8 fit a byte

ZQ_TARGET_AVX2 void ScanAvx2(const std::uint64_t* query, const std::uint64_t* words,
                             std::uintptr_t ahead, std::size_t stride, std::size_t n,
                             std::size_t numWords, std::uint32_t* counts) {
  for (std::size_t i = 0; i < n; ++i, words += stride, ahead += 8 * stride) {
    __m256i sum = _mm256_setzero_si256();
    for (std::size_t begin = 0; begin < numWords; begin += wordsPerByteSum) {
      const std::size_t end = std::min(numWords, begin + wordsPerByteSum);
      __m256i bytes = _mm256_setzero_si256();
      for (std::size_t w = begin; w < end; w += 4) {
        if (w % 8 == 0) ZQPrefetch(ahead + 8 * w);
        const __m256i common =
            _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(query + w)),
                             _mm256_loadu_si256(reinterpret_cast<const __m256i*>(words + w)));
        bytes = _mm256_add_epi8(bytes, CountBytesAvx2(common));
      }
      sum = _mm256_add_epi64(sum, _mm256_sad_epu8(bytes, _mm256_setzero_si256()));
    }
    counts[i] = SumAvx2(sum);
  }
}

ZQ_TARGET_AVX2 ZQBitTerms CountsAvx2(const std::uint64_t* a, const std::uint64_t* b,
                                     std::size_t numWords) {
  const __m256i zero = _mm256_setzero_si256();
  const std::size_t whole = numWords - numWords % 4;
  __m256i sumA = zero;
  __m256i sumB = zero;
  __m256i sumBoth = zero;
  for (std::size_t begin = 0; begin < whole; begin += wordsPerByteSum) {
    const std::size_t end = std::min(whole, begin + wordsPerByteSum);
    __m256i bytesA = zero;
    __m256i bytesB = zero;
    __m256i bytesBoth = zero;
    for (std::size_t w = begin; w < end; w += 4) {
      const __m256i wordsA = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + w));
      const __m256i wordsB = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + w));
      bytesA = _mm256_add_epi8(bytesA, CountBytesAvx2(wordsA));
      bytesB = _mm256_add_epi8(bytesB, CountBytesAvx2(wordsB));
      bytesBoth = _mm256_add_epi8(bytesBoth, CountBytesAvx2(_mm256_and_si256(wordsA, wordsB)));
    }
    sumA = _mm256_add_epi64(sumA, _mm256_sad_epu8(bytesA, zero));
    sumB = _mm256_add_epi64(sumB, _mm256_sad_epu8(bytesB, zero));
    sumBoth = _mm256_add_epi64(sumBoth, _mm256_sad_epu8(bytesBoth, zero));
  }
  ZQBitTerms terms{SumAvx2(sumA), SumAvx2(sumB), SumAvx2(sumBoth)};
  for (std::size_t w = whole; w < numWords; ++w) terms.Add(a[w], b[w]);
  return terms;
}

// AVX-512 with VPOPCNTDQ, which counts eight words at once.

/// The first `left` of eight lanes.
[[gnu::always_inline]] inline __mmask8 LanesLeft(std::size_t left) {
  return static_cast<__mmask8>(left < 8 ? (1U << left) - 1 : 0xFF);
}

/// The common bits of two fingerprints in eight partial sums. The processor's own prefetchers work
/// best with a single load in a plain loop.
[[gnu::always_inline]] ZQ_TARGET_VPOPCNTDQ inline __m512i CountAvx512(const std::uint64_t* query,
                                                                      const std::uint64_t* words,
                                                                      std::uintptr_t ahead,
                                                                      std::size_t numWords) {
  __m512i sum = _mm512_setzero_si512();
  std::size_t w = 0;
#pragma GCC unroll 1
  for (; w + 8 <= numWords; w += 8) {
    ZQPrefetch(ahead + 8 * w);
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

ZQ_TARGET_VPOPCNTDQ void ScanAvx512(const std::uint64_t* query, const std::uint64_t* words,
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

ZQ_TARGET_VPOPCNTDQ ZQBitTerms CountsAvx512(const std::uint64_t* a, const std::uint64_t* b,
                                            std::size_t numWords) {
  const __m512i zero = _mm512_setzero_si512();
  __m512i sumA = zero;
  __m512i sumB = zero;
  __m512i sumBoth = zero;
  const auto add = [&](__m512i wordsA, __m512i wordsB) ZQ_TARGET_VPOPCNTDQ {
    sumA = _mm512_add_epi64(sumA, _mm512_popcnt_epi64(wordsA));
    sumB = _mm512_add_epi64(sumB, _mm512_popcnt_epi64(wordsB));
    sumBoth = _mm512_add_epi64(sumBoth, _mm512_popcnt_epi64(_mm512_and_si512(wordsA, wordsB)));
  };
  std::size_t w = 0;
#pragma GCC unroll 4
  for (; w + 8 <= numWords; w += 8) add(_mm512_loadu_si512(a + w), _mm512_loadu_si512(b + w));
  if (w < numWords) {
    const __mmask8 left = LanesLeft(numWords - w);
    add(_mm512_maskz_loadu_epi64(left, a + w), _mm512_maskz_loadu_epi64(left, b + w));
  }
  const __m512i own =
      _mm512_add_epi64(_mm512_unpacklo_epi64(sumA, sumB), _mm512_unpackhi_epi64(sumA, sumB));
  const __m512i both =
      _mm512_add_epi64(_mm512_unpacklo_epi64(sumBoth, zero), _mm512_unpackhi_epi64(sumBoth, zero));
  const __m512i halves = FoldAvx512(own, both);
  const __m128i totals = _mm256_castsi256_si128(_mm512_cvtepi64_epi32(FoldAvx512(halves, halves)));
  return {static_cast<std::uint32_t>(_mm_extract_epi32(totals, 0)),
          static_cast<std::uint32_t>(_mm_extract_epi32(totals, 1)),
          static_cast<std::uint32_t>(_mm_extract_epi32(totals, 2))};
}

/// Transposes eight words of eight records at a time.
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
      // Words at the same place of two records, of four, then of all eight become adjacent.
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
      if (left == 4) break;  // only half a vector of words was left
#pragma GCC unroll 4
      for (std::size_t k = 0; k < 4; ++k) {
        _mm512_store_si512(out + (4 + k) * zqBlockRecords,
                           _mm512_shuffle_i64x2(four[k], four[4 + k], 0xDD));
      }
    }
  }
}

/// Eight records per vector, so that no sums across lanes are needed. The bound is the AND, count
/// and add of each vector, three operations on two ports.
ZQ_TARGET_VPOPCNTDQ void RowAvx512(const std::uint64_t* row, const std::uint64_t* packed,
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

template <std::size_t measure>
ZQ_TARGET_AVX512 bool ScoresAvx512(const ZQScoreTerms& terms, double q, const double* r,
                                   const std::uint32_t* counts, std::size_t n, double* scores) {
  return ZQScoreLoop<measure>(terms, q, r, counts, n, scores);
}

/// A division takes as long as everything else here together. So values are multiplied by the
/// inverse of the bin's size, and divided only if the product is so near to a bin's edge that
/// rounding could put it on the wrong side.
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

template <std::size_t... measures>
constexpr auto ScoresOf(std::index_sequence<measures...>) {
  return std::array<ZQScanVariant::ScoreLoop, sizeof...(measures)>{ScoresAvx512<measures>...};
}
constexpr auto scoresAvx512 = ScoresOf(std::make_index_sequence<zqMeasures.size()>());

}  // namespace

constinit const ZQScanVariant zqScanAvx512Vpopcntdq = {
    ScanAvx512, PackAvx512,     RowAvx512,         scoresAvx512.data(),
    BinsAvx512, ReachingAvx512, ReachingOwnAvx512, CountsAvx512};
constinit const ZQScanVariant zqScanAvx512 = {
    ScanAvx2,   nullptr,        nullptr,           scoresAvx512.data(),
    BinsAvx512, ReachingAvx512, ReachingOwnAvx512, CountsAvx2};
constinit const ZQScanVariant zqScanAvx2 = ZQPortableBut(ScanAvx2, CountsAvx2);
constinit const ZQScanVariant zqScanPopcnt = ZQPortableBut(ScanPopcnt, CountsPopcnt);

ZQ_TARGET_POPCNT unsigned long ZQPopCountPOPCNT(const unsigned long* words, unsigned long count) {
  if (!ZQ_ASSERT(count % zqWordsPerUnit == 0)) return 0;
  return CountPopcnt(words, words, count);
}

}  // namespace ZQKorvex

#endif
