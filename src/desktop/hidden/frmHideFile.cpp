#include "desktop/hidden/frmHideFile.h"

#include <wx/sizer.h>

#include "desktop/system/FileDrop.h"
#include "desktop/system/StatusLine.h"
#include "desktop/system/WxText.h"
#include "engine/disk/WorkFolders.h"

namespace slyver {

namespace {

constexpr int checkIniInterval = 500;  // Milliseconds, both.
constexpr int doAllInterval = 2000;

}  // namespace

frmHideFile::frmHideFile(FormHost& host)
    : ModernForm(host, "frmHideFile", "Hide File", Resizing::Free) {
  MakeControls();
  LayOut();
  Wire();
  Command1_->SetFocus();
}

// In Tab order.
void frmHideFile::MakeControls() {
  wxPanel* const area = ClientArea();
  note_ = NewStatusLine(area, "Note");
  passwordNote_.emplace(*note_);
  Label1_ = NewLabel(area, "Main File :", "Label1");
  Text1_ = NewTextBox(area, "Text1", "Main File :");
  Command1_ = NewButton(area, "Browse", "Command1");
  Label4_ = NewLabel(area, "File To Hide :", "Label4");
  Text2_ = NewTextBox(area, "Text2", "File To Hide :");
  Label2_ = NewLabel(area, "Enter Password :", "Label2");
  Text3_ = NewMaskedBox(area, "Text3", "Enter Password :");
  Label3_ = NewLabel(area, "Re-Enter Password :", "Label3");
  Text4_ = NewMaskedBox(area, "Text4", "Re-Enter Password :");
  Check1_ = new wxCheckBox(area, wxID_ANY, "&Encrypt The File");
  NameControl(*Check1_, "Check1", "Encrypt The File");
  Check1_->SetToolTip(
      "The password is then a passphrase of any length, without which nobody can read the file. "
      "Takes about a second and 256 MiB of memory. The name and length stay visible.");
  Command2_ = NewButton(area, "Hide", "Command2");
  Command3_ = NewButton(area, "Cancel", "Command3");
}

void frmHideFile::LayOut() {
  wxFlexGridSizer* const fields = NewFieldGrid(Gap());
  FieldRow(*fields, Label1_, Text1_, Command1_);
  FieldRow(*fields, Label4_, Text2_);
  FieldRow(*fields, Label2_, Text3_);
  FieldRow(*fields, Label3_, Text4_);
  fields->AddSpacer(0);
  fields->Add(Check1_);
  Text1_->SetMinSize({ConvertDialogToPixels(wxSize(200, -1)).x, Text1_->GetMinHeight()});

  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(fields, wxSizerFlags().Expand());
  column->Add(note_, wxSizerFlags().Expand().Border(wxTOP, Gap()));
  column->AddStretchSpacer();
  column->Add(ButtonRow(Gap(), {}, {Command2_, Command3_}),
              wxSizerFlags().Expand().Border(wxTOP, Gap()));
  Command2_->SetDefault();
  SetEscapeButton(Command3_);
  SetStatusLine(note_);
  FitAndCentre(column);
}

void frmHideFile::Wire() {
  OnClick(Command1_, this, &frmHideFile::Command1_Click);
  OnClick(Command2_, this, &frmHideFile::Command2_Click);
  OnClick(Command3_, this, &frmHideFile::Command3_Click);
  Text1_->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { UpdateFilesNote(); });
  Text2_->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { UpdateFilesNote(); });
  Check1_->Bind(wxEVT_CHECKBOX, [this](wxCommandEvent&) { UpdateFilesNote(); });
  for (wxTextCtrl* const box : {Text3_, Text4_})
    box->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { ShowNote(); });
  Text3_->Bind(wxEVT_TEXT_ENTER, [this](wxCommandEvent&) { Text4_->SetFocus(); });
  Text4_->Bind(wxEVT_TEXT_ENTER, [this](wxCommandEvent&) { Text4_KeyPress(); });
  for (wxTextCtrl* const path : {Text1_, Text2_})
    AcceptDroppedFile(
        *path, [this, path](const std::filesystem::path& dropped, const std::string& remark) {
          path->SetValue(PathToWx(dropped));
          if (!remark.empty()) Say(remark);
        });
  CheckIniTim_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { CheckIniTim_Timer(); });
  tmrDoAll_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { tmrDoAll_Timer(); });
}

void frmHideFile::SetFileToHide(const std::filesystem::path& file) {
  Text2_->SetValue(PathToWx(file));
}

void frmHideFile::UpdateFilesNote() {
  std::string note = NameNote(PathFromWx(Text2_->GetValue()), Check1_->IsChecked());
  const std::string format = FormatNote(PathFromWx(Text1_->GetValue()));
  if (!note.empty() && !format.empty()) note += ". ";
  filesNote_ = ToWx(note + format);
  ShowNote();
}

void frmHideFile::ShowNote() {
  const SecretKind kind = Check1_->IsChecked() ? SecretKind::Passphrase : SecretKind::Password;
  const wxString tooLong = passwordNote_->For(kind, {Text3_, Text4_});
  note_->ChangeValue(tooLong.empty() ? filesNote_ : tooLong);
}

void frmHideFile::Text4_KeyPress() {
  Command2_Click();
}

/// Lets the user choose a file for `box`. Returns `false` if none was chosen.
bool frmHideFile::Browse(const char* title, wxTextCtrl& box) {
  if (const auto chosen = Talk().OpenFile(title, "", HomeFolder())) {
    box.SetValue(PathToWx(*chosen));
    return true;
  }
  if (!ExitWithoutFile(Talk())) return false;
  Talk().EndProgram();
  return false;
}

void frmHideFile::Command1_Click() {
  if (!Browse("Select File In Which You Want To Hide File.", *Text1_)) return;
  if (!Browse("Select File You Want To Hide.", *Text2_)) return;
  if (Text2_->GetValue() == Text1_->GetValue())
    Talk().Message("Select Some Other File to Hide.", Icon::Information);
  else
    Text3_->SetFocus();
}

void frmHideFile::Command2_Click() {
  RunStep([this] {
    job_.emplace(Filled(), Talk(), BigFiles::Ask);
    if (job_->Check() != HideJob::Next::GoOn) {
      const HideForm& form = job_->Form();
      Text1_->ChangeValue(PathToWx(form.Text1));
      Text2_->ChangeValue(PathToWx(form.Text2));
      Text3_->ChangeValue(ToWx(form.Text3.Text()));
      Text4_->ChangeValue(ToWx(form.Text4.Text()));
      UpdateFilesNote();
      for (const wxTextCtrl* const box : {Text4_, Text3_, Text2_, Text1_})
        if (box->IsEmpty()) FocusWhenFree(*box);
      return false;
    }
    Hide();
    for (wxTextCtrl* const box : {Text3_, Text4_}) box->ChangeValue("");
    App().ShowInit();
    if (job_->PrepareHide() != HideJob::Next::GoOn) return false;
    CheckIniTim_.Start(checkIniInterval);
    return true;
  });
}

HideForm frmHideFile::Filled() const {
  HideForm form{PathIn(*Text1_), PathIn(*Text2_), SecretIn(*Text3_), SecretIn(*Text4_)};
  form.encrypt = Check1_->IsChecked();
  return form;
}

void frmHideFile::Command3_Click() {
  Close();
}

void frmHideFile::CheckIniTim_Timer() {
  RunStep([this] {
    const HideJob::Next next = job_->CheckIni();
    if (next == HideJob::Next::Wait) return true;
    CheckIniTim_.Stop();
    if (next == HideJob::Next::Over) return false;
    tmrDoAll_.Start(doAllInterval);
    return true;
  });
}

void frmHideFile::tmrDoAll_Timer() {
  RunStep([this] {
    tmrDoAll_.Stop();
    (void)job_->DoAll();
    return false;
  });
}

/// Runs a step of the job. After the last step, and on a stop, deletes the job and its work folder
/// and unloads the wait form.
void frmHideFile::RunStep(const std::function<bool()>& step) {
  App().RunStep([this, &step] {
    bool more = false;
    try {
      more = step();
    } catch (...) {
      JobOver();
      throw;
    }
    if (!more) JobOver();
    return more;
  });
}

void frmHideFile::JobOver() {
  CheckIniTim_.Stop();
  tmrDoAll_.Stop();
  job_.reset();
  App().UnloadInit();
}

}  // namespace slyver
