#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "engine/system/WorkFolders.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

TEST_F(TempFolderTest, WorkFoldersAreTheUsersAlone) {
  const auto modeOf = [](const fs::path& path) { return fs::status(path).permissions(); };
  EXPECT_EQ(modeOf(ScratchFolder(folder / "TempRRR").Path()), fs::perms::owner_all);
  const fs::path run = folder.parent_path() / "run";
  const fs::path expected = run / "slyver";
  EXPECT_EQ(PrivateFolder(), expected);
  EXPECT_EQ(modeOf(expected), fs::perms::owner_all);

  const fs::path otherwise = "/tmp/slyver-" + std::to_string(geteuid());
  setenv("XDG_RUNTIME_DIR", (run / "gone" / "deep").c_str(), 1);
  EXPECT_EQ(PrivateFolder(), otherwise) << "a runtime folder that is not there is not made";
  EXPECT_FALSE(fs::exists(run / "gone"));
  setenv("XDG_RUNTIME_DIR", run.c_str(), 1);
  if (chown(run.c_str(), 1, 1) != 0) GTEST_SKIP() << "only root can give folders away";
  EXPECT_EQ(PrivateFolder(), otherwise) << "another user's runtime folder";
}

}  // namespace
}  // namespace slyver
