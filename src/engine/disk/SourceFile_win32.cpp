#include <algorithm>
#include <limits>
#include <utility>

#include "engine/base/FileError.h"
#include "engine/base/Wide_win32.h"
#include "engine/disk/SourceFile.h"
// Needs windows.h before it.
#include <winioctl.h>

namespace slyver {

namespace {

std::uint64_t Joined(DWORD high, DWORD low) {
  return (std::uint64_t{high} << 32U) | low;
}

/// Returns the file's space on the disk in bytes; its length if it is not sparse.
std::uint64_t SpaceOf(const Handle& file, const BY_HANDLE_FILE_INFORMATION& found) {
  const std::uint64_t length = Joined(found.nFileSizeHigh, found.nFileSizeLow);
  FILE_STANDARD_INFO information = {};
  if ((found.dwFileAttributes & FILE_ATTRIBUTE_SPARSE_FILE) == 0 ||
      GetFileInformationByHandleEx(file.Get(), FileStandardInfo, &information,
                                   sizeof information) == 0)
    return length;
  return static_cast<std::uint64_t>(information.AllocationSize.QuadPart);
}

FileState StateIn(const Handle& file, const BY_HANDLE_FILE_INFORMATION& found) {
  // Windows counts time in steps of 100 nanoseconds.
  constexpr std::uint64_t stepsPerSecond = 10'000'000;
  const std::uint64_t written =
      Joined(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime);
  return {Joined(found.nFileSizeHigh, found.nFileSizeLow),
          found.dwVolumeSerialNumber,
          Joined(found.nFileIndexHigh, found.nFileIndexLow),
          static_cast<std::int64_t>(written / stepsPerSecond),
          static_cast<std::int32_t>(written % stepsPerSecond * 100),
          {},
          SpaceOf(file, found)};
}

}  // namespace

struct SourceFile::State {
  std::filesystem::path path;
  Handle handle;
  FileState opened;
};

SourceFile::SourceFile(std::filesystem::path itsPath) : state_(std::make_unique<State>()) {
  state_->path = std::move(itsPath);
  const std::filesystem::path& path = state_->path;
  // Open folders too, to report that the path is one.
  state_->handle = Handle(CreateFileW(
      LongPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!state_->handle) FailWithLastError(path);
  if (GetFileType(state_->handle.Get()) != FILE_TYPE_DISK)
    throw FileError(path, "Not a regular file");
  BY_HANDLE_FILE_INFORMATION found = {};
  if (GetFileInformationByHandle(state_->handle.Get(), &found) == 0) FailWithLastError(path);
  if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    throw FileError(path, std::make_error_code(std::errc::is_a_directory));
  state_->opened = StateIn(state_->handle, found);
}

SourceFile::~SourceFile() = default;

const std::filesystem::path& SourceFile::Path() const {
  return state_->path;
}

const FileState& SourceFile::Opened() const {
  return state_->opened;
}

Rights SourceFile::RightsOfReaders() const {
  return state_->opened.rights;
}

int SourceFile::Descriptor() const {
  return -1;
}

void SourceFile::Read(std::uint64_t offset, std::span<char> buffer) const {
  constexpr std::size_t most = std::numeric_limits<DWORD>::max() / 2;
  while (!buffer.empty()) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
    DWORD count = 0;
    if (ReadFile(state_->handle.Get(), buffer.data(),
                 static_cast<DWORD>(std::min(buffer.size(), most)), &count, &place) == 0 &&
        GetLastError() != ERROR_HANDLE_EOF)
      FailWithLastError(state_->path);
    if (count == 0) throw FileError(state_->path, "The file ends too early");
    offset += count;
    buffer = buffer.subspan(count);
  }
}

std::uint64_t SourceFile::NextData(std::uint64_t offset, std::uint64_t end) const {
  if (!state_->opened.IsSparse() || offset >= end) return offset;
  FILE_ALLOCATED_RANGE_BUFFER asked = {};
  asked.FileOffset.QuadPart = static_cast<LONGLONG>(offset);
  asked.Length.QuadPart = static_cast<LONGLONG>(end - offset);
  FILE_ALLOCATED_RANGE_BUFFER first = {};
  DWORD size = 0;
  // Only the first range is needed, so ERROR_MORE_DATA is fine.
  if (DeviceIoControl(state_->handle.Get(), FSCTL_QUERY_ALLOCATED_RANGES, &asked, sizeof asked,
                      &first, sizeof first, &size, nullptr) == 0 &&
      GetLastError() != ERROR_MORE_DATA)
    return offset;
  if (size < sizeof first) return end;
  return std::clamp(static_cast<std::uint64_t>(first.FileOffset.QuadPart), offset, end);
}

void SourceFile::ThrowIfChanged() const {
  BY_HANDLE_FILE_INFORMATION now = {};
  if (GetFileInformationByHandle(state_->handle.Get(), &now) == 0) FailWithLastError(state_->path);
  if (StateIn(state_->handle, now) != state_->opened) throw FileError(state_->path, fileWasChanged);
}

}  // namespace slyver
