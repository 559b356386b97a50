#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include "engine/disk/FolderLock.h"
#include "engine/disk/NewFolders.h"

namespace slyver {

/// Creates every folder of `path` that is followed by a separator, so the last one only when the
/// path ends in one. Returns `false` when one could not be created.
bool MakeSureDirectoryPathExists(const std::filesystem::path& path, NewFolders& created);

/// `path` with a separator at its end.
std::filesystem::path WithSeparator(std::filesystem::path path);

/// The files that a job writes in its work folder, besides temporary ones, and so may remove.
struct WorkFiles {
  /// Names; a "#" at the beginning stands for digits and dots, a "*" at the end for anything.
  std::vector<std::string_view> names = {};
  std::string_view folder = {};  ///< A work folder in it, with such files too; empty for none.
};

/// A folder that a job works in, created for this object and on POSIX open to its owner alone. At
/// the end of the object's life it is removed with the work files in it; anything else stays.
///
/// What a killed job has left under the name is removed first. While another job works in it the
/// next name is taken: `path`.1, `path`.2 and so on, so that no job waits for another.
class ScratchFolder {
 public:
  /// Throws FileError when the folder cannot be created or `path` is a file or link, and Error
  /// ("... Holds Other Files. Move Them Away.") when it is a folder with anything but such `files`.
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

/// Returns the folder of the user's own in which the program's runs create theirs. On Linux it is
/// "slyver" in $XDG_RUNTIME_DIR if that is a folder of this user's, else "slyver-" and the user's
/// number in /tmp, open to this user alone; a name that is another user's, or no folder's, is
/// passed over for the next one: ".1", ".2" and so on. On Windows it is the user's folder for
/// temporary files. Throws FileError if it cannot be created, is open to others and cannot be
/// closed to them, or 100 names are passed over.
std::filesystem::path PrivateFolder();

/// Where file dialogs start: the user's home folder; on Windows "c:\".
std::filesystem::path HomeFolder();

}  // namespace slyver
