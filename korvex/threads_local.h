#pragma once

/// The only place where the library starts threads.

#include <functional>
#include <thread>

namespace ZQKorvex {

/// Runs `work` on `numThreads` threads, or on the calling one for 1, and returns once all have
/// ended. `work` takes pieces of a common task until none are left, so any number of threads
/// completes the task: if fewer can be started, those do it; if none, the calling thread does. The
/// first exception of a thread is rethrown once all have ended.
void ZQRunOnThreads(unsigned int numThreads, const std::function<void()>& work);

/// Starts a thread, or throws if none can be started.
using ZQThreadStarter = std::thread (*)(const std::function<void()>& work);
/// For tests: the function that starts the threads of all later runs. Null restores the default.
void ZQSetThreadStarter(ZQThreadStarter starter);

}  // namespace ZQKorvex
