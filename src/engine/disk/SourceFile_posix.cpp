#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "engine/base/Posix.h"
#include "engine/disk/AccessList_posix.h"
#include "engine/disk/SourceFile.h"

namespace slyver {

namespace {

constexpr std::uint64_t blockLength = 512;

FileState StateIn(const struct stat& found) {
  const auto length = static_cast<std::uint64_t>(found.st_size);
  const std::uint64_t space = static_cast<std::uint64_t>(found.st_blocks) * blockLength;
  return {length,
          found.st_dev,
          found.st_ino,
          found.st_mtim.tv_sec,
          static_cast<std::int32_t>(found.st_mtim.tv_nsec),
          {static_cast<std::uint16_t>(found.st_mode & 0777), false, found.st_gid},
          space + blockLength > length ? std::max(space, length) : space};
}

/// Opens a file for reading at offsets. Empty with errno set on an error.
Descriptor Open(const std::filesystem::path& path) {
  // Without O_NONBLOCK, opening a pipe would wait for a writer.
  Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file || errno != EWOULDBLOCK) return file;
  // Another program has a lease, which the system asks it to release. Wait for that, but only on
  // this file: the name may be a pipe's by now.
  Descriptor found(open(path.c_str(), O_PATH | O_CLOEXEC));
  struct stat state = {};
  if (!found || fstat(found.Get(), &state) != 0 || !S_ISREG(state.st_mode)) return found;
  std::array<char, 32> link = {};
  (void)std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", found.Get());
  do file = Descriptor(open(link.data(), O_RDONLY | O_CLOEXEC));
  while (!file && errno == EINTR);
  if (!file && errno == ENOENT) errno = EWOULDBLOCK;  // No /proc.
  return file;
}

}  // namespace

struct SourceFile::Handle {
  slyver::Descriptor descriptor;
};

SourceFile::SourceFile(std::filesystem::path path)
    : path_(std::move(path)), handle_(std::make_unique<Handle>()) {
  handle_->descriptor = Open(path_);
  struct stat found = {};
  if (!handle_->descriptor || fstat(Descriptor(), &found) != 0) FailWithLastError(path_);
  if (S_ISDIR(found.st_mode))
    throw FileError(path_, std::make_error_code(std::errc::is_a_directory));
  if (!S_ISREG(found.st_mode)) throw FileError(path_, "Not a regular file");
  opened_ = StateIn(found);
}

SourceFile::~SourceFile() = default;

Rights SourceFile::RightsOfReaders() const {
  Rights rights = opened_.rights;
  if ((rights.bits & 077U) == 0) return rights;
  const AccessList list = AccessList::Of(handle_->descriptor);
  if (!list.IsEmpty()) rights.bits = static_cast<std::uint16_t>(list.CommonBits());
  return rights;
}

int SourceFile::Descriptor() const {
  return handle_->descriptor.Get();
}

void SourceFile::Read(std::uint64_t offset, std::span<char> buffer) const {
  while (!buffer.empty()) {
    const ssize_t count =
        pread(Descriptor(), buffer.data(), buffer.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) FailWithLastError(path_);
    if (count == 0) throw FileError(path_, "The file ends too early");
    offset += static_cast<std::uint64_t>(count);
    buffer = buffer.subspan(static_cast<std::size_t>(count));
  }
}

std::uint64_t SourceFile::NextData(std::uint64_t offset, std::uint64_t end) const {
  if (!opened_.IsSparse()) return offset;
  // This moves the descriptor's position, which pread() ignores.
  const off_t data = lseek(Descriptor(), static_cast<off_t>(offset), SEEK_DATA);
  if (data < 0) return errno == ENXIO ? end : offset;
  return std::min(static_cast<std::uint64_t>(data), end);
}

void SourceFile::ThrowIfChanged() const {
  struct stat now = {};
  if (fstat(Descriptor(), &now) != 0) FailWithLastError(path_);
  if (StateIn(now) != opened_) throw FileError(path_, fileWasChanged);
}

}  // namespace slyver
