#pragma once

#include <functional>

namespace slyver {

/// Called about twenty times a second, on the thread that waits.
using Tick = std::function<void()>;

/// Runs `work` on at most `count` threads at once and returns when all of them are done; until
/// then this thread calls `tick`. Where the system gives no thread, `work` runs on this one, and
/// has to call what it is handed between units of its work, for then nobody else calls `tick`.
/// Neither may throw.
void RunOnThreads(unsigned count, const std::function<void(const Tick& between)>& work,
                  const Tick& tick);

}  // namespace slyver
