#include <gtest/gtest.h>
#include <unistd.h>

#include "engine/system/WorkFolders.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

TEST_F(TempFolderTest, RemovingAFolderTakesReadOnlyContents) {
  const fs::path work = folder / "work";
  fs::create_directories(work / "sub" / "deep");
  WriteFile(work / "sub" / "deep" / "file", "x");
  fs::create_symlink("nowhere", work / "broken");
  fs::permissions(work / "sub" / "deep", fs::perms::owner_read);
  fs::permissions(work / "sub", fs::perms::owner_read | fs::perms::owner_exec);
  RemoveFolder(work);
  EXPECT_EQ(Names(), std::set<std::string>{});
}

TEST_F(TempFolderTest, ThePrivateFolderIsTheUsersAlone) {
  const fs::path expected = folder.parent_path() / "run" / "slyver";
  EXPECT_EQ(PrivateFolder(), expected);
  EXPECT_EQ(fs::status(expected).permissions(), fs::perms::owner_all);
  fs::permissions(expected, fs::perms::all);
  EXPECT_EQ(PrivateFolder(), expected);
  EXPECT_EQ(fs::status(expected).permissions(), fs::perms::owner_all) << "closed to others";
  MakeFolder(folder / "own", Access::OwnerOnly);
  EXPECT_EQ(fs::status(folder / "own").permissions(), fs::perms::owner_all);

  fs::remove(expected);
  fs::create_directory_symlink(folder / "own", expected);
  EXPECT_EQ(ErrorOf([] { (void)PrivateFolder(); }), expected.string() + ": Not a folder");
  fs::remove(expected);
  fs::create_directory(expected);
  if (chown(expected.c_str(), 1, 1) != 0) GTEST_SKIP() << "only root can give folders away";
  EXPECT_EQ(ErrorOf([] { (void)PrivateFolder(); }),
            expected.string() + ": The folder belongs to another user");
}

}  // namespace
}  // namespace slyver
