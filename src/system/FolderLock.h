#pragma once

#include <filesystem>
#include <memory>

#include "system/Ui.h"

namespace slyver {

/// Holds a folder for one job, so that a second program working with the same fixed names in it
/// waits and cannot mix its files in. The lock goes with the object, or with the process.
class FolderLock {
 public:
  /// Waits for the lock of the folder, which must exist. Throws FileError when another program has
  /// held it for half a minute, and Cancelled when the user stops the waiting. A file system
  /// without locks grants it.
  FolderLock(const std::filesystem::path& folder, Ui& ui);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace slyver
