#include "engine/settings/Registry.h"

#include <gtest/gtest.h>

#include "support/TempFolder.h"

namespace slyver {
namespace {

constexpr RegRoot machine = RegRoot::LocalMachine;

TEST_F(TempFolderTest, RegistryKeepsTextsByRootKeyAndName) {
  using Value = std::tuple<RegRoot, std::string_view, std::string_view, std::string>;
  const std::vector<Value> values = {{machine, slyverKey, "RAM", "0"},
                                     {RegRoot::ClassesRoot, slyverKey, "RAM", " blanks "},
                                     {RegRoot::DynData, slyverKey, "RAM", "\"quoted\""},
                                     {machine, R"(Software\Orm Valis\FC)", "RAM", "a=b;[c]"},
                                     {machine, slyverKey, "Other", std::string(200, 'x')}};
  EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), "");
  for (const auto& [root, key, name, text] : values) SaveRegString(root, key, name, text);
  for (const auto& [root, key, name, text] : values) EXPECT_EQ(GetRegString(root, key, name), text);
  for (const std::string_view text : {std::string_view("before\0behind", 13), std::string_view()}) {
    SaveRegString(machine, slyverKey, "RAM", text);
    EXPECT_EQ(GetRegString(machine, slyverKey, "RAM"), text.substr(0, 6));
  }
}

}  // namespace
}  // namespace slyver
