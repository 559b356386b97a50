#pragma once

#include <filesystem>
#include <vector>

#include "engine/disk/Disk.h"

namespace slyver {

/// The folders that a job creates for its results. The destructor deletes those that are empty, so
/// that a refused job leaves none.
class NewFolders {
 public:
  NewFolders() = default;
  NewFolders(const NewFolders&) = delete;
  NewFolders& operator=(const NewFolders&) = delete;
  ~NewFolders() {
    for (; !created_.empty(); created_.pop_back()) (void)RemoveEmptyFolder(created_.back());
  }

  /// Creates the folder `path` if missing. Throws FileError.
  void Create(const std::filesystem::path& path) {
    if (MakeFolder(path)) created_.push_back(path);
  }

 private:
  std::vector<std::filesystem::path> created_;
};

}  // namespace slyver
