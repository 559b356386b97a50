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

struct SourceFile::Handle {
  slyver::Handle handle;
};

SourceFile::SourceFile(std::filesystem::path path)
    : path_(std::move(path)), handle_(std::make_unique<Handle>()) {
  // Open folders too, to report that the path is one.
  handle_->handle = slyver::Handle(CreateFileW(
      LongPath(path_).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!handle_->handle) FailWithLastError(path_);
  if (GetFileType(handle_->handle.Get()) != FILE_TYPE_DISK)
    throw FileError(path_, "Not a regular file");
  BY_HANDLE_FILE_INFORMATION found = {};
  if (GetFileInformationByHandle(handle_->handle.Get(), &found) == 0) FailWithLastError(path_);
  if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    throw FileError(path_, std::make_error_code(std::errc::is_a_directory));
  opened_ = StateIn(handle_->handle, found);
}

SourceFile::~SourceFile() = default;

Rights SourceFile::RightsOfReaders() const {
  return opened_.rights;
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
    if (ReadFile(handle_->handle.Get(), buffer.data(),
                 static_cast<DWORD>(std::min(buffer.size(), most)), &count, &place) == 0 &&
        GetLastError() != ERROR_HANDLE_EOF)
      FailWithLastError(path_);
    if (count == 0) throw FileError(path_, "The file ends too early");
    offset += count;
    buffer = buffer.subspan(count);
  }
}

std::uint64_t SourceFile::NextData(std::uint64_t offset, std::uint64_t end) const {
  if (!opened_.IsSparse() || offset >= end) return offset;
  FILE_ALLOCATED_RANGE_BUFFER asked = {};
  asked.FileOffset.QuadPart = static_cast<LONGLONG>(offset);
  asked.Length.QuadPart = static_cast<LONGLONG>(end - offset);
  FILE_ALLOCATED_RANGE_BUFFER first = {};
  DWORD size = 0;
  // Only the first range is needed, so ERROR_MORE_DATA is fine.
  if (DeviceIoControl(handle_->handle.Get(), FSCTL_QUERY_ALLOCATED_RANGES, &asked, sizeof asked,
                      &first, sizeof first, &size, nullptr) == 0 &&
      GetLastError() != ERROR_MORE_DATA)
    return offset;
  if (size < sizeof first) return end;
  return std::clamp(static_cast<std::uint64_t>(first.FileOffset.QuadPart), offset, end);
}

void SourceFile::ThrowIfChanged() const {
  BY_HANDLE_FILE_INFORMATION now = {};
  if (GetFileInformationByHandle(handle_->handle.Get(), &now) == 0) FailWithLastError(path_);
  if (StateIn(handle_->handle, now) != opened_) throw FileError(path_, fileWasChanged);
}

}  // namespace slyver
