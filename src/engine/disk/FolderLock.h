#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

namespace slyver {

/// The lock of a work folder: a locked file in it. Distinguishes a running job's folder, a killed
/// job's leftover and a folder of the user's.
class FolderLock {
 public:
  static constexpr std::string_view fileName = "slyver.lock";

  enum class Answer {
    Taken,     ///< The lock is this object's.
    Missing,   ///< The folder or the lock's file is missing.
    Busy,      ///< Another job holds it, or it cannot be opened.
    NoFolder,  ///< A file or a link.
  };

  FolderLock();
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  /// Creates the lock in a new folder. Missing if another job has deleted the folder as a leftover,
  /// or another user has replaced it. Throws FileError.
  Answer Make(const std::filesystem::path& folder);

  /// Takes an existing lock without waiting.
  Answer Take(const std::filesystem::path& folder);

  /// Deletes the lock's file and releases the lock.
  void Remove();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace slyver
