#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

namespace slyver {

/// What the tests need of the system that they run on.

/// Makes a new folder that no other test uses.
std::filesystem::path MakeUniqueFolder();

/// Keeps the program's settings, and where the system allows it its private files, in a folder of
/// the test's own while it lives.
class PlacesIn {
 public:
  /// `root` exists.
  explicit PlacesIn(const std::filesystem::path& root);

 private:
  std::shared_ptr<void> held_;
};

/// Makes the link `at` to a file or folder, a full path. False where the system has no such links,
/// or only for administrators.
bool MakeLink(const std::filesystem::path& to, const std::filesystem::path& at);

/// How many bytes the file takes on the disk, holes left out.
std::uint64_t SpaceTaken(const std::filesystem::path& path);

/// Holds a file, which is made if need be, as another program does that is writing it.
class LockedFile {
 public:
  explicit LockedFile(const std::filesystem::path& path);

 private:
  std::shared_ptr<void> held_;
};

}  // namespace slyver
