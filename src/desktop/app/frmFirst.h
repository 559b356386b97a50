#pragma once

#include <wx/frame.h>
#include <wx/timer.h>

#include <filesystem>
#include <optional>
#include <string>

#include "desktop/app/Desktop.h"

namespace slyver {

/// The start-up form. It is never shown and stays loaded for the whole run: it decides what comes
/// first, hands over from the selection form to the split form, and cleans up at the end.
class frmFirst final : public wxFrame {
 public:
  explicit frmFirst(Desktop& desktop);

  std::filesystem::path FilePath;    ///< The path given on the command line, or empty.
  std::filesystem::path FileFolder;  ///< Its folder, ending in a separator.
  bool SplitReady = false;           ///< "Split File" has chosen a file.

  /// The start-up. `commandLine` is the one text given to the program, or empty: a path, or an
  /// option that names a job ("--split", "--join", "--hide", "--recover"), the file of the job
  /// behind.
  void Form_Load(const std::string& commandLine);

  /// Sets SplitReady, on which Timer1 acts.
  void ReadyToSplit();

  /// Unloads the form: cleans up and ends the program.
  void Unload();

 private:
  bool StartOnce();
  int StartCpuStats();
  bool CheckRAM();
  bool GoesOnAfterWarning(const std::string& warning);
  void OpenCommandLine(const std::string& commandLine, std::optional<Job> job);
  void Timer1_Timer();
  static void Form_QueryUnload();
  void Form_Unload();

  Desktop& desktop_;
  wxTimer Timer1_;
  std::string RamSetting_;
  float PercentFree_ = 0;
};

}  // namespace slyver
