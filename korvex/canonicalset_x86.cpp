#ifdef __x86_64__

#include <algorithm>
#include <bit>

#include "korvex/canonicalset_local.h"
#include "korvex/processor_x86_local.h"

namespace ZQKorvex {

// AVX-512: 16 atoms per register.

namespace {

[[gnu::always_inline]] ZQ_TARGET_AVX512 inline void Order(__m512i& a, __m512i& b) {
  const __m512i lesser = _mm512_min_epu32(a, b);
  b = _mm512_max_epu32(a, b);
  a = lesser;
}

}  // namespace

ZQ_TARGET_AVX512 unsigned int ZQNameSmallSetAvx512(const ZQSmallSet& set, std::size_t count) {
  const __m512i nothing = _mm512_set1_epi32(-1);  // sorts after every term
  const std::size_t halves = count > 16 ? 2 : 1;
  __m512i values[2] = {_mm512_load_si512(set.values), _mm512_load_si512(set.values + 16)};
  __mmask16 has[2][zqSmallSetDegree] = {};
  std::size_t degree = 0;  // the largest
  for (std::size_t h = 0; h < halves; ++h) {
    const __m512i degrees = _mm512_load_si512(set.degrees + 16 * h);
    for (std::size_t k = 0; k < zqSmallSetDegree; ++k) {
      has[h][k] = _mm512_cmpgt_epu32_mask(degrees, _mm512_set1_epi32(static_cast<int>(k)));
      if (has[h][k] != 0) degree = std::max(degree, k + 1);
    }
  }
  for (std::size_t pass = count / 2; pass != 0; --pass) {
    __m512i next[2] = {values[0], values[1]};
    for (std::size_t h = 0; h < halves; ++h) {
      __m512i terms[zqSmallSetDegree];
      for (std::size_t k = 0; k < zqSmallSetDegree; ++k) {
        if (k >= degree) {
          terms[k] = nothing;
          continue;
        }
        const __m512i columns = _mm512_load_si512(set.neighbours[k] + 16 * h);
        const __m512i bonds = _mm512_load_si512(set.bonds[k] + 16 * h);
        const __m512i neighbours = _mm512_permutex2var_epi32(values[0], columns, values[1]);
        terms[k] = _mm512_mask_add_epi32(nothing, has[h][k], neighbours, bonds);
      }
      Order(terms[0], terms[1]);
      if (degree > 2) {
        Order(terms[2], terms[3]);
        Order(terms[0], terms[2]);
        Order(terms[1], terms[3]);
        Order(terms[1], terms[2]);
      }
      for (std::size_t k = 0; k < degree; ++k) {
        const __m512i weight = _mm512_set1_epi32(static_cast<int>(zqWeightsOfTerms[k]));
        next[h] = _mm512_mask_add_epi32(next[h], has[h][k], next[h],
                                        _mm512_mullo_epi32(terms[k], weight));
      }
    }
    values[0] = next[0];
    values[1] = next[1];
  }
  // A value's rank is the number of values other than 0 before it. Empty columns are zeros, which
  // the sum excludes.
  alignas(64) std::uint32_t stored[zqSmallSetSize];
  _mm512_store_si512(stored, values[0]);
  _mm512_store_si512(stored + 16, values[1]);
  const __mmask16 some[2] = {_mm512_test_epi32_mask(values[0], values[0]),
                             _mm512_test_epi32_mask(values[1], values[1])};
  const std::span<const unsigned int> weights =
      ZQCanonicalWeights(zqSmallSetSize + zqFirstWeightOfSum);
  unsigned int sum = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const __m512i value = _mm512_set1_epi32(static_cast<int>(stored[i]));
    std::uint32_t less = 0;
    std::uint32_t equal = 0;
    for (std::size_t h = 0; h < 2; ++h) {
      less |= std::uint32_t{_mm512_mask_cmplt_epu32_mask(some[h], values[h], value)} << 16 * h;
      equal |= std::uint32_t{_mm512_cmpeq_epi32_mask(values[h], value)} << 16 * h;
    }
    const std::uint32_t before = less | (equal & ((std::uint32_t{1} << i) - 1));
    const auto rank = static_cast<std::size_t>(std::popcount(before));
    sum += stored[i] * weights[rank + zqFirstWeightOfSum];
  }
  return sum;
}

// AVX2: 8 atoms per register.

namespace {

[[gnu::always_inline]] ZQ_TARGET_AVX2 inline __m256i Load(const std::uint32_t* from) {
  return _mm256_load_si256(reinterpret_cast<const __m256i*>(from));
}

[[gnu::always_inline]] ZQ_TARGET_AVX2 inline void Order(__m256i& a, __m256i& b) {
  const __m256i lesser = _mm256_min_epu32(a, b);
  b = _mm256_max_epu32(a, b);
  a = lesser;
}

/// Lanes of `b` where the bit of the column is set, of `a` elsewhere.
[[gnu::always_inline]] ZQ_TARGET_AVX2 inline __m256i Choose(__m256i a, __m256i b, __m256i columns,
                                                            int bit) {
  const __m256i sign = _mm256_slli_epi32(columns, 31 - bit);
  return _mm256_castps_si256(
      _mm256_blendv_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), _mm256_castsi256_ps(sign)));
}

/// The values in the columns, from the set's registers. A gather would wait for the preceding
/// stores and takes several times as long on some processors.
template <std::size_t registers>
[[gnu::always_inline]] ZQ_TARGET_AVX2 inline __m256i Permute(const __m256i* values,
                                                             __m256i columns) {
  __m256i parts[4];
  for (std::size_t r = 0; r < registers; ++r) {
    parts[r] = _mm256_permutevar8x32_epi32(values[r], columns);
  }
  if constexpr (registers > 1) parts[0] = Choose(parts[0], parts[1], columns, 3);
  if constexpr (registers > 3) parts[2] = Choose(parts[2], parts[3], columns, 3);
  if constexpr (registers > 2) parts[0] = Choose(parts[0], parts[2], columns, 4);
  return parts[0];
}

template <std::size_t registers>
ZQ_TARGET_AVX2 unsigned int NameSmallSet(const ZQSmallSet& set, std::size_t count) {
  __m256i values[registers];
  __m256i lacks[registers][zqSmallSetDegree];    // all bits set if there is no such neighbour
  __m256i weights[registers][zqSmallSetDegree];  // 0 if there is none
  std::size_t degrees[registers] = {};           // the largest
  for (std::size_t r = 0; r < registers; ++r) {
    values[r] = Load(set.values + 8 * r);
    const __m256i own = Load(set.degrees + 8 * r);
    for (std::size_t k = 0; k < zqSmallSetDegree; ++k) {
      lacks[r][k] = _mm256_cmpgt_epi32(_mm256_set1_epi32(static_cast<int>(k) + 1), own);
      const __m256i weight = _mm256_set1_epi32(static_cast<int>(zqWeightsOfTerms[k]));
      weights[r][k] = _mm256_andnot_si256(lacks[r][k], weight);
      if (_mm256_movemask_epi8(lacks[r][k]) != -1) degrees[r] = k + 1;
    }
  }
  for (std::size_t pass = count / 2; pass != 0; --pass) {
    __m256i next[registers];
    for (std::size_t r = 0; r < registers; ++r) {
      const auto term = [&](std::size_t k) __attribute__((always_inline, target("avx2"))) {
        const __m256i neighbours = Permute<registers>(values, Load(set.neighbours[k] + 8 * r));
        const __m256i sum = _mm256_add_epi32(neighbours, Load(set.bonds[k] + 8 * r));
        return _mm256_or_si256(sum, lacks[r][k]);  // missing terms sort after all others
      };
      __m256i terms[zqSmallSetDegree] = {term(0), term(1)};
      Order(terms[0], terms[1]);
      if (degrees[r] > 2) {
        terms[2] = term(2);
        terms[3] = degrees[r] > 3 ? term(3) : _mm256_set1_epi32(-1);
        Order(terms[2], terms[3]);
        Order(terms[0], terms[2]);
        Order(terms[1], terms[3]);
        Order(terms[1], terms[2]);
      }
      next[r] = values[r];
      for (std::size_t k = 0; k < std::max<std::size_t>(degrees[r], 2); ++k) {
        next[r] = _mm256_add_epi32(next[r], _mm256_mullo_epi32(terms[k], weights[r][k]));
      }
    }
    std::copy_n(next, registers, values);
  }
  // A value's rank is the number of values other than 0 before it.
  const __m256i sign = _mm256_set1_epi32(static_cast<int>(0x80000000));  // compares are signed
  const __m256i lanes = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
  alignas(32) std::uint32_t stored[8 * registers];
  __m256i ranks[registers] = {};
  for (std::size_t r = 0; r < registers; ++r) {
    _mm256_store_si256(reinterpret_cast<__m256i*>(stored + 8 * r), values[r]);
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (stored[i] == 0) continue;
    const __m256i value = _mm256_set1_epi32(static_cast<int>(stored[i]));
    const __m256i place = _mm256_set1_epi32(static_cast<int>(i));
    for (std::size_t r = 0; r < registers; ++r) {
      const __m256i greater =
          _mm256_cmpgt_epi32(_mm256_xor_si256(values[r], sign), _mm256_xor_si256(value, sign));
      const __m256i places = _mm256_add_epi32(lanes, _mm256_set1_epi32(static_cast<int>(8 * r)));
      const __m256i later =
          _mm256_and_si256(_mm256_cmpeq_epi32(values[r], value), _mm256_cmpgt_epi32(places, place));
      ranks[r] = _mm256_sub_epi32(ranks[r], _mm256_or_si256(greater, later));
    }
  }
  const std::span<const unsigned int> weightsOfSum =
      ZQCanonicalWeights(zqSmallSetSize + zqFirstWeightOfSum);
  unsigned int sum = 0;
  alignas(32) std::uint32_t storedRanks[8 * registers];
  for (std::size_t r = 0; r < registers; ++r) {
    _mm256_store_si256(reinterpret_cast<__m256i*>(storedRanks + 8 * r), ranks[r]);
  }
  for (std::size_t i = 0; i < count; ++i) {
    sum += stored[i] * weightsOfSum[storedRanks[i] + zqFirstWeightOfSum];
  }
  return sum;
}

}  // namespace

unsigned int ZQNameSmallSetAvx2(const ZQSmallSet& set, std::size_t count) {
  constexpr unsigned int (*byRegisters[])(const ZQSmallSet&, std::size_t) = {
      NameSmallSet<1>, NameSmallSet<2>, NameSmallSet<3>, NameSmallSet<4>};
  return byRegisters[(count - 1) / 8](set, count);
}

}  // namespace ZQKorvex

#endif
