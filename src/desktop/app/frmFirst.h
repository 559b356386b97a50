#pragma once

#include <wx/frame.h>
#include <wx/timer.h>

#include <filesystem>
#include <optional>
#include <string>

#include "desktop/app/Desktop.h"

namespace slyver {

/// The start-up form, never shown, loaded for the whole run. Shows the first form, replaces the
/// selection form with the split form, and cleans up at the end.
class frmFirst final : public wxFrame {
 public:
  explicit frmFirst(Desktop& desktop);

  std::filesystem::path FilePath;    ///< The path given on the command line, or empty.
  std::filesystem::path FileFolder;  ///< Its folder, ending in a separator.
  bool SplitReady = false;           ///< A file to split has been chosen.

  /// Starts the program. `commandLine` is empty, a path, or "--split", "--join", "--hide" or
  /// "--recover" with an optional path.
  void Form_Load(const std::string& commandLine);

  /// Sets SplitReady and starts Timer1, which shows the split form.
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
