#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>

#include "engine/system/Posix.h"
#include "engine/system/TargetFile.h"

namespace slyver {

namespace {

bool SameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Whether the name still belongs to the open file.
bool NameStillBelongs(const std::filesystem::path& path, const Descriptor& file) {
  struct stat named = {};
  struct stat opened = {};
  return lstat(path.c_str(), &named) == 0 && fstat(file.Get(), &opened) == 0 &&
         SameFile(named, opened);
}

/// Removes what bears the temporary name already. A file that a killed run has left is not locked;
/// it is removed, never written to, because the name could be another link to the user's data.
void RemoveLeftover(const std::filesystem::path& temporary, const std::filesystem::path& target) {
  constexpr int flags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  Descriptor file(open(temporary.c_str(), O_RDWR | flags));
  if (!file && errno == EACCES) file = Descriptor(open(temporary.c_str(), O_RDONLY | flags));
  if (!file && errno == ENOENT) return;
  // A link, a socket, a file that may not be read: none of them is a copy at work.
  if (!file && errno != ELOOP && errno != ENXIO && errno != EACCES) FailWithLastError(temporary);
  if (file && !TryLock(file)) throw FileError(target, "Another program is writing this file");
  if (file && !NameStillBelongs(temporary, file)) return;
  if (unlink(temporary.c_str()) != 0 && errno != ENOENT) FailWithLastError(temporary);
}

/// Creates and locks the temporary file.
Descriptor CreateTemporary(const std::filesystem::path& temporary,
                           const std::filesystem::path& target) {
  while (true) {
    Descriptor file(
        open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666));
    if (file) {
      // Between creation and lock another program may have taken the file for a leftover.
      if (TryLock(file)) {
        if (NameStillBelongs(temporary, file)) return file;
      } else if (errno != EWOULDBLOCK) {
        const std::error_code error = LastError();
        (void)unlink(temporary.c_str());
        throw FileError(target, error);
      }
    } else if (errno == EEXIST) {
      RemoveLeftover(temporary, target);
    } else if (errno != EINTR) {
      FailWithLastError(target);
    }
  }
}

void Reserve(int descriptor, std::uint64_t length, const std::filesystem::path& target) {
  if (length == 0) return;
  int result = 0;
  do result = fallocate(descriptor, 0, 0, static_cast<off_t>(length));
  while (result != 0 && errno == EINTR);
  // A file system that cannot reserve says so; a full disk is better known before the long work.
  if (result != 0 && errno != EOPNOTSUPP && errno != ENOSYS && errno != EINVAL)
    FailWithLastError(target);
}

/// Renames without replacing; false with errno set when it fails.
bool RenameToFreeName(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // Not every file system knows the flag, and not every one knows hard links.
  if (link(from.c_str(), to.c_str()) == 0) {
    (void)unlink(from.c_str());
    return true;
  }
  if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK) return false;
  struct stat found = {};
  if (lstat(to.c_str(), &found) == 0) {
    errno = EEXIST;
    return false;
  }
  return rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace

struct TargetFile::State {
  std::filesystem::path target;
  std::filesystem::path temporary;
  Existing existing = Existing::Keep;
  Descriptor file;
  bool named = false;

  ~State() {
    if (file && !named && NameStillBelongs(temporary, file)) (void)unlink(temporary.c_str());
  }
};

TargetFile::TargetFile(std::filesystem::path target, std::uint64_t length, Existing existing)
    : state_(std::make_unique<State>()) {
  state_->temporary = TemporaryPath(target);
  state_->target = std::move(target);
  state_->existing = existing;
  // What bears the name is looked at under the lock: another program may have given it just now.
  state_->file = CreateTemporary(state_->temporary, state_->target);
  struct stat found = {};
  if (lstat(state_->target.c_str(), &found) == 0) {
    if (S_ISDIR(found.st_mode))
      throw FileError(state_->target, std::make_error_code(std::errc::is_a_directory));
    if (!S_ISREG(found.st_mode) && !S_ISLNK(found.st_mode))
      throw FileError(state_->target, "Not a regular file");
    if (existing == Existing::Keep)
      throw FileError(state_->target, std::make_error_code(std::errc::file_exists));
  } else if (errno != ENOENT) {
    // A name that is too long, say, is better known now than after the long work.
    FailWithLastError(state_->target);
  }
  Reserve(state_->file.Get(), length, state_->target);
}

TargetFile::~TargetFile() = default;

void TargetFile::Write(std::uint64_t offset, std::span<const char> bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        pwrite(state_->file.Get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count == 0) errno = ENOSPC;
    if (count <= 0) FailWithLastError(state_->target);
    offset += static_cast<std::uint64_t>(count);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

void TargetFile::Commit() {
  const State& state = *state_;
  struct stat found = {};
  const bool replaces =
      state.existing == Existing::Replace && lstat(state.target.c_str(), &found) == 0;
  if (replaces && fsync(state.file.Get()) != 0) FailWithLastError(state.target);
  // Some file systems report a failed write only at close. Closing a duplicate asks for that
  // report and keeps the lock.
  const int duplicate = fcntl(state.file.Get(), F_DUPFD_CLOEXEC, 0);
  if (duplicate < 0 || close(duplicate) != 0) FailWithLastError(state.target);
  if (!NameStillBelongs(state.temporary, state.file))
    throw FileError(state.target,
                    "Another program has removed the file while it was being written");
  const bool renamed = state.existing == Existing::Keep
                           ? RenameToFreeName(state.temporary, state.target)
                           : rename(state.temporary.c_str(), state.target.c_str()) == 0;
  if (!renamed) FailWithLastError(state.target);
  state_->named = true;
}

bool MoveToFreeName(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (RenameToFreeName(from, to)) return true;
  if (errno != EEXIST) FailWithLastError(to);
  return false;
}

}  // namespace slyver
