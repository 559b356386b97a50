#pragma once

#include <memory>

namespace slyver {

/// This run of the program among those of the same user. The others know of it as long as the
/// object lives, also when the process is killed.
class Instance {
 public:
  Instance();
  ~Instance();
  Instance(const Instance&) = delete;
  Instance& operator=(const Instance&) = delete;

  /// Whether another instance was running when this one started. False where that cannot be told.
  bool AnotherRuns() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace slyver
