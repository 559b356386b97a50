#include "desktop/system/ModernForm.h"

#include <wx/button.h>
#include <wx/dcclient.h>
#include <wx/display.h>
#include <wx/sizer.h>

#include <algorithm>

#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/WxText.h"

namespace slyver {

namespace {

void Press(wxWindow& button) {
  wxCommandEvent event(wxEVT_BUTTON, button.GetId());
  event.SetEventObject(&button);
  button.HandleWindowEvent(event);
}

}  // namespace

ModernForm::ModernForm(FormHost& host, const wxString& name, const wxString& caption,
                       Resizing resizing)
    : wxFrame(nullptr, wxID_ANY, caption, wxDefaultPosition, wxDefaultSize,
              resizing == Resizing::Free ? WinXPApe::resizableStyle : WinXPApe::fixedStyle, name),
      host_(host) {
  // Bound before the chrome's handler, which must see keys first: the last one bound runs first.
  Bind(wxEVT_CHAR_HOOK, &ModernForm::Key, this);
  chrome_.XP_FormLoad(*this, host_.Menus());
  chrome_.RefreshIcon(host_.Icon());
  if (host_.JobRuns()) SetBusy(true);
  Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent& event) {
    if (unloaded_) return;
    if (!host_.JobRuns()) {
      host_.FormClosed(*this);
      return;
    }
    // The job stops at its next GoOn(), cleans up and ends the program.
    host_.AskToStop();
    if (event.CanVeto()) event.Veto();
  });
}

void ModernForm::Unload() {
  if (unloaded_) return;
  unloaded_ = true;
  Destroy();
}

void ModernForm::SetCaption(const wxString& caption) {
  SetTitle(caption);
  chrome_.RefreshCaption();
}

void ModernForm::SetBusy(bool busy) {
  chrome_.EnableMenus(!busy);
  if (busy) {
    const wxWindow* const focus = FindFocus();
    focusBefore_ = focus == nullptr ? wxID_NONE : focus->GetId();
    if (statusLine_ != nullptr) statusLine_->SetFocus();
  }
  for (wxWindow* const control : ClientArea()->GetChildren())
    if (control != escapeButton_ && control != statusLine_) control->Enable(!busy);
  if (wxWindow* const before = busy ? nullptr : FindWindow(focusBefore_)) before->SetFocus();
}

void ModernForm::Say(const std::string& text) {
  if (statusLine_ != nullptr) statusLine_->ChangeValue(ToWx(text));
}

void ModernForm::SayBeneathMessage(const std::string& text) {
  if (statusLine_ == nullptr) return;
  const wxClientDC dc(statusLine_);
  const wxString whole = ToWx(text);
  const wxSize size = GetSize();
  const int widest = wxDisplay(this).GetClientArea().width * 2 / 3;
  const int lacking = statusLine_->GetTextExtent(whole).x + Gap() - statusLine_->GetSize().x;
  wxSize growth(std::clamp(lacking, 0, std::max(0, widest - size.x)), 0);
  if (!Chrome().ResizeCapable()) {
    // The message box covers the middle; the line is at the lower end.
    const int message = 11 * GetCharHeight();
    const int lineTop = ClientArea()->GetPosition().y + statusLine_->GetPosition().y;
    growth.y = std::max(0, size.y + message - 2 * lineTop);
  }
  const int room = statusLine_->GetSize().x - Gap() + growth.x;
  // Keeps the form centred. The toolkit may report (0, 0) for a form that has just been shown.
  const wxPoint before = GetPosition();
  if (!IsMaximized()) SetSize({before - growth / 2, size + growth});
  if (before == wxPoint(0, 0)) CentreOnScreen();
  statusLine_->ChangeValue(wxControl::Ellipsize(whole, dc, wxELLIPSIZE_MIDDLE, room));
}

void ModernForm::FitAndCentre(wxSizer* content) {
  auto* const margin = new wxBoxSizer(wxVERTICAL);
  margin->Add(content, wxSizerFlags(1).Expand().Border(wxALL, 2 * Gap()));
  ClientArea()->SetSizer(margin);
  Fit();
  SetMinSize(GetSize());
  CentreOnScreen();
}

int ModernForm::Gap() const {
  return GetCharHeight() / 2;
}

void ModernForm::Key(wxKeyEvent& event) {
  if (event.GetKeyCode() != WXK_ESCAPE || event.HasAnyModifiers()) {
    event.Skip();
    return;
  }
  if (escapeButton_ != nullptr)
    Press(*escapeButton_);
  else if (host_.JobRuns())
    host_.AskToStop();
}

void MakeRoomForFont(wxWindow& control) {
  const int height = control.GetCharHeight() * 8 / 5;
  control.SetMinSize({control.GetMinWidth(), std::max(control.GetBestSize().y, height)});
}

void NameControl(wxWindow& control, const wxString& name, const wxString& forScreenReaders) {
  control.SetName(name);
  SetAccessibleName(control, forScreenReaders);
}

}  // namespace slyver
