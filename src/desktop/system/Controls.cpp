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

wxFlexGridSizer* NewFieldGrid(int gap) {
  auto* const grid = new wxFlexGridSizer(3, gap, gap);
  grid->AddGrowableCol(1, 1);
  return grid;
}

void FieldRow(wxFlexGridSizer& grid, wxWindow* label, wxWindow* field, wxWindow* behind) {
  grid.Add(label, wxSizerFlags().CentreVertical());
  grid.Add(field, wxSizerFlags(1).Expand().CentreVertical());
  if (behind == nullptr)
    grid.AddSpacer(0);
  else
    grid.Add(behind, wxSizerFlags().Expand().CentreVertical());
}

wxSizer* ButtonRow(int gap, std::initializer_list<wxButton*> left,
                   std::initializer_list<wxButton*> right) {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  for (wxButton* const button : left) row->Add(button, wxSizerFlags().Border(wxRIGHT, gap));
  row->AddStretchSpacer();
  if (left.size() > 0) row->AddSpacer(3 * gap);
  for (wxButton* const button : right)
    row->Add(button, wxSizerFlags().Border(wxLEFT, button == *right.begin() ? 0 : gap));
  return row;
}

}  // namespace slyver
