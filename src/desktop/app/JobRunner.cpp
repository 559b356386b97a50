#include "desktop/app/JobRunner.h"

#include <wx/window.h>
// appprogress.h lacks the declaration of wxWindow.
#include <wx/appprogress.h>

#include <utility>

#include "engine/base/FileError.h"
#include "engine/settings/Registry.h"

namespace slyver {

namespace {

constexpr int taskBarRange = 1000;

}  // namespace

JobRunner::JobRunner(Ui& ui, std::function<void(bool busy)> setBusy)
    : ui_(ui), setBusy_(std::move(setBusy)) {}

JobRunner::~JobRunner() = default;

void JobRunner::RunJob(const std::function<void()>& job) {
  if (jobRuns_) return;
  RunStep([&] {
    job();
    return false;
  });
}

void JobRunner::RunStep(const std::function<bool()>& step) {
  // A step runs pending events, whose handlers may ask for the next step.
  if (stepRuns_) return;
  if (!jobRuns_) {
    stopAsked_ = false;
    jobStarted_ = std::chrono::steady_clock::now();
    SetBusy(true);
  }
  stepRuns_ = true;
  bool more = false;
  try {
    more = ShowingErrors(ui_, false, step);
  } catch (const Cancelled&) {
    DeleteFilePathValue();
    ui_.EndProgram();
  }
  stepRuns_ = false;
  if (!more) SetBusy(false);
}

void JobRunner::SetBusy(bool busy) {
  // A null parent means all windows of the program.
  taskBar_ = busy ? std::make_unique<wxAppProgressIndicator>(nullptr, taskBarRange) : nullptr;
  jobRuns_ = busy;
  setBusy_(busy);
}

void JobRunner::ShowProgress(const Progress& progress) const {
  if (taskBar_ && progress.bytesTotal > 0)
    taskBar_->SetValue(static_cast<int>(progress.bytesDone * taskBarRange / progress.bytesTotal));
}

}  // namespace slyver
