#pragma once

#include <wx/textctrl.h>

namespace slyver {

/// A line of text that a form shows and the user can read and copy, but not change. `name` is the
/// window's name.
wxTextCtrl* NewStatusLine(wxWindow* parent, const wxString& name);

}  // namespace slyver
