#pragma once

/// A task shared by threads.

#include <functional>

#include "contract/bostrel/export.h"

namespace ZQKorvex {

/// Runs `work` on `numThreads` threads, or on the calling one for 1, and returns once all have
/// ended. `work` takes pieces of a common task until none are left, for instance by an atomic
/// counter, so any number of threads completes the task: if fewer can be started, those do it; if
/// none, the calling thread does. The first exception that `work` throws on a thread is rethrown
/// once all have ended.
ZQ_EXPORT void ZQRunOnThreads(unsigned int numThreads, const std::function<void()>& work);

}  // namespace ZQKorvex
