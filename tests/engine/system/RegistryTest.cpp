#include "engine/system/Registry.h"

#include <gtest/gtest.h>

#include "support/TempFolder.h"

namespace slyver {
namespace {

constexpr RegRoot machine = RegRoot::LocalMachine;

class RegistryValues : public TempFolderTest {};

TEST_F(RegistryValues, KeepsTextsByRootKeyAndName) {
  struct Value {
    RegRoot root;
    std::string_view key, name;
    std::string text;
  };
  const Value values[] = {{machine, slyverKey, "RAM", "0"},
                          {RegRoot::ClassesRoot, slyverKey, "RAM", " blanks "},
                          {RegRoot::DynData, slyverKey, "RAM", "\"quoted\""},
                          {machine, R"(Software\Orm Valis\FC)", "RAM", "a=b;[c]"},
                          {machine, slyverKey, "Other", std::string(200, 'x')}};
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "");
  for (const Value& v : values) SaveRegString(v.root, v.key, v.name, v.text);
  for (const Value& v : values) EXPECT_EQ(GetRegString(v.root, v.key, v.name), v.text);
  for (const std::string_view text : {std::string_view("before\0behind", 13), std::string_view()}) {
    SaveRegString(machine, slyverKey, "RAM", text);
    EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), text.substr(0, 6));
  }
}

TEST_F(RegistryValues, DeletesValues) {
  DeleteFilePathValue();  // nothing to delete
  EXPECT_FALSE(std::filesystem::exists(folder.parent_path() / "config"));
  for (const char* name : {"filepath", "other"})
    SaveRegString(machine, R"(Software\Orm Valis\FC)", name, "/a");
  DeleteFilePathValue();
  EXPECT_EQ(GetRegString(machine, R"(Software\Orm Valis\FC)", "filepath"), "");
  EXPECT_EQ(GetRegString(machine, R"(Software\Orm Valis\FC)", "other"), "/a");
  EXPECT_EQ(DeleteRegValue(machine, R"(Software\Orm Valis\FC)", "other"), 0);
  EXPECT_NE(DeleteRegValue(machine, R"(Software\Orm Valis\FC)", "other"), 0);
}

}  // namespace
}  // namespace slyver
