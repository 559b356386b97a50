#pragma once

namespace slyver {

/// Keeps secrets in memory out of core dumps and away from the user's other programs, while it
/// lives.
class NoCoreDump {
 public:
  NoCoreDump();
  ~NoCoreDump();
  NoCoreDump(const NoCoreDump&) = delete;
  NoCoreDump& operator=(const NoCoreDump&) = delete;

 private:
  int before_;
};

}  // namespace slyver
