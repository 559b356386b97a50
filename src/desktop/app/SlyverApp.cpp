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

/// What lives as long as the program: the desktop and the user interface know each other.
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
  (void)std::fputs("slyver: no display can be opened; in a terminal, use sly\n", stderr);
  return false;
}

bool SlyverApp::OnInit() {
  SetAppName("slyver");
  SetAppDisplayName("Slyver");
  // The program ends when it is asked to, not with its last window: between two forms there is
  // none.
  SetExitOnFrameDelete(false);
  program_ = std::make_unique<Program>();
  // The start-up asks questions and may run a job, for which the main loop must run.
  CallAfter([this] { program_->Start(commandLine_); });
  return true;
}

int SlyverApp::OnExit() {
  program_.reset();
  return wxApp::OnExit();
}

}  // namespace slyver
