#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "engine/disk/FolderLock.h"
#include "engine/disk/NewFolders.h"

namespace slyver {

/// Creates every folder of `path` that is followed by a separator. Returns false on an error.
bool MakeSureDirectoryPathExists(const std::filesystem::path& path, NewFolders& created);

/// Returns `path` with a separator at its end.
std::filesystem::path WithSeparator(std::filesystem::path path);

/// The files that a job writes in its work folder, besides temporary ones, and so may delete.
struct WorkFiles {
  /// Names; a leading "#" matches digits and dots, a trailing "*" anything.
  std::vector<std::string_view> names = {};
  std::string_view folder = {};  ///< A work folder in it, for the same files; empty for none.
};

/// A job's work folder, on POSIX for its owner alone. The destructor deletes it and its work files;
/// other files stay.
///
/// Deletes a killed job's leftover first. If another job works in `path`, uses `path`.1, `path`.2
/// and so on, so that no job waits for another.
class ScratchFolder {
 public:
  /// Throws FileError if the folder cannot be created or `path` is a file or link, and Error ("...
  /// Holds Other Files. Move Them Away.") if it is a folder with other files than `files`.
  explicit ScratchFolder(const std::filesystem::path& path, WorkFiles files = {});
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  bool Make();

  std::filesystem::path path_;
  WorkFiles files_;
  FolderLock lock_;
};

/// Returns the user's private folder for work folders; creates it if missing. On Linux it is
/// "slyver" in $XDG_RUNTIME_DIR if that is a folder of this user's, else "slyver-" and the user's
/// number in /tmp, with mode 700. A path that another user owns, or that is no folder, is skipped
/// for ".1", ".2" and so on. On Windows it is the user's folder for temporary files. Throws
/// FileError if it cannot be created or closed to others, or 100 paths are skipped.
std::filesystem::path PrivateFolder();

/// Returns the folder where file dialogs start: the user's home folder; on Windows "c:\".
std::filesystem::path HomeFolder();

}  // namespace slyver
