#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

namespace slyver {

/// The lock of a work folder: a file in it that is held open. It tells a folder that a running job
/// works in from what a killed one has left, and both from a folder of the user's.
class FolderLock {
 public:
  static constexpr std::string_view fileName = "slyver.lock";

  enum class Answer {
    Taken,     ///< The lock is this object's.
    Missing,   ///< The folder has no lock, or is not there.
    Busy,      ///< Another job holds it, or it cannot be asked for.
    NoFolder,  ///< The name is a file's or a link's.
  };

  FolderLock();
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  /// Puts a lock into a folder that was just made. Missing when that is gone again: another job has
  /// taken it for a leftover, or somebody has put another in its place. Throws FileError.
  Answer Make(const std::filesystem::path& folder);

  /// Takes the lock that is in a folder, without waiting.
  Answer Take(const std::filesystem::path& folder);

  /// Removes the lock's file and lets it go.
  void Remove();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace slyver
