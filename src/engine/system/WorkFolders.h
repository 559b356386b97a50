#pragma once

#include <filesystem>

#include "engine/system/Disk.h"

namespace slyver {

/// Makes an empty folder `path`; one of that name, or a link to one, is removed first as
/// RemoveFolder does. Throws FileError, also when a file bears the name.
void MakeFreshFolder(const std::filesystem::path& path, Access access = Access::Inherited);

/// Makes every folder of `path` that is followed by a separator, so the last one only when the path
/// ends in one. Returns false when one could not be made.
bool MakeSureDirectoryPathExists(const std::filesystem::path& path);

/// `path` with a separator at its end.
std::filesystem::path WithSeparator(std::filesystem::path path);

/// A folder that a job works in: made afresh, removed at the end of the object's life whatever
/// happens; a failure to remove it goes unnoticed.
class ScratchFolder {
 public:
  /// Throws FileError when the folder cannot be made.
  explicit ScratchFolder(std::filesystem::path path, Access access = Access::Inherited);
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// A file that a job writes outside its scratch folder: one of that name is removed at the start
/// and at the end of the object's life; a failure to remove it at the end goes unnoticed.
class ScratchFile {
 public:
  /// Throws FileError when what bears the name cannot be removed: it would be taken for the job's.
  explicit ScratchFile(std::filesystem::path path);
  ~ScratchFile();
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// The folder in which the hide job makes its work folder. On Linux one that only this user may
/// enter, "slyver" in $XDG_RUNTIME_DIR, else "slyver-" and the user's number in the folder for
/// temporary files; it is made if need be. On Windows "C:\" where the user can make files there,
/// else the user's folder for temporary files. Throws FileError when it cannot be made, is no
/// folder of the user's own, or is open to others and cannot be closed to them.
std::filesystem::path PrivateFolder();

/// Where file dialogs start: the user's home folder; on Windows "c:\".
std::filesystem::path HomeFolder();

}  // namespace slyver
