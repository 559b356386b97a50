#include "desktop/app/frmFirst.h"

#include <gtest/gtest.h>

#include "desktop/app/Instance.h"
#include "engine/system/WorkFolders.h"
#include "support/DesktopTest.h"

namespace slyver {
namespace {

constexpr const char* lowTotal =
    "Computer's RAM Is Less Than The Minimum Requirement i.e. 64mb And Less Than 30% Of The "
    "Physical Memory Is Free. Exit Other Applications That You May Be Running Or Slyver Will Take "
    "A Lot Of Time To Execute. Do You Want To Continue?";
constexpr const char* lowFree =
    "Less Than 15% Of The Physical Memory Is Free. Exit Any Other Applications That You May Be "
    "Running Or Slyver Will Take A Lot Of Time To Execute. Do You Want To Continue?";
constexpr const char* again = "Do You Want To See This RAM Warning Again?";
constexpr const char* another =
    "Slyver Is Already Running. Do You Want To Create Another Instance Of It?";
constexpr const char* together =
    "Please Make Sure All The Sly Files Are In The Same Folder. Are They In The Same Folder?";
constexpr const char* pieceTitle = "Please Select Any Other File To Join.";
constexpr const char* pieceFilter = "Sly File (*.Sly)|*.Sly;|";
constexpr const char* noFile = "No File Selected. Do You Want To Exit?";

/// The values "filepath" that outside components leave and that go at most exits.
bool FilePathValueIsThere() {
  return !GetRegString(RegRoot::LocalMachine, "Software\\Orm Valis\\FC", "filepath").empty();
}

class frmFirstTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    SaveRegString(RegRoot::LocalMachine, "Software\\Orm Valis\\FC", "filepath", "x");
    SaveRegString(RegRoot::ClassesRoot, "StrTempSly", "filepath", "x");
  }
};

TEST_F(frmFirstTest, WithoutArgumentTheSelectionFormComes) {
  Start();
  EXPECT_TRUE(IsShown("frmSplitJoin"));
  EXPECT_FALSE(IsLoaded("frmSplitter"));
  EXPECT_TRUE(IsLoaded("frmFirst"));
  EXPECT_FALSE(IsShown("frmFirst"));
  EXPECT_EQ(FindForm("frmSplitJoin")->GetTitle(), "Selection");
}

TEST_F(frmFirstTest, SecondInstanceIsAskedFor) {
  anotherRuns = true;
  ui.ExpectQuestion(another, Answer::Cancel, Buttons::OkCancel);
  ui.ExpectEndProgram();
  Start();
  EXPECT_FALSE(IsLoaded("frmSplitJoin"));
  EXPECT_FALSE(FilePathValueIsThere());
}

TEST_F(frmFirstTest, SecondInstanceGoesOnWhenTheUserWants) {
  anotherRuns = true;
  ui.ExpectQuestion(another, Answer::Ok, Buttons::OkCancel);
  Start();
  EXPECT_TRUE(IsShown("frmSplitJoin"));
}

TEST_F(frmFirstTest, LittleMemoryIsWarnedOf) {
  // 66,000,000 bytes are 63.2 of the units that the start-up counts in.
  memory = {.totalPhysical = 66'000'000, .availablePhysical = 10'000'000};
  ui.ExpectQuestion(lowTotal, Answer::No);
  ui.ExpectEndProgram();
  Start();
  EXPECT_FALSE(IsLoaded("frmSplitJoin"));
  EXPECT_TRUE(FilePathValueIsThere());
  EXPECT_EQ(RamValue(), "");
}

TEST_F(frmFirstTest, MemoryFiguresDecideWhichWarningComes) {
  struct Case {
    std::uint64_t total;
    std::uint64_t available;
    const char* warning;
  };
  const std::vector<Case> cases = {
      {67'108'864, 14'000'000, nullptr},  // 64.3: not below 64, and 20% free.
      {67'108'864, 10'000'000, lowFree},  // 14%.
      {66'000'000, 19'900'000, nullptr},  // 30%.
      {66'000'000, 19'700'000, lowTotal},      {8'000'000'000, 1'199'000'000, lowFree},
      {8'000'000'000, 1'201'000'000, nullptr}, {0, 0, nullptr}};  // A system that does not tell.
  for (const Case& figures : cases) {
    SCOPED_TRACE(figures.available);
    memory = {.totalPhysical = figures.total, .availablePhysical = figures.available};
    if (figures.warning != nullptr) {
      ui.ExpectQuestion(figures.warning, Answer::Yes);
      ui.ExpectQuestion(again, Answer::Yes);
    }
    MakeDesktop();
    Start();
    EXPECT_TRUE(IsShown("frmSplitJoin"));
    EXPECT_EQ(RamValue(), "");
  }
}

TEST_F(frmFirstTest, WarningCanBeSwitchedOffForGood) {
  memory = {.totalPhysical = 8'000'000'000, .availablePhysical = 100'000'000};
  ui.ExpectQuestion(lowFree, Answer::Yes);
  ui.ExpectQuestion(again, Answer::No);
  Start();
  EXPECT_EQ(RamValue(), "0");
  EXPECT_TRUE(desktop->MainMenu().Sly[0]->IsChecked());
  MakeDesktop();
  Start();  // No question this time.
}

TEST_F(frmFirstTest, FileOpensTheSplitForm) {
  const std::filesystem::path file = folder / "part.Sly";  // Mixed case: no piece.
  WriteFile(file, "bytes");
  Start(file);
  EXPECT_TRUE(IsShown("frmSplitter"));
  EXPECT_FALSE(IsLoaded("frmSplitJoin"));
  EXPECT_EQ(TextOf("frmSplitter", "Text1"), PathText(file));
  EXPECT_EQ(TextOf("frmSplitter", "Text2"), PathText(folder / ""));
}

TEST_F(frmFirstTest, RelativePathIsMadeAbsolute) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder);
  Start("big file.iso");
  std::filesystem::current_path(before);
  EXPECT_EQ(TextOf("frmSplitter", "Text1"), PathText(folder / "big file.iso"));
}

TEST_F(frmFirstTest, FolderIsRefusedAndAllIsCleanedUp) {
  ui.ExpectMessage("Unable To Sly Folder.", Icon::Information);
  ui.ExpectEndProgram();
  Start(folder);
  EXPECT_FALSE(FilePathValueIsThere());
  EXPECT_EQ(GetRegString(RegRoot::ClassesRoot, "StrTempSly", "filepath"), "");
  EXPECT_FALSE(IsLoaded("frmSplitter"));
}

TEST_F(frmFirstTest, PieceIsJoinedFromTheDialog) {
  WriteFile(folder / "x.1.sly", "one");
  WriteFile(folder / "x.2.sly", "two");
  ui.ExpectQuestion(together, Answer::Yes);
  ui.ExpectOpenFile(pieceTitle, pieceFilter, folder / "", std::nullopt);
  ui.ExpectQuestion(noFile, Answer::No);
  ui.ExpectOpenFile(pieceTitle, pieceFilter, folder / "", folder / "x.1.sly");
  ui.ExpectProgressForm("Joining Files");
  ui.ExpectMessage("File Joined.", Icon::Information);
  ui.ExpectEndProgram();
  Start(folder / "x.7.sly");
  EXPECT_EQ(ReadFile(folder / "x"), "onetwo");
  EXPECT_FALSE(IsShown("frmSplitJoin"));
  EXPECT_FALSE(IsLoaded("frmSplitter"));
  EXPECT_FALSE(FilePathValueIsThere());
}

TEST_F(frmFirstTest, CommandLineJoinCanBeLeft) {
  ui.ExpectQuestion(together, Answer::No);
  ui.ExpectEndProgram();
  Start(folder / "X.1.SLY");
  EXPECT_FALSE(FilePathValueIsThere());
}

TEST_F(frmFirstTest, CommandLineJoinWithoutFileEnds) {
  ui.ExpectQuestion(together, Answer::Yes);
  ui.ExpectOpenFile(pieceTitle, pieceFilter, folder / "", std::nullopt);
  ui.ExpectQuestion(noFile, Answer::Yes);
  ui.ExpectEndProgram();
  Start(folder / "x.1.sly");
}

TEST_F(frmFirstTest, OptionsNameTheJob) {
  const std::filesystem::path file = folder / "a piece.1.sly";
  WriteFile(file, "bytes");
  struct Case {
    std::string commandLine;
    const char* form;
    const char* field;  ///< Where the file comes to stand, if one is given.
  };
  const std::vector<Case> cases = {{"--split " + PathText(file), "frmSplitter", "Text1"},
                                   {"--hide " + PathText(file), "frmHideFile", "Text2"},
                                   {"--hide", "frmHideFile", nullptr},
                                   {"--recover", "frmHideRec", nullptr}};
  for (const Case& given : cases) {
    SCOPED_TRACE(given.commandLine);
    MakeDesktop();
    desktop->Start(given.commandLine);
    ASSERT_TRUE(RunEventsUntil([&] { return IsShown(given.form); }));
    if (given.field != nullptr) {
      EXPECT_EQ(TextOf(given.form, given.field), PathText(file));
    }
  }
  MakeDesktop();
  ui.ExpectOpenFile("Select File To Sly", "", HomeFolder(), file);
  desktop->Start("--split");
  EXPECT_TRUE(RunEventsUntil([] { return IsShown("frmSplitter"); }));
}

TEST_F(frmFirstTest, QuotedPathIsTakenForAPiece) {
  ui.ExpectQuestion(together, Answer::No);
  ui.ExpectEndProgram();
  desktop->Start("\"/some/file.iso\"");
}

TEST_F(frmFirstTest, ClosingTheLastFormCleansUpAndEnds) {
  Start();
  ui.ExpectEndProgram();
  FindForm("frmSplitJoin")->Close();
  EXPECT_FALSE(FilePathValueIsThere());
}

TEST_F(frmFirstTest, InstancesKnowOfEachOther) {
  auto first = std::make_unique<Instance>();
  EXPECT_FALSE(first->AnotherRuns());
  const Instance second;
  EXPECT_TRUE(second.AnotherRuns());
  first.reset();
  EXPECT_TRUE(Instance().AnotherRuns());
}

}  // namespace
}  // namespace slyver
