#include "desktop/system/FileDrop.h"

#include <gtest/gtest.h>
#include <wx/dnd.h>
#include <wx/panel.h>

#include "desktop/app/frmFirst.h"
#include "desktop/app/frmSplitJoin.h"
#include "support/DesktopTest.h"

namespace slyver {
namespace {

class FileDropTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    Start();
  }

  /// Drops a file on a window of a form.
  static void Drop(wxWindow& window, const std::filesystem::path& file) {
    auto* const target = dynamic_cast<wxFileDropTarget*>(window.GetDropTarget());
    ASSERT_NE(target, nullptr);
    wxArrayString files;
    files.Add(PathToWx(file));
    EXPECT_TRUE(target->OnDropFiles(0, 0, files));
    wxTheApp->ProcessPendingEvents();
  }
  static wxWindow& Selection() {
    return *ControlOf<wxButton>("frmSplitJoin", "Command1").GetParent();
  }
};

TEST_F(FileDropTest, SelectionTakesAFileToSplit) {
  Drop(Selection(), folder / "a.iso");
  EXPECT_TRUE(RunEventsUntil([] { return IsShown("frmSplitter"); }));
  EXPECT_EQ(TextOf("frmSplitter", "Text1"), PathText(folder / "a.iso"));
  Drop(ControlOf<wxTextCtrl>("frmSplitter", "Text1"), folder / "b.iso");
  EXPECT_EQ(TextOf("frmSplitter", "Text1"), PathText(folder / "b.iso"));
  Drop(ControlOf<wxTextCtrl>("frmSplitter", "Text2"), "/tmp");
  EXPECT_EQ(TextOf("frmSplitter", "Text2"), "/tmp");
}

TEST_F(FileDropTest, SelectionJoinsAPieceAndRefusesAFolder) {
  ui.ExpectMessage("Unable To Sly Folder.", Icon::Information);
  Drop(Selection(), folder);
  WriteFile(folder / "x.1.sly", "one");
  WriteFile(folder / "x.2.sly", "two");
  ui.ExpectQuestion(
      "Please Make Sure All The Sly Files Are In The Same Folder. Are They In The Same Folder?",
      Answer::Yes);
  ui.ExpectProgressForm("Joining Files");
  ui.ExpectMessage("File Joined.", Icon::Information);
  ui.ExpectEndProgram();
  Drop(Selection(), folder / "x.2.sly");
  EXPECT_EQ(ReadFile(folder / "x"), "onetwo");
}

TEST_F(FileDropTest, FieldsOfHidingAndRecoveringTakeFiles) {
  Click("frmSplitJoin", "Command4");
  Click("frmSplitJoin", "Command5");
  const std::vector<std::pair<const char*, const char*>> fields = {
      {"frmHideFile", "Text1"}, {"frmHideFile", "Text2"}, {"frmHideRec", "Text1"}};
  for (const auto& [form, field] : fields) {
    Drop(ControlOf<wxTextCtrl>(form, field), folder / "dropped");
    EXPECT_EQ(TextOf(form, field), PathText(folder / "dropped"));
  }
}

}  // namespace
}  // namespace slyver
