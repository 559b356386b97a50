#pragma once

#include <wx/frame.h>
#include <wx/panel.h>
#include <wx/textctrl.h>

#include "desktop/chrome/WinXPApe.h"
#include "desktop/system/FormHost.h"

namespace slyver {

enum class Resizing { Fixed, Free };

/// A form of the program: a frame with the window chrome and the menus. A form's constructor
/// creates its controls in ClientArea() and then calls FitAndCentre().
class ModernForm : public wxFrame {
 public:
  /// `name` is the form's name and its window's.
  ModernForm(FormHost& host, const wxString& name, const wxString& caption, Resizing resizing);

  /// Unloads the form without a question. The object is deleted when the program is idle.
  void Unload();
  bool Unloaded() const { return unloaded_; }
  bool BelongsTo(const FormHost& host) const { return &host_ == &host; }

  void SetCaption(const wxString& caption);

  /// Blocks all input but the title bar and the Cancel button while a job runs.
  void SetBusy(bool busy);

  /// Shows a text in the form's status line, if it has one.
  void Say(const std::string& text);

  /// Shows a text in the status line so that a short message box does not cover it. The form grows
  /// if needed, up to two thirds of the screen; the middle of a longer text is left out.
  void SayBeneathMessage(const std::string& text);

  /// Sets the form's progress bar, if `progress` concerns it.
  virtual void ShowProgress(const Progress& /*progress*/) {}

 protected:
  FormHost& App() { return host_; }
  Ui& Talk() { return host_.Talk(); }
  WinXPApe& Chrome() { return chrome_; }
  wxPanel* ClientArea() const { return chrome_.ClientArea(); }

  /// Fits the form to `content`, the sizer of the client area, and centres it on the screen. The
  /// size is also the form's minimum.
  void FitAndCentre(wxSizer* content);

  /// Sets the button that Esc presses, also while a job runs.
  void SetEscapeButton(wxWindow* button) { escapeButton_ = button; }

  /// Sets the line that shows messages and progress. It has the focus while a job runs, so that
  /// keys typed too late do nothing.
  void SetStatusLine(wxTextCtrl* line) { statusLine_ = line; }

  /// Moves the focus to `control` when the running job ends.
  void FocusWhenFree(const wxWindow& control) { focusBefore_ = control.GetId(); }

  /// Returns the space between controls, in pixels, derived from the font.
  int Gap() const;

 private:
  void Key(wxKeyEvent& event);

  FormHost& host_;
  WinXPApe chrome_;
  wxWindow* escapeButton_ = nullptr;
  wxTextCtrl* statusLine_ = nullptr;
  wxWindowID focusBefore_ = wxID_NONE;
  bool unloaded_ = false;
};

/// Makes a text box or a button high enough for its font; the toolkit's best height is too low for
/// large fonts.
void MakeRoomForFont(wxWindow& control);

/// Sets the names of `control` for tests and for screen readers.
void NameControl(wxWindow& control, const wxString& name, const wxString& forScreenReaders);

}  // namespace slyver
