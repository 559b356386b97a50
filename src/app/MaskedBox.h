#pragma once

#include <wx/textctrl.h>

namespace slyver {

/// A text box that shows "*" for each character typed and takes 24 of them at most: a longer
/// password does not survive in a carrier. `name` is the window's name.
wxTextCtrl* NewMaskedBox(wxWindow* parent, const wxString& name, const wxString& forScreenReaders);

}  // namespace slyver
