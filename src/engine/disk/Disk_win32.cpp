#include <windows.h>

#include <limits>

#include "engine/base/FileError.h"
#include "engine/base/Wide_win32.h"
#include "engine/disk/Disk.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

bool IsMissing(DWORD error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

bool IsFolder(DWORD attributes) {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// True for a symbolic link or a junction. A cloud service's folders are reparse points too, but
/// not links.
bool IsLink(const WIN32_FIND_DATAW& found) {
  if ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return false;
  return found.dwReserved0 == 0 || IsReparseTagNameSurrogate(found.dwReserved0);
}

/// True if the target of the link `name` is a file.
bool LeadsToFile(const std::wstring& name) {
  const Handle file(CreateFileW(name.c_str(), FILE_READ_ATTRIBUTES, shareAll, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  BY_HANDLE_FILE_INFORMATION information = {};
  return file && GetFileInformationByHandle(file.Get(), &information) != 0 &&
         !IsFolder(information.dwFileAttributes);
}

/// A search that closes itself.
struct Search {
  WIN32_FIND_DATAW found = {};
  HANDLE handle;

  explicit Search(const std::wstring& pattern) : handle(FindFirstFileW(pattern.c_str(), &found)) {}
  ~Search() {
    if (handle != INVALID_HANDLE_VALUE) (void)FindClose(handle);
  }
  Search(const Search&) = delete;
  Search& operator=(const Search&) = delete;
};

/// Calls `visit` for each entry of the folder `name`, a LongPath(). Returns the error that ended
/// the search, or 0.
template <typename Visit>
DWORD ForEachEntry(const std::wstring& name, const Visit& visit) {
  Search search(name.ends_with(L'\\') ? name + L'*' : name + LR"(\*)");
  if (search.handle == INVALID_HANDLE_VALUE) {
    const DWORD error = GetLastError();
    // The root of a drive has no entry "." and may be empty.
    return error == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : error;
  }
  do {
    const std::wstring_view entry = search.found.cFileName;
    if (entry != L"." && entry != L"..") visit(search.found);
  } while (FindNextFileW(search.handle, &search.found) != 0);
  const DWORD error = GetLastError();
  return error == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : error;
}

/// Deletes a file or folder with `remove`, also if it is read-only.
bool RemoveName(const std::wstring& name, BOOL(WINAPI* remove)(LPCWSTR)) {
  return Patiently([&] {
    if (remove(name.c_str()) != 0) return true;
    const DWORD error = GetLastError();
    if (IsMissing(error)) return true;
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0 &&
        SetFileAttributesW(name.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY}) != 0 &&
        remove(name.c_str()) != 0)
      return true;
    SetLastError(error);
    return false;
  });
}

}  // namespace

bool NameIsTaken(const fs::path& path) {
  if (path.empty()) return false;
  if (GetFileAttributesW(LongPath(path).c_str()) != INVALID_FILE_ATTRIBUTES) return true;
  if (!IsMissing(GetLastError())) FailWithLastError(path);
  return false;
}

bool FolderExists(const fs::path& path) {
  if (path.empty()) return false;
  const Handle folder(CreateFileW(LongPath(path).c_str(), FILE_READ_ATTRIBUTES, shareAll, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  BY_HANDLE_FILE_INFORMATION information = {};
  return folder && GetFileInformationByHandle(folder.Get(), &information) != 0 &&
         IsFolder(information.dwFileAttributes);
}

bool IsFolderItself(const fs::path& path) {
  const Search itself(LongPath(path));
  return itself.handle != INVALID_HANDLE_VALUE && IsFolder(itself.found.dwFileAttributes) &&
         !IsLink(itself.found);
}

bool IsFileItself(const fs::path& path) {
  const Search itself(LongPath(path));
  return itself.handle != INVALID_HANDLE_VALUE && !IsFolder(itself.found.dwFileAttributes) &&
         !IsLink(itself.found);
}

std::uint64_t FreeSpace(const fs::path& path) {
  ULARGE_INTEGER free = {};
  // A folder that is not the root of a drive needs a separator at its end.
  if (GetDiskFreeSpaceExW(LongPath(path / "").c_str(), &free, nullptr, nullptr) == 0)
    return std::numeric_limits<std::uint64_t>::max();
  return free.QuadPart;
}

// Windows keeps a journal of names itself.
void FlushFolder(const fs::path& /*path*/) {}

bool MakeFolder(const fs::path& path) {
  if (CreateDirectoryW(LongPath(path).c_str(), nullptr) != 0) return true;
  const std::error_code error = LastError();
  // The root of a drive fails with other errors than ERROR_ALREADY_EXISTS.
  if (!FolderExists(path)) throw FileError(path, error);
  return false;
}

bool MakeNewFolder(const fs::path& path) {
  if (CreateDirectoryW(LongPath(path).c_str(), nullptr) != 0) return true;
  if (GetLastError() != ERROR_ALREADY_EXISTS) FailWithLastError(path);
  return false;
}

std::error_code RemoveEmptyFolder(const fs::path& path) {
  if (RemoveName(LongPath(path), RemoveDirectoryW)) return {};
  return LastError();
}

std::error_code RemoveFile(const fs::path& path) {
  if (path.empty() || RemoveName(LongPath(path), DeleteFileW)) return {};
  return LastError();
}

void RenameFile(const fs::path& from, const fs::path& to) {
  const std::wstring oldName = LongPath(from);
  const std::wstring newName = LongPath(to);
  if (!Patiently([&] {
        return MoveFileExW(oldName.c_str(), newName.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
      }))
    FailWithLastError(to);
}

std::error_code ListFolder(const fs::path& folder, const EntryVisitor& visit) {
  const std::wstring name = LongPath(folder);
  const DWORD error = ForEachEntry(name, [&](const WIN32_FIND_DATAW& found) {
    const bool isLink = IsLink(found);
    EntryKind kind = IsFolder(found.dwFileAttributes) ? EntryKind::Folder : EntryKind::File;
    if (isLink && (kind == EntryKind::Folder || !LeadsToFile(name + L'\\' + found.cFileName)))
      kind = EntryKind::Other;
    visit(Utf8Of(found.cFileName), kind);
  });
  SetLastError(error);
  return error == ERROR_SUCCESS ? std::error_code{} : LastError();
}

fs::path FullPathOf(const fs::path& typed) {
  const fs::path full = AbsolutePath(typed);
  // The typed name may be in other case or the short form. Pieces are named after the file, so use
  // the name on the disk.
  const Search search(LongPath(full));
  const bool found = search.handle != INVALID_HANDLE_VALUE && full.has_filename() &&
                     full.native().find_first_of(L"*?") == std::wstring::npos;
  return found ? full.parent_path() / search.found.cFileName : full;
}

}  // namespace slyver
