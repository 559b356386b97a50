#include "desktop/hidden/frmHideRec.h"

#include <gtest/gtest.h>
#include <wx/listctrl.h>

#include "desktop/hidden/ListViewIcon.h"
#include "engine/hidden/HideJob.h"
#include "support/DesktopTest.h"

namespace slyver {
namespace {

constexpr const char* browseTitle = "Select File From Which You Want To Recover File";

class frmHideRecTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    Start();
    Click("frmSplitJoin", "Command5");
    carrier = folder / "carrier.png";
    WriteFile(carrier, main);
  }
  void TearDown() override {
    EXPECT_FALSE(std::filesystem::exists(folder / "TempRRR"));
    DesktopTest::TearDown();
  }

  /// Hides a file of this name and content in the carrier, without a form.
  void HideIn(const std::string& name, const std::string& bytes) {
    WriteFile(folder / name, bytes);
    ScriptedUi other;
    if (hiddenFiles++ > 0) {
      other.ExpectQuestion(
          "There are Files Already Hidden In This File. Do You Want To Add Another File In It?",
          Answer::Yes);
      other.ExpectMaskedInputBox("Enter Password Of The Last File.", "geheim");
    }
    other.ExpectMessage("File Hidden.", Icon::Information);
    other.ExpectEndProgram();
    HideJob job({carrier, folder / name, "geheim", "geheim"}, other, BigFiles::Take);
    ASSERT_TRUE(job.Check() == HideJob::Next::GoOn && job.PrepareHide() == HideJob::Next::GoOn);
    ASSERT_EQ(job.CheckIni(), HideJob::Next::GoOn);
    std::filesystem::rename(job.DoAll().value(), carrier);
    std::filesystem::remove(folder / name);
  }
  void Fill(const std::string& password) {
    ControlOf<wxTextCtrl>("frmHideRec", "Text1").SetValue(PathToWx(carrier));
    ControlOf<wxTextCtrl>("frmHideRec", "Text2").SetValue(ToWx(password));
  }
  void ExpectRecovered() {
    ui.ExpectMessage("File Recovered.", Icon::Information);
    ui.ExpectEndProgram();
  }

  std::filesystem::path carrier;
  std::string main = SomeBytes(7000);
  int hiddenFiles = 0;
};

TEST_F(frmHideRecTest, BrowseAsksUntilAFileIsChosen) {
  ui.ExpectOpenFile(browseTitle, "", {}, std::nullopt);
  ui.ExpectQuestion("No File Selected. Do You Want To Exit?", Answer::No);
  ui.ExpectOpenFile(browseTitle, "", {}, carrier);
  Click("frmHideRec", "Command3");
  EXPECT_EQ(TextOf("frmHideRec", "Text1"), PathText(carrier));
  ui.ExpectOpenFile(browseTitle, "", {}, std::nullopt);
  ui.ExpectQuestion("No File Selected. Do You Want To Exit?", Answer::Yes);
  ui.ExpectEndProgram();
  Click("frmHideRec", "Command3");
  EXPECT_EQ(TextOf("frmHideRec", "Text1"), "");
  ui.ExpectEndProgram();
  Click("frmHideRec", "Command2");
}

TEST_F(frmHideRecTest, WithoutAPasswordTheFormComesBack) {
  Fill("");
  for (const char* const button : {"Command1", "Command4"}) {
    ui.ExpectMessage("Enter Password.", Icon::Information);
    Click("frmHideRec", button);
    EXPECT_TRUE(IsShown("frmHideRec"));
  }
}

TEST_F(frmHideRecTest, EndsWhereThereIsNothingToRecover) {
  const auto over = [&](const char* button, const std::string& password, const char* message,
                        Icon icon) {
    ui.ExpectProgressForm("Recovering Files");
    ui.ExpectMessage(message, icon);
    ui.ExpectEndProgram();
    Fill(password);
    Click("frmHideRec", button);
    EXPECT_FALSE(IsShown("frmHideRec"));
  };
  for (const char* const button : {"Command1", "Command4"}) {
    over(button, "geheim", "No File Is Hidden In This File.", Icon::Information);
  }
  HideIn("a.txt", "a");
  for (const char* const button : {"Command1", "Command4"})
    over(button, "falsch", "Incorrect Password. Unable To Recover File.", Icon::Critical);
  WriteFile(carrier, "short");
  for (const char* const button : {"Command1", "Command4"})
    over(button, "geheim", "Unable To Recover File.", Icon::Critical);
  std::filesystem::resize_file(carrier, 10'000'001);
  ui.ExpectQuestion(
      "The File Size Is Quite Big. It Will Take Several Minutes To Recover From This File. Please "
      "Exit Other Applications You Might Be Running. Do You Want To Continue?",
      Answer::No);
  ui.ExpectEndProgram();
  Click("frmHideRec", "Command1");
}

TEST_F(frmHideRecTest, ASingleHiddenFileIsRecoveredAtOnce) {
  HideIn("a.txt", "hidden bytes");
  ui.ExpectProgressForm("Recovering Files");
  ExpectRecovered();
  Fill("geheim");
  Click("frmHideRec", "Command1");
  EXPECT_FALSE(IsLoaded("frmShowList"));
  EXPECT_EQ(ReadFile(folder / "Original a.txt"), "hidden bytes");
}

TEST_F(frmHideRecTest, TheMainFileIsRecovered) {
  HideIn("a.txt", "a");
  ui.ExpectProgressForm("Recovering Files");
  ExpectRecovered();
  Fill("geheim");
  Click("frmHideRec", "Command4");
  EXPECT_TRUE(ReadFile(folder / "Original carrier.png") == main);
}

TEST_F(frmHideRecTest, OfSeveralFilesTheChosenOneIsRecovered) {
  HideIn("first.zip", std::string(777, 'z'));
  HideIn("second", "two");
  HideIn("third.EXE", "three");
  ui.ExpectProgressForm("Recovering Files");
  Fill("geheim");
  Click("frmHideRec", "Command1");
  ASSERT_TRUE(IsShown("frmShowList"));
  EXPECT_FALSE(IsShown("frmHideRec"));
  auto& list = ControlOf<wxListView>("frmShowList", "LV1");
  ASSERT_EQ(list.GetItemCount(), 3);
  EXPECT_EQ(list.GetItemText(0, 0), "first.zip");
  EXPECT_EQ(list.GetItemText(0, 1), "0");
  EXPECT_EQ(list.GetItemText(0, 2), "777 bytes");
  EXPECT_EQ(list.GetItemText(2, 1), "2");

  // Leaving the list is coming back, with nothing left of the job.
  Click("frmShowList", "Command2");
  EXPECT_TRUE(IsShown("frmHideRec"));
  EXPECT_FALSE(std::filesystem::exists(folder / "TempRRR"));

  ui.ExpectProgressForm("Recovering Files");
  Click("frmHideRec", "Command1");
  ControlOf<wxListView>("frmShowList", "LV1").Select(1);
  ExpectRecovered();
  Click("frmShowList", "Command1");
  EXPECT_EQ(ReadFile(folder / "Original second"), "two");
  EXPECT_FALSE(std::filesystem::exists(folder / "Original first.zip"));
}

TEST_F(frmHideRecTest, ClosingTheListGoesBackToo) {
  HideIn("a", "1");
  HideIn("b", "2");
  ui.ExpectProgressForm("Recovering Files");
  Fill("geheim");
  Click("frmHideRec", "Command1");
  ASSERT_TRUE(IsShown("frmShowList"));
  FindForm("frmShowList")->Close();
  EXPECT_TRUE(IsShown("frmHideRec"));
}

TEST_F(frmHideRecTest, StoppingLeavesNothing) {
  HideIn("a.txt", "a");
  const auto before = Names();
  ui.StopAtBytes(0);
  ui.ExpectProgressForm("Recovering Files");
  ui.ExpectEndProgram();
  Fill("geheim");
  Click("frmHideRec", "Command1");
  EXPECT_EQ(Names(), before);
}

TEST(ListViewIcon, LooksUpEachKindOnce) {
  wxFrame window(nullptr, wxID_ANY, "");
  IconList icons(window);
  EXPECT_EQ(GetFileIconKey("noextension", icons, "DEFAULT"), "DEFAULT");
  EXPECT_EQ(GetFileIconKey("ends with.", icons, "DEFAULT"), "DEFAULT");
  EXPECT_EQ(GetFileIconKey("a.eXe", icons, "DEFAULT"), "DEFAULT");
  EXPECT_EQ(icons.Images().GetImageCount(), 1);
  EXPECT_EQ(GetFileIconKey("a.b.Zip", icons, "DEFAULT"), "ZIP");
  EXPECT_EQ(GetFileIconKey("c.ZIP", icons, "DEFAULT"), "ZIP");
  EXPECT_EQ(GetFileIconKey("c.nosuchkind", icons, "DEFAULT"), "NOSUCHKIND");
  EXPECT_EQ(icons.Images().GetImageCount(), 3);
  EXPECT_EQ(icons.IndexOf("ZIP"), 1);
}

}  // namespace
}  // namespace slyver
