#pragma once

#include <wx/frame.h>
#include <wx/panel.h>
#include <wx/textctrl.h>

#include "desktop/chrome/WinXPApe.h"
#include "desktop/system/FormHost.h"

namespace slyver {

enum class Resizing { Fixed, Free };

/// A form of the program: a frame with the window chrome and the menus, centred on the screen. A
/// form's constructor makes its controls in ClientArea() and then calls Fit().
class ModernForm : public wxFrame {
 public:
  /// `name` is the form's own name, and that of its window.
  ModernForm(FormHost& host, const wxString& name, const wxString& caption, Resizing resizing);

  /// Unloads the form at once, asking nothing. The object lives on until the program is idle.
  void Unload();
  bool Unloaded() const { return unloaded_; }
  bool BelongsTo(const FormHost& host) const { return &host_ == &host; }

  void SetCaption(const wxString& caption);

  /// While a job runs, the form takes no input but its title bar and its button to cancel.
  void SetBusy(bool busy);

  /// Says something in the form's status line, if it has one.
  void Say(const std::string& text);

  /// As Say(), for a text that is to be read while a short message is shown above the form, which
  /// grows as it must, as far as the screen has the room. Of what is longer the middle is left out.
  void SayBeneathMessage(const std::string& text);

  /// Sets the form's progress bar, if `progress` concerns it.
  virtual void ShowProgress(const Progress& /*progress*/) {}

 protected:
  FormHost& App() { return host_; }
  Ui& Talk() { return host_.Talk(); }
  WinXPApe& Chrome() { return chrome_; }
  wxPanel* ClientArea() const { return chrome_.ClientArea(); }

  /// Gives the form the size that `content`, the sizer of the client area, asks for, which is also
  /// its smallest, and centres it on the screen.
  void FitAndCentre(wxSizer* content);

  /// Esc presses this button, also while a job runs.
  void SetEscapeButton(wxWindow* button) { escapeButton_ = button; }

  /// While a job runs, this control has the keyboard focus: neither a key held too long nor the
  /// next one typed then does anything. The form says there what goes on.
  void SetStatusLine(wxTextCtrl* line) { statusLine_ = line; }

  /// Gives `control` the keyboard focus, once the job that runs has ended.
  void FocusWhenFree(const wxWindow& control) { focusBefore_ = control.GetId(); }

  /// The space between and around controls, in pixels, which follows the font.
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

/// Makes a text box or a button at least as high as its font asks for: what the toolkit takes for
/// the best height is too low for large fonts.
void MakeRoomForFont(wxWindow& control);

/// Gives `control` its name for tests and its name for screen readers.
void NameControl(wxWindow& control, const wxString& name, const wxString& forScreenReaders);

}  // namespace slyver
