#pragma once

#include <wx/window.h>

#include <string_view>

#include "engine/talk/Ui.h"

namespace slyver {

/// Shows a modal message box with the title "Slyver"; returns `true` for OK and Yes. `buttons` is
/// wxOK, wxYES_NO or wxOK | wxCANCEL. Enter presses the first button, or the last with wxNO_DEFAULT
/// or wxCANCEL_DEFAULT; Esc presses the last.
bool ShowMessageBox(wxWindow* parent, std::string_view text, Icon icon, long buttons);

}  // namespace slyver
