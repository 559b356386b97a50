#include "desktop/chrome/WinXPApe.h"

#include <gtest/gtest.h>
#include <wx/stattext.h>
#include <wx/tooltip.h>

#include "desktop/chrome/WindowSystem.h"
#include "support/DesktopTest.h"

namespace slyver {
namespace {

class ChromeTest : public DesktopTest {};

void ExpectNames(const wxWindow& window) {
  for (const wxWindow* const child : window.GetChildren()) {
    // Containers and what tells its own text need no name.
    const bool silent = child->GetName() == "ClientArea";
    if (!silent && child->IsShown()) {
      EXPECT_FALSE(GetAccessibleName(*child).empty()) << child->GetName();
    }
    ExpectNames(*child);
  }
}

TEST_F(ChromeTest, EveryControlHasANameForScreenReaders) {
  Start();
  desktop->ShowSplitter();
  desktop->ShowInit();
  desktop->ShowJoin("Joining Files");
  for (const char* name : {"frmSplitJoin", "frmSplitter", "frmInit", "frmJoin"}) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(IsShown(name));
    ExpectNames(*FindForm(name));
  }
}

TEST_F(ChromeTest, ButtonsTellWhatTheyDo) {
  Start("/none");
  const auto tip = [](const char* button) {
    return ControlOf<wxWindow>("frmSplitter", button).GetToolTipText();
  };
  EXPECT_EQ(tip("CloseButton"), "Close Window");
  EXPECT_EQ(tip("MinimizeButton"), "Minimize Window");
  EXPECT_EQ(tip("MaximizeButton"), "Maximize Window");
  desktop->ShowInit();
  EXPECT_FALSE(ControlOf<wxWindow>("frmInit", "MaximizeButton").IsShown());
}

TEST_F(ChromeTest, FormsAreCentredAndEdgesSurroundThem) {
  Start();
  const wxRect form = FindForm("frmSplitJoin")->GetScreenRect();
  const wxSize screen = wxGetDisplaySize();
  EXPECT_NEAR(2 * form.x + form.width, screen.x, 2);
  EXPECT_NEAR(2 * form.y + form.height, screen.y, 2);
  ASSERT_TRUE(RunEventsUntil(
      [] { return ControlOf<wxWindow>("frmSplitJoin", "pEdgesB").GetSize().x > 100; }));
  EXPECT_EQ(ControlOf<wxWindow>("frmSplitJoin", "pEdgesL").GetPosition().x, 0);
  EXPECT_EQ(ControlOf<wxWindow>("frmSplitJoin", "pEdgesR").GetRect().GetRight(), form.width - 1);
  EXPECT_EQ(ControlOf<wxWindow>("frmSplitJoin", "pEdgesB").GetRect().GetBottom(), form.height - 1);
}

}  // namespace
}  // namespace slyver
