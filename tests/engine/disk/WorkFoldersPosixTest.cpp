#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "engine/base/FileError.h"
#include "engine/disk/WorkFolders.h"
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

  fs::remove(expected);
  WriteFile(expected, "no folder");
  for (const char* when : {"first", "later"}) {
    EXPECT_EQ(PrivateFolder(), run / "slyver.1") << when;
    EXPECT_EQ(modeOf(run / "slyver.1"), fs::perms::owner_all);
  }
  const bool isRoot = chown((run / "slyver.1").c_str(), 1, 1) == 0;
  EXPECT_EQ(PrivateFolder(), run / (isRoot ? "slyver.2" : "slyver.1")) << "another user's";
  for (int number = 1; number < 100; ++number) {
    const fs::path name = run / ("slyver." + std::to_string(number));
    fs::remove(name);
    WriteFile(name, "no folder");
  }
  EXPECT_THROW(PrivateFolder(), FileError);

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
