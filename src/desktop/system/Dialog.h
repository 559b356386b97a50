#pragma once

#include <wx/dialog.h>
#include <wx/sizer.h>

namespace slyver {

/// A dialog of the program, with the title "Slyver": a content above a row of buttons.
class Dialog : public wxDialog {
 protected:
  explicit Dialog(wxWindow* parent);

  /// Puts the buttons below `content`, wxOK, wxYES_NO or wxOK | wxCANCEL, gives the dialog its size
  /// and centres it on its form. Enter presses the first of the buttons, Esc the last.
  void Complete(wxSizer* content, long buttons);

  /// The margin around everything, in pixels.
  int Margin() const { return GetCharHeight(); }
};

}  // namespace slyver
