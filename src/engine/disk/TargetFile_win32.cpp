#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "engine/base/FileError.h"
#include "engine/base/Wide_win32.h"
#include "engine/disk/Disk.h"
#include "engine/disk/TargetFile.h"

namespace slyver {

namespace {

/// Throws FileError for a name that other programs cannot use, a device or a stream of another
/// file.
void RequireUsableName(const std::filesystem::path& target) {
  const std::wstring name = target.filename().native();
  const bool badCharacter = std::any_of(name.begin(), name.end(), [](wchar_t c) {
    return c < L' ' || std::wstring_view(LR"(<>:"|?*)").find(c) != std::wstring_view::npos;
  });
  // The absolute path of a device has another folder; that of a name loses its final dots or
  // blanks.
  const std::wstring absolute = AbsolutePath(target);
  if (badCharacter || absolute.starts_with(LR"(\\.\)") || !absolute.ends_with(L'\\' + name))
    throw FileError(target, "Windows does not allow this name");
}

void RequireReplaceable(const std::filesystem::path& target, DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_READONLY) != 0)
    throw FileError(target, "The file is read-only and cannot be replaced");
}

/// Deletes a killed run's leftover. Throws FileError if another program is writing it.
void RemoveLeftover(const std::filesystem::path& temporary, const std::filesystem::path& target) {
  const std::wstring name = LongPath(temporary);
  const DWORD attributes = GetFileAttributesW(name.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0)
    (void)SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_NORMAL);
  if (DeleteFileW(name.c_str()) != 0 || GetLastError() == ERROR_FILE_NOT_FOUND) return;
  if (GetLastError() == ERROR_SHARING_VIOLATION)
    throw FileError(target, "Another program is writing this file");
  FailWithLastError(temporary);
}

/// Creates the temporary file. Its share mode is the lock: others may not write or delete it.
Handle CreateTemporary(const std::filesystem::path& temporary,
                       const std::filesystem::path& target) {
  const std::wstring name = LongPath(temporary);
  while (true) {
    Handle handle(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_READ,
                              nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (handle) return handle;
    if (GetLastError() != ERROR_FILE_EXISTS) FailWithLastError(target);
    RemoveLeftover(temporary, target);
  }
}

/// Renames an open file in its folder; false on an error.
bool RenameOpenFile(HANDLE handle, const std::filesystem::path& target, bool replace) {
  const std::wstring name = LongPath(target);
  const std::size_t bytes = name.size() * sizeof(wchar_t);
  std::vector<FILE_RENAME_INFO> storage(1 + (sizeof(FILE_RENAME_INFO) + bytes) /
                                                sizeof(FILE_RENAME_INFO));
  FILE_RENAME_INFO& information = storage.front();
  information.ReplaceIfExists = replace ? TRUE : FALSE;
  information.FileNameLength = static_cast<DWORD>(bytes);
  std::memcpy(information.FileName, name.c_str(), bytes + sizeof(wchar_t));
  return Patiently([&] {
    return SetFileInformationByHandle(
               handle, FileRenameInfo, storage.data(),
               static_cast<DWORD>(storage.size() * sizeof(FILE_RENAME_INFO))) != 0;
  });
}

}  // namespace

void RemoveLeftoverOf(const std::filesystem::path& target) {
  RemoveLeftover(TemporaryPath(target), target);
}

struct TargetFile::State {
  std::filesystem::path target;
  Existing existing = Existing::Keep;
  bool flushed = false;
  Handle handle;  ///< Closed by Commit().

  ~State() {
    if (!handle) return;
    FILE_DISPOSITION_INFO disposition = {};
    disposition.DeleteFile = TRUE;
    (void)SetFileInformationByHandle(handle.Get(), FileDispositionInfo, &disposition,
                                     sizeof disposition);
  }
};

// The folder decides who may read the file.
TargetFile::TargetFile(std::filesystem::path target, Existing existing, Rights /*rights*/,
                       std::filesystem::path /*inPlaceOf*/)
    : state_(std::make_unique<State>()) {
  state_->target = std::move(target);
  state_->existing = existing;
  RequireUsableName(state_->target);
  // Look only under the lock: another program may have created the target just now.
  state_->handle = CreateTemporary(TemporaryPath(state_->target), state_->target);
  const DWORD attributes = GetFileAttributesW(LongPath(state_->target).c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES) {
    RequireReplaceable(state_->target);
    if (existing == Existing::Keep)
      throw FileError(state_->target, std::make_error_code(std::errc::file_exists));
    if (existing == Existing::Replace) RequireReplaceable(state_->target, attributes);
  } else if (GetLastError() != ERROR_FILE_NOT_FOUND) {
    // A name that is too long, for example, should fail before the long work.
    FailWithLastError(state_->target);
  }
}

bool CanBeNamelessUntil(const std::filesystem::path& /*target*/) {
  return false;
}

std::shared_ptr<TargetFile> TargetFile::StartNameless(const std::filesystem::path& /*folder*/,
                                                      std::filesystem::path target, Rights rights) {
  return std::make_shared<TargetFile>(std::move(target), Existing::Keep, rights);
}

TargetFile::~TargetFile() = default;

void TargetFile::Reserve(std::uint64_t length) {
  FILE_END_OF_FILE_INFO end = {};
  end.EndOfFile.QuadPart = static_cast<LONGLONG>(length);
  if (SetFileInformationByHandle(state_->handle.Get(), FileEndOfFileInfo, &end, sizeof end) != 0)
    return;
  // Ignore file systems that cannot reserve; a full disk should fail before the long work.
  const DWORD error = GetLastError();
  if (error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL || error == ERROR_FILE_TOO_LARGE)
    FailWithLastError(state_->target);
}

Sharing TargetFile::SharingWith(const SourceFile& /*source*/) const {
  return {};
}

bool TargetFile::Share(const Sharing& /*promised*/, const SourceFile& /*source*/,
                       std::uint64_t /*sourceOffset*/, std::uint64_t /*targetOffset*/,
                       std::uint64_t /*length*/) {
  return false;
}

void TargetFile::Write(std::uint64_t offset, std::span<const char> bytes) {
  constexpr std::size_t most = std::numeric_limits<DWORD>::max() / 2;
  while (!bytes.empty()) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
    DWORD count = 0;
    if (WriteFile(state_->handle.Get(), bytes.data(),
                  static_cast<DWORD>(std::min(bytes.size(), most)), &count, &place) == 0)
      FailWithLastError(state_->target);
    if (count == 0)
      throw FileError(state_->target, std::make_error_code(std::errc::no_space_on_device));
    offset += count;
    bytes = bytes.subspan(count);
  }
}

void TargetFile::Flush() {
  if (FlushFileBuffers(state_->handle.Get()) == 0) FailWithLastError(state_->target);
  state_->flushed = true;
}

void TargetFile::Commit() {
  State& state = *state_;
  const DWORD attributes = GetFileAttributesW(LongPath(state.target).c_str());
  const bool replaces = state.existing != Existing::Keep && attributes != INVALID_FILE_ATTRIBUTES;
  if (replaces) RequireReplaceable(state.target, attributes);
  if (replaces && state.existing == Existing::Replace && !state.flushed) Flush();
  if (!RenameOpenFile(state.handle.Get(), state.target, replaces)) FailWithLastError(state.target);
  state.handle.Close();
}

Rights RightsIn(const std::filesystem::path& /*folder*/, Rights rights) {
  return rights;
}

void RequireReplaceable(const std::filesystem::path& path) {
  const DWORD attributes = GetFileAttributesW(LongPath(path).c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    throw FileError(path, std::make_error_code(std::errc::is_a_directory));
}

bool MoveToFreeName(const std::filesystem::path& from, const std::filesystem::path& to,
                    const std::filesystem::path& named) {
  RequireUsableName(to);
  const std::wstring oldName = LongPath(from);
  const std::wstring newName = LongPath(to);
  if (Patiently([&] { return MoveFileExW(oldName.c_str(), newName.c_str(), 0) != 0; })) return true;
  if (GetLastError() != ERROR_ALREADY_EXISTS && GetLastError() != ERROR_FILE_EXISTS)
    FailWithLastError(named);
  return false;
}

}  // namespace slyver
