#include "engine/base/Workers.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <future>
#include <system_error>
#include <utility>
#include <vector>

#include "engine/base/FileError.h"

namespace slyver {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds tickInterval{50};

}  // namespace

void RunOnThreads(unsigned count,
                  const std::function<void(unsigned worker, const Tick& between)>& work,
                  const Tick& tick) {
  std::vector<std::future<void>> workers;
  workers.reserve(count);
  try {
    while (workers.size() < count)
      workers.push_back(
          std::async(std::launch::async, work, static_cast<unsigned>(workers.size()), Tick([] {})));
  } catch (const std::system_error&) {
    // The system starts no more.
  }
  if (workers.empty()) {
    Clock::time_point next = Clock::now() + tickInterval;
    work(0, [&] {
      if (Clock::now() < next) return;
      tick();
      next = Clock::now() + tickInterval;
    });
  }
  for (const std::future<void>& worker : workers)
    while (worker.wait_for(tickInterval) != std::future_status::ready) tick();
  for (std::future<void>& worker : workers) worker.get();
}

void ForEachNumber(std::size_t end, unsigned count,
                   const std::function<void(std::size_t number, const Tick& between)>& each,
                   const std::function<bool()>& goOn) {
  if (!goOn()) throw Cancelled{};
  std::atomic<std::size_t> next = 0;
  std::atomic<bool> stop = false;
  // Each worker's failure, with its number.
  std::vector<std::pair<std::size_t, std::exception_ptr>> failures(std::max(count, 1U),
                                                                   {SIZE_MAX, nullptr});
  const auto work = [&](unsigned worker, const Tick& between) {
    std::size_t number = 0;
    const auto goOnOrStop = [&] {
      between();
      if (stop) throw Cancelled{};
    };
    try {
      while ((number = next++) < end) {
        goOnOrStop();
        each(number, goOnOrStop);
      }
    } catch (...) {
      failures[worker] = {number, std::current_exception()};
      next = end;
    }
  };
  RunOnThreads(count, work, [&] { stop = stop || !goOn(); });
  const auto first =
      std::min_element(failures.begin(), failures.end(),
                       [](const auto& one, const auto& other) { return one.first < other.first; });
  if (first->second) std::rethrow_exception(first->second);
  if (stop) throw Cancelled{};
}

}  // namespace slyver
