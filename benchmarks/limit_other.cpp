#ifndef __x86_64__

#include <bit>

#include "benchmarks/bench.h"

namespace bench {

std::uint64_t CountCommon(const std::uint64_t* query, const std::uint64_t* words,
                          std::size_t count) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < count; ++i) {
    sum += static_cast<std::uint64_t>(std::popcount(query[i % 4] & words[i]));
  }
  return sum;
}

}  // namespace bench

#endif
