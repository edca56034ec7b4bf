#pragma once

/// The only place where the library starts threads (`ZQRunOnThreads`).

#include <thread>

#include "korvex/threads.h"

namespace ZQKorvex {

/// Starts a thread, or throws if none can be started.
using ZQThreadStarter = std::thread (*)(const std::function<void()>& work);
/// For tests: the function that starts the threads of all later runs. Null restores the default.
void ZQSetThreadStarter(ZQThreadStarter starter);

}  // namespace ZQKorvex
