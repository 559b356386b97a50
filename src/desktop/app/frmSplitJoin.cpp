#include "desktop/app/frmSplitJoin.h"

#include <wx/sizer.h>

#include "desktop/app/frmFirst.h"
#include "desktop/system/Controls.h"
#include "desktop/system/FileDrop.h"
#include "engine/base/PathText.h"
#include "engine/disk/Disk.h"
#include "engine/disk/WorkFolders.h"
#include "engine/settings/Registry.h"
#include "engine/split/JoinM.h"
#include "engine/split/PieceName.h"

namespace slyver {

frmSplitJoin::frmSplitJoin(Desktop& desktop)
    : ModernForm(desktop, "frmSplitJoin", "Selection", Resizing::Fixed), desktop_(desktop) {
  Label1_ =
      NewLabel(ClientArea(), "                   Please Select One Of The Options.", "Label1");
  const auto button = [this](const wxString& caption, const wxString& name,
                             void (frmSplitJoin::*click)()) {
    wxButton* const made = NewButton(ClientArea(), caption, name);
    made->SetMinSize(ConvertDialogToPixels(wxSize(90, 22)));
    OnClick(made, this, click);
    return made;
  };
  Command1_ = button("Split File", "Command1", &frmSplitJoin::Command1_Click);
  Command2_ = button("Join File", "Command2", &frmSplitJoin::Command2_Click);
  Command4_ = button("Hide File", "Command4", &frmSplitJoin::Command4_Click);
  Command5_ = button("Recover File", "Command5", &frmSplitJoin::Command5_Click);
  Command3_ = button("Cancel", "Command3", &frmSplitJoin::Command3_Click);
  SetEscapeButton(Command3_);

  auto* const grid = new wxFlexGridSizer(2, Gap(), Gap());
  grid->AddGrowableCol(0, 1);
  grid->AddGrowableCol(1, 1);
  for (wxButton* const job : {Command1_, Command2_, Command4_, Command5_})
    grid->Add(job, wxSizerFlags().Expand());
  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(Label1_, wxSizerFlags().Border(wxBOTTOM, 2 * Gap()));
  column->Add(grid, wxSizerFlags().Expand());
  column->Add(Command3_, wxSizerFlags().Right().Border(wxTOP, 2 * Gap()));
  AcceptDroppedFile(*ClientArea(), [this](const std::filesystem::path& path,
                                          const std::string& remark) { Dropped(path, remark); });
  FitAndCentre(column);
  Command1_->SetDefault();
  Command1_->SetFocus();
  Form_Load();
}

void frmSplitJoin::Form_Load() {
  const std::filesystem::path& FilePath = desktop_.First().FilePath;
  if (!FilePath.empty()) App().RunJob([&] { (void)JoinFromCommandLine(FilePath, Talk()); });
}

void frmSplitJoin::Choose(Job job) {
  switch (job) {
    case Job::Split:
      return Command1_Click();
    case Job::Join:
      return Command2_Click();
    case Job::Hide:
      return Command4_Click();
    case Job::Recover:
      return Command5_Click();
  }
}

void frmSplitJoin::Command1_Click() {
  const std::optional<std::filesystem::path> chosen =
      Talk().OpenFile("Select File To Sly", "", HomeFolder());
  if (!chosen) {
    if (ExitWithoutFile(Talk())) {
      DeleteFilePathValue();
      Talk().EndProgram();
    }
    return;
  }
  SplitFileChosen(*chosen);
}

void frmSplitJoin::SplitFileChosen(const std::filesystem::path& chosen) {
  FullPath = chosen;
  Folder = WithSeparator(FullPath.parent_path());
  desktop_.First().ReadyToSplit();
}

void frmSplitJoin::Command2_Click() {
  App().RunJob([this] { (void)JoinFile(Talk()); });
}

// Joins a piece; opens the split form for any other file.
void frmSplitJoin::Dropped(const std::filesystem::path& path, const std::string& remark) {
  if (App().JobRuns()) return;
  if (FolderExists(path)) {
    Talk().Message("Unable To Sly Folder.", Icon::Information);
  } else if (OrigNameOf(PathText(path.filename()))) {
    App().RunJob([this, &path] { (void)JoinFile(Talk(), path); });
  } else {
    Remark = remark;
    SplitFileChosen(path);
  }
}

void frmSplitJoin::Command3_Click() {
  if (App().JobRuns())
    App().AskToStop();
  else
    Talk().EndProgram();
}

void frmSplitJoin::Command4_Click() {
  App().ShowHideFile(nullptr);
}

void frmSplitJoin::Command5_Click() {
  App().ShowHideRec();
}

}  // namespace slyver
