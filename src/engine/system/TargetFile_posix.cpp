#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "engine/system/FileError.h"
#include "engine/system/TargetFile.h"

namespace slyver {

namespace {

[[noreturn]] void Fail(const std::filesystem::path& path) {
  throw FileError(path, std::error_code(errno, std::generic_category()));
}

bool SameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Whether the name still belongs to the file behind the descriptor.
bool NameStillBelongs(const std::filesystem::path& path, int descriptor) {
  struct stat named = {};
  struct stat opened = {};
  return lstat(path.c_str(), &named) == 0 && fstat(descriptor, &opened) == 0 &&
         SameFile(named, opened);
}

/// Takes the lock that marks a temporary file as in use. A file system without locks grants it.
bool Lock(int descriptor) {
  int result = 0;
  do result = flock(descriptor, LOCK_EX | LOCK_NB);
  while (result != 0 && errno == EINTR);
  return result == 0 || errno != EWOULDBLOCK;
}

/// Removes what bears the temporary name already. A file that a killed run has left is not locked;
/// it is removed, never written to, because the name could be another link to the user's data.
void RemoveLeftover(const std::filesystem::path& temporary, const std::filesystem::path& target) {
  const int descriptor = open(temporary.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0 && errno == ENOENT) return;
  // A link, a socket, a file that may not be read: none of them is a copy at work.
  if (descriptor < 0 && errno != ELOOP && errno != ENXIO && errno != EACCES) Fail(temporary);
  const bool free = descriptor < 0 || Lock(descriptor);
  const bool stale = free && (descriptor < 0 || NameStillBelongs(temporary, descriptor));
  const bool removed = !stale || unlink(temporary.c_str()) == 0 || errno == ENOENT;
  const int error = errno;
  if (descriptor >= 0) close(descriptor);
  if (!free) throw FileError(target, "Another program is writing this file");
  if (!removed) throw FileError(temporary, std::error_code(error, std::generic_category()));
}

/// Creates and locks the temporary file; returns its descriptor.
int CreateTemporary(const std::filesystem::path& temporary, const std::filesystem::path& target) {
  while (true) {
    const int descriptor =
        open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (descriptor >= 0) {
      // Between creation and lock another program may have taken the file for a leftover.
      if (Lock(descriptor) && NameStillBelongs(temporary, descriptor)) return descriptor;
      close(descriptor);
    } else if (errno == EEXIST) {
      RemoveLeftover(temporary, target);
    } else if (errno != EINTR) {
      Fail(target);
    }
  }
}

void Reserve(int descriptor, std::uint64_t length, const std::filesystem::path& target) {
  if (length == 0) return;
  int result = 0;
  do result = fallocate(descriptor, 0, 0, static_cast<off_t>(length));
  while (result != 0 && errno == EINTR);
  // A file system that cannot reserve says so; a full disk is better known before the long work.
  if (result != 0 && errno != EOPNOTSUPP && errno != ENOSYS && errno != EINVAL) Fail(target);
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
  int descriptor = -1;
  bool named = false;

  ~State() {
    if (descriptor < 0) return;
    if (!named) (void)unlink(temporary.c_str());
    close(descriptor);
  }
};

TargetFile::TargetFile(std::filesystem::path target, std::uint64_t length, Existing existing)
    : state_(std::make_unique<State>()) {
  state_->temporary = TemporaryPath(target);
  state_->target = std::move(target);
  state_->existing = existing;
  // What bears the name is looked at under the lock: another program may have given it just now.
  state_->descriptor = CreateTemporary(state_->temporary, state_->target);
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
    Fail(state_->target);
  }
  Reserve(state_->descriptor, length, state_->target);
}

TargetFile::~TargetFile() = default;

void TargetFile::Write(std::uint64_t offset, std::span<const char> bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        pwrite(state_->descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count == 0) errno = ENOSPC;
    if (count <= 0) Fail(state_->target);
    offset += static_cast<std::uint64_t>(count);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

void TargetFile::Commit() {
  const State& state = *state_;
  struct stat found = {};
  const bool replaces =
      state.existing == Existing::Replace && lstat(state.target.c_str(), &found) == 0;
  if (replaces && fsync(state.descriptor) != 0) Fail(state.target);
  // Some file systems report a failed write only at close. Closing a duplicate asks for that
  // report and keeps the lock.
  const int duplicate = fcntl(state.descriptor, F_DUPFD_CLOEXEC, 0);
  if (duplicate < 0 || close(duplicate) != 0) Fail(state.target);
  const bool renamed = state.existing == Existing::Keep
                           ? RenameToFreeName(state.temporary, state.target)
                           : rename(state.temporary.c_str(), state.target.c_str()) == 0;
  if (!renamed) Fail(state.target);
  state_->named = true;
}

bool MoveToFreeName(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (RenameToFreeName(from, to)) return true;
  if (errno != EEXIST) Fail(to);
  return false;
}

}  // namespace slyver
