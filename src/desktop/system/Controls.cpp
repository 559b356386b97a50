#include "desktop/system/Controls.h"

#include <algorithm>

#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/ModernForm.h"
#include "desktop/system/WxText.h"
#include "engine/base/FileError.h"
#include "engine/disk/Disk.h"
#include "engine/hidden/Carrier.h"
#include "engine/hidden/Password.h"

namespace slyver {

namespace {

/// GTK silently cuts the text of a box at 65534 bytes.
constexpr std::size_t mostBytes = 65000;

}  // namespace

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
  SetMaskCharacter(*box, '*');
  return box;
}

PasswordNote::PasswordNote(wxTextCtrl& line) {
  const int width =
      line.GetSizeFromTextSize(line.GetTextExtent(passwordTooLong)).x + line.GetCharWidth();
  line.SetMinSize({std::max(width, line.GetMinWidth()), line.GetMinHeight()});
}

wxString PasswordNote::For(SecretKind kind, std::initializer_list<const wxTextCtrl*> boxes) {
  const bool shown = kind == SecretKind::Password &&
                     std::any_of(boxes.begin(), boxes.end(), [](const wxTextCtrl* box) {
                       return box->GetLastPosition() > static_cast<long>(maxNameLength);
                     });
  if (shown && !shown_) wxBell();
  shown_ = shown;
  return shown ? passwordTooLong : "";
}

Secret SecretIn(const wxTextCtrl& box) {
  wxString text = box.GetValue();
  Secret secret = Secret::Of(FromWx(text));
  text.assign(text.length(), '*');
  if (secret.Text().size() > mostBytes)
    throw Error("A Passphrase Has At Most " + std::to_string(mostBytes) +
                " Bytes Here. Choose A Shorter One.");
  return secret;
}

std::filesystem::path PathIn(const wxTextCtrl& box) {
  const std::filesystem::path typed = PathFromWx(box.GetValue());
  return typed.empty() ? typed : FullPathOf(typed);
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
  auto* const end = new wxBoxSizer(wxHORIZONTAL);
  if (behind != nullptr) end->Add(behind, wxSizerFlags(1).Expand());
  FieldRow(grid, label, field, end);
}

void FieldRow(wxFlexGridSizer& grid, wxWindow* label, wxWindow* field, wxSizer* behind) {
  SetMnemonicTarget(*label, *field);
  grid.Add(label, wxSizerFlags().CentreVertical());
  grid.Add(field, wxSizerFlags(1).Expand().CentreVertical());
  grid.Add(behind, wxSizerFlags().Expand());
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
