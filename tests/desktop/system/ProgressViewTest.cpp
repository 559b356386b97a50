#include "desktop/system/ProgressView.h"

#include <gtest/gtest.h>
#include <wx/gauge.h>

#include "desktop/app/WxUi.h"
#include "engine/system/FileError.h"
#include "support/DesktopTest.h"

namespace slyver {
namespace {

TEST(BarPosition, FollowsTheStepsAndBetweenThemTheBytes) {
  EXPECT_EQ(BarPosition({"pb", 30}, 10), 30);
  EXPECT_EQ(BarPosition({"pb", 50, 250, 1000}, 10), 25);
  EXPECT_EQ(BarPosition({"pb", 100, 1000, 1000}, 25), 100);
  // It never goes back, but for a job that starts.
  EXPECT_EQ(BarPosition({"pb", 20}, 60), 60);
  EXPECT_EQ(BarPosition({"pb", 0, 0, 1000}, 60), 0);
}

/// The forms with the desktop's own user interface.
class ProgressTest : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    wx.Serve(*desktop);
    WriteFile(folder / "file", "bytes");
    Start(folder / "file");
  }

  WxUi wx;
};

TEST_F(ProgressTest, EachBarShowsItsOwnJob) {
  desktop->RunJob([&] {
    wx.ShowProgressForm("Recovering Files");
    EXPECT_TRUE(IsShown("frmJoin"));
    EXPECT_EQ(FindForm("frmJoin")->GetTitle(), "Recovering Files");
    EXPECT_EQ(ControlOf<wxWindow>("frmJoin", "TitleBar").GetName(), "TitleBar");
    wx.SetProgress({"PB1", 40});
    wx.SetProgress({"pb", 100, 1, 4});
    EXPECT_EQ(ControlOf<wxGauge>("frmJoin", "PB1").GetValue(), 400);
    EXPECT_EQ(ControlOf<wxGauge>("frmSplitter", "pb").GetValue(), 250);
    EXPECT_EQ(TextOf("frmSplitter", "Text4"), "25%  1 bytes of 4 bytes");
  });
}

TEST_F(ProgressTest, ClosingTheFormStopsTheJob) {
  ui.ExpectEndProgram();
  bool cleanedUp = false;
  desktop->RunJob([&] {
    wx.ShowProgressForm("Joining Files");
    // The window stays alive: its events run while the job does.
    FindForm("frmJoin")->CallAfter([] { FindForm("frmJoin")->Close(); });
    while (wx.GoOn()) {
    }
    cleanedUp = true;
    throw Cancelled{};
  });
  EXPECT_TRUE(cleanedUp);
  EXPECT_TRUE(IsShown("frmJoin"));
}

}  // namespace
}  // namespace slyver
