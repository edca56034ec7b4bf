#ifdef __x86_64__

#include <xmmintrin.h>

#include "korvex/canonicalset_local.h"
#include "korvex/fpfast_variants_local.h"
#include "korvex/processor_local.h"

namespace ZQKorvex {

namespace {

// Each row also needs the instructions of the row below it.
bool RunsAlways() { return true; }
bool RunsPopcnt() { return __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt"); }
bool RunsAvx2() { return RunsPopcnt() && __builtin_cpu_supports("avx2"); }
bool RunsAvx512() {
  return RunsAvx2() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512vl");
}
bool RunsAvx512Vpopcntdq() { return RunsAvx512() && __builtin_cpu_supports("avx512vpopcntdq"); }

constexpr ZQProcessor table[] = {
    {"AVX-512-VPOPCNTDQ", RunsAvx512Vpopcntdq, &zqScanAvx512Vpopcntdq, ZQNameSmallSetAvx512, 2},
    {"AVX-512", RunsAvx512, &zqScanAvx512, ZQNameSmallSetAvx512, 2},
    {"AVX2", RunsAvx2, &zqScanAvx2, ZQNameSmallSetAvx2, 2},
    {"POPCNT", RunsPopcnt, &zqScanPopcnt, nullptr, 2},
    {"portable", RunsAlways, &zqScanPortable, nullptr, 1},
};

}  // namespace

std::span<const ZQProcessor> ZQProcessorTable() { return table; }

float ZQReciprocalRootEstimate(float x) { return _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(x))); }

}  // namespace ZQKorvex

#endif
