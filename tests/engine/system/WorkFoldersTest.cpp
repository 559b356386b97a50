#include "engine/system/WorkFolders.h"

#include <gtest/gtest.h>

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
    hasLinks = MakeFolderLink(folder / "outside", work / "link");
  }

  void ExpectOutsideUntouched() const {
    EXPECT_EQ(Names(folder / "outside"), std::set<std::string>{"kept"});
  }

  fs::path work;
  bool hasLinks = false;
};

TEST_F(WorkFolders, RemovingTakesAllAndFollowsNoLinks) {
  RemoveFolder(work);
  RemoveFolder(work);  // not there any more: no failure
  EXPECT_EQ(Names(), std::set<std::string>{"outside"});
  if (!hasLinks) GTEST_SKIP() << "no links here";
  ExpectOutsideUntouched();
  ASSERT_TRUE(MakeFolderLink(folder / "outside", work));
  RemoveFolder(work);
  EXPECT_EQ(Names(), std::set<std::string>{"outside"});
  ExpectOutsideUntouched();
}

TEST_F(WorkFolders, AFreshFolderIsEmptyAndNeverALink) {
  MakeFreshFolder(work);
  EXPECT_TRUE(fs::is_empty(work));
  fs::remove(work);
  if (MakeFolderLink(folder / "outside", work)) {
    MakeFreshFolder(work);
    EXPECT_FALSE(fs::is_symlink(work));
    EXPECT_TRUE(fs::is_empty(work));
    ExpectOutsideUntouched();
  }

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
  EXPECT_EQ(WithSeparator("a"), fs::path("a") / "");
  EXPECT_EQ(WithSeparator(fs::path("a") / ""), fs::path("a") / "");
}

}  // namespace
}  // namespace slyver
