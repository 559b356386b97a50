#pragma once

#include <wx/button.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <filesystem>
#include <initializer_list>

#include "engine/base/Secret.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// Controls and rows of the forms. `name` is the window's name, by which tests find it.

wxStaticText* NewLabel(wxWindow* parent, const wxString& text, const wxString& name);

/// Creates a text box, which screen readers present as `label`.
wxTextCtrl* NewTextBox(wxWindow* parent, const wxString& name, const wxString& label,
                       long style = 0);

/// Creates a text box that shows "*" for each character. It does not limit the length: a password
/// that is cut silently cannot be entered again.
wxTextCtrl* NewMaskedBox(wxWindow* parent, const wxString& name, const wxString& label);

/// Warns when the text of masked boxes is too long for a password.
class PasswordNote {
 public:
  /// Makes `line` wide enough for the note.
  explicit PasswordNote(wxTextCtrl& line);

  /// Returns the note if `kind` is a password and one of `boxes` holds more than 24 characters,
  /// otherwise "". Rings the bell when the note first appears.
  wxString For(SecretKind kind, std::initializer_list<const wxTextCtrl*> boxes);

 private:
  bool shown_ = false;
};

/// Returns the text of a masked box. The toolkit's own copy is not wiped. Throws Error if the text
/// is so long that the toolkit may have cut it.
Secret SecretIn(const wxTextCtrl& box);

/// Returns the path typed into `box`, made absolute; empty if the box is. Throws FileError.
std::filesystem::path PathIn(const wxTextCtrl& box);

wxButton* NewButton(wxWindow* parent, const wxString& caption, const wxString& name);

/// Creates a grid for FieldRow(), with `gap` pixels between cells. Its middle column grows.
wxFlexGridSizer* NewFieldGrid(int gap);

/// Adds a row: a label, its field, and what follows the field, if anything.
void FieldRow(wxFlexGridSizer& grid, wxWindow* label, wxWindow* field, wxWindow* behind = nullptr);
void FieldRow(wxFlexGridSizer& grid, wxWindow* label, wxWindow* field, wxSizer* behind);

/// Creates a row of buttons, some at the left end and some at the right.
wxSizer* ButtonRow(int gap, std::initializer_list<wxButton*> left,
                   std::initializer_list<wxButton*> right);

/// Calls a handler of `form` when the button is pressed.
template <typename Form>
void OnClick(wxButton* button, Form* form, void (Form::*handler)()) {
  button->Bind(wxEVT_BUTTON, [form, handler](wxCommandEvent&) { (form->*handler)(); });
}

}  // namespace slyver
