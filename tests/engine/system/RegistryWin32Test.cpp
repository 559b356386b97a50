#include <gtest/gtest.h>
#include <windows.h>

#include "engine/system/Registry.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

constexpr RegRoot machine = RegRoot::LocalMachine;

/// Values as the system itself has them, held against the program's routines.
class SystemRegistry : public TempFolderTest {
 protected:
  void TearDown() override {
    for (const HKEY key : open_) RegCloseKey(key);
    TempFolderTest::TearDown();
  }

  HKEY Key(HKEY root) {
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyA(root, std::string(slyverKey).c_str(), &key), ERROR_SUCCESS);
    open_.push_back(key);
    return key;
  }
  void Put(DWORD type, std::string_view bytes, HKEY root = HKEY_LOCAL_MACHINE) {
    EXPECT_EQ(RegSetValueExA(Key(root), "RAM", 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                             static_cast<DWORD>(bytes.size())),
              ERROR_SUCCESS);
  }
  /// "type:bytes", or "none".
  std::string Stored(HKEY root = HKEY_LOCAL_MACHINE) {
    DWORD type = 0;
    std::string bytes(100, ' ');
    DWORD size = 100;
    if (RegQueryValueExA(Key(root), "RAM", nullptr, &type, reinterpret_cast<BYTE*>(bytes.data()),
                         &size) != ERROR_SUCCESS)
      return "none";
    // The system may add the zero that ends a string by itself.
    return std::to_string(type) + ":" + std::string(bytes.substr(0, size).c_str());
  }

 private:
  std::vector<HKEY> open_;
};

TEST_F(SystemRegistry, ReadsStringsAloneAndUpToAZero) {
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "");
  struct Case {
    DWORD type;
    std::string_view bytes, value;
  };
  for (const Case& c : {Case{REG_SZ, {"0\0", 2}, "0"}, Case{REG_SZ, "0", "0"}, Case{REG_SZ, "", ""},
                        Case{REG_SZ, {"ab\0cd\0", 6}, "ab"}, Case{REG_SZ, {"\0b", 2}, ""},
                        Case{REG_DWORD, {"0\0\0\0", 4}, ""}, Case{REG_EXPAND_SZ, {"0\0", 2}, ""},
                        Case{REG_MULTI_SZ, {"0\0\0", 3}, ""}, Case{REG_BINARY, "0", ""}}) {
    Put(c.type, c.bytes);
    EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), c.value) << c.type << " " << c.bytes;
  }
}

TEST_F(SystemRegistry, StoresStringsWithoutATerminatingZero) {
  SaveRegString(machine, slyverKey, "RAM", "0");
  EXPECT_EQ(Stored(), "1:0");
  SaveRegString(machine, slyverKey, "RAM", "");
  EXPECT_EQ(Stored(), "1:");
  EXPECT_EQ(DeleteRegValue(machine, slyverKey, "RAM"), 0);
  EXPECT_EQ(Stored(), "none");
  EXPECT_EQ(DeleteRegValue(machine, slyverKey, "RAM"), ERROR_FILE_NOT_FOUND);
  EXPECT_NE(DeleteRegValue(machine, "Software\\Orm Valis\\None", "RAM"), 0);
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
  EXPECT_EQ(Stored(HKEY_CURRENT_USER), "1:0");
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "0");
  EXPECT_EQ(DeleteRegValue(machine, slyverKey, "RAM"), 0);
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "");
  SaveRegString(RegRoot::DynData, slyverKey, "RAM", "0");
  EXPECT_EQ(Stored(HKEY_CURRENT_USER), "none") << "other roots have no second place";
  RegCloseKey(deleted);
}

}  // namespace
}  // namespace slyver
