#include <gtest/gtest.h>

#include "engine/system/Registry.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

TEST_F(TempFolderTest, RegistryFailuresGoUnnoticedAndDeletingMakesNothing) {
  const std::filesystem::path configuration = folder.parent_path() / "config";
  DeleteFilePathValue();
  EXPECT_FALSE(std::filesystem::exists(configuration));
  WriteFile(configuration, "a file where the folder should be");
  SaveRegString(RegRoot::LocalMachine, slyverKey, "RAM", "0");
  EXPECT_EQ(GetRegString(RegRoot::LocalMachine, slyverKey, "RAM"), "");
  EXPECT_NE(DeleteRegValue(RegRoot::LocalMachine, slyverKey, "RAM"), 0);
}

}  // namespace
}  // namespace slyver
