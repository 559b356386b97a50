#include <gtest/gtest.h>
#include <wx/display.h>
#include <wx/gauge.h>

#include <algorithm>

#include "desktop/app/frmFirst.h"
#include "desktop/chrome/MenuFrame.h"
#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/ModernForm.h"
#include "desktop/system/ProgressView.h"
#include "support/DesktopTest.h"

namespace slyver {
namespace {

/// What all windows have: the chrome, the message boxes, the progress.
class WindowsTest : public DesktopTest {};

void ExpectNames(const wxWindow& window) {
  for (const wxWindow* const child : window.GetChildren()) {
    // Containers and what tells its own text need no name.
    if (child->GetName() != "ClientArea" && child->IsShown()) {
      EXPECT_FALSE(GetAccessibleName(*child).empty()) << child->GetName();
    }
    ExpectNames(*child);
  }
}

TEST_F(WindowsTest, FormsAreCentredAndTheirControlsHaveNames) {
  Start();
  desktop->ShowSplitter();
  desktop->ShowInit();
  desktop->ShowJoin("Joining Files");
  for (const char* name : {"frmSplitJoin", "frmSplitter", "frmInit", "frmJoin"}) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(IsShown(name));
    ExpectNames(*FindForm(name));
    const wxRect form = FindForm(name)->GetScreenRect();
    EXPECT_NEAR(2 * form.x + form.width, wxGetDisplaySize().x, 2);
  }
  EXPECT_FALSE(ControlOf("frmInit", "MaximizeButton").IsShown());
}

TEST_F(WindowsTest, AClickLeavesTheMenuBar) {
  Start();
  auto& bar = ControlOf<MenuFrame>("frmSplitJoin", "picMnuFrame");
  wxKeyEvent key(wxEVT_CHAR_HOOK);
  key.m_keyCode = WXK_F10;
  EXPECT_TRUE(bar.TakeKey(key));
  key.m_keyCode = WXK_LEFT;
  EXPECT_TRUE(bar.TakeKey(key));
  wxMouseEvent click(wxEVT_LEFT_DOWN);
  ControlOf("frmSplitJoin", "Command1").HandleWindowEvent(click);
  EXPECT_FALSE(bar.TakeKey(key));
}

// However long its words, a box shows them whole and stays on the screen, in the middle of its
// form, wherever that has been moved.
TEST_F(WindowsTest, MessagesAreWholeWhateverTheirWords) {
  Start();
  FindForm("frmSplitJoin")->Move(400, 400);
  for (const std::size_t length : {20U, 400U, 4000U}) {
    SCOPED_TRACE(length);
    std::string text;
    while (text.size() < length) text += "/" + std::string(std::min<std::size_t>(length, 200), 'w');
    shown.look = [&](wxDialog& dialog) {
      const wxRect screen = wxDisplay().GetClientArea();
      EXPECT_LE(dialog.GetSize().x, screen.width * 2 / 3);
      EXPECT_LE(dialog.GetSize().y, screen.height * 2 / 3);
      auto& label = ControlOf<wxStaticText>(&dialog, "Text");
      const int needed = label.GetTextExtent(ToWx(text)).x / label.GetSize().x;
      EXPECT_GE(label.GetSize().y, needed * label.GetCharHeight());
      EXPECT_TRUE(RunEventsUntil([&dialog] {
        const wxRect form = dialog.GetParent()->GetScreenRect();
        const wxRect box = dialog.GetScreenRect();
        const wxPoint off = box.GetPosition() - box.CentreIn(form).GetPosition();
        return form.x == 400 && std::abs(off.x) <= 1 && std::abs(off.y) <= 1;
      }));
    };
    ui.Expect({"x " + text});
    shown.Message(text, Icon::Critical);
  }
}

TEST_F(WindowsTest, NoDialogBelongsToAFormThatGoes) {
  Start();
  static_cast<ModernForm*>(FindForm("frmSplitJoin"))->Unload();
  shown.look = [](wxDialog& dialog) { EXPECT_EQ(dialog.GetParent(), nullptr); };
  ui.Expect({"x closing"});
  shown.Message("closing", Icon::Critical);
}

TEST_F(WindowsTest, ProgressIsThatOfTheBytes) {
  double position = 0;
  for (const auto& [progress, expected] :
       std::vector<std::pair<Progress, double>>{{{"PB1", 40}, 40},
                                                {{"PB1", 30}, 40},
                                                {{"PB1", 75, 0, 1'000'000}, 0},
                                                {{"PB1", 80, 250'000, 1'000'000}, 25},
                                                {{"PB1", 80, 1'000'000, 1'000'000}, 100},
                                                {{"PB1", 85}, 100},
                                                {{"PB1", 0}, 0}})
    EXPECT_EQ(position = BarPosition(progress, position), expected);

  Start();
  desktop->ShowSplitter();
  desktop->RunJob([&] {
    ui.Expect({"p Recovering Files"});
    shown.ShowProgressForm("Recovering Files");
    EXPECT_EQ(FindForm("frmJoin")->GetTitle(), "Recovering Files");
    shown.SetProgress({"PB1", 40});
    for (const std::uint64_t bytes : {1'000'000U, 3'000'000U, 4'000'000U}) {
      shown.SetProgress({"pb", 90, bytes, 4'000'000});
      EXPECT_EQ(ControlOf<wxGauge>("frmSplitter", "pb").GetValue(), bytes / 4000);
    }
    EXPECT_EQ(ControlOf<wxGauge>("frmJoin", "PB1").GetValue(), 400);
    EXPECT_TRUE(TextOf("frmSplitter", "Text4").starts_with("100%  4.00 MB of 4.00 MB"));
    desktop->AskToStop();
    shown.SetProgress({"pb", 90, 1, 4'000'000});
    EXPECT_EQ(TextOf("frmSplitter", "Text4"), "Stopping ...");
    EXPECT_EQ(TextOf("frmJoin", "StatusLine"), "Stopping ...");
  });
}

}  // namespace
}  // namespace slyver
