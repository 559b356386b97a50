#include "desktop/split/frmSplitter.h"

#include <gtest/gtest.h>

#include "desktop/app/WxUi.h"
#include "engine/system/FileError.h"
#include "support/DesktopTest.h"

namespace slyver {
namespace {

constexpr const char* form = "frmSplitter";
constexpr const char* marker = "Unable To Divide File";

class frmSplitterTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    file = folder / "file.bin";
    bytes = SomeBytes(1000);
    WriteFile(file, bytes);
    Start(file);
  }
  static void ChooseOption(const char* name) {
    auto& option = ControlOf<wxRadioButton>(form, name);
    option.SetValue(true);
    wxCommandEvent event(wxEVT_RADIOBUTTON, option.GetId());
    event.SetEventObject(&option);
    option.HandleWindowEvent(event);
  }
  /// Types a number of pieces into the empty field and returns the size that shows.
  static std::string SizeFor(const std::string& count) {
    RubOut(form, "Nofile");
    Type(form, "Nofile", count);
    EXPECT_EQ(TextOf(form, "Nofile"), count);
    return TextOf(form, "Text3");
  }
  void ExpectSuccess() {
    ui.ExpectMessage("File Successfully Sly.", Icon::Information);
    ui.ExpectEndProgram();
  }

  std::filesystem::path file;
  std::string bytes;
};

TEST_F(frmSplitterTest, ComesUpWithThePredefinedSize) {
  EXPECT_EQ(FindForm(form)->GetTitle(), "Slyver");
  EXPECT_TRUE(ControlOf<wxRadioButton>(form, "Option1").GetValue());
  EXPECT_FALSE(ControlOf<wxTextCtrl>(form, "Text3").IsEnabled());
  EXPECT_FALSE(ControlOf<wxTextCtrl>(form, "Nofile").IsEnabled());
  ui.ExpectMessage("Chunk Size Bigger Than File Size.", Icon::Information);
  ui.ExpectQuestion("Unable To Sly File. Do You Want To Exit?", Answer::No);
  Click(form, "Command1");
  EXPECT_TRUE(IsShown(form));
  EXPECT_TRUE(ControlOf<wxWindow>(form, "Command1").IsEnabled());
}

TEST_F(frmSplitterTest, CountGivesSize) {
  ChooseOption("Option2");
  EXPECT_EQ(SizeFor("3"), "334");
  EXPECT_EQ(SizeFor("4"), "250");
  EXPECT_EQ(SizeFor("1"), marker);
  EXPECT_EQ(SizeFor("999"), "2");
  EXPECT_EQ(SizeFor("0"), "");
  ControlOf<wxTextCtrl>(form, "Nofile").SetValue("");
  // As a whole: digit by digit the marker for "1" would stay.
  ControlOf<wxTextCtrl>(form, "Nofile").SetValue("1000");
  EXPECT_EQ(TextOf(form, "Text3"), marker);
}

TEST_F(frmSplitterTest, SizeGivesCount) {
  ChooseOption("Option2");
  Type(form, "Text3", "1");
  EXPECT_EQ(TextOf(form, "Nofile"), "");
  RubOut(form, "Text3");
  Type(form, "Text3", "250");
  EXPECT_EQ(TextOf(form, "Nofile"), "4");
  EXPECT_EQ(TextOf(form, "Text3"), "250");
  Type(form, "Text3", "0");
  EXPECT_EQ(TextOf(form, "Nofile"), marker);
  RubOut(form, "Text3");
  EXPECT_EQ(TextOf(form, "Nofile"), "");
  ui.ExpectMessage("Please Enter Whole Numbers.", Icon::Information);
  ControlOf<wxTextCtrl>(form, "Text3").SetValue("300.");
  EXPECT_EQ(TextOf(form, "Nofile"), "4");
}

TEST_F(frmSplitterTest, OnlyDigitsAreTaken) {
  ChooseOption("Option2");
  Type(form, "Nofile", "x-4.y e");
  EXPECT_EQ(TextOf(form, "Nofile"), "4");
  EXPECT_EQ(TextOf(form, "Text3"), "250");
  EXPECT_TRUE(Press(ControlOf<wxTextCtrl>(form, "Nofile"), WXK_LEFT));
  ChooseOption("Option1");
  EXPECT_EQ(TextOf(form, "Nofile") + TextOf(form, "Text3"), "");
}

TEST_F(frmSplitterTest, AnotherFileIsComputedAnew) {
  ChooseOption("Option2");
  Type(form, "Nofile", "4");
  WriteFile(folder / "other", SomeBytes(2000));
  ui.ExpectOpenFile("Select File Which You Want To Sly.", "", "", folder / "other");
  Click(form, "Command6");
  EXPECT_EQ(TextOf(form, "Text1"), PathText(folder / "other"));
  EXPECT_EQ(TextOf(form, "Text3"), "500");
  EXPECT_EQ(TextOf(form, "Text2"), PathText(folder / ""));
  // A file that is not there cannot be divided; the line below the bar says why.
  ControlOf<wxTextCtrl>(form, "Text1").SetValue(PathToWx(folder / "none"));
  EXPECT_EQ(TextOf(form, "Text3"), marker);
  EXPECT_NE(TextOf(form, "Text4").find("none: "), std::string::npos);
}

TEST_F(frmSplitterTest, MarkerIsRefused) {
  ChooseOption("Option2");
  Type(form, "Nofile", "1");
  ui.ExpectMessage("Unable To Divide File.", Icon::Critical);
  Click(form, "Command1");
  EXPECT_TRUE(IsShown(form));
  EXPECT_EQ(Names(), std::set<std::string>{"file.bin"});
}

TEST_F(frmSplitterTest, EnterInAFieldSplits) {
  ChooseOption("Option2");
  Type(form, "Nofile", "3");
  ExpectSuccess();
  EXPECT_FALSE(Press(ControlOf<wxTextCtrl>(form, "Nofile"), WXK_RETURN));
  EXPECT_EQ(ReadFile(folder / "file.bin.1.sly"), bytes.substr(0, 334));
  EXPECT_EQ(ReadFile(folder / "file.bin.3.sly"), bytes.substr(668));
  EXPECT_EQ(ui.Values().back(), 100);
}

TEST_F(frmSplitterTest, OutputFolderIsChosenAndMade) {
  ui.ExpectPickFolder(std::nullopt);
  Click(form, "Command2");
  EXPECT_EQ(TextOf(form, "Text2"), PathText(folder / ""));
  ui.ExpectPickFolder(folder / "out");
  Click(form, "Command2");
  EXPECT_EQ(TextOf(form, "Text2"), PathText(folder / "out"));
  ChooseOption("Option2");
  const std::string question =
      PathText(folder / "out") + " Does Not Exists. Do You Want To Create It?";
  ui.ExpectQuestion(question, Answer::No);
  Click(form, "Command1");
  ui.ExpectQuestion(question, Answer::Yes);
  ui.ExpectMessage("Please Specify The Size Of The File.", Icon::Information);
  Click(form, "Command1");
  EXPECT_EQ(TextOf(form, "Text2"), PathText(folder / "out" / ""));
  Type(form, "Text3", "600");
  // Only folders followed by a separator were made before the question for the size.
  if (!std::filesystem::exists(folder / "out"))
    ui.ExpectQuestion(PathText(folder / "out" / "") + " Does Not Exists. Do You Want To Create It?",
                      Answer::Yes);
  ExpectSuccess();
  Click(form, "Command1");
  EXPECT_EQ(ReadFile(folder / "out" / "file.bin.2.sly"), bytes.substr(600));
}

TEST_F(frmSplitterTest, StoppedJobLeavesNothingAndEnds) {
  ChooseOption("Option2");
  Type(form, "Nofile", "4");
  ui.StopAtBytes(1);
  ui.ExpectEndProgram();
  Click(form, "Command1");
  EXPECT_EQ(Names(), std::set<std::string>{"file.bin"});
}

TEST_F(frmSplitterTest, CancelEnds) {
  SaveRegString(RegRoot::LocalMachine, "Software\\Orm Valis\\FC", "filepath", "x");
  ui.ExpectEndProgram();
  Click(form, "Command3");
  EXPECT_EQ(GetRegString(RegRoot::LocalMachine, "Software\\Orm Valis\\FC", "filepath"), "");
}

TEST_F(frmSplitterTest, WhileAJobRunsOnlyCancelAndCloseAct) {
  auto& close = ControlOf<wxWindow>(form, "CloseButton");
  desktop->RunJob([&] {
    for (const char* name : {"Text1", "Command6", "Frame1", "Option1", "Command1", "Command4"})
      EXPECT_FALSE(ControlOf<wxWindow>(form, name).IsEnabled()) << name;
    EXPECT_TRUE(close.IsEnabled());
    EXPECT_FALSE(desktop->StopAsked());
    FindForm(form)->Close();
    EXPECT_TRUE(desktop->StopAsked());
    EXPECT_TRUE(IsShown(form));
  });
  EXPECT_TRUE(ControlOf<wxWindow>(form, "Text1").IsEnabled());
  desktop->RunJob([&] {
    EXPECT_FALSE(desktop->StopAsked());
    Click(form, "Command3");
    EXPECT_TRUE(desktop->StopAsked());
  });
}

}  // namespace
}  // namespace slyver
