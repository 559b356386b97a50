#include "support/Platform.h"

#include <gtest/gtest.h>
#include <windows.h>
// The system's headers have to come behind this one.
#include <winioctl.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "engine/system/Disk.h"

namespace slyver {

namespace fs = std::filesystem;

fs::path MakeUniqueFolder() {
  std::array<wchar_t, MAX_PATH + 2> temporary = {};
  EXPECT_NE(GetTempPathW(MAX_PATH + 1, temporary.data()), 0U);
  for (int i = 0;; ++i) {
    const fs::path folder =
        fs::path(temporary.data()) /
        (L"slyver-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(i));
    if (CreateDirectoryW(folder.c_str(), nullptr) != 0) return folder;
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
  }
}

/// The registry's roots are other keys while it lives, so that the user's settings stay as they
/// are.
struct PlacesIn::State {
  static constexpr const char* registryFolder = R"(Software\Orm Valis\Slyver tests)";

  std::string testKey = std::string(registryFolder) + "\\" + std::to_string(GetCurrentProcessId());
  std::array<HKEY, 3> roots = {HKEY_LOCAL_MACHINE, HKEY_CLASSES_ROOT, HKEY_CURRENT_USER};
  std::array<HKEY, 3> keys = {};
  std::array<wchar_t, MAX_PATH + 2> temporaryBefore = {};
};

PlacesIn::PlacesIn(const fs::path& root) : state_(std::make_unique<State>()) {
  State& state = *state_;
  EXPECT_NE(GetTempPathW(MAX_PATH + 1, state.temporaryBefore.data()), 0U);
  EXPECT_TRUE(SetEnvironmentVariableW(L"TMP", (root / "run").c_str()));
  for (std::size_t i = 0; i < state.keys.size(); ++i) {
    const std::string path = state.testKey + "\\" + std::to_string(i);
    EXPECT_EQ(RegCreateKeyA(HKEY_CURRENT_USER, path.c_str(), &state.keys.at(i)), ERROR_SUCCESS);
  }
  for (std::size_t i = 0; i < state.keys.size(); ++i)
    EXPECT_EQ(RegOverridePredefKey(state.roots.at(i), state.keys.at(i)), ERROR_SUCCESS);
}

PlacesIn::~PlacesIn() {
  for (const HKEY root : state_->roots)
    EXPECT_EQ(RegOverridePredefKey(root, nullptr), ERROR_SUCCESS);
  for (const HKEY key : state_->keys) EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteTreeA(HKEY_CURRENT_USER, state_->testKey.c_str()), ERROR_SUCCESS);
  // Goes with the last test that uses it.
  (void)RegDeleteKeyA(HKEY_CURRENT_USER, State::registryFolder);
  EXPECT_TRUE(SetEnvironmentVariableW(L"TMP", state_->temporaryBefore.data()));
}

/// A junction, which needs no rights.
bool MakeFolderLink(const fs::path& to, const fs::path& at) {
  if (CreateDirectoryW(at.c_str(), nullptr) == 0) return false;
  const std::wstring target = LR"(\??\)" + to.native();
  const auto targetBytes = static_cast<WORD>(target.size() * sizeof(wchar_t));
  // The tag, the length of what follows, and four offsets and lengths of the two names.
  struct Header {
    DWORD tag;
    WORD length, reserved;
    WORD nameOffset, nameLength, shownOffset, shownLength;
  };
  const Header header = {IO_REPARSE_TAG_MOUNT_POINT,
                         static_cast<WORD>(8 + targetBytes + 2 * sizeof(wchar_t)),
                         0,
                         0,
                         targetBytes,
                         static_cast<WORD>(targetBytes + sizeof(wchar_t)),
                         0};
  std::vector<char> data(sizeof header + targetBytes + 2 * sizeof(wchar_t));
  std::memcpy(data.data(), &header, sizeof header);
  std::memcpy(data.data() + sizeof header, target.data(), targetBytes);
  const HANDLE folder =
      CreateFileW(at.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                  FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  DWORD returned = 0;
  const bool made =
      DeviceIoControl(folder, FSCTL_SET_REPARSE_POINT, data.data(), static_cast<DWORD>(data.size()),
                      nullptr, 0, &returned, nullptr) != 0;
  (void)CloseHandle(folder);
  if (!made) (void)RemoveDirectoryW(at.c_str());
  return made;
}

bool MakeFileLink(const fs::path& to, const fs::path& at) {
  constexpr DWORD withoutRights = 2;
  return CreateSymbolicLinkW(at.c_str(), to.c_str(), withoutRights) != 0 && NameIsTaken(at);
}

std::uint64_t SpaceTaken(const fs::path& path) {
  DWORD high = 0;
  const DWORD low = GetCompressedFileSizeW(path.c_str(), &high);
  return (std::uint64_t{high} << 32U) | low;
}

struct LockedFile::State {
  HANDLE handle = nullptr;
};

LockedFile::LockedFile(const fs::path& path) : state_(std::make_unique<State>()) {
  state_->handle = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
  EXPECT_NE(state_->handle, INVALID_HANDLE_VALUE);
}

LockedFile::~LockedFile() {
  (void)CloseHandle(state_->handle);
}

}  // namespace slyver
