#include "engine/disk/FolderLock.h"

#include "engine/base/Wide_win32.h"
#include "engine/disk/Disk.h"

namespace slyver {

struct FolderLock::State {
  std::filesystem::path path;
  Handle file;

  /// Opens the lock's file for this program alone.
  void Open(DWORD how) {
    file = Handle(CreateFileW(LongPath(path).c_str(), GENERIC_WRITE, 0, nullptr, how,
                              FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  }
};

FolderLock::FolderLock() : state_(std::make_unique<State>()) {}
FolderLock::~FolderLock() = default;

FolderLock::Answer FolderLock::Make(const std::filesystem::path& folder) {
  state_->path = folder / fileName;
  state_->Open(CREATE_NEW);
  if (state_->file) return Answer::Taken;
  const DWORD error = GetLastError();
  if (error == ERROR_PATH_NOT_FOUND || error == ERROR_FILE_EXISTS) return Answer::Missing;
  FailWithLastError(state_->path);
}

FolderLock::Answer FolderLock::Take(const std::filesystem::path& folder) {
  const DWORD attributes = GetFileAttributesW(LongPath(folder).c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return Answer::Missing;
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 ||
      (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
    return Answer::NoFolder;
  state_->path = folder / fileName;
  state_->Open(OPEN_EXISTING);
  if (state_->file) return Answer::Taken;
  const DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? Answer::Missing
                                                                        : Answer::Busy;
}

void FolderLock::Remove() {
  state_->file.Close();
  (void)RemoveFile(state_->path);
}

}  // namespace slyver
