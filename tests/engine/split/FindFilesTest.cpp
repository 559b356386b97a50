#include "engine/split/FindFiles.h"

#include <thread>

#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

class FindFiles : public TempFolderTest {
 protected:
  std::set<std::string> Search() {
    std::set<std::string> found;
    counts = FindFilesAPI(folder, "*.sly", ui, [&](const fs::path& below, const std::string& name) {
      found.insert((below / name).generic_string());
    });
    EXPECT_EQ(counts.files, found.size());
    return found;
  }

  ScriptedUi ui;
  FindCounts counts;
};

TEST_F(FindFiles, LooksAtFilesAndFoldersAndFollowsNoLinkToAFolder) {
  fs::create_directory(folder / "folder.sly");
  MakeFiles(folder, "sub/deep/3.sly= sub/2.SLY= 1.sly= 1.sly.txt= sly=");
  std::set<std::string> expected = {"1.sly", "sub/2.SLY", "sub/deep/3.sly"};
  if (MakeLink(folder / "sly", folder / "link.sly") &&
      MakeLink(folder / "nowhere", folder / "broken.sly"))
    expected.insert("link.sly");
  (void)MakeLink(folder, folder / "circle");
  EXPECT_EQ(Search(), expected);
  EXPECT_EQ(counts.folders, 3U);
}

TEST_F(FindFiles, TellsHowFarItIsAndLooksDeepDown) {
  fs::path deep = folder;
  for (int i = 0; i < 70; ++i) fs::create_directory(deep /= "d");
  WriteFile(deep / "1.sly", "x");
  WriteFile(deep / "2.sly", "x");
  const std::uint64_t files = FindFilesAPI(folder, "*.sly", ui, [](const auto&, const auto&) {
                                std::this_thread::sleep_for(std::chrono::milliseconds(120));
                              }).files;
  EXPECT_EQ(files, 2U);
  EXPECT_EQ(ui.LastProgress().searched, 72U);
}

TEST_F(FindFiles, TrimsNamesOfFolders) {
  EXPECT_EQ(StripNulls(std::string("ab\0cd\0", 6)), "ab");
  const std::string separator(1, static_cast<char>(fs::path::preferred_separator));
  EXPECT_EQ(StripBackslash("  a b" + separator + separator + " "), "a b" + separator);
  EXPECT_EQ(StripBackslash("   "), "");
  EXPECT_TRUE(DirExists(" " + folder.string() + separator + " "));
  MakeFiles(folder, "file=");
  EXPECT_FALSE(DirExists((folder / "file").string()));
}

}  // namespace
}  // namespace slyver
