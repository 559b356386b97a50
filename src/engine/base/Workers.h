#pragma once

#include <cstddef>
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

/// Calls `each` for every number from 0 to `end` - 1 on at most `count` threads, each number once
/// and in ascending order. `goOn` is asked at the beginning and about twenty times a second on
/// the calling thread; when it says no, Cancelled is thrown, by `between` too, which `each` calls
/// between units of its work. What `each` throws ends the rest and reaches the caller, that of the
/// lowest number first.
void ForEachNumber(std::size_t end, unsigned count,
                   const std::function<void(std::size_t number, const Tick& between)>& each,
                   const std::function<bool()>& goOn);

}  // namespace slyver
