#pragma once

#include <wx/dialog.h>

#include <string_view>

#include "system/Ui.h"

namespace slyver {

/// A message box with the title "Slyver". The system's own leaves the icon out on some desktops.
class MessageBox final : public wxDialog {
 public:
  /// `buttons` are those of the toolkit: wxOK, wxYES_NO or wxOK | wxCANCEL. Enter presses the first
  /// of them, Esc the last. ShowModal() returns the id of the button.
  MessageBox(wxWindow* parent, std::string_view text, Icon icon, long buttons);
};

}  // namespace slyver
