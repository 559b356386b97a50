#include "desktop/app/frmFirst.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <string_view>
#include <vector>

#include "desktop/app/CpuStats.h"
#include "desktop/app/frmSplitJoin.h"
#include "engine/base/PathText.h"
#include "engine/disk/Disk.h"
#include "engine/disk/WorkFolders.h"
#include "engine/settings/Registry.h"

namespace slyver {

namespace {

/// Returns `bytes` in the memory check's units of 1044032 bytes, with one decimal.
double Megabytes(std::uint64_t bytes) {
  return std::floor(static_cast<double>(bytes) / 1044032 * 10 + 0.5) / 10;
}

/// Returns the command line as an absolute path, or unchanged if it is in quotation marks.
std::string PathIn(const std::string& commandLine) {
  if (commandLine.empty() || commandLine.starts_with('"')) return commandLine;
  return PathText(FullPathOf(PathFromText(commandLine)));
}

/// Removes an option that names a job, and returns the job; `nullopt` if there is no such option.
/// "--split" and "--hide" may have a file after them.
std::optional<Job> TakeJob(std::string& commandLine) {
  struct Option {
    std::string_view text;
    Job job;
    bool hasFile;
  };
  constexpr std::array<Option, 4> options = {{{"--split", Job::Split, true},
                                              {"--join", Job::Join, false},
                                              {"--hide", Job::Hide, true},
                                              {"--recover", Job::Recover, false}}};
  for (const Option& option : options) {
    const std::size_t length = option.text.size();
    if (commandLine == option.text ||
        (option.hasFile && commandLine.starts_with(std::string(option.text) + ' '))) {
      commandLine.erase(0, std::min(length + 1, commandLine.size()));
      return option.job;
    }
  }
  return std::nullopt;
}

}  // namespace

frmFirst::frmFirst(Desktop& desktop)
    : wxFrame(nullptr, wxID_ANY, "Form1", wxDefaultPosition, wxDefaultSize, wxDEFAULT_FRAME_STYLE,
              "frmFirst"),
      desktop_(desktop),
      Timer1_(this) {
  Bind(wxEVT_TIMER, [this](wxTimerEvent&) { Timer1_Timer(); });
}

void frmFirst::Form_Load(const std::string& commandLine) {
  const bool goesOn = ShowingErrors(desktop_.Talk(), false, [&] {
    if (!StartOnce()) return true;
    (void)StartCpuStats();
    if (!CheckRAM()) return true;
    std::string argument = commandLine;
    const std::optional<Job> job = TakeJob(argument);
    OpenCommandLine(PathIn(argument), job);
    return true;
  });
  if (!goesOn) desktop_.Talk().EndProgram();
}

bool frmFirst::StartOnce() {
  if (!desktop_.System().anotherInstanceRuns() ||
      desktop_.Talk().Question("Slyver Is Already Running. Do You Want To Create Another Instance "
                               "Of It?",
                               Buttons::OkCancel, Stakes::None) == Answer::Ok)
    return true;
  DeleteFilePathValue();
  desktop_.Talk().EndProgram();
  return false;
}

int frmFirst::StartCpuStats() {
  (void)desktop_.Talk().GoOn();
  SwitchCpuStatsOnAndOff();
  return 0;
}

bool frmFirst::CheckRAM() {
  (void)desktop_.Talk().GoOn();
  const MemoryStatus memory = desktop_.System().memoryStatus();
  const double Total = Megabytes(memory.totalPhysical);
  const double Free = Megabytes(memory.availablePhysical);
  // 0 bytes means unknown, which is no reason to warn.
  PercentFree_ = Total > 0 ? static_cast<float>(std::floor(Free / Total * 100)) : 100.0F;
  RamSetting_ = GetRegString(RegRoot::LocalMachine, slyverKey, "RAM");
  if (!RamSetting_.empty()) return true;
  if (Total < 64 && PercentFree_ < 30)
    return GoesOnAfterWarning(
        "Computer's RAM Is Less Than The Minimum Requirement i.e. 64mb And Less Than 30% Of The "
        "Physical Memory Is Free. Exit Other Applications That You May Be Running Or Slyver Will "
        "Take A Lot Of Time To Execute. Do You Want To Continue?");
  if (Total >= 64 && PercentFree_ < 15)
    return GoesOnAfterWarning(
        "Less Than 15% Of The Physical Memory Is Free. Exit Any Other Applications That You May Be "
        "Running Or Slyver Will Take A Lot Of Time To Execute. Do You Want To Continue?");
  return true;
}

bool frmFirst::GoesOnAfterWarning(const std::string& warning) {
  if (!AskYesNo(desktop_.Talk(), warning)) {
    desktop_.Talk().EndProgram();
    return false;
  }
  if (AskYesNo(desktop_.Talk(), "Do You Want To See This RAM Warning Again?")) return true;
  SaveRegString(RegRoot::LocalMachine, slyverKey, "RAM", "0");
  try {
    // Makes the system free cached memory.
    std::vector<std::string> fill(21);
    for (std::string& text : fill) {
      text.assign(500000, ' ');
      (void)desktop_.Talk().GoOn();
    }
  } catch (const std::exception&) {
    return true;  // Out of memory is no reason to stop.
  }
  return true;
}

void frmFirst::OpenCommandLine(const std::string& commandLine, std::optional<Job> job) {
  if (commandLine.empty()) {
    desktop_.ShowSplitJoin();
    if (job) desktop_.Choose(*job);
    return;
  }
  if (job == Job::Hide) {
    desktop_.ShowSplitJoin();
    desktop_.ShowHideFile(PathFromText(commandLine));
    return;
  }
  FilePath = PathFromText(commandLine);
  if (!FilePath.is_absolute()) {
    desktop_.LoadSplitJoin();
    return;
  }
  if (FolderExists(FilePath)) {
    desktop_.Talk().Message("Unable To Sly Folder.", Icon::Information);
    Unload();
    return;
  }
  if (!job && (commandLine.ends_with("sly") || commandLine.ends_with("SLY"))) {
    desktop_.LoadSplitJoin();
    return;
  }
  FileFolder = WithSeparator(FilePath.parent_path());
  desktop_.ShowSplitter();
}

void frmFirst::ReadyToSplit() {
  SplitReady = true;
  // A timer that always ran would keep an idle program awake.
  Timer1_.Start(1);
}

void frmFirst::Timer1_Timer() {
  if (!SplitReady) return;
  Timer1_.Stop();
  desktop_.HandOverToSplitter();
}

void frmFirst::Unload() {
  Form_QueryUnload();
  Form_Unload();
}

void frmFirst::Form_QueryUnload() {
  (void)DeleteRegValue(RegRoot::ClassesRoot, "StrTempSly", "filepath");
}

void frmFirst::Form_Unload() {
  DeleteFilePathValue();
  desktop_.Talk().EndProgram();
}

}  // namespace slyver
