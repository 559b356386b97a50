#include "desktop/app/frmSplitJoin.h"

#include <gtest/gtest.h>
#include <wx/menu.h>
#include <wx/stattext.h>

#include "desktop/app/frmFirst.h"
#include "engine/system/WorkFolders.h"
#include "support/DesktopTest.h"

namespace slyver {
namespace {

constexpr const char* noFile = "No File Selected. Do You Want To Exit?";

class frmSplitJoinTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    WriteFile(folder / "index.html", "help");
    Start();
  }
  static void Choose(wxMenu& menu, const wxMenuItem& item) {
    // What the toolkit does when an item is clicked.
    if (item.IsCheckable()) menu.Check(item.GetId(), !item.IsChecked());
    menu.SendEvent(item.GetId(), item.IsCheckable() && item.IsChecked() ? 1 : 0);
  }
};

TEST_F(frmSplitJoinTest, ShowsThePromptAndTheJobs) {
  EXPECT_EQ(ControlOf<wxStaticText>("frmSplitJoin", "Label1").GetLabel(),
            "                   Please Select One Of The Options.");
  const std::vector<std::pair<const char*, const char*>> captions = {{"Command1", "Split File"},
                                                                     {"Command2", "Join File"},
                                                                     {"Command4", "Hide File"},
                                                                     {"Command5", "Recover File"},
                                                                     {"Command3", "Cancel"}};
  for (const auto& [name, caption] : captions)
    EXPECT_EQ(ControlOf<wxButton>("frmSplitJoin", name).GetLabel(), caption);
}

TEST_F(frmSplitJoinTest, ChosenFileIsHandedToTheSplitForm) {
  ui.ExpectOpenFile("Select File To Sly", "", HomeFolder(), folder / "a.iso");
  Click("frmSplitJoin", "Command1");
  EXPECT_TRUE(RunEventsUntil([] { return IsShown("frmSplitter"); }));
  EXPECT_FALSE(IsLoaded("frmSplitJoin"));
  EXPECT_EQ(TextOf("frmSplitter", "Text1"), PathText(folder / "a.iso"));
  EXPECT_EQ(TextOf("frmSplitter", "Text2"), PathText(folder / ""));
}

TEST_F(frmSplitJoinTest, NoFileToSplitGoesBackOrEnds) {
  ui.ExpectOpenFile("Select File To Sly", "", HomeFolder(), std::nullopt);
  ui.ExpectQuestion(noFile, Answer::No);
  Click("frmSplitJoin", "Command1");
  EXPECT_TRUE(IsShown("frmSplitJoin"));
  EXPECT_FALSE(desktop->First().SplitReady);
  ui.ExpectOpenFile("Select File To Sly", "", HomeFolder(), std::nullopt);
  ui.ExpectQuestion(noFile, Answer::Yes);
  ui.ExpectEndProgram();
  Click("frmSplitJoin", "Command1");
}

TEST_F(frmSplitJoinTest, JoinsFromOnePiece) {
  WriteFile(folder / "x.1.sly", "one");
  WriteFile(folder / "x.2.sly", "two");
  ui.ExpectQuestion(
      "Please Make Sure All The Sly Files Are In The Same Folder. Are They In The Same Folder?",
      Answer::No);
  ui.ExpectQuestion("Do You Want To Exit?", Answer::No);
  ui.ExpectOpenFile("Select File To Join.", "Sly File (*.Sly)|*.Sly;|", HomeFolder(),
                    folder / "x.2.sly");
  ui.ExpectProgressForm("Joining Files");
  ui.ExpectMessage("File Joined.", Icon::Information);
  ui.ExpectEndProgram();
  Click("frmSplitJoin", "Command2");
  EXPECT_EQ(ReadFile(folder / "x"), "onetwo");
}

TEST_F(frmSplitJoinTest, CancelEndsAtOnce) {
  SaveRegString(RegRoot::LocalMachine, "Software\\Orm Valis\\FC", "filepath", "x");
  ui.ExpectEndProgram();
  Click("frmSplitJoin", "Command3");
  EXPECT_EQ(GetRegString(RegRoot::LocalMachine, "Software\\Orm Valis\\FC", "filepath"), "x");
}

TEST_F(frmSplitJoinTest, CheckMarksFollowTheStoredValue) {
  frmMainMenu& menus = desktop->MainMenu();
  const auto marks = [&] {
    return std::pair(menus.Sly[0]->IsChecked(), menus.Sly[1]->IsChecked());
  };
  EXPECT_EQ(marks(), std::pair(false, true));
  for (int click = 0; click < 2; ++click) {  // The second one leaves the mark where it is.
    Choose(*menus.hel, *menus.Sly[0]);
    EXPECT_EQ(marks(), std::pair(true, false));
    EXPECT_EQ(RamValue(), "0");
  }
  EXPECT_TRUE(frmMainMenu(*desktop).Sly[0]->IsChecked());
  Choose(*menus.hel, *menus.Sly[1]);
  EXPECT_EQ(marks(), std::pair(false, true));
  EXPECT_EQ(RamValue(), "");
  EXPECT_EQ(menus.Sly[0]->GetItemLabel(), "Don't Show RAM Warning In Future");
  EXPECT_EQ(menus.Sly[1]->GetItemLabel(), "Show RAM Warning In Future");
}

TEST_F(frmSplitJoinTest, HelpMenuTellsAndOpens) {
  frmMainMenu& menus = desktop->MainMenu();
  ui.ExpectMessage(
      "This Software Has Been Developed By:\r\nOrm Valis\r\nEmail Address:\r\n"
      "orm.valis@slyver.example",
      Icon::None);
  Choose(*menus.he, *menus.ab[0]);
  Choose(*menus.he, *menus.ab[1]);
  EXPECT_EQ(opened, std::vector{folder / "index.html"});
}

}  // namespace
}  // namespace slyver
