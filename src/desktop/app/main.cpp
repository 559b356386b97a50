#include <wx/app.h>
#include <wx/filename.h>
#include <wx/stdpaths.h>
#include <wx/utils.h>

#include <filesystem>
#include <memory>
#include <string>

#include "desktop/app/CommandLine.h"
#include "desktop/app/Desktop.h"
#include "desktop/app/HelpPage.h"
#include "desktop/app/Instance.h"
#include "desktop/app/WxUi.h"
#include "desktop/system/WxText.h"
#include "engine/system/Memory.h"

namespace {

using namespace slyver;

/// What lives as long as the program: the desktop and the user interface know each other.
class Program {
 public:
  Program() : desktop_(ui_, TheSystem()) { ui_.Serve(desktop_); }

  void Start(const std::string& commandLine) { desktop_.Start(commandLine); }

 private:
  Surroundings TheSystem() const {
    const std::filesystem::path program = PathFromWx(wxStandardPaths::Get().GetExecutablePath());
    return {.anotherInstanceRuns = [this] { return instance_.AnotherRuns(); },
            .memoryStatus = slyver::GlobalMemoryStatus,
            .helpPage = HelpPage(program.parent_path()),
            .open =
                [](const std::filesystem::path& file) {
                  (void)wxLaunchDefaultApplication(PathToWx(file));
                }};
  }

  Instance instance_;
  WxUi ui_;
  Desktop desktop_;
};

}  // namespace

// The macro below makes a function of this type that others may call, so it cannot be unnamed.
class SlyverApp final : public wxApp {
 public:
  bool OnInit() override {
    SetAppName("slyver");
    SetAppDisplayName("Slyver");
    // The program ends when it is asked to, not with its last window: between two forms there is
    // none.
    SetExitOnFrameDelete(false);
    program_ = std::make_unique<Program>();
    // The start-up asks questions and may run a job, for which the main loop must run.
    CallAfter([this] { program_->Start(CommandLineText(*this)); });
    return true;
  }

  int OnExit() override {
    program_.reset();
    return wxApp::OnExit();
  }

 private:
  std::unique_ptr<Program> program_;
};

wxIMPLEMENT_APP(SlyverApp);
