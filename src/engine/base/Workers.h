#pragma once

#include <cstddef>
#include <functional>

namespace slyver {

/// Called about twenty times a second, on the waiting thread.
using Tick = std::function<void()>;

/// Runs `work` on up to `count` threads, each with its number from 0, and waits for all of them,
/// calling `tick` meanwhile, which must not throw. If the system starts fewer threads, those do all
/// the work; if none, `work` runs on this one as number 0. So `work` must call `between` between
/// units of its work, which then calls `tick`. Rethrows an exception of `work` when all have ended.
void RunOnThreads(unsigned count,
                  const std::function<void(unsigned worker, const Tick& between)>& work,
                  const Tick& tick);

/// Calls `each` for every number below `end` on up to `count` threads, in ascending order. Calls
/// `goOn` on this thread, first and about twenty times a second. Throws Cancelled if `goOn` returns
/// false. `each` must call `between` between units of its work, which throws Cancelled then. The
/// first exception of `each` stops the rest; rethrows that of the lowest number.
void ForEachNumber(std::size_t end, unsigned count,
                   const std::function<void(std::size_t number, const Tick& between)>& each,
                   const std::function<bool()>& goOn);

}  // namespace slyver
