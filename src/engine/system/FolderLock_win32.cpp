#include "engine/system/FolderLock.h"

#include <array>
#include <cwchar>

#include "engine/system/FileError.h"
#include "engine/system/Wide_win32.h"

namespace slyver {

namespace {

/// A name for the folder's lock that all programs on this computer agree on, however each of them
/// spells the path.
std::wstring LockName(const std::filesystem::path& folder) {
  const Handle handle(CreateFileW(LongPath(folder).c_str(), FILE_READ_ATTRIBUTES,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  BY_HANDLE_FILE_INFORMATION information = {};
  if (!handle || GetFileInformationByHandle(handle.Get(), &information) == 0)
    FailWithLastError(folder);
  if ((information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
    throw FileError(folder, std::make_error_code(std::errc::not_a_directory));
  std::array<wchar_t, 64> name = {};
  (void)std::swprintf(name.data(), name.size(), LR"(Global\Slyver-%08lx-%08lx%08lx)",
                      information.dwVolumeSerialNumber, information.nFileIndexHigh,
                      information.nFileIndexLow);
  return name.data();
}

}  // namespace

/// The lock is held as long as its object exists. To own the mutex would not do: its owner may take
/// it again, and two jobs of one program are to be kept apart too.
struct FolderLock::State {
  Handle lock;
};

FolderLock::FolderLock(const std::filesystem::path& folder, Ui& ui, std::chrono::seconds patience)
    : state_(std::make_unique<State>()) {
  const std::wstring name = LockName(folder);
  const auto giveUp = std::chrono::steady_clock::now() + patience;
  while (true) {
    SetLastError(ERROR_SUCCESS);
    state_->lock = Handle(CreateMutexW(nullptr, FALSE, name.c_str()));
    const DWORD error = GetLastError();
    // A lock of another user's program may not even be looked at.
    if (error != ERROR_ALREADY_EXISTS && error != ERROR_ACCESS_DENIED) return;
    state_->lock.Close();
    if (std::chrono::steady_clock::now() >= giveUp)
      throw FileError(folder, "Another program is working in this folder");
    if (!ui.GoOn()) throw Cancelled{};
    Sleep(20);
  }
}

FolderLock::~FolderLock() = default;

}  // namespace slyver
