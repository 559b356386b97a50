#include "system/WorkFolders.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

class WorkFolders : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    work = folder / "work";
    fs::create_directories(work / "sub" / "deep");
    WriteFile(work / "sub" / "deep" / "file", "x");
    fs::create_directory(folder / "outside");
    WriteFile(folder / "outside" / "kept", "kept");
    fs::create_directory_symlink(folder / "outside", work / "link");
    fs::create_symlink("nowhere", work / "broken");
  }

  void ExpectOutsideUntouched() const {
    EXPECT_EQ(Names(folder / "outside"), std::set<std::string>{"kept"});
  }

  fs::path work;
};

TEST_F(WorkFolders, RemovingFollowsNoLinksAndTakesReadOnlyContents) {
  fs::permissions(work / "sub" / "deep", fs::perms::owner_read);
  fs::permissions(work / "sub", fs::perms::owner_read | fs::perms::owner_exec);
  RemoveFolder(work);
  RemoveFolder(work);  // not there any more: no failure
  EXPECT_EQ(Names(), std::set<std::string>{"outside"});

  fs::create_directory_symlink(folder / "outside", work);
  RemoveFolder(work);
  EXPECT_EQ(Names(), std::set<std::string>{"outside"});
  ExpectOutsideUntouched();
}

TEST_F(WorkFolders, AFreshFolderIsEmptyAndNeverALink) {
  MakeFreshFolder(work);
  EXPECT_TRUE(fs::is_empty(work));
  fs::remove(work);
  fs::create_directory_symlink(folder / "outside", work);
  MakeFreshFolder(work);
  EXPECT_FALSE(fs::is_symlink(work));
  EXPECT_TRUE(fs::is_empty(work));
  ExpectOutsideUntouched();

  const fs::path kept = folder / "outside" / "kept";
  EXPECT_EQ(ErrorOf([&] { MakeFreshFolder(kept); }), kept.string() + ": File exists");
  EXPECT_EQ(ReadFile(kept), "kept");
}

TEST_F(WorkFolders, AScratchFolderIsGoneAtTheEndWhateverHappens) {
  try {
    const ScratchFolder scratch(work);
    EXPECT_TRUE(fs::is_empty(scratch.Path()));
    WriteFile(work / "left", "x");
    throw Cancelled{};
  } catch (const Cancelled&) {
    EXPECT_EQ(Names(), std::set<std::string>{"outside"});
  }
}

TEST_F(WorkFolders, MakesEveryFolderFollowedByASeparator) {
  EXPECT_TRUE(MakeSureDirectoryPathExists(folder / "a" / "b" / "c"));
  EXPECT_TRUE(fs::is_directory(folder / "a" / "b"));
  EXPECT_FALSE(fs::exists(folder / "a" / "b" / "c"));
  EXPECT_TRUE(MakeSureDirectoryPathExists(WithSeparator(folder / "a" / "b" / "c")));
  EXPECT_TRUE(fs::is_directory(folder / "a" / "b" / "c"));
  EXPECT_FALSE(MakeSureDirectoryPathExists(folder / "outside" / "kept" / "x" / ""));
  EXPECT_EQ(WithSeparator("/a"), fs::path("/a/"));
  EXPECT_EQ(WithSeparator("/a/"), fs::path("/a/"));
}

TEST_F(WorkFolders, ThePrivateFolderIsTheUsersAlone) {
  const fs::path expected = folder.parent_path() / "run" / "slyver";
  EXPECT_EQ(PrivateFolder(), expected);
  EXPECT_EQ(fs::status(expected).permissions(), fs::perms::owner_all);
  fs::permissions(expected, fs::perms::all);
  EXPECT_EQ(PrivateFolder(), expected);
  EXPECT_EQ(fs::status(expected).permissions(), fs::perms::owner_all) << "closed to others";

  fs::remove(expected);
  fs::create_directory_symlink(folder / "outside", expected);
  EXPECT_EQ(ErrorOf([] { (void)PrivateFolder(); }), expected.string() + ": Not a folder");
  fs::remove(expected);
  fs::create_directory(expected);
  if (chown(expected.c_str(), 1, 1) != 0) GTEST_SKIP() << "only root can give folders away";
  EXPECT_EQ(ErrorOf([] { (void)PrivateFolder(); }),
            expected.string() + ": The folder belongs to another user");
}

}  // namespace
}  // namespace slyver
