#include "engine/disk/FolderLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "engine/base/Posix.h"

namespace slyver {

namespace {

Descriptor OpenFolder(const std::filesystem::path& folder) {
  return Descriptor(open(folder.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

/// Opens the lock's file in an open folder.
Descriptor OpenIn(const Descriptor& folder, int flags) {
  if (!folder) return {};
  const std::string name(FolderLock::fileName);
  return Descriptor(
      openat(folder.Get(), name.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC | flags, 0600));
}

}  // namespace

struct FolderLock::State {
  std::filesystem::path path;
  Descriptor file;

  /// Locks the open file. Missing if another program has deleted it.
  Answer Lock() const {
    if (!TryLock(file)) return Answer::Busy;
    struct stat opened = {};
    return fstat(file.Get(), &opened) == 0 && opened.st_nlink > 0 ? Answer::Taken : Answer::Missing;
  }
};

FolderLock::FolderLock() : state_(std::make_unique<State>()) {}
FolderLock::~FolderLock() = default;

FolderLock::Answer FolderLock::Make(const std::filesystem::path& folder) {
  state_->path = folder / fileName;
  const Descriptor there = OpenFolder(folder);
  state_->file = OpenIn(there, O_CREAT | O_EXCL);
  if (!state_->file && (errno == ENOENT || errno == EEXIST)) return Answer::Missing;
  if (!state_->file) FailWithLastError(state_->path);
  // Another user may have replaced the folder.
  struct stat around = {};
  struct stat made = {};
  if (fstat(there.Get(), &around) != 0 || fstat(state_->file.Get(), &made) != 0)
    FailWithLastError(state_->path);
  if (around.st_uid != made.st_uid) {
    Remove();
    return Answer::Missing;
  }
  return state_->Lock() == Answer::Taken ? Answer::Taken : Answer::Missing;
}

FolderLock::Answer FolderLock::Take(const std::filesystem::path& folder) {
  state_->path = folder / fileName;
  const Descriptor there = OpenFolder(folder);
  if (!there && errno == ENOENT) return Answer::Missing;
  if (!there) return errno == ENOTDIR || errno == ELOOP ? Answer::NoFolder : Answer::Busy;
  state_->file = OpenIn(there, O_NONBLOCK);
  if (!state_->file) return errno == ENOENT ? Answer::Missing : Answer::Busy;
  return state_->Lock();
}

void FolderLock::Remove() {
  // Delete it before releasing it, so that no job can take a deleted lock.
  (void)unlink(state_->path.c_str());
  state_->file = Descriptor();
}

}  // namespace slyver
