#pragma once

#include <chrono>
#include <filesystem>
#include <memory>

#include "engine/system/Ui.h"

namespace slyver {

/// Holds a folder for one job, so that a second program working with the same fixed names in it
/// waits and cannot mix its files in. The lock goes with the object, or with the process.
class FolderLock {
 public:
  /// Waits for the lock of the folder, which must exist. Throws FileError when another program has
  /// held it for as long as `patience`, and Cancelled when the user stops the waiting. A file
  /// system without locks grants it.
  FolderLock(const std::filesystem::path& folder, Ui& ui,
             std::chrono::seconds patience = std::chrono::seconds(30));
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace slyver
