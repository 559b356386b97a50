#include "desktop/system/Controls.h"

#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/ModernForm.h"
#include "engine/hidden/Carrier.h"

namespace slyver {

wxStaticText* NewLabel(wxWindow* parent, const wxString& text, const wxString& name) {
  return new wxStaticText(parent, wxID_ANY, text, wxDefaultPosition, wxDefaultSize, 0, name);
}

wxTextCtrl* NewTextBox(wxWindow* parent, const wxString& name, const wxString& label, long style) {
  auto* const box = new wxTextCtrl(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, style);
  NameControl(*box, name, label);
  MakeRoomForFont(*box);
  return box;
}

wxTextCtrl* NewMaskedBox(wxWindow* parent, const wxString& name, const wxString& label) {
  wxTextCtrl* const box = NewTextBox(parent, name, label, wxTE_PASSWORD | wxTE_PROCESS_ENTER);
  box->SetMaxLength(maxNameLength);
  SetMaskCharacter(*box, '*');
  return box;
}

wxButton* NewButton(wxWindow* parent, const wxString& caption, const wxString& name) {
  auto* const button = new wxButton(parent, wxID_ANY, caption);
  NameControl(*button, name, caption);
  MakeRoomForFont(*button);
  return button;
}

}  // namespace slyver
