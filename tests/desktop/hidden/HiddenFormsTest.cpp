#include <gtest/gtest.h>
#include <wx/frame.h>
#include <wx/listctrl.h>

#include "desktop/hidden/ListViewIcon.h"
#include "engine/disk/WorkFolders.h"
#include "support/DesktopTest.h"
#include "support/SampleCarrier.h"

namespace slyver {
namespace {

const std::string noFile = " No File Selected. Do You Want To Exit?";

/// The form is filled with a carrier of `hiddenFiles` files, or a main file with none.
class HiddenFormTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    if (!KeysReachForms()) GTEST_SKIP() << "no keys reach the forms";
  }
  void Open(const char* button, std::size_t hiddenFiles) {
    WriteFile(carrier = folder / "m.png",
              hiddenFiles == 0 ? main : SampleCarrier(5000, hiddenFiles));
    WriteFile(toHide = folder / "R&D.dat", "hidden bytes");
    Start();
    Click("frmSplitJoin", button);
    Settle();
  }
  /// Fills the hide form as its user does, one box after the other.
  static void FillHide(const std::filesystem::path& mainFile, const std::filesystem::path& hidden,
                       const std::string& password, const std::string& again) {
    Fill("frmHideFile", "Text1", PathText(mainFile));
    Fill("frmHideFile", "Text2", PathText(hidden));
    Fill("frmHideFile", "Text3", password);
    Fill("frmHideFile", "Text4", again);
  }
  /// Fills the recover form from where the focus is, and presses a button; what then comes.
  void Recover(const char* button, const std::string& password, const Script& script) {
    Fill("frmHideRec", "Text2", password);
    Fill("frmHideRec", "Text1", PathText(carrier));
    ui.Expect(script);
    PressBy(WXK_SPACE, "frmHideRec", button);
  }
  /// Goes to a control by keyboard and presses a key there.
  static void PressBy(int key, const char* form, const char* control) {
    TabTo(ControlOf(form, control));
    Key(key);
  }
  /// The note of a form or dialog is that a password is too long, and is seen whole; or is not.
  static void ExpectTooLong(wxWindow* window, bool tooLong) {
    const auto& note = ControlOf<wxTextCtrl>(window, "Note");
    EXPECT_EQ(note.GetValue(), tooLong ? "A Password Has At Most 24 Characters." : "");
    EXPECT_LE(note.GetTextExtent(note.GetValue()).x, note.GetClientSize().x);
  }
  /// Runs the timers to the end of the job.
  void RunToTheEnd() {
    EXPECT_TRUE(IsShown("frmInit"));
    EXPECT_FALSE(IsShown("frmHideFile"));
    EXPECT_TRUE(RunEventsUntil([this] { return !desktop->JobRuns(); }));
    EXPECT_FALSE(IsLoaded("frmInit"));
  }

  const std::string main = SomeBytes(5000);
  std::filesystem::path carrier, toHide;
};

TEST_F(HiddenFormTest, HideBrowsesForBothFiles) {
  Open("Command4", 0);
  const auto browses = [&](const std::filesystem::path& hidden, const Script& script) {
    ui.ExpectOpenFile("Select File In Which You Want To Hide File.", "", HomeFolder(), carrier);
    ui.ExpectOpenFile("Select File You Want To Hide.", "", HomeFolder(),
                      hidden.empty() ? std::nullopt : std::optional(hidden));
    ui.Expect(script);
    Click("frmHideFile", "Command1");
  };
  browses(toHide, {});
  EXPECT_EQ(TextOf("frmHideFile", "Text1"), PathText(carrier));
  EXPECT_EQ(TextOf("frmHideFile", "Text2"), PathText(toHide));
  browses(carrier, {"i Select Some Other File to Hide."});
  browses("", {"n" + noFile});
  browses("", {"y" + noFile, "end"});
  Click("frmHideFile", "Command3");
  EXPECT_TRUE(!IsLoaded("frmHideFile") && IsShown("frmSplitJoin"));
}

TEST_F(HiddenFormTest, HideRefusesAndLeadsToTheFirstEmptyBox) {
  Open("Command4", 0);
  const auto refuses = [&](const std::filesystem::path& mainFile, const std::string& again,
                           const std::string& message, const char* emptyBox) {
    FillHide(mainFile, toHide, "p", again);
    ui.Expect({message});
    PressBy(WXK_SPACE, "frmHideFile", "Command2");
    EXPECT_EQ(TextOf("frmHideFile", emptyBox), "");
    EXPECT_EQ(wxWindow::FindFocus(), &ControlOf("frmHideFile", emptyBox));
  };
  refuses("", "p", "i Main File Is Missing. Select The File Again.", "Text1");
  refuses(carrier, "q", "i Passwords Do Not Match. Re-Enter Them.", "Text3");
  EXPECT_TRUE(IsShown("frmHideFile") && !desktop->JobRuns());
}

TEST_F(HiddenFormTest, HidesAnotherFileUnderTheLastPassword) {
  Open("Command4", 2);
  ui.Expect(
      {"y There are Files Already Hidden In This File. Do You Want To Add Another File In It?"});
  ui.ExpectMaskedInputBox("Enter Password Of The Last File.", samplePassword);
  shown.look = [](wxDialog& dialog) {
    if (dialog.FindWindow("Prompt") == nullptr) return;
    for (const std::size_t length : {24U, 25U}) {
      Fill(ControlOf<wxTextCtrl>(&dialog, "Text"), std::string(length, 'x'));
      ExpectTooLong(&dialog, length > 24);
    }
  };
  ui.Expect({"i File Hidden.", "end"});
  FillHide(carrier, toHide, "x", "x");
  Key(WXK_RETURN);
  RunToTheEnd();
  EXPECT_EQ(shown.lineBeneath, PathText(folder / "Hidden File m.png"));
  EXPECT_TRUE(ReadFile(folder / "Hidden File m.png")
                  .starts_with(main + SampleBytes(0) + SampleBytes(1) + "hidden bytes[s@4)]"));
}

// A passphrase is typed before the box is ticked that makes it one, and before the file is chosen.
TEST_F(HiddenFormTest, EncryptsUnderALongPassphraseAndDecrypts) {
  Open("Command4", 0);
  const std::string passphrase(30, 'p');
  FillHide(carrier, toHide, passphrase, passphrase);
  ExpectTooLong(FindForm("frmHideFile"), true);
  PressBy(WXK_SPACE, "frmHideFile", "Check1");
  ExpectTooLong(FindForm("frmHideFile"), false);
  ui.Expect({"i File Hidden.", "end"});
  PressBy(WXK_SPACE, "frmHideFile", "Command2");
  RunToTheEnd();
  carrier = folder / "Hidden File m.png";
  EXPECT_EQ(ReadFile(carrier).find("hidden bytes"), std::string::npos);
  Click("frmSplitJoin", "Command5");
  Recover("Command1", passphrase, {"p Recovering Files", "i File Recovered.", "end"});
  EXPECT_EQ(ReadFile(folder / "Original R&D.dat"), "hidden bytes");
  Click("frmSplitJoin", "Command5");
  ui.Expect({"p Recovering Files"});
  ui.ExpectMaskedInputBox("Enter Passphrase Of R&D.dat.", "");
  Recover("Command1", "", {"m R&D.dat.age Is Still Encrypted.", "i File Recovered.", "end"});
}

TEST_F(HiddenFormTest, ClosingTheWaitFormStopsTheJob) {
  Open("Command4", 0);
  FillHide(carrier, toHide, "p", "p");
  PressBy(WXK_SPACE, "frmHideFile", "Command2");
  ui.Expect({"end"});
  wxTheApp->CallAfter([] { FindForm("frmInit")->Close(); });
  RunToTheEnd();
  EXPECT_EQ(Names(), (std::set<std::string>{"m.png", "R&D.dat"}));
}

TEST_F(HiddenFormTest, LinesTellOfLongNamesAndFullBoxes) {
  Open("Command4", 0);
  const auto note = [&](const std::string& name) {
    Fill("frmHideFile", "Text2", name);
    return TextOf("frmHideFile", "Note");
  };
  EXPECT_EQ(note("/x/" + std::string(24, 'a')), "");
  EXPECT_NE(note("/x/" + std::string(25, 'a')), "");
  EXPECT_EQ(note(""), "");
  Click("frmSplitJoin", "Command5");
  for (const auto& [form, name] :
       {std::pair{"frmHideFile", "Text3"}, {"frmHideFile", "Text4"}, {"frmHideRec", "Text2"}}) {
    EXPECT_TRUE(ControlOf(form, name).HasFlag(wxTE_PASSWORD));
    Fill(form, name, std::string(24, 'x'));
    ExpectTooLong(FindForm(form), false);
    Key('x');
    ExpectTooLong(FindForm(form), true);
    EXPECT_EQ(TextOf(form, name).size(), 25U);
    Key(WXK_BACK);
    ExpectTooLong(FindForm(form), false);
  }
  // The toolkit would cut it.
  Paste("frmHideRec", "Text2", std::string(70000, 'x'));
  ui.Expect({"x A Passphrase Has At Most 65000 Bytes Here. Choose A Shorter One."});
  Click("frmHideRec", "Command1");
  for (const auto& [form, name] :
       {std::pair{"frmHideFile", "Text1"}, {"frmHideFile", "Text2"}, {"frmHideRec", "Text1"}}) {
    Drop(ControlOf(form, name), {folder / "dropped"});
    EXPECT_EQ(TextOf(form, name), PathText(folder / "dropped"));
  }
}

TEST_F(HiddenFormTest, RecoverBrowsesUntilAFileIsChosen) {
  Open("Command5", 1);
  const char* const title = "Select File From Which You Want To Recover File";
  ui.ExpectOpenFile(title, "", {}, std::nullopt);
  ui.Expect({"n" + noFile});
  ui.ExpectOpenFile(title, "", {}, carrier);
  Click("frmHideRec", "Command3");
  EXPECT_EQ(TextOf("frmHideRec", "Text1"), PathText(carrier));
  ui.Expect({"end"});
  Click("frmHideRec", "Command2");
}

TEST_F(HiddenFormTest, RecoversASingleFileAndTheMainFile) {
  Open("Command5", 1);
  // A relative path is one in the current folder.
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder);
  carrier = carrier.filename();
  for (const char* const button : {"Command1", "Command4"}) {
    Recover(button, "", {"i Enter Password."});
    EXPECT_TRUE(IsShown("frmHideRec"));
    Recover(button, samplePassword, {"p Recovering Files", "i File Recovered.", "end"});
    EXPECT_FALSE(IsShown("frmHideRec"));
  }
  std::filesystem::current_path(before);
  EXPECT_EQ(shown.lineBeneath, PathText(folder / "Original m.png"));
  EXPECT_FALSE(IsLoaded("frmShowList"));
  EXPECT_EQ(ReadFile(folder / "Original a.bin"), SampleBytes(0));
  EXPECT_EQ(ReadFile(folder / "Original m.png"), main);
}

TEST_F(HiddenFormTest, RecoversTheFileChosenInTheList) {
  Open("Command5", 3);
  const auto lists = [&] {
    Recover("Command1", samplePassword, {"p Recovering Files"});
    ASSERT_TRUE(IsShown("frmShowList") && !IsShown("frmHideRec"));
  };
  // Leaving the list is coming back, with nothing left of the job.
  for (const auto& leave : std::vector<std::function<void()>>{
           [] { Click("frmShowList", "Command2"); }, [] { FindForm("frmShowList")->Close(); }}) {
    lists();
    leave();
    EXPECT_TRUE(IsShown("frmHideRec"));
    EXPECT_EQ(Names(), (std::set<std::string>{"m.png", "R&D.dat"}));
  }
  lists();
  auto& list = ControlOf<wxListView>("frmShowList", "LV1");
  ASSERT_EQ(list.GetItemCount(), 3);
  EXPECT_EQ(list.GetItemText(1, 0) + list.GetItemText(1, 1) + list.GetItemText(1, 2),
            "b.bin13000 bytes");
  list.Select(1);
  ui.Expect({"i File Recovered.", "end"});
  Click("frmShowList", "Command1");
  EXPECT_EQ(ReadFile(folder / "Original b.bin"), SampleBytes(1));
}

TEST(ListViewIcon, LooksUpEachKindOnce) {
  wxFrame window(nullptr, wxID_ANY, "");
  IconList icons(window);
  for (const char* const name : {"noextension", "ends with.", "a.eXe"})
    EXPECT_EQ(GetFileIconKey(name, icons, "DEFAULT"), "DEFAULT");
  EXPECT_EQ(icons.Images().GetImageCount(), 1);
  EXPECT_EQ(GetFileIconKey("a.b.Zip", icons, "DEFAULT"), "ZIP");
  EXPECT_EQ(GetFileIconKey("c.ZIP", icons, "DEFAULT"), "ZIP");
  EXPECT_EQ(GetFileIconKey("c.nosuchkind", icons, "DEFAULT"), "NOSUCHKIND");
  EXPECT_EQ(icons.Images().GetImageCount(), 3);
  EXPECT_EQ(icons.IndexOf("ZIP"), 1);
}

}  // namespace
}  // namespace slyver
