#pragma once

#include <wx/textctrl.h>

namespace slyver {

/// Creates a read-only line of text, which the user can copy. `name` is the window's name.
wxTextCtrl* NewStatusLine(wxWindow* parent, const wxString& name);

}  // namespace slyver
