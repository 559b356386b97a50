#include "desktop/hidden/frmHideRec.h"

#include <wx/sizer.h>

#include <utility>

#include "desktop/hidden/frmShowList.h"
#include "desktop/system/FileDrop.h"
#include "desktop/system/StatusLine.h"
#include "desktop/system/WxText.h"

namespace slyver {

frmHideRec::frmHideRec(FormHost& host) : ModernForm(host, "frmHideRec", "Recover", Resizing::Free) {
  MakeControls();
  LayOut();
  Wire();
  Command3_->SetFocus();
}

// In Tab order.
void frmHideRec::MakeControls() {
  wxPanel* const area = ClientArea();
  note_ = NewStatusLine(area, "Note");
  passwordNote_.emplace(*note_);
  Label1_ = NewLabel(area, "Main File Name :", "Label1");
  Text1_ = NewTextBox(area, "Text1", "Main File Name :");
  Command3_ = NewButton(area, "Browse", "Command3");
  Label2_ = NewLabel(area, "Enter Password :", "Label2");
  Text2_ = NewMaskedBox(area, "Text2", "Enter Password :");
  Command1_ = NewButton(area, "Rec Hidden", "Command1");
  Command1_->SetToolTip("Click To Recover One Of The Hidden Files.");
  Command4_ = NewButton(area, "Rec Main", "Command4");
  Command4_->SetToolTip("Click To Recover The Main File.");
  Command2_ = NewButton(area, "Cancel", "Command2");
}

void frmHideRec::LayOut() {
  wxFlexGridSizer* const fields = NewFieldGrid(Gap());
  FieldRow(*fields, Label1_, Text1_, Command3_);
  FieldRow(*fields, Label2_, Text2_);
  Text1_->SetMinSize({ConvertDialogToPixels(wxSize(200, -1)).x, Text1_->GetMinHeight()});

  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(fields, wxSizerFlags().Expand());
  column->Add(note_, wxSizerFlags().Expand().Border(wxTOP, Gap()));
  column->AddStretchSpacer();
  column->Add(ButtonRow(Gap(), {}, {Command1_, Command4_, Command2_}),
              wxSizerFlags().Expand().Border(wxTOP, Gap()));
  Command1_->SetDefault();
  SetEscapeButton(Command2_);
  SetStatusLine(note_);
  FitAndCentre(column);
}

void frmHideRec::Wire() {
  OnClick(Command1_, this, &frmHideRec::Command1_Click);
  OnClick(Command2_, this, &frmHideRec::Command2_Click);
  OnClick(Command3_, this, &frmHideRec::Command3_Click);
  OnClick(Command4_, this, &frmHideRec::Command4_Click);
  Text1_->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { Text1_Change(); });
  Text2_->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { ShowNote(); });
  Text2_->Bind(wxEVT_TEXT_ENTER, [this](wxCommandEvent&) { Command1_Click(); });
  AcceptDroppedFile(*Text1_,
                    [this](const std::filesystem::path& dropped, const std::string& remark) {
                      Text1_->SetValue(PathToWx(dropped));
                      Say(remark);
                    });
}

// If the list needs no password, the box takes the passphrase of an encrypted file.
void frmHideRec::Text1_Change() {
  const bool open = ListIsOpen(PathFromWx(Text1_->GetValue()));
  kind_ = open ? SecretKind::Passphrase : SecretKind::Password;
  ShowNote();
}

void frmHideRec::ShowNote() {
  note_->ChangeValue(passwordNote_->For(kind_, {Text2_}));
}

void frmHideRec::Command3_Click() {
  Text1_->Clear();
  std::optional<std::filesystem::path> chosen;
  while (!(chosen = Talk().OpenFile("Select File From Which You Want To Recover File", "", {}))) {
    if (ExitWithoutFile(Talk())) {
      Talk().EndProgram();
      return;
    }
  }
  Text1_->SetValue(PathToWx(*chosen));
  Text2_->SetFocus();
}

void frmHideRec::Command1_Click() {
  Start(&RecoverJob::RecHidden);
}

void frmHideRec::Command4_Click() {
  Start(&RecoverJob::RecMain);
}

void frmHideRec::Command2_Click() {
  Talk().EndProgram();
}

void frmHideRec::Start(RecoverJob::Next (RecoverJob::*procedure)()) {
  Run([this, procedure] {
    RecoverForm form{PathIn(*Text1_), SecretIn(*Text2_)};
    if (ListIsOpen(form.Text1)) form.passphrase = std::exchange(form.Text2, {});
    Hide();
    job_.emplace(std::exchange(form, {}), Talk(), BigFiles::Ask);
    return ((*job_).*procedure)();
  });
}

void frmHideRec::DorestOfStuff(int k) {
  Run([this, k] {
    App().ShowJoin("Recovering Files");
    return job_->DorestOfStuff(k);
  });
}

void frmHideRec::ListCancelled() {
  job_.reset();
  Show();
}

/// Runs a procedure of the job, then shows the form that it asks for. At the end of the job, and on
/// a stop, deletes the job and its work folder.
void frmHideRec::Run(const std::function<RecoverJob::Next()>& procedure) {
  RecoverJob::Next next = RecoverJob::Next::Over;
  App().RunJob([&] {
    try {
      next = procedure();
    } catch (...) {
      job_.reset();
      throw;
    }
  });
  if (next == RecoverJob::Next::Choose) {
    App().UnloadJoin();
    list_ = new frmShowList(App(), *this, job_->Files());
    list_->Show();
    return;
  }
  job_.reset();
  if (list_) list_->Unload();
  if (next == RecoverJob::Next::Form) Show();
  if (next == RecoverJob::Next::Unload) App().UnloadFirst();
}

}  // namespace slyver
