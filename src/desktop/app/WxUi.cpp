#include "desktop/app/WxUi.h"

#include <wx/app.h>
#include <wx/dirdlg.h>
#include <wx/evtloop.h>
#include <wx/filedlg.h>
#include <wx/log.h>
#include <wx/notifmsg.h>
#include <wx/window.h>

#include <string>

#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/InputBoxM.h"
#include "desktop/system/MessageBox.h"
#include "desktop/system/WxText.h"
#include "engine/disk/WorkFolders.h"

namespace slyver {

namespace {

using Clock = std::chrono::steady_clock;

/// Jobs call GoOn() far more often than a window needs events.
constexpr std::chrono::milliseconds yieldInterval{15};
constexpr std::chrono::milliseconds longestWaitForForm{1000};

void RunEvents() {
  wxEventLoopBase* const loop = wxEventLoopBase::GetActive();
  if (loop != nullptr && !loop->IsYielding()) loop->YieldFor(wxEVT_CATEGORY_ALL);
}

/// Returns the form that a dialog stays above: during a job the form shown last, which may not be
/// active yet; otherwise the active one. nullptr if no form is shown.
wxWindow* DialogParent(bool jobRuns) {
  wxTopLevelWindow* parent = nullptr;
  for (wxWindow* const window : wxTopLevelWindows) {
    auto* const form = dynamic_cast<wxTopLevelWindow*>(window);
    // A form that waits to be deleted would take the dialog with it.
    if (form == nullptr || !form->IsShown() || form->IsBeingDeleted() ||
        wxPendingDelete.Member(form))
      continue;
    parent = form;
    if (!jobRuns && form->IsActive()) break;
  }
  // The toolkit shows a form only after the window manager has answered; a dialog shown earlier
  // would be below the form.
  const auto deadline = Clock::now() + longestWaitForForm;
  while (parent != nullptr && !IsOnScreen(*parent) && Clock::now() < deadline) RunEvents();
  return parent;
}

/// Returns `filter` in the toolkit's format, with the pattern in lower and upper case: some systems
/// match case.
wxString WildcardOf(std::string_view filter) {
  const wxString given = ToWx(filter);
  if (given.empty()) return wxFileSelectorDefaultWildcardStr;
  wxString pattern = given.AfterFirst('|').BeforeFirst(';');
  if (const wxString lower = pattern.Lower(); lower != pattern)
    pattern += ";" + lower + ";" + pattern.Upper();
  return given.BeforeFirst('|') + "|" + pattern;
}

/// Returns the path chosen in a dialog, byte for byte.
std::filesystem::path PathOf(const wxString& chosen) {
  return static_cast<const std::filesystem::path::value_type*>(chosen.fn_str());
}

}  // namespace

/// Shows `text` as a system notification if a long job runs and no form is active.
void WxUi::NotifyAbsentUser(std::string_view text) const {
  constexpr std::chrono::seconds longJob{10};
  if (!desktop_->JobRuns() || desktop_->Jobs().JobHasRun() < longJob) return;
  for (wxWindow* const window : wxTopLevelWindows)
    if (auto* const form = dynamic_cast<wxTopLevelWindow*>(window);
        form != nullptr && form->IsActive())
      return;
  const wxLogNull quiet;  // The system may have no notification service.
  wxNotificationMessage("Slyver", ToWx(text)).Show();
}

void WxUi::Message(std::string_view text, Icon icon) {
  NotifyAbsentUser(text);
  (void)ShowMessageBox(DialogParent(desktop_->JobRuns()), text, icon, wxOK);
}

Answer WxUi::Question(std::string_view text, Buttons buttons, Stakes stakes) {
  const bool yesNo = buttons == Buttons::YesNo;
  const long harmless = stakes == Stakes::None ? 0 : yesNo ? wxNO_DEFAULT : wxCANCEL_DEFAULT;
  const bool agreed = ShowMessageBox(DialogParent(desktop_->JobRuns()), text, Icon::None,
                                     (yesNo ? wxYES_NO : wxOK | wxCANCEL) | harmless);
  if (yesNo) return agreed ? Answer::Yes : Answer::No;
  return agreed ? Answer::Ok : Answer::Cancel;
}

std::optional<std::filesystem::path> WxUi::OpenFile(std::string_view title, std::string_view filter,
                                                    const std::filesystem::path& initialFolder) {
  // A job names a folder only for the piece on the command line.
  const bool anyFolder = initialFolder.empty() || initialFolder == HomeFolder();
  const std::filesystem::path& folder =
      anyFolder && !lastFolder_.empty() ? lastFolder_ : initialFolder;
  const wxString selected =
      anyFolder ? wxString() : PathToWx(desktop_->ChosenFile().file.filename());
  wxFileDialog dialog(DialogParent(desktop_->JobRuns()), ToWx(title), PathToWx(folder), selected,
                      WildcardOf(filter), wxFD_OPEN | wxFD_FILE_MUST_EXIST);
  if (dialog.ShowModal() != wxID_OK) return std::nullopt;
  std::filesystem::path chosen = PathOf(dialog.GetPath());
  lastFolder_ = chosen.parent_path();
  return chosen;
}

std::optional<std::filesystem::path> WxUi::PickFolder() {
  wxDirDialog dialog(DialogParent(desktop_->JobRuns()), "Output Directory", "");
  if (dialog.ShowModal() != wxID_OK) return std::nullopt;
  return PathOf(dialog.GetPath());
}

std::optional<std::string> WxUi::MaskedInputBox(std::string_view prompt, SecretKind kind) {
  return MaskedInput(DialogParent(desktop_->JobRuns()), prompt, kind);
}

void WxUi::ShowProgressForm(std::string_view caption) {
  desktop_->ShowJoin(std::string(caption));
}

void WxUi::SetProgress(const Progress& progress) {
  // A search runs before the job shows its form.
  if (progress.searched > 0) desktop_->ShowJoin("Joining Files");
  desktop_->ShowProgress(progress);
}

void WxUi::TellPlace(const std::filesystem::path& made) {
  desktop_->ShowPlace(made);
}

bool WxUi::GoOn() {
  if (Clock::now() - lastYield_ >= yieldInterval) {
    RunEvents();
    lastYield_ = Clock::now();
  }
  return !desktop_->Jobs().StopAsked();
}

void WxUi::EndProgram() {
  // The calling handler must return before the main loop ends.
  wxTheApp->CallAfter([] { wxTheApp->ExitMainLoop(); });
}

}  // namespace slyver
