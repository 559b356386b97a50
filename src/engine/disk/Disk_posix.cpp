#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <limits>
#include <memory>

#include "engine/base/Posix.h"
#include "engine/disk/Disk.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

using OpenFolder = std::unique_ptr<DIR, decltype([](DIR* folder) { (void)closedir(folder); })>;

EntryKind KindOf(const dirent& entry, const OpenFolder& folder) {
  if (entry.d_type == DT_REG) return EntryKind::File;
  if (entry.d_type == DT_DIR) return EntryKind::Folder;
  // A link, or a file system without types in its entries.
  struct stat found = {};
  const auto is = [&](mode_t type, int flags) {
    return fstatat(dirfd(folder.get()), entry.d_name, &found, flags) == 0 &&
           (found.st_mode & S_IFMT) == type;
  };
  if (is(S_IFREG, 0)) return EntryKind::File;
  return is(S_IFDIR, AT_SYMLINK_NOFOLLOW) ? EntryKind::Folder : EntryKind::Other;
}

}  // namespace

bool NameIsTaken(const fs::path& path) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(path, error);
  if (status.type() == fs::file_type::none) throw FileError(path, error);
  return fs::exists(status);
}

bool FolderExists(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

bool IsFolderItself(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(fs::symlink_status(path, ignored));
}

bool IsFileItself(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(fs::symlink_status(path, ignored));
}

std::uint64_t FreeSpace(const fs::path& path) {
  struct statvfs found = {};
  // A file system of unknown size reports 0 blocks.
  if (statvfs(path.c_str(), &found) != 0 || found.f_blocks == 0)
    return std::numeric_limits<std::uint64_t>::max();
  // Some blocks are reserved for root.
  return std::uint64_t{found.f_frsize} * (geteuid() == 0 ? found.f_bfree : found.f_bavail);
}

void FlushFolder(const fs::path& path) {
  const Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // A user may create files in a folder that they may not list, and so not open.
  if (!folder && errno == EACCES) return;
  if (!folder || (fsync(folder.Get()) != 0 && errno != EINVAL && errno != EBADF))
    FailWithLastError(path);
}

bool MakeFolder(const fs::path& path) {
  if (mkdir(path.c_str(), S_IRWXU | S_IRWXG | S_IRWXO) == 0) return true;
  const std::error_code error = LastError();
  if (error != std::errc::file_exists || !FolderExists(path)) throw FileError(path, error);
  return false;
}

bool MakeNewFolder(const fs::path& path) {
  if (mkdir(path.c_str(), S_IRWXU) == 0) return true;
  if (errno != EEXIST) FailWithLastError(path);
  return false;
}

std::error_code RemoveEmptyFolder(const fs::path& path) {
  if (rmdir(path.c_str()) == 0 || errno == ENOENT) return {};
  if (errno == EEXIST) errno = ENOTEMPTY;
  return LastError();
}

std::error_code RemoveFile(const fs::path& path) {
  std::error_code error;
  fs::remove(path, error);
  return error;
}

void RenameFile(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::rename(from, to, error);
  if (error) throw FileError(to, error);
}

std::error_code ListFolder(const fs::path& folder, const EntryVisitor& visit) {
  const OpenFolder open(opendir(folder.c_str()));
  if (!open) return LastError();
  std::string name;
  while (true) {
    errno = 0;
    const dirent* const entry = readdir(open.get());
    if (entry == nullptr) return errno == 0 ? std::error_code{} : LastError();
    name = entry->d_name;
    if (name != "." && name != "..") visit(name, KindOf(*entry, open));
  }
}

fs::path FullPathOf(const fs::path& typed) {
  std::error_code error;
  fs::path path = fs::absolute(typed, error);
  if (error) throw FileError(typed, error);
  return path;
}

}  // namespace slyver
