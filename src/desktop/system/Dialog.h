#pragma once

#include <wx/dialog.h>
#include <wx/sizer.h>

namespace slyver {

/// A dialog with the title "Slyver": content above a row of buttons.
class Dialog : public wxDialog {
 protected:
  explicit Dialog(wxWindow* parent);

  /// Adds `buttons` below `content` (wxOK, wxYES_NO or wxOK | wxCANCEL), then sizes and centres the
  /// dialog. Enter presses the first button, Esc the last.
  void Complete(wxSizer* content, long buttons);

  /// Returns the margin around the content, in pixels.
  int Margin() const { return GetCharHeight(); }
};

}  // namespace slyver
