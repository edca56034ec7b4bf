#pragma once

/// For x86 files only: the target attributes of functions, as in the rows of processor_x86.cpp.

#ifdef __x86_64__

#include <immintrin.h>

#ifdef __clang__
#define ZQ_WIDE_VECTORS ""
#else
// Without this, GCC vectorizes loops at half the width.
#define ZQ_WIDE_VECTORS ",prefer-vector-width=512"
// GCC 12 reports the undefined operands of its own intrinsics as uninitialized variables.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define ZQ_TARGET_POPCNT __attribute__((target("popcnt")))
#define ZQ_TARGET_AVX2 __attribute__((target("avx2,popcnt")))
#define ZQ_TARGET_AVX512 __attribute__((target("avx512f,avx512dq,avx512vl,popcnt" ZQ_WIDE_VECTORS)))
#define ZQ_TARGET_VPOPCNTDQ \
  __attribute__((target("avx512f,avx512dq,avx512vl,avx512vpopcntdq,popcnt" ZQ_WIDE_VECTORS)))

#endif
