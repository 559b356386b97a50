#pragma once

#include <wx/bmpbndl.h>
#include <wx/weakref.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "desktop/app/Memory.h"
#include "desktop/app/frmMainMenu.h"
#include "desktop/system/FormHost.h"
#include "engine/talk/Ui.h"

class wxAppProgressIndicator;

namespace slyver {

class frmFirst;
class frmHideFile;
class frmHideRec;
class frmInit;
class frmJoin;
class frmSplitJoin;

/// What a user can choose on the selection form.
enum class Job { Split, Join, Hide, Recover };

/// What the desktop program asks of the system around it.
struct Surroundings {
  std::function<bool()> anotherInstanceRuns;
  std::function<MemoryStatus()> memoryStatus;
  std::filesystem::path helpPage;  ///< Empty when there is no help.
  /// Opens a file in its viewer; false when there is none.
  std::function<bool(const std::filesystem::path&)> open;
};

/// The desktop program: it owns the forms, leads from one to the other and runs their jobs.
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

  /// Loads the start-up form with the command line's one text, which decides what comes first.
  void Start(const std::string& commandLine);

  frmFirst& First() { return *first_; }
  FileToSplit ChosenFile() const override;

  void LoadSplitJoin();  ///< Loads the selection form without showing it.
  void ShowSplitJoin();
  void Choose(Job job);       ///< Does, a little later, what the selection form's button does.
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

  void RunJob(const std::function<void()>& job) override;
  void RunStep(const std::function<bool()>& step) override;
  bool JobRuns() const override { return jobRuns_; }
  void AskToStop() override;
  bool StopAsked() const { return stopAsked_; }
  /// For how long the job has been running that runs.
  std::chrono::steady_clock::duration JobHasRun() const {
    return std::chrono::steady_clock::now() - jobBegan_;
  }

  /// Sets the progress bar that it concerns.
  void ShowProgress(const Progress& progress) const;
  /// Shows on the forms in sight where the file is that a job has made.
  void ShowPlace(const std::filesystem::path& made) const;

 private:
  void AwaitSplitJoin();
  void SetBusy(bool busy);

  Ui& ui_;
  Surroundings surroundings_;
  wxBitmapBundle icon_;
  std::unique_ptr<frmMainMenu> mainMenu_;
  wxWeakRef<frmFirst> first_;
  wxWeakRef<frmSplitJoin> splitJoin_;
  wxWeakRef<frmInit> init_;
  wxWeakRef<frmJoin> join_;
  wxWeakRef<frmHideFile> hideFile_;
  wxWeakRef<frmHideRec> hideRec_;
  std::unique_ptr<wxAppProgressIndicator> taskBar_;  ///< What the task bar shows of a job.
  std::chrono::steady_clock::time_point jobBegan_;
  bool jobRuns_ = false;
  bool stepRuns_ = false;
  bool stopAsked_ = false;
};

}  // namespace slyver
