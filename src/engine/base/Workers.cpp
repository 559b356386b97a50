#include "engine/base/Workers.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "engine/base/FileError.h"
#include "engine/base/Mutex.h"

namespace slyver {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds tickInterval{50};

/// Counts the threads still at work.
class Running {
 public:
  void Begin() {
    const Lock lock(mutex_);
    ++count_;
  }
  void End() {
    const Lock lock(mutex_);
    if (--count_ == 0) none_.notify_one();
  }
  /// Waits until no thread is left, or until `end`. True if none is left.
  bool NoneUntil(Clock::time_point end) {
    const Lock lock(mutex_);
    while (count_ > 0)
      if (none_.wait_until(mutex_, end) == std::cv_status::timeout) return count_ == 0;
    return true;
  }

 private:
  Mutex mutex_;
  std::condition_variable_any none_;
  unsigned count_ GUARDED_BY(mutex_) = 0;
};

/// Keeps the exception thrown for the lowest number.
class FirstFailure {
 public:
  void Note(std::size_t number, std::exception_ptr failure) {
    const Lock lock(mutex_);
    if (failure_ && number_ < number) return;
    number_ = number;
    failure_ = std::move(failure);
  }
  void Rethrow() {
    const Lock lock(mutex_);
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  Mutex mutex_;
  std::size_t number_ GUARDED_BY(mutex_) = 0;
  std::exception_ptr failure_ GUARDED_BY(mutex_);
};

}  // namespace

void RunOnThreads(unsigned count, const std::function<void(const Tick& between)>& work,
                  const Tick& tick) {
  Running running;
  std::vector<std::jthread> threads;
  threads.reserve(count);
  while (threads.size() < count) {
    running.Begin();
    try {
      threads.emplace_back([&] {
        work([] {});
        running.End();
      });
    } catch (const std::system_error&) {
      running.End();
      break;
    }
  }
  if (!threads.empty()) {
    while (!running.NoneUntil(Clock::now() + tickInterval)) tick();
    return;
  }
  Clock::time_point next = Clock::now() + tickInterval;
  work([&] {
    if (Clock::now() < next) return;
    tick();
    next = Clock::now() + tickInterval;
  });
}

void ForEachNumber(std::size_t end, unsigned count,
                   const std::function<void(std::size_t number, const Tick& between)>& each,
                   const std::function<bool()>& goOn) {
  if (!goOn()) throw Cancelled{};
  std::atomic<std::size_t> next = 0;
  std::atomic<bool> stop = false;
  FirstFailure failure;
  const auto work = [&](const Tick& between) {
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
      failure.Note(number, std::current_exception());
      next = end;
    }
  };
  RunOnThreads(count, work, [&] { stop = stop || !goOn(); });
  failure.Rethrow();
  if (stop) throw Cancelled{};
}

}  // namespace slyver
