#pragma once

#include <wx/bmpbndl.h>
#include <wx/weakref.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "app/frmMainMenu.h"
#include "system/Memory.h"
#include "system/Ui.h"

namespace slyver {

class ModernForm;
class frmFirst;
class frmInit;
class frmJoin;
class frmSplitJoin;

/// What the desktop program asks of the system around it.
struct Surroundings {
  std::function<bool()> anotherInstanceRuns;
  std::function<MemoryStatus()> memoryStatus;
  std::filesystem::path helpPage;                          ///< Empty when there is no help.
  std::function<void(const std::filesystem::path&)> open;  ///< Opens a file in its viewer.
};

/// The desktop program: it owns the forms, leads from one to the other and runs their jobs.
class Desktop {
 public:
  Desktop(Ui& ui, Surroundings surroundings);
  ~Desktop();
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  Ui& Talk() { return ui_; }
  const Surroundings& System() const { return surroundings_; }
  const wxBitmapBundle& Icon() const { return icon_; }
  frmMainMenu& MainMenu();

  /// Loads the start-up form with the command line's one text, which decides what comes first.
  void Start(const std::string& commandLine);

  frmFirst& First() { return *first_; }
  /// The selection form, or nullptr when it is not loaded.
  frmSplitJoin* SplitJoin() const;

  void LoadSplitJoin();  ///< Loads the selection form without showing it.
  void ShowSplitJoin();
  void HandOverToSplitter();  ///< Unloads the selection form and shows the split form.
  void ShowSplitter();
  void ShowInit();
  void UnloadInit();
  void ShowJoin(const std::string& caption);  ///< The progress form, under this caption.

  // The hide and the recover form open here. `instead` is the form that they take the place of,
  // which is unloaded once they are shown; none stays beneath.
  void ShowHideFile(ModernForm* instead);
  void ShowHideRec();
  /// The folder that the recover form has worked in, ending in a separator; empty if in none.
  std::filesystem::path HideRecFolder() const;

  /// A form was closed by its user: unloads it, and the program with the last one.
  void FormClosed(ModernForm& form);

  /// Runs a job of a form. Meanwhile the forms take no input but their title bars and buttons to
  /// cancel. A job that the user has stopped ends the program.
  void RunJob(const std::function<void()>& job);
  bool JobRuns() const { return jobRuns_; }
  /// Asks the job to stop and clean up.
  void AskToStop() { stopAsked_ = true; }
  bool StopAsked() const { return stopAsked_; }

  /// Sets the progress bar that it concerns.
  void ShowProgress(const Progress& progress) const;

 private:
  void SetBusy(bool busy);

  Ui& ui_;
  Surroundings surroundings_;
  wxBitmapBundle icon_;
  std::unique_ptr<frmMainMenu> mainMenu_;
  wxWeakRef<frmFirst> first_;
  wxWeakRef<frmSplitJoin> splitJoin_;
  wxWeakRef<frmInit> init_;
  wxWeakRef<frmJoin> join_;
  bool jobRuns_ = false;
  bool stopAsked_ = false;
};

}  // namespace slyver
