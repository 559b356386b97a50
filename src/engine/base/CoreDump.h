#pragma once

namespace slyver {

/// While an object lives, a crash of the program leaves no copy of its memory on the disk, nor may
/// other programs of the same user look into it. For whoever holds secrets.
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
