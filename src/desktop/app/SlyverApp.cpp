#include "desktop/app/SlyverApp.h"

#include <wx/log.h>
#include <wx/stdpaths.h>
#include <wx/utils.h>

#include <cstdio>
#include <filesystem>
#include <utility>

#include "desktop/app/Desktop.h"
#include "desktop/app/HelpPage.h"
#include "desktop/app/Instance.h"
#include "desktop/app/Memory.h"
#include "desktop/app/WxUi.h"
#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/WxText.h"

namespace slyver {

/// Owns what lives as long as the program.
class SlyverApp::Program {
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
                  const wxLogNull itsOwnMessage;
                  return wxLaunchDefaultApplication(PathToWx(file));
                }};
  }

  Instance instance_;
  WxUi ui_;
  Desktop desktop_;
};

SlyverApp::SlyverApp(std::string commandLine) : commandLine_(std::move(commandLine)) {}
SlyverApp::~SlyverApp() = default;

bool SlyverApp::Initialize(int& count, wxChar** arguments) {
  {
    const wxLogNull itsOwnMessage;
    if (wxApp::Initialize(count, arguments)) return true;
  }
  (void)std::fputs("slyver: cannot open a display; in a terminal, use sly\n", stderr);
  return false;
}

bool SlyverApp::OnInit() {
  SetAppName("slyver");
  SetAppDisplayName("Slyver");
  // Between two forms there is no window, so EndProgram() ends the program, not the last window.
  SetExitOnFrameDelete(false);
  program_ = std::make_unique<Program>();
  // The start-up asks questions and may run a job, which need the main loop.
  CallAfter([this] { program_->Start(commandLine_); });
  return true;
}

int SlyverApp::OnExit() {
  program_.reset();
  return wxApp::OnExit();
}

}  // namespace slyver
