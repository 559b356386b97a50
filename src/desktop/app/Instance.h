#pragma once

#include <memory>

namespace slyver {

/// Counts this process among the user's running instances while the object lives. A killed process
/// does not count.
class Instance {
 public:
  Instance();
  ~Instance();
  Instance(const Instance&) = delete;
  Instance& operator=(const Instance&) = delete;

  /// True if another instance was running when this one started. False if unknown.
  bool AnotherRuns() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace slyver
