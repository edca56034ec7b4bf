#pragma once

/// Threads of the program.

#include <atomic>
#include <cstddef>
#include <future>
#include <system_error>
#include <vector>

namespace KorvexProgram {

/// Runs `work(next)` on that many threads, on fewer if the system has no more. `next()` returns 0,
/// 1, 2 and so on, each number to one thread. An exception ends one thread's work; it is thrown
/// again when all threads have ended.
template <class Work>
void OnThreads(unsigned int count, const Work& work) {
  std::atomic<std::size_t> counter = 0;
  const auto run = [&] { work([&counter] { return counter++; }); };
  std::vector<std::future<void>> others;  // their destructors wait
  try {
    while (others.size() + 1 < count) others.push_back(std::async(std::launch::async, run));
  } catch (const std::system_error&) {
  }
  run();
  for (std::future<void>& other : others) other.get();
}

}  // namespace KorvexProgram
