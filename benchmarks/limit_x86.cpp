#ifdef __x86_64__

#include <immintrin.h>

#include "benchmarks/bench.h"

namespace bench {

namespace {

__attribute__((target("avx512f,avx512vpopcntdq"))) std::uint64_t LimitAvx512(
    const std::uint64_t* query, const std::uint64_t* words, std::size_t count) {
  // Records aren't multiples of a vector; the same eight query words are used for all of them here.
  const __m512i q = _mm512_loadu_si512(query);
  __m512i a = _mm512_setzero_si512();
  __m512i b = _mm512_setzero_si512();
  for (std::size_t i = 0; i + 16 <= count; i += 16) {
    const __m512i x = _mm512_and_si512(q, _mm512_loadu_si512(words + i));
    const __m512i y = _mm512_and_si512(q, _mm512_loadu_si512(words + i + 8));
    a = _mm512_add_epi64(a, _mm512_popcnt_epi64(x));
    b = _mm512_add_epi64(b, _mm512_popcnt_epi64(y));
  }
  alignas(64) std::uint64_t sums[8];
  _mm512_store_si512(sums, _mm512_add_epi64(a, b));
  std::uint64_t sum = 0;
  for (const std::uint64_t lane : sums) sum += lane;
  return sum;
}

__attribute__((target("popcnt"))) std::uint64_t LimitPopcnt(const std::uint64_t* query,
                                                            const std::uint64_t* words,
                                                            std::size_t count) {
  std::uint64_t sums[4] = {};
  for (std::size_t i = 0; i + 4 <= count; i += 4) {
    for (std::size_t k = 0; k < 4; ++k) {
      sums[k] += static_cast<std::uint64_t>(_mm_popcnt_u64(query[k] & words[i + k]));
    }
  }
  return sums[0] + sums[1] + sums[2] + sums[3];
}

}  // namespace

std::uint64_t CountCommon(const std::uint64_t* query, const std::uint64_t* words,
                          std::size_t count) {
  static const bool wide =
      __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vpopcntdq");
  return (wide ? LimitAvx512 : LimitPopcnt)(query, words, count);
}

}  // namespace bench

#endif
