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
  std::string remark;  ///< A note about the choice; may be empty.
};

/// What a form needs of the program. Forms see nothing else of it, so each can be read and tested
/// without the others.
class FormHost {
 public:
  FormHost() = default;
  virtual ~FormHost() = default;
  FormHost(const FormHost&) = delete;
  FormHost& operator=(const FormHost&) = delete;

  virtual Ui& Talk() = 0;
  virtual const wxBitmapBundle& Icon() const = 0;
  /// Returns the menus that every form shows. The host owns them.
  virtual std::vector<BarMenu> Menus() = 0;

  /// Returns the file that the selection form or the command line has chosen for the split form.
  virtual FileToSplit ChosenFile() const = 0;

  /// Shows the wait form of a hide job.
  virtual void ShowInit() = 0;
  virtual void UnloadInit() = 0;
  /// Shows the progress form with this caption.
  virtual void ShowJoin(const std::string& caption) = 0;
  virtual void UnloadJoin() = 0;
  /// Shows the hide form and unloads `instead`, which may be nullptr.
  virtual void ShowHideFile(ModernForm* instead) = 0;
  virtual void ShowHideRec() = 0;

  /// Unloads a form that the user has closed; ends the program if no form is left.
  virtual void FormClosed(ModernForm& form) = 0;
  /// Unloads the start-up form, which ends the program.
  virtual void UnloadFirst() = 0;

  /// Runs a job. Meanwhile only the forms' title bars and Cancel buttons take input. A job that the
  /// user stops ends the program.
  virtual void RunJob(const std::function<void()>& job) = 0;
  /// Runs one step of a job, which ends with the step that returns `false`.
  virtual void RunStep(const std::function<bool()>& step) = 0;
  virtual bool JobRuns() const = 0;
  /// Asks the job to stop and clean up.
  virtual void AskToStop() = 0;
};

}  // namespace slyver
