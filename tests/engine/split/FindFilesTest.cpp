#include "engine/split/FindFiles.h"

#include <gtest/gtest.h>

#include "engine/system/FileError.h"
#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class FindFiles : public TempFolderTest {
 protected:
  std::vector<std::string> Search() {
    std::vector<std::string> found;
    counts = FindFilesAPI(folder, "*.sly", ui, [&](const fs::path& path) {
      found.push_back(path.lexically_relative(folder).generic_string());
    });
    return found;
  }

  ScriptedUi ui;
  FindCounts counts;
};

TEST_F(FindFiles, SearchesTheFolderBeforeItsSubfolders) {
  fs::create_directories(folder / "sub" / "deep");
  fs::create_directory(folder / "folder.sly");
  for (const char* name : {"sub/deep/3.sly", "sub/2.SLY", "1.sly", "1.sly.txt", "sly"})
    WriteFile(folder / name, "x");
  EXPECT_EQ(Search(), (std::vector<std::string>{"1.sly", "sub/2.SLY", "sub/deep/3.sly"}));
  EXPECT_EQ(counts.files, 3U);
  EXPECT_EQ(counts.folders, 3U);
}

TEST_F(FindFiles, TakesLinksToFilesAndFollowsNoneToFolders) {
  WriteFile(folder / "file", "x");
  const bool hasFileLinks = MakeFileLink(folder / "file", folder / "link.sly") &&
                            MakeFileLink(folder / "nowhere", folder / "broken.sly");
  if (!MakeFolderLink(folder, folder / "circle")) GTEST_SKIP() << "no links here";
  EXPECT_EQ(Search().size(), hasFileLinks ? 1U : 0U);
  EXPECT_EQ(counts.folders, 0U);
}

TEST_F(FindFiles, FailsWithoutTheFolderAndStopsWhenAsked) {
  WriteFile(folder / "1.sly", "x");
  ui.StopAtBytes(0);
  EXPECT_THROW(Search(), Cancelled);
  fs::remove_all(folder);
  EXPECT_EQ(ErrorOf([&] { (void)Search(); }), folder.string() + ": No such file or directory");
}

TEST_F(FindFiles, TrimsNamesOfFolders) {
  EXPECT_EQ(StripNulls(std::string("ab\0cd\0", 6)), "ab");
  EXPECT_EQ(StripNulls("ab"), "ab");
  const std::string separator(1, static_cast<char>(fs::path::preferred_separator));
  for (const std::string& path : {"a b"s, "a b" + separator, "  a b" + separator + " ", "a b  "s})
    EXPECT_EQ(StripBackslash(path), "a b");
  EXPECT_EQ(StripBackslash("a" + separator + separator), "a" + separator);
  EXPECT_EQ(StripBackslash("   "), "");

  WriteFile(folder / "file", "x");
  EXPECT_TRUE(DirExists(folder.string()));
  EXPECT_TRUE(DirExists(" " + folder.string() + separator + " "));
  EXPECT_FALSE(DirExists((folder / "file").string()));
  EXPECT_FALSE(DirExists(""));
}

}  // namespace
}  // namespace slyver
