#pragma once

#include <wx/bmpbndl.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "desktop/chrome/MenuFrame.h"
#include "engine/talk/Ui.h"

namespace slyver {

class ModernForm;

/// A file to split and the folder for its pieces, which ends in a separator. Both may be empty.
struct FileToSplit {
  std::filesystem::path file;
  std::filesystem::path folder;
  std::string remark;  ///< What there is to say of the choice, or nothing.
};

/// What a form asks of the program around it. The forms know no more of the program than this, so
/// that each can be read, and tested, without the others.
class FormHost {
 public:
  FormHost() = default;
  virtual ~FormHost() = default;
  FormHost(const FormHost&) = delete;
  FormHost& operator=(const FormHost&) = delete;

  virtual Ui& Talk() = 0;
  virtual const wxBitmapBundle& Icon() const = 0;
  /// The menus that every form has. They belong to the host.
  virtual std::vector<BarMenu> Menus() = 0;

  /// The file that the selection form or the command line has named for the split form.
  virtual FileToSplit ChosenFile() const = 0;

  /// Shows, and unloads, the form that asks to wait while a file is being hidden.
  virtual void ShowInit() = 0;
  virtual void UnloadInit() = 0;
  /// Shows the progress form under this caption.
  virtual void ShowJoin(const std::string& caption) = 0;
  virtual void UnloadJoin() = 0;
  /// Shows the hide form. `instead` is the form that it replaces, which is unloaded, or nullptr
  /// where a form stays beneath.
  virtual void ShowHideFile(ModernForm* instead) = 0;
  virtual void ShowHideRec() = 0;

  /// The user has closed a form: unloads it, and the program with the last one.
  virtual void FormClosed(ModernForm& form) = 0;
  /// Unloads the start-up form, which cleans up and ends the program.
  virtual void UnloadFirst() = 0;

  /// Runs a job of a form. Meanwhile the forms take no input but their title bars and buttons to
  /// cancel. A job that the user has stopped ends the program.
  virtual void RunJob(const std::function<void()>& job) = 0;
  /// Like RunJob, for one step of a job of several: until a step returns false, the job counts as
  /// running.
  virtual void RunStep(const std::function<bool()>& step) = 0;
  virtual bool JobRuns() const = 0;
  /// Asks the job to stop and clean up.
  virtual void AskToStop() = 0;
};

}  // namespace slyver
