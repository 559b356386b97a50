#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "engine/base/FileError.h"

namespace slyver {

/// Returns the error of the last call that failed on this thread.
inline std::error_code LastError() {
  return {errno, std::generic_category()};
}

/// Throws a FileError with LastError().
[[noreturn]] inline void FailWithLastError(const std::filesystem::path& path) {
  throw FileError(path, LastError());
}

/// A file descriptor, closed with the object. Closing leaves errno unchanged.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    const int error = errno;
    if (*this) (void)close(number_);
    errno = error;
  }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }

 private:
  int number_ = -1;
};

/// Opens /dev/null in place of each closed standard descriptor; false on an error. Otherwise the
/// next file opened would become standard input or output. Using them still fails: /dev/null is
/// opened for the other direction.
inline bool OpenStandardDescriptors() {
  for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
    if (fcntl(number, F_GETFD) >= 0) continue;
    // Without O_CLOEXEC: child processes need them too.
    if (open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY) != number) return false;
  }
  return true;
}

/// Locks an open file without waiting; false if another program holds the lock, or on an error.
/// The file must be open for writing: network file systems lock no others. True on a file system
/// without locks.
inline bool TryLock(const Descriptor& file) {
  int result = 0;
  do result = flock(file.Get(), LOCK_EX | LOCK_NB);
  while (result != 0 && errno == EINTR);
  return result == 0 || errno == ENOSYS || errno == EOPNOTSUPP || errno == EINVAL;
}

}  // namespace slyver
