#include "system/SourceFile.h"

#include <algorithm>
#include <limits>

#include "system/FileError.h"
#include "system/Wide_win32.h"

namespace slyver {

namespace {

std::uint64_t Joined(DWORD high, DWORD low) {
  return (std::uint64_t{high} << 32U) | low;
}

}  // namespace

struct SourceFile::State {
  std::filesystem::path path;
  Handle handle;
  BY_HANDLE_FILE_INFORMATION opened = {};
};

SourceFile::SourceFile(const std::filesystem::path& path) : state_(std::make_unique<State>()) {
  state_->path = path;
  // A folder can be opened too, so that it can be told as one.
  state_->handle = Handle(CreateFileW(
      LongPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!state_->handle) FailWithLastError(path);
  if (GetFileType(state_->handle.Get()) != FILE_TYPE_DISK)
    throw FileError(path, "Not a regular file");
  if (GetFileInformationByHandle(state_->handle.Get(), &state_->opened) == 0)
    FailWithLastError(path);
  if ((state_->opened.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    throw FileError(path, std::make_error_code(std::errc::is_a_directory));
}

SourceFile::~SourceFile() = default;

const std::filesystem::path& SourceFile::Path() const {
  return state_->path;
}

std::uint64_t SourceFile::Length() const {
  return Joined(state_->opened.nFileSizeHigh, state_->opened.nFileSizeLow);
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

void SourceFile::ThrowIfChanged() const {
  BY_HANDLE_FILE_INFORMATION now = {};
  if (GetFileInformationByHandle(state_->handle.Get(), &now) == 0) FailWithLastError(state_->path);
  const BY_HANDLE_FILE_INFORMATION& then = state_->opened;
  if (now.nFileSizeHigh != then.nFileSizeHigh || now.nFileSizeLow != then.nFileSizeLow ||
      CompareFileTime(&now.ftLastWriteTime, &then.ftLastWriteTime) != 0)
    throw FileError(state_->path, "The file was changed while it was being read");
}

}  // namespace slyver
