// For processors without a file of their own.

#ifndef __x86_64__

#include <cmath>

#include "korvex/fpfast_variants_local.h"
#include "korvex/measuresim.h"
#include "korvex/processor_local.h"

namespace ZQKorvex {

namespace {

constexpr ZQProcessor table[] = {
    {"portable", [] { return true; }, &zqScanPortable, nullptr, 1},
};

}  // namespace

std::span<const ZQProcessor> ZQProcessorTable() { return table; }

float ZQReciprocalRootEstimate(float x) { return 1.0F / std::sqrt(x); }

unsigned long ZQPopCountPOPCNT(const unsigned long* words, unsigned long count) {
  return ZQPopCountBitCount(words, count);
}

}  // namespace ZQKorvex

#endif
