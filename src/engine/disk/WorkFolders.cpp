#include "engine/disk/WorkFolders.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "engine/base/FileError.h"
#include "engine/base/Numbers.h"
#include "engine/base/PathText.h"
#include "engine/disk/Disk.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

void MakeFolders(const fs::path& path, NewFolders& created) {
  if (path.empty() || FolderExists(path)) return;
  if (path.has_relative_path()) MakeFolders(path.parent_path(), created);
  created.Create(path);
}

/// True if a file of this name may be a job's: one of `files` or a temporary one.
bool IsWorkFile(std::string_view name, const WorkFiles& files) {
  if (name.starts_with(".slyver-")) return name.ends_with(".tmp");
  return std::any_of(files.names.begin(), files.names.end(), [&](std::string_view pattern) {
    if (pattern.ends_with('*')) return name.starts_with(pattern.substr(0, pattern.size() - 1));
    if (!pattern.starts_with('#')) return name == pattern;
    pattern.remove_prefix(1);
    return name.ends_with(pattern) &&
           name.substr(0, name.size() - pattern.size()).find_first_not_of("0123456789.") ==
               std::string_view::npos;
  });
}

constexpr int looksBeforeRefusal = 5;

enum class Leftover { Removed, InUse, NotOurs };

Leftover RemoveEmpty(const fs::path& folder) {
  const std::error_code error = RemoveEmptyFolder(folder);
  if (!error) return Leftover::Removed;
  // A folder that this user may not delete counts as in use.
  return error == std::errc::directory_not_empty ? Leftover::NotOurs : Leftover::InUse;
}

/// Deletes a locked folder with its work files and its inner work folder.
Leftover RemoveHeld(const fs::path& folder, FolderLock& lock, const WorkFiles& files) {
  std::vector<std::string> names;
  (void)ListFolder(folder, [&](const std::string& name, EntryKind kind) {
    if (kind == EntryKind::File && IsWorkFile(name, files)) names.push_back(name);
  });
  bool removed = true;
  for (const std::string& name : names)
    removed = !RemoveFile(folder / PathFromText(name)) && removed;
  if (!files.folder.empty()) {
    const fs::path inside = folder / PathFromText(files.folder);
    FolderLock inner;
    if (inner.Take(inside) == FolderLock::Answer::Taken)
      removed = RemoveHeld(inside, inner, {files.names}) != Leftover::InUse && removed;
    else
      (void)RemoveEmptyFolder(inside);  // A job may have been killed before it created the lock.
  }
  // Keep the lock, so that the next job knows the rest as a leftover.
  if (!removed) return Leftover::InUse;
  lock.Remove();
  return RemoveEmpty(folder);
}

/// Deletes a leftover work folder, unless it is in use or not a job's.
Leftover RemoveLeftover(const fs::path& folder, const WorkFiles& files) {
  FolderLock lock;
  switch (lock.Take(folder)) {
    case FolderLock::Answer::Taken:
      return RemoveHeld(folder, lock, files);
    // Without a lock, no file in it is known to be a job's.
    case FolderLock::Answer::Missing:
      return RemoveEmpty(folder);
    case FolderLock::Answer::Busy:
      return Leftover::InUse;
    case FolderLock::Answer::NoFolder:
      break;
  }
  throw FileError(folder, std::make_error_code(std::errc::file_exists));
}

fs::path Numbered(const fs::path& path, int number) {
  fs::path numbered = path;
  if (number > 0) numbered += "." + std::to_string(number);
  return numbered;
}

}  // namespace

bool MakeSureDirectoryPathExists(const fs::path& path, NewFolders& created) {
  try {
    MakeFolders(path.parent_path(), created);
    return true;
  } catch (const FileError&) {
    return false;
  }
}

fs::path WithSeparator(fs::path path) {
  if (path.has_filename() || path.empty()) path += fs::path::preferred_separator;
  return path;
}

ScratchFolder::ScratchFolder(const fs::path& path, WorkFiles files) : files_(std::move(files)) {
  int number = 0;
  for (path_ = path; !Make(); path_ = Numbered(path, ++number))
    if (number == maxCount) throw OverflowError();
  // Killed jobs may have left folders with further numbers.
  for (int further = 1; further <= 8; ++further) {
    FolderLock lock;
    const fs::path left = Numbered(path, number + further);
    if (lock.Take(left) == FolderLock::Answer::Taken) (void)RemoveHeld(left, lock, files_);
  }
}

/// Creates the folder; false if another job works in it.
bool ScratchFolder::Make() {
  for (int looks = 1;; ++looks) {
    if (MakeNewFolder(path_)) {
      try {
        if (lock_.Make(path_) == FolderLock::Answer::Taken) return true;
      } catch (const FileError&) {
        (void)RemoveEmptyFolder(path_);
        throw;
      }
      continue;  // Another job has deleted it as a leftover.
    }
    switch (RemoveLeftover(path_, files_)) {
      case Leftover::Removed:
        break;
      case Leftover::InUse:
        return false;
      case Leftover::NotOurs:
        // Another job may create and delete its folder between two calls, so look again.
        if (looks < looksBeforeRefusal) break;
        throw Error(PathText(path_) + " Holds Other Files. Move Them Away.");
    }
  }
}

ScratchFolder::~ScratchFolder() {
  try {
    (void)RemoveHeld(path_, lock_, files_);
  } catch (const std::exception&) {
    return;  // The next job removes it.
  }
}

}  // namespace slyver
