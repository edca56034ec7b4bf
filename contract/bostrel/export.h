#pragma once

/// Marks what callers of `libkorvex.so` may use; everything else is hidden.
#define ZQ_EXPORT __attribute__((visibility("default")))
/// Hides a class inside one that is exported.
#define ZQ_LOCAL __attribute__((visibility("hidden")))
