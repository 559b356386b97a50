#include <gtest/gtest.h>
#include <windows.h>

#include "engine/settings/Registry.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

constexpr RegRoot machine = RegRoot::LocalMachine;

HKEY Key(HKEY root) {
  HKEY key = nullptr;
  EXPECT_EQ(RegCreateKeyA(root, std::string(slyverKey).c_str(), &key), ERROR_SUCCESS);
  return key;
}

/// Stores the value as the system itself does.
void Put(DWORD type, std::string_view bytes, HKEY root = HKEY_LOCAL_MACHINE) {
  const HKEY key = Key(root);
  EXPECT_EQ(RegSetValueExA(key, "RAM", 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                           static_cast<DWORD>(bytes.size())),
            ERROR_SUCCESS);
  RegCloseKey(key);
}

/// What the system has: the text, or "none".
std::string Stored(HKEY root = HKEY_LOCAL_MACHINE) {
  const HKEY key = Key(root);
  DWORD type = 0;
  std::array<char, 100> bytes = {};
  DWORD size = bytes.size();
  const bool found =
      RegQueryValueExA(key, "RAM", nullptr, &type, reinterpret_cast<BYTE*>(bytes.data()), &size) ==
      ERROR_SUCCESS;
  RegCloseKey(key);
  return found && type == REG_SZ ? bytes.data() : "none";
}

using SystemRegistry = TempFolderTest;

TEST_F(SystemRegistry, ReadsStringsAloneUpToAZeroAndStoresThemWithoutOne) {
  using namespace std::string_view_literals;
  for (const auto& [type, bytes, value] : {std::tuple{REG_SZ, "0"sv, "0"},
                                           {REG_SZ, ""sv, ""},
                                           {REG_SZ, "ab\0cd\0"sv, "ab"},
                                           {REG_DWORD, "0\0\0\0"sv, ""},
                                           {REG_EXPAND_SZ, "0\0"sv, ""}}) {
    Put(static_cast<DWORD>(type), bytes);
    EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), value) << type << " " << bytes;
  }
  SaveRegString(machine, slyverKey, "RAM", "0");
  EXPECT_EQ(Stored(), "0");
  EXPECT_EQ(DeleteRegValue(machine, slyverKey, "RAM"), 0);
  EXPECT_EQ(DeleteRegValue(machine, slyverKey, "RAM"), ERROR_FILE_NOT_FOUND);
}

TEST_F(SystemRegistry, WhoMayNotWriteForTheMachineHasSettingsOfHisOwn) {
  Put(REG_SZ, "user", HKEY_CURRENT_USER);
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "user");
  Put(REG_SZ, "machine");
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "machine");
  SaveRegString(machine, slyverKey, "RAM", "");
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "") << "what the user had is out of date";
  EXPECT_EQ(Stored(HKEY_CURRENT_USER), "none");

  // No key can be made in, or read from, one that is deleted.
  HKEY deleted = nullptr;
  ASSERT_EQ(RegCreateKeyA(HKEY_CURRENT_USER, "Software\\Deleted", &deleted), ERROR_SUCCESS);
  ASSERT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\Deleted"), ERROR_SUCCESS);
  ASSERT_EQ(RegOverridePredefKey(HKEY_LOCAL_MACHINE, deleted), ERROR_SUCCESS);
  SaveRegString(machine, slyverKey, "RAM", "0");
  EXPECT_EQ(Stored(HKEY_CURRENT_USER), "0");
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "0");
  EXPECT_EQ(DeleteRegValue(machine, slyverKey, "RAM"), 0);
  SaveRegString(RegRoot::DynData, slyverKey, "RAM", "0");
  EXPECT_EQ(Stored(HKEY_CURRENT_USER), "none") << "other roots have no second place";
  RegCloseKey(deleted);
}

}  // namespace
}  // namespace slyver
