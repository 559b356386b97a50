#include "engine/base/Workers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "engine/base/FileError.h"

namespace slyver {
namespace {

TEST(ForEachNumber, HearsAStopThatTheWorkItselfDoesNotAskFor) {
  int done = 0;
  const auto count = [&](std::size_t, const Tick&) { ++done; };
  EXPECT_THROW(ForEachNumber(1, 1, count, [] { return false; }), Cancelled);
  EXPECT_EQ(done, 0) << "stopped before the first";

  std::atomic<int> asked = 0;
  const auto untilStopped = [&](std::size_t, const Tick&) {
    while (asked < 2) std::this_thread::yield();
    ++done;
  };
  EXPECT_THROW(ForEachNumber(1, 1, untilStopped, [&] { return ++asked == 1; }), Cancelled);
  EXPECT_EQ(done, 1) << "stopped in the last";
}

}  // namespace
}  // namespace slyver
