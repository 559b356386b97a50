#pragma once

#include <wx/bmpbndl.h>
#include <wx/weakref.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "desktop/app/JobRunner.h"
#include "desktop/app/Memory.h"
#include "desktop/app/frmMainMenu.h"
#include "desktop/system/FormHost.h"
#include "engine/talk/Ui.h"

namespace slyver {

class frmFirst;
class frmHideFile;
class frmHideRec;
class frmInit;
class frmJoin;
class frmSplitJoin;

/// What a user can choose on the selection form.
enum class Job { Split, Join, Hide, Recover };

/// What the desktop program needs of the system; tests replace it.
struct Surroundings {
  std::function<bool()> anotherInstanceRuns;
  std::function<MemoryStatus()> memoryStatus;
  std::filesystem::path helpPage;  ///< Empty if missing.
  /// Opens a file in its viewer; `false` if that fails.
  std::function<bool(const std::filesystem::path&)> open;
};

/// The desktop program. Owns the forms and shows one after the other.
class Desktop final : public FormHost {
 public:
  Desktop(Ui& ui, Surroundings surroundings);
  ~Desktop() override;
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  Ui& Talk() override { return ui_; }
  const Surroundings& System() const { return surroundings_; }
  const wxBitmapBundle& Icon() const override { return icon_; }
  std::vector<BarMenu> Menus() override;
  frmMainMenu& MainMenu();

  /// Loads the start-up form, which shows the form that the command line asks for.
  void Start(const std::string& commandLine);

  frmFirst& First() { return *first_; }
  FileToSplit ChosenFile() const override;

  void LoadSplitJoin();  ///< Loads the selection form without showing it.
  void ShowSplitJoin();
  void Choose(Job job);       ///< Presses the selection form's button when events run next.
  void HandOverToSplitter();  ///< Unloads the selection form and shows the split form.
  void ShowSplitter();
  void ShowInit() override;
  void UnloadInit() override;
  void ShowJoin(const std::string& caption) override;
  void UnloadJoin() override;
  void ShowHideFile(ModernForm* instead) override;
  void ShowHideFile(const std::filesystem::path& fileToHide);
  void ShowHideRec() override;

  void FormClosed(ModernForm& form) override;
  void UnloadFirst() override;

  const JobRunner& Jobs() const { return jobs_; }
  void RunJob(const std::function<void()>& job) override { jobs_.RunJob(job); }
  void RunStep(const std::function<bool()>& step) override { jobs_.RunStep(step); }
  bool JobRuns() const override { return jobs_.JobRuns(); }
  void AskToStop() override;

  /// Sets the progress bars on forms and task bar. Does nothing while the job stops.
  void ShowProgress(const Progress& progress) const;
  /// Shows the path of a job's result on the visible forms.
  void ShowPlace(const std::filesystem::path& made) const;

 private:
  void AwaitSplitJoin();

  Ui& ui_;
  Surroundings surroundings_;
  JobRunner jobs_;
  wxBitmapBundle icon_;
  std::unique_ptr<frmMainMenu> mainMenu_;
  wxWeakRef<frmFirst> first_;
  wxWeakRef<frmSplitJoin> splitJoin_;
  wxWeakRef<frmInit> init_;
  wxWeakRef<frmJoin> join_;
  wxWeakRef<frmHideFile> hideFile_;
  wxWeakRef<frmHideRec> hideRec_;
};

}  // namespace slyver
