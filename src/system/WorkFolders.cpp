#include "system/WorkFolders.h"

#include <system_error>
#include <utility>

#include "system/FileError.h"
#include "system/Files.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

/// Lets the owner change the folder and all folders below it.
void MakeWritable(const fs::path& folder) {
  std::error_code ignored;
  if (!fs::is_directory(fs::symlink_status(folder, ignored))) return;
  fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
  for (auto entry = fs::directory_iterator(folder, ignored); entry != fs::directory_iterator();
       entry.increment(ignored)) {
    if (ignored) return;
    MakeWritable(entry->path());
  }
}

}  // namespace

bool FolderExists(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

void RemoveFolder(const fs::path& path) {
  std::error_code error;
  fs::remove_all(path, error);
  if (error) {
    MakeWritable(path);
    fs::remove_all(path, error);
  }
  if (error) throw FileError(path, error);
}

void MakeFreshFolder(const fs::path& path) {
  if (FolderExists(path)) RemoveFolder(path);
  std::error_code error;
  fs::create_directory(path, error);
  if (error) throw FileError(path, error);
}

bool MakeSureDirectoryPathExists(const fs::path& path) {
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  return !error;
}

fs::path WithSeparator(fs::path path) {
  if (path.has_filename() || path.empty()) path += fs::path::preferred_separator;
  return path;
}

ScratchFolder::ScratchFolder(fs::path path) : path_(std::move(path)) {
  MakeFreshFolder(path_);
}

ScratchFolder::~ScratchFolder() {
  try {
    RemoveFolder(path_);
  } catch (const FileError&) {
    return;
  }
}

ScratchFile::ScratchFile(fs::path path) : path_(std::move(path)) {
  std::error_code error;
  fs::remove(path_, error);
  if (error) throw FileError(path_, error);
}

ScratchFile::~ScratchFile() {
  std::error_code ignored;
  fs::remove(path_, ignored);
}

}  // namespace slyver
