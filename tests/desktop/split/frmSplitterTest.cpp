#include "desktop/split/frmSplitter.h"

#include <gtest/gtest.h>

#include "support/DesktopTest.h"

namespace slyver {
namespace {

constexpr const char* form = "frmSplitter";
constexpr const char* marker = "Unable To Divide File";
const Script success = {"i File Successfully Sly.", "end"};

class frmSplitterTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    file = folder / "file.bin";
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
  const std::string bytes = SomeBytes(1000);
  std::filesystem::path file;
};

// However the user changes a field, the other one follows it.
TEST_F(frmSplitterTest, SizeAndNumberFollowEachOther) {
  for (const char* const field : {"Text3", "Nofile"})
    EXPECT_FALSE(ControlOf(form, field).IsEnabled());
  ChooseOption("Option2");
  for (const auto& [field, text, size, count] :
       {std::tuple{"Nofile", "4", "250", "4"},
        {"Text3", "600", "600", "2"},
        {"Nofile", "1000", marker, "1000"},  // A piece of one byte is none.
        {"Text3", "333.6", "333.6", "3"},    // 334 bytes.
        {"Text3", "0", "", ""},
        {"Nofile", "x", marker, "x"}}) {
    Paste(form, field, text);
    EXPECT_EQ(TextOf(form, "Text3"), size) << text;
    EXPECT_EQ(TextOf(form, "Nofile"), count) << text;
    if (TextOf(form, "Text3") == marker) Paste(form, "Text3", "");
  }
  ui.Expect({"i Please Enter Whole Numbers."});
  Paste(form, "Text3", "300.");
  EXPECT_EQ(TextOf(form, "Nofile"), "4");
  Paste(form, "Text3", "");
  Type(form, "Nofile", "x-4.y e");
  EXPECT_EQ(TextOf(form, "Nofile") + " " + TextOf(form, "Text3"), "4 250");
  EXPECT_TRUE(Press(ControlOf(form, "Nofile"), WXK_LEFT));
  ChooseOption("Option1");
  EXPECT_EQ(TextOf(form, "Nofile") + TextOf(form, "Text3"), "");
}

TEST_F(frmSplitterTest, NumberIsComputedAnewWhenItIsComplete) {
  ChooseOption("Option2");
  Type(form, "Nofile", "12");
  EXPECT_EQ(TextOf(form, "Text3"), marker);
  wxFocusEvent leaves(wxEVT_KILL_FOCUS);
  ControlOf(form, "Nofile").HandleWindowEvent(leaves);
  EXPECT_EQ(TextOf(form, "Text3"), "84");
  Paste(form, "Nofile", "");
  Type(form, "Nofile", "13");
  ui.Expect(success);
  EXPECT_FALSE(Press(ControlOf(form, "Nofile"), WXK_RETURN));
  EXPECT_EQ(ReadFile(folder / "file.bin.1.sly"), bytes.substr(0, 77));
  EXPECT_EQ(ReadFile(folder / "file.bin.13.sly"), bytes.substr(924));
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
  Drop(ControlOf(form, "Text1"), {folder / "none"});
  EXPECT_EQ(TextOf(form, "Text3"), marker);
  EXPECT_NE(TextOf(form, "Text4").find("none: "), std::string::npos);
  Drop(ControlOf(form, "Text2"), {file});
  EXPECT_EQ(TextOf(form, "Text2"), PathText(folder));
}

TEST_F(frmSplitterTest, OutputFolderIsChosenAndMade) {
  ui.ExpectPickFolder(std::nullopt);
  Click(form, "Command2");
  EXPECT_EQ(TextOf(form, "Text2"), PathText(folder / ""));
  ui.ExpectPickFolder(folder / "out");
  Click(form, "Command2");
  ChooseOption("Option2");
  Type(form, "Text3", "600");
  const std::string question =
      " " + PathText(folder / "out") + " Does Not Exists. Do You Want To Create It?";
  ui.Expect({"n" + question});
  Click(form, "Command1");
  EXPECT_TRUE(IsShown(form) && ControlOf(form, "Command1").IsEnabled());
  ControlOf<wxCheckBox>(form, "Check1").SetValue(true);
  ui.Expect({"y" + question});
  ui.Expect(success);
  Click(form, "Command1");
  EXPECT_EQ(ReadFile(folder / "out" / "file.bin.2.sly"), bytes.substr(600));
  EXPECT_EQ(shown.lineBeneath, PathText(folder / "out" / "file.bin.1.sly"));
  EXPECT_TRUE(std::filesystem::exists(folder / "out" / "file.bin.sha256"));
  EXPECT_EQ(TextOf(form, "Text2"), PathText(folder / "out" / ""));
}

TEST_F(frmSplitterTest, ClosingTheFormStopsTheJob) {
  std::filesystem::resize_file(file, 4'000'000'000);
  Paste(form, "Text1", PathText(file));
  shown.atProgress = [] { FindForm(form)->Close(); };
  ui.Expect({"end"});
  Click(form, "Command1");
  EXPECT_EQ(TextOf(form, "Text4"), "Stopping ...");
  EXPECT_EQ(Names(), std::set<std::string>{"file.bin"});
}

TEST_F(frmSplitterTest, WhileAJobRunsOnlyCancelAndCloseAct) {
  desktop->RunJob([&] {
    for (const char* name : {"Text1", "Command6", "Frame1", "Option1", "Command1", "Command4"})
      EXPECT_FALSE(ControlOf(form, name).IsEnabled()) << name;
    EXPECT_TRUE(ControlOf(form, "CloseButton").IsEnabled());
    EXPECT_FALSE(desktop->Jobs().StopAsked());
    Click(form, "Command3");
    EXPECT_TRUE(desktop->Jobs().StopAsked());
    EXPECT_TRUE(IsShown(form));
  });
  EXPECT_TRUE(ControlOf(form, "Text1").IsEnabled());
  ui.Expect({"end"});
  Click(form, "Command3");
}

}  // namespace
}  // namespace slyver
