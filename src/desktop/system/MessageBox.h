#pragma once

#include <wx/window.h>

#include <string_view>

#include "engine/talk/Ui.h"

namespace slyver {

/// Shows a message box with the title "Slyver" and waits for its end. `buttons` are those of the
/// toolkit: wxOK, wxYES_NO or wxOK | wxCANCEL. Enter presses the first of them, or the last with
/// wxNO_DEFAULT or wxCANCEL_DEFAULT; Esc presses the last. Returns `true` for OK and Yes.
bool ShowMessageBox(wxWindow* parent, std::string_view text, Icon icon, long buttons);

}  // namespace slyver
