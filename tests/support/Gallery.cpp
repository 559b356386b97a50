#include <wx/app.h>

#include <memory>
#include <string>

#include "app/Desktop.h"
#include "app/ModernForm.h"
#include "app/WxUi.h"
#include "app/frmFirst.h"
#include "system/Memory.h"
#include "system/WxText.h"

namespace {

using namespace slyver;

/// Shows one form with sample contents, for a picture of it. The argument is the form's name.
class Gallery final : public wxApp {
 public:
  bool OnInit() override {
    desktop_ =
        std::make_unique<Desktop>(ui_, Surroundings{.anotherInstanceRuns = [] { return false; },
                                                    .memoryStatus = GlobalMemoryStatus,
                                                    .helpPage = {},
                                                    .open = [](const std::filesystem::path&) {}});
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
    // The start-up form is behind all others.
    if (form == "frmSplitJoin") {
      desktop_->Start("");
      return;
    }
    desktop_->Start("/home/ann/Videos/holiday.mkv");
    if (form == "frmSplitter") return;
    if (form == "Message") {
      ui_.Message("File Successfully Sly.", Icon::Information);
      return;
    }
    if (form == "Question") {
      (void)ui_.Question("holiday.mkv Already Exists. Do You Want To Replace It?", Buttons::YesNo,
                         Icon::None);
      return;
    }
    for (wxWindow* const window : wxTopLevelWindows)
      if (auto* const shown = dynamic_cast<ModernForm*>(window)) shown->Hide();
    if (form == "frmInit") {
      desktop_->ShowInit();
      return;
    }
    desktop_->ShowJoin("Joining Files");
    desktop_->ShowProgress({"PB1", 15, 1'600'000'000, 4'294'967'296});
  }

  WxUi ui_;
  std::unique_ptr<Desktop> desktop_;
};

}  // namespace

wxIMPLEMENT_APP(Gallery);
