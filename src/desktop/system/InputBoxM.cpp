#include "desktop/system/InputBoxM.h"

#include "desktop/system/Controls.h"
#include "desktop/system/Dialog.h"
#include "desktop/system/StatusLine.h"
#include "desktop/system/WxText.h"

namespace slyver {

namespace {

class MaskedInputBox final : public Dialog {
 public:
  MaskedInputBox(wxWindow* parent, const wxString& prompt, SecretKind kind) : Dialog(parent) {
    auto* const column = new wxBoxSizer(wxVERTICAL);
    // A file name in the prompt may contain "&".
    column->Add(NewLabel(this, wxControl::EscapeMnemonics(prompt), "Prompt"));
    line_ = NewStatusLine(this, "Note");
    box_ = NewMaskedBox(this, "Text", prompt);
    column->Add(box_, wxSizerFlags().Expand().Border(wxTOP | wxBOTTOM, Margin() / 2));
    column->Add(line_, wxSizerFlags().Expand());
    Complete(column, wxOK | wxCANCEL);
    box_->SetFocus();
    box_->Bind(wxEVT_TEXT, [this, kind, note = PasswordNote(*line_)](wxCommandEvent&) mutable {
      line_->ChangeValue(note.For(kind, {box_}));
    });
    box_->Bind(wxEVT_TEXT_ENTER, [this](wxCommandEvent&) { EndModal(wxID_OK); });
  }
  std::string Text() const { return SecretIn(*box_).Text(); }

 private:
  wxTextCtrl* line_;
  wxTextCtrl* box_;
};

}  // namespace

std::optional<std::string> MaskedInput(wxWindow* parent, std::string_view prompt, SecretKind kind) {
  MaskedInputBox box(parent, ToWx(prompt), kind);
  if (box.ShowModal() != wxID_OK) return std::nullopt;
  return box.Text();
}

}  // namespace slyver
