#pragma once

/// The one place where the library starts threads.

#include <functional>
#include <thread>

namespace ZQKorvex {

/// Runs `work` on `numThreads` threads, or on the calling one for 1, and returns once all have
/// ended. `work` takes pieces of a common task until none are left, so any number of threads
/// completes the task: where fewer can be started, those do it, and without any the calling thread
/// does. The first exception of a thread is rethrown once all have ended.
void ZQRunOnThreads(unsigned int numThreads, const std::function<void()>& work);

/// Starts a thread, or throws where no more can be had.
using ZQThreadStarter = std::thread (*)(const std::function<void()>& work);
/// For tests: starts the threads of all runs from now on. Null restores the standard way.
void ZQSetThreadStarter(ZQThreadStarter starter);

}  // namespace ZQKorvex
