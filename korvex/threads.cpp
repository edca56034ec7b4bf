#include "korvex/threads_local.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <vector>

#include "korvex/siblings.h"

namespace ZQKorvex {

namespace {

std::thread StartThread(const std::function<void()>& work) { return std::thread(std::cref(work)); }

std::atomic<ZQThreadStarter> startThread = StartThread;

}  // namespace

void ZQSetThreadStarter(ZQThreadStarter starter) { startThread = starter ? starter : StartThread; }

void ZQRunOnThreads(unsigned int numThreads, const std::function<void()>& work) {
  if (numThreads == 1) {
    work();
    return;
  }
  std::mutex lock;
  std::exception_ptr failure;
  void* const context = ZQThrow.GetContext();
  const std::function<void()> guarded = [&] {
    ZQThrow.SetContext(context);
    try {
      work();
    } catch (...) {
      const std::lock_guard guard(lock);
      if (!failure) failure = std::current_exception();
    }
  };
  std::vector<std::thread> threads;
  try {
    threads.reserve(numThreads);
    while (threads.size() < numThreads) threads.push_back(startThread.load()(guarded));
  } catch (const std::exception&) {
    // No more threads can be started, or memory ran out.
  }
  if (threads.empty()) guarded();
  for (std::thread& thread : threads) thread.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace ZQKorvex
