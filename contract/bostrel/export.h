#pragma once

/// Exports a symbol from `libkorvex.so`; all others are hidden.
#define ZQ_EXPORT __attribute__((visibility("default")))
/// Hides a class nested in an exported one.
#define ZQ_LOCAL __attribute__((visibility("hidden")))
