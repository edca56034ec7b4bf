#pragma once

/// Calls that take long: on a thread of their own, while Python's thread heeds Ctrl-C and shows
/// progress.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <type_traits>

#include "python/reports_local.h"

namespace KorvexPython {

/// Runs `call(tracer)`, which returns soon after an observer of the tracer ends it, and returns its
/// result. `progress`, unless None, is called with count and total, 0 if unknown, several times a
/// second. Throws what a signal handler, as for Ctrl-C, or `progress` throws, once the call has
/// ended. Requires the GIL, which is released meanwhile.
template <class Call>
auto RunLong(Reports& reports, const py::object& progress, const Call& call) {
  constexpr std::chrono::milliseconds interval{100};
  const Running running;
  std::atomic<std::uint64_t> count = 0;
  std::atomic<std::uint64_t> total = 0;
  std::atomic<bool> isStopped = false;
  const ZQDots tracer([&](std::uint64_t newCount, std::uint64_t newTotal) {
    count = newCount;
    total = newTotal;
    return !isStopped && !IsExiting();
  });
  auto result = std::async(std::launch::async, [&] {
    const Reports::OnThread onThread(reports);
    return call(tracer);
  });
  const auto isDone = [&] {
    const py::gil_scoped_release release;
    return result.wait_for(interval) == std::future_status::ready;
  };
  const auto show = [&] {
    if (!progress.is_none()) progress(count.load(), total.load());
  };
  try {
    while (!isDone()) {
      CheckSignals();
      show();
    }
    show();
  } catch (...) {
    isStopped = true;
    const py::gil_scoped_release release;
    result.wait();
    throw;
  }
  return result.get();
}

}  // namespace KorvexPython
