#pragma once

/// Threads of the program.

#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "korvex/fpdatabaseoptions.h"

namespace KorvexProgram {

/// Runs `work(next)` on that many threads (0: all processors). `next()` returns 0, 1, 2 and so on,
/// each number to one thread. Once all have ended, throws the first exception again.
template <class Work>
void OnThreads(unsigned int threads, Work work) {
  ZQKorvex::ZQFPDatabaseOptions options;
  options.SetNumProcessors(threads);
  std::atomic<std::size_t> counter = 0;
  std::exception_ptr failure;
  std::mutex mutex;
  const auto run = [&] {
    try {
      work([&counter] { return counter++; });
    } catch (...) {
      const std::lock_guard<std::mutex> lock(mutex);
      if (!failure) failure = std::current_exception();
    }
  };
  std::vector<std::thread> others;
  for (unsigned int i = 1; i < options.GetNumProcessors(); ++i) others.emplace_back(run);
  run();
  for (std::thread& other : others) other.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace KorvexProgram
