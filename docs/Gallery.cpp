#include <wx/app.h>
#include <wx/textctrl.h>

#include <memory>
#include <string>

#include "desktop/app/Desktop.h"
#include "desktop/app/Memory.h"
#include "desktop/app/WxUi.h"
#include "desktop/app/frmFirst.h"
#include "desktop/hidden/frmHideRec.h"
#include "desktop/hidden/frmShowList.h"
#include "desktop/system/ModernForm.h"
#include "desktop/system/WxText.h"

namespace {

using namespace slyver;

}  // namespace

/// Shows the form named by the argument with sample contents, for a screenshot.
class Gallery final : public wxApp {
 public:
  bool OnInit() override {
    desktop_ = std::make_unique<Desktop>(
        ui_, Surroundings{.anotherInstanceRuns = [] { return false; },
                          .memoryStatus = slyver::GlobalMemoryStatus,
                          .helpPage = {},
                          .open = [](const std::filesystem::path&) { return true; }});
    ui_.Serve(*desktop_);
    CallAfter([this] { Show(argc > 1 ? FromWx(argv[1]) : ""); });
    return true;
  }
  int OnExit() override {
    desktop_.reset();
    return wxApp::OnExit();
  }

 private:
  void Show(const std::string& form) {
    if (form == "frmSplitJoin") {
      desktop_->Start("");
      return;
    }
    desktop_->Start("/home/ann/Videos/holiday.mkv");
    // Clears the message about the missing file.
    Fill("frmSplitter", "Text4", "");
    if (form == "frmSplitter") return;
    if (form == "Message") {
      ui_.Message("File Successfully Sly.", Icon::Information);
      return;
    }
    if (form == "Question") {
      (void)ui_.Question("holiday.mkv Already Exists. Do You Want To Replace It?", Buttons::YesNo,
                         Stakes::Replaces);
      return;
    }
    for (wxWindow* const window : wxTopLevelWindows)
      if (auto* const shown = dynamic_cast<ModernForm*>(window)) shown->Hide();
    if (form == "frmInit") {
      desktop_->ShowInit();
      return;
    }
    if (form == "frmHideFile") {
      desktop_->ShowHideFile(nullptr);
      Fill(form, "Text1", "/home/ann/Pictures/garden.png");
      Fill(form, "Text2", "/home/ann/a recipe that nobody else has.txt");
      Fill(form, "Text3", "password");
      Fill(form, "Text4", "password");
      return;
    }
    if (form == "frmHideRec" || form == "frmShowList") {
      desktop_->ShowHideRec();
      Fill("frmHideRec", "Text1", "/home/ann/Pictures/Hidden File garden.png");
      Fill("frmHideRec", "Text2", "password");
      if (form == "frmHideRec") return;
      auto* const recover = dynamic_cast<frmHideRec*>(wxWindow::FindWindowByName("frmHideRec"));
      recover->Hide();
      (new frmShowList(
           *desktop_, *recover,
           {{"recipe.txt", 0, 777}, {"letters.zip", 0, 1'450'000}, {"photo.jpg", 0, 58'231}}))
          ->Show();
      return;
    }
    if (form == "InputBox") {
      CallAfter([] {
        auto* const box = dynamic_cast<wxTextCtrl*>(wxWindow::FindWindowByName("Text"));
        if (box != nullptr) box->SetValue("password");
      });
      (void)ui_.MaskedInputBox("Enter Password Of The Last File.", SecretKind::Password);
      return;
    }
    desktop_->ShowJoin("Joining Files");
    desktop_->ShowProgress({"PB1", 15, 1'600'000'000, 4'294'967'296});
  }

  static void Fill(const std::string& form, const std::string& name, const std::string& text) {
    wxWindow* const shown = wxWindow::FindWindowByName(ToWx(form));
    auto* const box = dynamic_cast<wxTextCtrl*>(wxWindow::FindWindowByName(ToWx(name), shown));
    if (box != nullptr) box->SetValue(ToWx(text));
  }

  WxUi ui_;
  std::unique_ptr<Desktop> desktop_;
};

wxIMPLEMENT_APP(Gallery);
