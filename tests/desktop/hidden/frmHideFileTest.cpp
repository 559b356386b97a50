#include "desktop/hidden/frmHideFile.h"

#include <gtest/gtest.h>

#include <functional>

#include "engine/hidden/HideJob.h"
#include "engine/system/WorkFolders.h"
#include "support/DesktopTest.h"

namespace slyver {
namespace {

constexpr const char* mainTitle = "Select File In Which You Want To Hide File.";
constexpr const char* hiddenTitle = "Select File You Want To Hide.";
constexpr const char* noFile = "No File Selected. Do You Want To Exit?";
constexpr const char* addQuestion =
    "There are Files Already Hidden In This File. Do You Want To Add Another File In It?";
constexpr const char* bigQuestion =
    "The File Size Is Quite Big. It Will Take Several Minutes To Hide This File. Please Exit Other "
    "Applications You Might Be Running. Do You Want To Continue?";

class frmHideFileTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    Start();
    Click("frmSplitJoin", "Command4");
    main = folder / "main.png";
    hidden = folder / "hidden.dat";
    WriteFile(main, SomeBytes(6000));
    WriteFile(hidden, "hidden bytes");
  }
  void TearDown() override {
    EXPECT_FALSE(std::filesystem::exists(PrivateFolder() / "slyver-run"));
    DesktopTest::TearDown();
  }

  static void Fill(const std::filesystem::path& mainFile, const std::filesystem::path& toHide,
                   const std::string& password, const std::string& again) {
    const std::vector<std::pair<const char*, wxString>> texts = {{"Text1", PathToWx(mainFile)},
                                                                 {"Text2", PathToWx(toHide)},
                                                                 {"Text3", ToWx(password)},
                                                                 {"Text4", ToWx(again)}};
    for (const auto& [name, text] : texts)
      ControlOf<wxTextCtrl>("frmHideFile", name).SetValue(text);
  }
  void ClickHide() { Click("frmHideFile", "Command2"); }

  /// Runs the timers to the job's last message, which is expected already.
  void RunToTheEnd() {
    EXPECT_TRUE(IsShown("frmInit"));
    EXPECT_FALSE(IsShown("frmHideFile"));
    EXPECT_TRUE(RunEventsUntil([this] { return !desktop->JobRuns(); }));
  }

  /// Hides `hidden` in `mainFile` without the form.
  std::filesystem::path HideDirectly(const std::filesystem::path& mainFile,
                                     const std::string& password) {
    ScriptedUi other;
    if (mainFile != main) {
      other.ExpectQuestion(addQuestion, Answer::Yes);
      other.ExpectMaskedInputBox("Enter Password Of The Last File.", password);
    }
    other.ExpectMessage("File Hidden.", Icon::Information);
    other.ExpectEndProgram();
    HideJob job({mainFile, hidden, password, password}, other, BigFiles::Take);
    EXPECT_TRUE(job.Check() == HideJob::Next::GoOn && job.PrepareHide() == HideJob::Next::GoOn);
    EXPECT_EQ(job.CheckIni(), HideJob::Next::GoOn);
    return job.DoAll().value_or("");
  }

  std::filesystem::path main;
  std::filesystem::path hidden;
};

TEST_F(frmHideFileTest, BrowseTakesBothFiles) {
  EXPECT_TRUE(IsShown("frmSplitJoin"));
  ui.ExpectOpenFile(mainTitle, "", HomeFolder(), main);
  ui.ExpectOpenFile(hiddenTitle, "", HomeFolder(), hidden);
  Click("frmHideFile", "Command1");
  EXPECT_EQ(TextOf("frmHideFile", "Text1"), PathText(main));
  EXPECT_EQ(TextOf("frmHideFile", "Text2"), PathText(hidden));

  ui.ExpectOpenFile(mainTitle, "", HomeFolder(), main);
  ui.ExpectOpenFile(hiddenTitle, "", HomeFolder(), main);
  ui.ExpectMessage("Select Some Other File to Hide.", Icon::Information);
  Click("frmHideFile", "Command1");

  ui.ExpectOpenFile(mainTitle, "", HomeFolder(), std::nullopt);
  ui.ExpectQuestion(noFile, Answer::No);
  Click("frmHideFile", "Command1");
  ui.ExpectOpenFile(mainTitle, "", HomeFolder(), main);
  ui.ExpectOpenFile(hiddenTitle, "", HomeFolder(), std::nullopt);
  ui.ExpectQuestion(noFile, Answer::Yes);
  ui.ExpectEndProgram();
  Click("frmHideFile", "Command1");
}

TEST_F(frmHideFileTest, RefusalsComeBackToTheForm) {
  const auto refused = [&](const std::string& message, const std::string& text1,
                           const std::string& text3) {
    ui.ExpectMessage(message, Icon::Information);
    ClickHide();
    EXPECT_TRUE(IsShown("frmHideFile"));
    EXPECT_FALSE(desktop->JobRuns());
    EXPECT_EQ(TextOf("frmHideFile", "Text1"), text1);
    EXPECT_EQ(TextOf("frmHideFile", "Text3"), text3);
    EXPECT_EQ(TextOf("frmHideFile", "Text4"), text3);
  };
  refused("Main File Is Missing. Select The File Again.", "", "");
  Fill("/x/a.html", hidden, "p", "p");
  refused(
      "Select Some Other File Format In Which You Want To Hide File. Unable To Hide File In tml "
      "Format.",
      "", "");
  EXPECT_EQ(TextOf("frmHideFile", "Text2"), "");
  Fill(main, "", "p", "p");
  refused("File To Hide Is Missing. Select The File Again.", PathText(main), "p");
  Fill(main, hidden, "", "");
  refused("Enter Password.", PathText(main), "");
  Fill(main, hidden, "p", "q");
  refused("Passwords Do Not Match. Re-Enter Them.", PathText(main), "");
  WriteFile(hidden, "");
  Fill(main, hidden, "p", "p");
  refused("File " + PathText(hidden) + " Does Not Contain Any Data In It. Unable To Hide File.",
          PathText(main), "p");
}

TEST_F(frmHideFileTest, HidesWithTheTimersAndTheSameBytes) {
  const std::string expected = ReadFile(HideDirectly(main, "geheim"));
  ui.ExpectMessage("File Hidden.", Icon::Information);
  ui.ExpectEndProgram();
  Fill(main, hidden, "geheim", "geheim");
  // Enter in the second password box.
  wxCommandEvent enter(wxEVT_TEXT_ENTER);
  ControlOf<wxTextCtrl>("frmHideFile", "Text4").HandleWindowEvent(enter);
  RunToTheEnd();
  EXPECT_TRUE(ReadFile(folder / "[1] Hidden File main.png") == expected);
}

TEST_F(frmHideFileTest, AddsWithTheLastPassword) {
  const std::filesystem::path carrier = HideDirectly(main, "geheim");
  ui.ExpectQuestion(addQuestion, Answer::Yes);
  ui.ExpectMaskedInputBox("Enter Password Of The Last File.", "geheim");
  ui.ExpectMessage("File Hidden.", Icon::Information);
  ui.ExpectEndProgram();
  Fill(carrier, hidden, "other", "other");
  ClickHide();
  RunToTheEnd();
  EXPECT_TRUE(ReadFile(folder / "Hidden File Hidden File main.png") ==
              ReadFile(HideDirectly(carrier, "geheim")));
}

TEST_F(frmHideFileTest, EndsWhereItCannotHide) {
  std::filesystem::path carrier = HideDirectly(main, "geheim");
  ui.ExpectQuestion(addQuestion, Answer::No);
  ui.ExpectEndProgram();
  Fill(carrier, hidden, "p", "p");
  ClickHide();
  ui.ExpectQuestion(addQuestion, Answer::Yes);
  ui.ExpectMaskedInputBox("Enter Password Of The Last File.", "wrong");
  ui.ExpectMessage("Incorrect Password.", Icon::Critical);
  ui.ExpectEndProgram();
  ClickHide();
  for (int i = 1; i < maxHiddenFiles; ++i) carrier = HideDirectly(carrier, "geheim");
  ui.ExpectMessage(
      "There Are Aready 6 Files Hidden In This File. Unable To Hide File. Please Select Another "
      "File.",
      Icon::Information);
  ui.ExpectEndProgram();
  Fill(carrier, hidden, "p", "p");
  ClickHide();
  const std::size_t files = Names().size();
  std::filesystem::resize_file(main, 10'000'001);
  ui.ExpectQuestion(bigQuestion, Answer::No);
  ui.ExpectEndProgram();
  Fill(main, hidden, "p", "p");
  ClickHide();
  EXPECT_EQ(Names().size(), files);
}

TEST_F(frmHideFileTest, ClosingTheWaitFormStopsTheJob) {
  Fill(main, hidden, "p", "p");
  ClickHide();
  EXPECT_TRUE(std::filesystem::exists(PrivateFolder() / "slyver-run" / "tempHHH"));
  ui.ExpectEndProgram();
  FindForm("frmInit")->Close();
  ui.StopAtBytes(0);
  RunToTheEnd();
  EXPECT_EQ(Names(), (std::set<std::string>{"main.png", "hidden.dat"}));
}

TEST_F(frmHideFileTest, SaysWhatBecomesOfALongName) {
  const auto note = [&](const std::string& name) {
    ControlOf<wxTextCtrl>("frmHideFile", "Text2").SetValue(ToWx(name));
    return TextOf("frmHideFile", "Note");
  };
  EXPECT_EQ(note("/x/" + std::string(24, 'a')), "");
  EXPECT_NE(note("/x/" + std::string(25, 'a')), "");
  EXPECT_EQ(note(""), "");
}

TEST_F(frmHideFileTest, PasswordBoxesAreMaskedAndTake24Characters) {
  for (const char* const name : {"Text3", "Text4"}) {
    auto& box = ControlOf<wxTextCtrl>("frmHideFile", name);
    EXPECT_TRUE(box.HasFlag(wxTE_PASSWORD));
    for (int i = 0; i < 30; ++i) box.AppendText("x");
    EXPECT_EQ(box.GetValue().length(), 24U);
  }
}

TEST_F(frmHideFileTest, CancelClosesTheForm) {
  Click("frmHideFile", "Command3");
  EXPECT_FALSE(IsLoaded("frmHideFile"));
  EXPECT_TRUE(IsShown("frmSplitJoin"));
}

}  // namespace
}  // namespace slyver
