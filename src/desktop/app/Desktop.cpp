#include "desktop/app/Desktop.h"

#include <wx/window.h>

#include <chrono>
#include <utility>
#include <vector>

#include "desktop/app/AppIcon.h"
#include "desktop/app/frmFirst.h"
#include "desktop/app/frmInit.h"
#include "desktop/app/frmSplitJoin.h"
#include "desktop/chrome/WindowSystem.h"
#include "desktop/chrome/modWinXP.h"
#include "desktop/hidden/frmHideFile.h"
#include "desktop/hidden/frmHideRec.h"
#include "desktop/split/frmJoin.h"
#include "desktop/split/frmSplitter.h"
#include "desktop/system/ModernForm.h"
#include "desktop/system/WxText.h"
#include "engine/base/PathText.h"

namespace slyver {

namespace {

/// Returns all forms of `desktop`, including those that wait to be deleted.
std::vector<ModernForm*> AllForms(const Desktop& desktop) {
  std::vector<ModernForm*> forms;
  for (wxWindow* const window : wxTopLevelWindows)
    if (auto* const form = dynamic_cast<ModernForm*>(window);
        form != nullptr && form->BelongsTo(desktop))
      forms.push_back(form);
  return forms;
}

/// Returns the loaded forms of `desktop`.
std::vector<ModernForm*> Forms(const Desktop& desktop) {
  std::vector<ModernForm*> forms = AllForms(desktop);
  std::erase_if(forms, [](const ModernForm* form) { return form->Unloaded(); });
  return forms;
}

}  // namespace

Desktop::Desktop(Ui& ui, Surroundings surroundings)
    : ui_(ui),
      surroundings_(std::move(surroundings)),
      jobs_(ui,
            [this](bool busy) {
              for (ModernForm* const form : Forms(*this)) form->SetBusy(busy);
            }),
      icon_(AppIcon()) {
  SetDefaultIcons(IconsOf(icon_));
}

Desktop::~Desktop() {
  // At once: their timers and events use this object.
  for (ModernForm* const form : AllForms(*this)) delete form;
  delete first_.get();
}

frmMainMenu& Desktop::MainMenu() {
  if (!mainMenu_) mainMenu_ = std::make_unique<frmMainMenu>(*this);
  return *mainMenu_;
}

std::vector<BarMenu> Desktop::Menus() {
  frmMainMenu& menus = MainMenu();
  return {{"&RAM Warning", menus.hel.get()}, {"&Help", menus.he.get()}};
}

void Desktop::Start(const std::string& commandLine) {
  first_ = new frmFirst(*this);
  first_->Form_Load(commandLine);
}

FileToSplit Desktop::ChosenFile() const {
  if (splitJoin_ && !splitJoin_->FullPath.empty())
    return {splitJoin_->FullPath, splitJoin_->Folder, splitJoin_->Remark};
  return {first_->FilePath, first_->FileFolder, {}};
}

void Desktop::LoadSplitJoin() {
  if (!splitJoin_) splitJoin_ = new frmSplitJoin(*this);
}

void Desktop::ShowSplitJoin() {
  LoadSplitJoin();
  splitJoin_->Show();
}

void Desktop::Choose(Job job) {
  frmSplitJoin& form = *splitJoin_;
  form.CallAfter([&form, job] { form.Choose(job); });
}

void Desktop::HandOverToSplitter() {
  // The split form reads the user's choice from the selection form.
  splitJoin_->Hide();
  ShowSplitter();
  splitJoin_->Unload();
}

void Desktop::ShowSplitter() {
  (new frmSplitter(*this))->Show();
}

void Desktop::ShowInit() {
  if (!init_) init_ = new frmInit(*this);
  init_->Show();
}

void Desktop::UnloadInit() {
  if (init_) init_->Unload();
}

void Desktop::ShowJoin(const std::string& caption) {
  if (!join_) join_ = new frmJoin(*this);
  join_->SetCaption(ToWx(caption));
  join_->Show();
}

void Desktop::UnloadJoin() {
  if (join_) join_->Unload();
}

/// Waits until the selection form is on the screen. Window managers stack forms that are shown
/// together in any order; the selection form must be below.
void Desktop::AwaitSplitJoin() {
  constexpr std::chrono::seconds longestWait{1};
  const auto deadline = std::chrono::steady_clock::now() + longestWait;
  while (splitJoin_ && splitJoin_->IsShown() && !IsOnScreen(*splitJoin_) &&
         std::chrono::steady_clock::now() < deadline)
    (void)ui_.GoOn();
}

void Desktop::ShowHideFile(ModernForm* instead) {
  AwaitSplitJoin();
  if (!hideFile_) hideFile_ = new frmHideFile(*this);
  hideFile_->Show();
  hideFile_->Raise();
  if (instead != nullptr) instead->Unload();
}

void Desktop::ShowHideFile(const std::filesystem::path& fileToHide) {
  ShowHideFile(nullptr);
  hideFile_->SetFileToHide(fileToHide);
}

void Desktop::ShowHideRec() {
  AwaitSplitJoin();
  if (!hideRec_) hideRec_ = new frmHideRec(*this);
  hideRec_->Show();
  hideRec_->Raise();
}

void Desktop::FormClosed(ModernForm& form) {
  form.Unload();
  for (const ModernForm* const other : Forms(*this))
    if (other->IsShown()) return;
  first_->Unload();
}

void Desktop::UnloadFirst() {
  first_->Unload();
}

void Desktop::AskToStop() {
  jobs_.AskToStop();
  for (ModernForm* const form : Forms(*this)) form->Say("Stopping ...");
}

void Desktop::ShowProgress(const Progress& progress) const {
  // While the job rolls back, its progress means nothing.
  if (jobs_.StopAsked()) return;
  jobs_.ShowProgress(progress);
  for (ModernForm* const form : Forms(*this)) form->ShowProgress(progress);
}

void Desktop::ShowPlace(const std::filesystem::path& made) const {
  for (ModernForm* const form : Forms(*this))
    if (form->IsShown()) form->SayBeneathMessage(PathText(made));
}

}  // namespace slyver
