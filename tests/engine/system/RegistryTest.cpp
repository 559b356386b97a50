#include "engine/system/Registry.h"

#include <gtest/gtest.h>

#include "support/TempFolder.h"

namespace slyver {
namespace {

constexpr RegRoot machine = RegRoot::LocalMachine;

class RegistryValues : public TempFolderTest {};

TEST_F(RegistryValues, KeepsValuesByRootKeyAndName) {
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "");
  SaveRegString(machine, slyverKey, "RAM", "0");
  SaveRegString(RegRoot::ClassesRoot, slyverKey, "RAM", "other root");
  SaveRegString(machine, R"(Software\Orm Valis\FC)", "RAM", "other key");
  SaveRegString(machine, slyverKey, "Other", "other name");
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "0");
  SaveRegString(machine, slyverKey, "RAM", "");
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "");
  EXPECT_EQ(GetRegString(RegRoot::ClassesRoot, slyverKey, "RAM"), "other root");
  EXPECT_EQ(GetRegString(machine, R"(Software\Orm Valis\FC)", "RAM"), "other key");
  EXPECT_EQ(GetRegString(machine, slyverKey, "Other"), "other name");
}

TEST_F(RegistryValues, KeepsTextsAsTheyAre) {
  const std::string longText(200, 'x');
  for (const std::string& text :
       {std::string(" blanks "), std::string("\"quoted\""), std::string("a=b;[c]"), longText}) {
    SaveRegString(machine, slyverKey, "Text", text);
    EXPECT_EQ(GetRegString(machine, slyverKey, "Text"), text);
  }
  SaveRegString(machine, slyverKey, "Text", std::string_view("before\0behind", 13));
  EXPECT_EQ(GetRegString(machine, slyverKey, "Text"), "before");
}

TEST_F(RegistryValues, DeletesValues) {
  DeleteFilePathValue();  // nothing to delete
  SaveRegString(machine, R"(Software\Orm Valis\FC)", "filepath", "/a");
  SaveRegString(machine, R"(Software\Orm Valis\FC)", "other", "/b");
  DeleteFilePathValue();
  EXPECT_EQ(GetRegString(machine, R"(Software\Orm Valis\FC)", "filepath"), "");
  EXPECT_EQ(GetRegString(machine, R"(Software\Orm Valis\FC)", "other"), "/b");
  EXPECT_EQ(DeleteRegValue(machine, R"(Software\Orm Valis\FC)", "other"), 0);
  EXPECT_NE(DeleteRegValue(machine, R"(Software\Orm Valis\FC)", "other"), 0);
}

}  // namespace
}  // namespace slyver
