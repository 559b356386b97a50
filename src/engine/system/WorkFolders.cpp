#include "engine/system/WorkFolders.h"

#include <system_error>
#include <utility>

#include "engine/system/FileError.h"

namespace slyver {

namespace fs = std::filesystem;

void MakeFreshFolder(const fs::path& path, Access access) {
  if (FolderExists(path)) RemoveFolder(path);
  MakeFolder(path, access);
}

namespace {

void MakeFolders(const fs::path& path) {
  if (path.empty() || FolderExists(path)) return;
  if (path.has_relative_path()) MakeFolders(path.parent_path());
  MakeFolder(path);
}

}  // namespace

bool MakeSureDirectoryPathExists(const fs::path& path) {
  try {
    MakeFolders(path.parent_path());
    return true;
  } catch (const FileError&) {
    return false;
  }
}

fs::path WithSeparator(fs::path path) {
  if (path.has_filename() || path.empty()) path += fs::path::preferred_separator;
  return path;
}

ScratchFolder::ScratchFolder(fs::path path, Access access) : path_(std::move(path)) {
  MakeFreshFolder(path_, access);
}

ScratchFolder::~ScratchFolder() {
  try {
    RemoveFolder(path_);
  } catch (const FileError&) {
    return;
  }
}

ScratchFile::ScratchFile(fs::path path) : path_(std::move(path)) {
  if (const std::error_code error = RemoveFile(path_)) throw FileError(path_, error);
}

ScratchFile::~ScratchFile() {
  (void)RemoveFile(path_);
}

}  // namespace slyver
