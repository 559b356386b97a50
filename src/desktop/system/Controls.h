#pragma once

#include <wx/button.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

namespace slyver {

/// The controls that the forms are made of. `name` is the window's name, by which tests find it.

wxStaticText* NewLabel(wxWindow* parent, const wxString& text, const wxString& name);

/// A text box, which screen readers present as `label`.
wxTextCtrl* NewTextBox(wxWindow* parent, const wxString& name, const wxString& label,
                       long style = 0);

/// A text box that shows "*" for each character typed and takes 24 of them at most: a longer
/// password does not survive in a carrier.
wxTextCtrl* NewMaskedBox(wxWindow* parent, const wxString& name, const wxString& label);

wxButton* NewButton(wxWindow* parent, const wxString& caption, const wxString& name);

}  // namespace slyver
