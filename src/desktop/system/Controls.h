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

/// The controls and rows that the forms are made of. `name` is the window's name, by which tests
/// find it.

wxStaticText* NewLabel(wxWindow* parent, const wxString& text, const wxString& name);

/// A text box, which screen readers present as `label`.
wxTextCtrl* NewTextBox(wxWindow* parent, const wxString& name, const wxString& label,
                       long style = 0);

/// Creates a text box that shows "*" for each character and takes any number of them: a password
/// that was cut would not be known again.
wxTextCtrl* NewMaskedBox(wxWindow* parent, const wxString& name, const wxString& label);

/// The note of a form's masked boxes: that what is typed is too long for a password.
class PasswordNote {
 public:
  /// Makes `line` wide enough for the note.
  explicit PasswordNote(wxTextCtrl& line);

  /// Returns the note if a password is meant and one of `boxes` has more characters than it may,
  /// else "". Rings the bell when that begins.
  wxString For(SecretKind kind, std::initializer_list<const wxTextCtrl*> boxes);

 private:
  bool shown_ = false;
};

/// Returns what is typed into a masked box. The toolkit's own copy stays in its memory until it is
/// used for something else. Throws Error where the toolkit may have cut it.
Secret SecretIn(const wxTextCtrl& box);

/// The path typed into `box`, made absolute; empty when there is none. Throws FileError.
std::filesystem::path PathIn(const wxTextCtrl& box);

wxButton* NewButton(wxWindow* parent, const wxString& caption, const wxString& name);

/// An empty grid for FieldRow, with `gap` pixels between its cells. Its middle column grows.
wxFlexGridSizer* NewFieldGrid(int gap);

/// Adds a row: a label, the field that it is for, and what stands behind the field, if anything.
void FieldRow(wxFlexGridSizer& grid, wxWindow* label, wxWindow* field, wxWindow* behind = nullptr);
void FieldRow(wxFlexGridSizer& grid, wxWindow* label, wxWindow* field, wxSizer* behind);

/// A row of buttons, some at its left end and some at its right.
wxSizer* ButtonRow(int gap, std::initializer_list<wxButton*> left,
                   std::initializer_list<wxButton*> right);

/// Calls a handler of `form` whenever the button is pressed.
template <typename Form>
void OnClick(wxButton* button, Form* form, void (Form::*handler)()) {
  button->Bind(wxEVT_BUTTON, [form, handler](wxCommandEvent&) { (form->*handler)(); });
}

}  // namespace slyver
