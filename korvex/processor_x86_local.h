#pragma once

/// For files of x86 alone: the instructions that a function is compiled for, as in the rows of
/// processor_x86.cpp.

#ifdef __x86_64__

#include <immintrin.h>

#ifdef __clang__
#define ZQ_WIDE_VECTORS ""
#else
// Without, GCC makes loops of half the width.
#define ZQ_WIDE_VECTORS ",prefer-vector-width=512"
// GCC 12 takes the undefined operands of its own intrinsics for uninitialised variables.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define ZQ_TARGET_POPCNT __attribute__((target("popcnt")))
#define ZQ_TARGET_AVX2 __attribute__((target("avx2,popcnt")))
#define ZQ_TARGET_AVX512 __attribute__((target("avx512f,avx512dq,avx512vl,popcnt" ZQ_WIDE_VECTORS)))
#define ZQ_TARGET_VPOPCNTDQ \
  __attribute__((target("avx512f,avx512dq,avx512vl,avx512vpopcntdq,popcnt" ZQ_WIDE_VECTORS)))

#endif
