#include "desktop/split/frmSplitter.h"

#include <wx/menu.h>
#include <wx/sizer.h>

#include <array>
#include <exception>
#include <initializer_list>
#include <string>

#include "desktop/system/Controls.h"
#include "desktop/system/FileDrop.h"
#include "desktop/system/WxText.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"
#include "engine/settings/Registry.h"
#include "engine/split/SlyIt.h"

namespace slyver {

namespace {

constexpr int housekeepingInterval = 1;  // Milliseconds.

bool IsEnter(int key) {
  return key == WXK_RETURN || key == WXK_NUMPAD_ENTER;
}

}  // namespace

frmSplitter::frmSplitter(FormHost& host)
    : ModernForm(host, "frmSplitter", "Slyver", Resizing::Free), tmr_(this) {
  MakeControls();
  LayOut();
  Wire();
  Form_Load();
}

// In Tab order.
void frmSplitter::MakeControls() {
  wxPanel* const area = ClientArea();
  const auto option = [this](const wxString& caption, const wxString& name, long style) {
    auto* const made =
        new wxRadioButton(Frame1_, wxID_ANY, caption, wxDefaultPosition, wxDefaultSize, style);
    NameControl(*made, name, wxControl::RemoveMnemonics(caption));
    return made;
  };
  Label1_ = NewLabel(area, "&File To Split:", "Label1");
  Text1_ = NewTextBox(area, "Text1", "File To Split:", wxTE_PROCESS_ENTER);
  Command6_ = NewButton(area, "Browse", "Command6");
  Label2_ = NewLabel(area, "&Output Directory:", "Label2");
  Text2_ = NewTextBox(area, "Text2", "Output Directory:", wxTE_PROCESS_ENTER);
  Command2_ = NewButton(area, "Change Dir", "Command2");
  Frame1_ = new wxStaticBox(area, wxID_ANY, "File Settings :");
  Frame1_->SetName("Frame1");
  Option1_ = option("&Predefined File Size : ", "Option1", wxRB_GROUP);
  Label3_ = NewLabel(Frame1_, "1.38 MB Or 1450000 Bytes", "Label3");
  Option2_ = option("&Specified File Size :", "Option2", 0);
  Text3_ = NewTextBox(Frame1_, "Text3", "Specified File Size : In Bytes.", wxTE_PROCESS_ENTER);
  sizes_ = new wxButton(Frame1_, wxID_ANY, wxString::FromUTF8("\u25BE"), wxDefaultPosition,
                        wxDefaultSize, wxBU_EXACTFIT);
  NameControl(*sizes_, "Sizes", "Common Sizes");
  sizes_->SetMinSize({2 * sizes_->GetCharHeight(), -1});
  // By keyboard, Down in the field opens the menu.
  sizes_->DisableFocusFromKeyboard();
  Label6_ = NewLabel(Frame1_, " In Bytes.", "Label6");
  Label5_ = NewLabel(Frame1_, "Or &Number Of Files :", "Label5");
  Nofile_ = NewTextBox(Frame1_, "Nofile", "Or Number Of Files :", wxTE_PROCESS_ENTER);
  Check1_ = new wxCheckBox(Frame1_, wxID_ANY, "&Write Checksum File");
  NameControl(*Check1_, "Check1", "Write Checksum File");
  Check1_->SetToolTip("Joining checks the pieces against it.");
  view_ = std::make_unique<ProgressView>(area, "pb", "Text4");
  Command4_ = NewButton(area, "Hide File", "Command4");
  Command5_ = NewButton(area, "Recover File", "Command5");
  Command1_ = NewButton(area, "Sly It", "Command1");
  Command3_ = NewButton(area, "Cancel", "Command3");
}

void frmSplitter::LayOut() {
  wxFlexGridSizer* const paths = NewFieldGrid(Gap());
  FieldRow(*paths, Label1_, Text1_, Command6_);
  FieldRow(*paths, Label2_, Text2_, Command2_);
  Text1_->SetMinSize({ConvertDialogToPixels(wxSize(170, -1)).x, Text1_->GetMinHeight()});

  auto* const settings = new wxFlexGridSizer(3, Gap(), Gap());
  FieldRow(*settings, Option1_, Label3_);
  auto* const unit = new wxBoxSizer(wxHORIZONTAL);
  unit->Add(sizes_, wxSizerFlags().Expand());
  unit->Add(Label6_, wxSizerFlags().CentreVertical());
  FieldRow(*settings, Option2_, Text3_, unit);
  FieldRow(*settings, Label5_, Nofile_);
  settings->GetItem(Label5_)->SetFlag(wxALIGN_CENTRE_VERTICAL | wxALIGN_RIGHT);
  auto* const frame = new wxStaticBoxSizer(Frame1_, wxVERTICAL);
  frame->Add(settings, wxSizerFlags().Expand().Border(wxALL, Gap()));
  frame->Add(Check1_, wxSizerFlags().Border(wxLEFT | wxRIGHT | wxBOTTOM, Gap()));

  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(paths, wxSizerFlags().Expand());
  column->Add(frame, wxSizerFlags().Expand().Border(wxTOP | wxBOTTOM, 2 * Gap()));
  column->Add(view_->Bar(), wxSizerFlags().Expand());
  column->Add(view_->Line(), wxSizerFlags().Expand().Border(wxTOP, Gap()));
  column->AddStretchSpacer();
  column->Add(ButtonRow(Gap(), {Command4_, Command5_}, {Command1_, Command3_}),
              wxSizerFlags().Expand().Border(wxTOP, 2 * Gap()));
  Command1_->SetDefault();
  SetEscapeButton(Command3_);
  SetStatusLine(view_->Line());
  FitAndCentre(column);
}

void frmSplitter::Wire() {
  OnClick(sizes_, this, &frmSplitter::OfferSizes);
  OnClick(Command1_, this, &frmSplitter::Command1_Click);
  OnClick(Command2_, this, &frmSplitter::Command2_Click);
  OnClick(Command3_, this, &frmSplitter::Command3_Click);
  OnClick(Command4_, this, &frmSplitter::Command4_Click);
  OnClick(Command5_, this, &frmSplitter::Command5_Click);
  OnClick(Command6_, this, &frmSplitter::Command6_Click);
  for (wxTextCtrl* const path : {Text1_, Text2_})
    path->Bind(wxEVT_TEXT_ENTER, [this](wxCommandEvent&) { Command1_Click(); });
  Text1_->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { Text1_Change(); });
  Text3_->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { Text3_Change(); });
  Nofile_->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { Nofile_Change(); });
  for (wxTextCtrl* const size : {Text3_, Nofile_})
    size->Bind(wxEVT_CHAR, &frmSplitter::FilterKey, this);
  Nofile_->Bind(wxEVT_KILL_FOCUS, [this, field = Nofile_](wxFocusEvent& event) {
    event.Skip();
    // The field also loses the focus while the form is deleted.
    if (!wxGetTopLevelParent(field)->IsBeingDeleted()) ComputeSize();
  });
  Option1_->Bind(wxEVT_RADIOBUTTON, [this](wxCommandEvent&) { Option1_Click(); });
  Option2_->Bind(wxEVT_RADIOBUTTON, [this](wxCommandEvent&) { Option2_Click(); });
  for (wxControl* const option : std::initializer_list<wxControl*>{Option1_, Option2_, Check1_})
    option->Bind(wxEVT_CHAR_HOOK, [this](wxKeyEvent& event) {
      if (IsEnter(event.GetKeyCode()))
        Command1_Click();
      else
        event.Skip();
    });
  AcceptDroppedFile(*Text1_,
                    [this](const std::filesystem::path& dropped, const std::string& remark) {
                      Text1_->SetValue(PathToWx(dropped));
                      if (!remark.empty()) Say(remark);
                    });
  AcceptDroppedFile(
      *Text2_, [this](const std::filesystem::path& dropped, const std::string& remark) {
        Text2_->SetValue(PathToWx(FolderExists(dropped) ? dropped : dropped.parent_path()));
        Say(remark);
      });
  Bind(wxEVT_TIMER, [this](wxTimerEvent&) { tmr_Timer(); });
}

void frmSplitter::Form_Load() {
  const FileToSplit chosen = App().ChosenFile();
  Text1_->ChangeValue(PathToWx(chosen.file));
  Text2_->ChangeValue(PathToWx(chosen.folder));
  Option1_->SetValue(true);
  Option1_Click();
  if (!chosen.file.empty()) (void)SourceLength();
  if (!chosen.remark.empty()) Say(chosen.remark);
  Command1_->SetFocus();
  tmr_.Start(housekeepingInterval);
}

void frmSplitter::ShowProgress(const Progress& progress) {
  if (progress.bar == "pb") view_->Show(progress);
}

/// Returns the length in bytes of the file to split. Returns 0 on an error, which the status line
/// shows.
std::uint64_t frmSplitter::SourceLength() {
  try {
    const std::uint64_t length = FileLength(PathIn(*Text1_));
    Say("");
    return length;
  } catch (const std::exception& error) {
    Say(TextFor(error));
    return 0;
  }
}

// Sizes computed for another file are wrong now.
void frmSplitter::Text1_Change() {
  if (NofileTyping_ && !Nofile_->IsEmpty())
    ComputeSize();
  else if (!Text3_->IsEmpty())
    ShowCount(CountFromSize(FromWx(Text3_->GetValue()), SourceLength()));
  else
    (void)SourceLength();
}

// The two run only on changes by the user: ChangeValue() sends no event.
void frmSplitter::Nofile_Change() {
  NofileTyping_ = true;
  const FieldChange change =
      SizeFromCount(FromWx(Nofile_->GetValue()), FromWx(Text3_->GetValue()), SourceLength());
  if (change.other) Text3_->ChangeValue(ToWx(*change.other));
  if (change.askForWholeNumber) Talk().Message("Please Enter Whole Numbers.", Icon::Information);
}

void frmSplitter::Text3_Change() {
  NofileTyping_ = false;
  const FieldChange change = CountFromSize(FromWx(Text3_->GetValue()), SourceLength());
  ShowCount(change);
  if (change.askForWholeNumber) Talk().Message("Please Enter Whole Numbers.", Icon::Information);
}

void frmSplitter::ShowCount(const FieldChange& change) {
  if (change.other) Nofile_->ChangeValue(ToWx(*change.other));
  if (change.clearTyped) Text3_->ChangeValue("");
}

/// Computes the size from a completed number of pieces. While a user types 12, the size is computed
/// for 1 and then stays.
void frmSplitter::ComputeSize() {
  if (!NofileTyping_ || Nofile_->IsEmpty()) return;
  const FieldChange change = SizeFromCount(FromWx(Nofile_->GetValue()), "", SourceLength());
  if (change.other) Text3_->ChangeValue(ToWx(*change.other));
}

void frmSplitter::FilterKey(wxKeyEvent& event) {
  const int key = event.GetKeyCode();
  if (IsEnter(key)) {
    Command1_Click();
    return;
  }
  if (key == WXK_DOWN && event.GetEventObject() == Text3_) {
    OfferSizes();
    return;
  }
  // Keys that type nothing (arrows, Tab, Ctrl and a letter) pass.
  const bool types =
      event.GetUnicodeKey() >= WXK_SPACE && key != WXK_DELETE && !event.HasModifiers();
  if (!types || (key >= '0' && key <= '9')) event.Skip();
}

/// Shows a menu of common sizes for Text3.
void frmSplitter::OfferSizes() {
  struct Size {
    const char* caption;
    const char* bytes;
  };
  static constexpr std::array<Size, 5> sizes = {{{"25 MB (Mail)", "25000000"},
                                                 {"650 MB (CD)", "650000000"},
                                                 {"700 MB (CD)", "700000000"},
                                                 {"4 GB Less One Byte (FAT32)", "4294967295"},
                                                 {"4.7 GB (DVD)", "4700000000"}}};
  wxMenu menu;
  for (const Size& size : sizes) menu.Append(wxID_ANY, size.caption);
  const wxPoint below = {0, Text3_->GetSize().y};
  const int chosen = Text3_->GetPopupMenuSelectionFromUser(menu, below);
  for (std::size_t i = 0; i < sizes.size(); ++i)
    if (menu.FindItemByPosition(i)->GetId() == chosen) Text3_->SetValue(sizes.at(i).bytes);
}

void frmSplitter::Option1_Click() {
  sizes_->Disable();
  for (wxTextCtrl* const field : {Text3_, Nofile_}) {
    field->ChangeValue("");
    field->Disable();
  }
}

void frmSplitter::Option2_Click() {
  sizes_->Enable();
  Text3_->Enable();
  Nofile_->Enable();
}

void frmSplitter::Command1_Click() {
  ComputeSize();
  App().RunJob([this] {
    SplitForm form{.Text1 = PathIn(*Text1_),
                   .Text2 = PathIn(*Text2_),
                   .Option2 = Option2_->GetValue(),
                   .Text3 = FromWx(Text3_->GetValue()),
                   .Nofile = FromWx(Nofile_->GetValue()),
                   .Check1 = Check1_->GetValue()};
    (void)SlyIt(form, Talk());
    Text2_->ChangeValue(PathToWx(form.Text2));
    view_->Clear();
  });
}

void frmSplitter::Command2_Click() {
  if (const auto folder = Talk().PickFolder()) Text2_->ChangeValue(PathToWx(*folder));
}

void frmSplitter::Command3_Click() {
  if (App().JobRuns()) {
    App().AskToStop();
    return;
  }
  DeleteFilePathValue();
  Talk().EndProgram();
}

void frmSplitter::Command4_Click() {
  App().ShowHideFile(this);
}

void frmSplitter::Command5_Click() {
  App().ShowHideRec();
}

void frmSplitter::Command6_Click() {
  if (const auto chosen = Talk().OpenFile("Select File Which You Want To Sly.", "", {}))
    Text1_->SetValue(PathToWx(*chosen));
}

// Runs once: a running timer would keep an idle program awake.
void frmSplitter::tmr_Timer() {
  tmr_.Stop();
  Chrome().FontProperties("Tahoma");
}

}  // namespace slyver
