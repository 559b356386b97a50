#include "support/Platform.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <string>

#include "engine/disk/Disk.h"

namespace slyver {

namespace fs = std::filesystem;

/// The registry's roots are other keys meanwhile, so that the user's settings stay as they
/// are.
std::shared_ptr<void> KeepPlacesIn(const fs::path& root) {
  const std::string testsKey = R"(Software\Orm Valis\Slyver tests)";
  const std::string testKey = testsKey + "\\" + std::to_string(GetCurrentProcessId());
  const std::array<HKEY, 3> roots = {HKEY_LOCAL_MACHINE, HKEY_CLASSES_ROOT, HKEY_CURRENT_USER};
  std::array<HKEY, 3> keys = {};
  std::array<wchar_t, MAX_PATH + 2> temporary = {};
  EXPECT_NE(GetTempPathW(MAX_PATH + 1, temporary.data()), 0U);
  EXPECT_TRUE(SetEnvironmentVariableW(L"TMP", (root / "run").c_str()));
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const std::string path = testKey + "\\" + std::to_string(i);
    EXPECT_EQ(RegCreateKeyA(HKEY_CURRENT_USER, path.c_str(), &keys.at(i)), ERROR_SUCCESS);
  }
  for (std::size_t i = 0; i < keys.size(); ++i)
    EXPECT_EQ(RegOverridePredefKey(roots.at(i), keys.at(i)), ERROR_SUCCESS);
  return {nullptr, [=](void* /*none*/) {
            for (const HKEY key : roots)
              EXPECT_EQ(RegOverridePredefKey(key, nullptr), ERROR_SUCCESS);
            for (const HKEY key : keys) EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
            EXPECT_EQ(RegDeleteTreeA(HKEY_CURRENT_USER, testKey.c_str()), ERROR_SUCCESS);
            // Goes with the last test that uses it.
            (void)RegDeleteKeyA(HKEY_CURRENT_USER, testsKey.c_str());
            EXPECT_TRUE(SetEnvironmentVariableW(L"TMP", temporary.data()));
          }};
}

bool KeysReachForms() {
  return false;
}

bool MakeLink(const fs::path& to, const fs::path& at) {
  const DWORD kind = fs::is_directory(to) ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0;
  constexpr DWORD withoutRights = 2;
  return CreateSymbolicLinkW(at.c_str(), to.c_str(), kind | withoutRights) != 0 && NameIsTaken(at);
}

std::uint64_t SpaceTaken(const fs::path& path) {
  DWORD high = 0;
  const DWORD low = GetCompressedFileSizeW(path.c_str(), &high);
  return (std::uint64_t{high} << 32U) | low;
}

std::shared_ptr<void> LockFile(const fs::path& path) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  EXPECT_NE(file, INVALID_HANDLE_VALUE);
  return {file, CloseHandle};
}

}  // namespace slyver
