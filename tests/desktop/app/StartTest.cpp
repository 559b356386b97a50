#include <gtest/gtest.h>
#include <wx/menu.h>

#include "desktop/app/Instance.h"
#include "desktop/app/frmFirst.h"
#include "desktop/app/frmSplitJoin.h"
#include "engine/disk/WorkFolders.h"
#include "support/DesktopTest.h"

namespace slyver {
namespace {

const std::string together =
    " Please Make Sure All The Sly Files Are In The Same Folder. Are They In The Same Folder?";
const std::string noFile = " No File Selected. Do You Want To Exit?";
const Script joined = {"p Joining Files", "i File Joined.", "end"};

/// The start-up form, and the selection form with its menus.
class StartTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    LeaveFilePathValue();
    WriteFile(folder / "x.1.sly", "one");
    WriteFile(folder / "x.2.sly", "two");
  }
  static void Choose(wxMenu& menu, const wxMenuItem& item) {
    // What the toolkit does when an item is clicked.
    if (item.IsCheckable()) menu.Check(item.GetId(), !item.IsChecked());
    menu.SendEvent(item.GetId(), item.IsCheckable() && item.IsChecked() ? 1 : 0);
  }
};

TEST_F(StartTest, CommandLineDecidesWhatComesFirst) {
  const auto comes = [&](const std::string& commandLine, const char* form) {
    SCOPED_TRACE(commandLine);
    MakeDesktop();
    desktop->Start(commandLine);
    for (const char* const each : {"frmSplitJoin", "frmSplitter"})
      EXPECT_EQ(IsShown(each), std::string(form) == each) << each;
    EXPECT_FALSE(IsShown("frmFirst"));
  };
  comes("", "frmSplitJoin");
  comes(PathText(folder / "part.Sly"), "frmSplitter");  // Mixed case: no piece.
  EXPECT_EQ(TextOf("frmSplitter", "Text1"), PathText(folder / "part.Sly"));
  EXPECT_EQ(TextOf("frmSplitter", "Text2"), PathText(folder / ""));
  // A file that is not there is said at once.
  EXPECT_NE(TextOf("frmSplitter", "Text4").find("part.Sly: "), std::string::npos);
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder);
  comes("x.2.sly x", "frmSplitter");
  std::filesystem::current_path(before);
  EXPECT_EQ(TextOf("frmSplitter", "Text1"), PathText(folder / "x.2.sly x"));
  for (const std::string& piece : {PathText(folder / "X.1.SLY"), std::string("\"/a b/c.iso\"")}) {
    ui.Expect({"n" + together, "end"});
    comes(piece, "");
  }
  EXPECT_FALSE(FilePathValueIsLeft());
  SaveRegString(RegRoot::ClassesRoot, "StrTempSly", "filepath", "x");
  ui.Expect({"i Unable To Sly Folder.", "end"});
  comes(PathText(folder), "");
  EXPECT_EQ(GetRegString(RegRoot::ClassesRoot, "StrTempSly", "filepath"), "");
}

TEST_F(StartTest, OptionsNameTheJob) {
  const std::string file = PathText(folder / "x.1.sly");
  const auto comes = [&](const std::string& commandLine, const char* form) {
    MakeDesktop();
    desktop->Start(commandLine);
    EXPECT_TRUE(RunEventsUntil([&] { return IsShown(form); })) << commandLine;
  };
  comes("--split " + file, "frmSplitter");
  EXPECT_EQ(TextOf("frmSplitter", "Text1"), file);
  comes("--hide " + file, "frmHideFile");
  EXPECT_EQ(TextOf("frmHideFile", "Text2"), file);
  comes("--hide", "frmHideFile");
  comes("--recover", "frmHideRec");
}

TEST_F(StartTest, SecondInstanceIsAskedFor) {
  const std::string question =
      " Slyver Is Already Running. Do You Want To Create Another Instance Of It?";
  anotherRuns = true;
  ui.Expect({"o" + question});
  Start();
  EXPECT_TRUE(IsShown("frmSplitJoin") && FilePathValueIsLeft());
  MakeDesktop();
  ui.Expect({"c" + question, "end"});
  Start();
  EXPECT_FALSE(IsLoaded("frmSplitJoin") || FilePathValueIsLeft());

  auto first = std::make_unique<Instance>();
  EXPECT_FALSE(first->AnotherRuns());
  const Instance second;
  EXPECT_TRUE(second.AnotherRuns());
  first.reset();
  EXPECT_TRUE(Instance().AnotherRuns());
}

TEST_F(StartTest, MemoryFiguresDecideWhichWarningComes) {
  const std::string lowTotal =
      " Computer's RAM Is Less Than The Minimum Requirement i.e. 64mb And Less Than 30% Of The "
      "Physical Memory Is Free. Exit Other Applications That You May Be Running Or Slyver Will "
      "Take A Lot Of Time To Execute. Do You Want To Continue?";
  const std::string lowFree =
      " Less Than 15% Of The Physical Memory Is Free. Exit Any Other Applications That You May Be "
      "Running Or Slyver Will Take A Lot Of Time To Execute. Do You Want To Continue?";
  const std::string again = " Do You Want To See This RAM Warning Again?";
  struct Case {
    std::uint64_t total, available;
    Script script;
    const char* stored = "";
  };
  const std::vector<Case> cases = {
      {67'108'864, 14'000'000, {}},                            // 64.3: not below 64, and 20% free.
      {67'108'864, 10'000'000, {"y" + lowFree, "y" + again}},  // 14%.
      {66'000'000, 19'900'000, {}},                            // 30%.
      {66'000'000, 19'700'000, {"y" + lowTotal, "y" + again}},
      {8'000'000'000, 1'199'000'000, {"n" + lowFree, "end"}},
      {8'000'000'000, 1'201'000'000, {}},
      {0, 0, {}},  // A system that does not tell.
      {8'000'000'000, 100'000'000, {"y" + lowFree, "n" + again}, "0"},
      {8'000'000'000, 100'000'000, {}, "0"}};  // No question this time.
  for (const Case& figures : cases) {
    SCOPED_TRACE(figures.available);
    memory = {.totalPhysical = figures.total, .availablePhysical = figures.available};
    ui.Expect(figures.script);
    MakeDesktop();
    Start();
    EXPECT_EQ(IsShown("frmSplitJoin"), figures.script.empty() || figures.script.back() != "end");
    EXPECT_EQ(RamValue(), figures.stored);
  }
  EXPECT_TRUE(desktop->MainMenu().Sly[0]->IsChecked());
}

TEST_F(StartTest, PieceOnTheCommandLineIsJoinedFromTheDialog) {
  ui.Expect({"y" + together});
  ui.ExpectOpenFile("Please Select Any Other File To Join.", "Sly File (*.Sly)|*.Sly;|",
                    folder / "", folder / "x.1.sly");
  ui.Expect(joined);
  Start(folder / "x.7.sly");
  EXPECT_EQ(shown.lineBeneath, PathText(folder / "x"));
  EXPECT_EQ(ReadFile(folder / "x"), "onetwo");
  EXPECT_FALSE(IsShown("frmSplitJoin") || FilePathValueIsLeft());
}

TEST_F(StartTest, SelectionHandsFilesOn) {
  Start();
  ui.Expect({"n" + together, "n Do You Want To Exit?"});
  ui.ExpectOpenFile("Select File To Join.", "Sly File (*.Sly)|*.Sly;|", HomeFolder(),
                    folder / "x.2.sly");
  ui.Expect(joined);
  Click("frmSplitJoin", "Command2");
  EXPECT_EQ(ReadFile(folder / "x"), "onetwo");
  const auto chooses = [&](const std::optional<std::filesystem::path>& chosen,
                           const Script& script) {
    ui.ExpectOpenFile("Select File To Sly", "", HomeFolder(), chosen);
    ui.Expect(script);
    Click("frmSplitJoin", "Command1");
  };
  chooses(std::nullopt, {"n" + noFile});
  EXPECT_TRUE(IsShown("frmSplitJoin") && !desktop->First().SplitReady);
  chooses(std::nullopt, {"y" + noFile, "end"});
  chooses(folder / "a.iso", {});
  EXPECT_TRUE(RunEventsUntil([] { return IsShown("frmSplitter"); }));
  EXPECT_FALSE(IsLoaded("frmSplitJoin"));
  EXPECT_EQ(TextOf("frmSplitter", "Text1"), PathText(folder / "a.iso"));
}

TEST_F(StartTest, SelectionTakesWhatIsDropped) {
  Start();
  wxWindow& area = ControlOf("frmSplitJoin", "ClientArea");
  ui.Expect({"i Unable To Sly Folder."});
  Drop(area, {folder});
  ui.Expect({"y" + together});
  ui.Expect(joined);
  Drop(area, {folder / "x.2.sly"});
  Drop(area, {folder / "x", folder / "y"});
  EXPECT_TRUE(RunEventsUntil([] { return IsShown("frmSplitter"); }));
  EXPECT_EQ(TextOf("frmSplitter", "Text1"), PathText(folder / "x"));
  EXPECT_EQ(TextOf("frmSplitter", "Text4"), "The First Of 2 Files Was Taken.");
}

TEST_F(StartTest, CancelEndsAtOnceAndClosingCleansUp) {
  Start();
  ui.Expect({"end"});
  Click("frmSplitJoin", "Command3");
  EXPECT_TRUE(FilePathValueIsLeft());
  ui.Expect({"end"});
  FindForm("frmSplitJoin")->Close();
  EXPECT_FALSE(FilePathValueIsLeft());
}

TEST_F(StartTest, MenusStoreAndTell) {
  Start();
  frmMainMenu& menus = desktop->MainMenu();
  for (const int item : {0, 0, 1}) {  // The second click leaves the mark where it is.
    Choose(*menus.hel, *menus.Sly.at(static_cast<std::size_t>(item)));
    EXPECT_EQ(menus.Sly[0]->IsChecked(), item == 0);
    EXPECT_EQ(menus.Sly[1]->IsChecked(), item == 1);
    EXPECT_EQ(RamValue(), item == 0 ? "0" : "");
  }
  ui.Expect(
      {"m This Software Has Been Developed By:\r\nOrm Valis\r\nEmail Address:\r\n"
       "orm.valis@slyver.example"});
  Choose(*menus.he, *menus.ab[0]);
  Choose(*menus.he, *menus.ab[1]);
  hasViewer = false;
  const std::filesystem::path page = folder / "index.html";
  ui.Expect({"i Cannot Open The Help: " + PathText(page)});
  Choose(*menus.he, *menus.ab[1]);
  EXPECT_EQ(opened, (std::vector{page, page}));
}

}  // namespace
}  // namespace slyver
