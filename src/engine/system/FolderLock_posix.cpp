#include "engine/system/FolderLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "engine/system/Posix.h"

namespace slyver {

struct FolderLock::State {
  std::filesystem::path path;
  Descriptor file;

  /// Takes the lock of the open file. Missing when somebody has removed it by then.
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
  do
    state_->file = Descriptor(
        open(state_->path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  while (!state_->file && errno == EINTR);
  if (state_->file) return state_->Lock() == Answer::Taken ? Answer::Taken : Answer::Missing;
  if (errno == ENOENT) return Answer::Missing;
  FailWithLastError(state_->path);
}

FolderLock::Answer FolderLock::Take(const std::filesystem::path& folder) {
  state_->path = folder / fileName;
  const Descriptor there(open(folder.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!there && errno == ENOENT) return Answer::Missing;
  if (!there) return errno == ENOTDIR || errno == ELOOP ? Answer::NoFolder : Answer::Busy;
  state_->file = Descriptor(openat(there.Get(), std::string(fileName).c_str(),
                                   O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!state_->file) return errno == ENOENT ? Answer::Missing : Answer::Busy;
  return state_->Lock();
}

void FolderLock::Remove() {
  // Before it is let go, so that nobody takes what is no lock any more.
  (void)unlink(state_->path.c_str());
  state_->file = Descriptor();
}

}  // namespace slyver
