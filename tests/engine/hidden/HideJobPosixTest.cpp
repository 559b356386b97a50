#include <gtest/gtest.h>

#include "engine/hidden/HideJob.h"
#include "engine/system/Files.h"
#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

/// Hides files whose names only this system can have.
class HideOfOddName : public TempFolderTest {
 protected:
  HideForm FormFor(const char* name) const {
    HideForm form = {folder / "m.png", folder / name, "x", "x"};
    WriteFile(form.Text1, "main");
    WriteFile(form.Text2, "hidden");
    return form;
  }
};

TEST_F(HideOfOddName, ADeviceOfWindowsIsRefused) {
  ScriptedUi ui;
  ui.ExpectMessage(
      "The Name aux.txt Cannot Be Kept In A Carrier. Rename The File. Unable To Hide File.",
      Icon::Information);
  EXPECT_FALSE(HideJob(FormFor("aux.txt"), ui, BigFiles::Ask).Check());
}

TEST_F(HideOfOddName, ABrokenLinkTakesAName) {
  ScriptedUi ui;
  const HideForm form = FormFor("\xFF.bin");
  EXPECT_EQ(NameNote(form.Text2), "The Name Has Characters That Will Come Back As \"_\".");
  std::filesystem::create_symlink("nowhere", folder / "Hidden File m.png");
  ui.ExpectMessage("File Hidden.", Icon::Information);
  ui.ExpectEndProgram();
  HideJob job(form, ui, BigFiles::Ask);
  ASSERT_TRUE(job.Check() && job.PrepareHide());
  EXPECT_EQ(job.CheckIni(), HideJob::Ini::Complete);
  const auto carrier = job.DoAll();
  EXPECT_EQ(carrier, folder / "[1] Hidden File m.png");
  // The key is "120", its one character's code, over and over.
  EXPECT_NE(ReadFile(carrier.value_or("")).find("&hed#=6E1C52585C\r\n"), std::string::npos);
}

}  // namespace
}  // namespace slyver
