#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "engine/talk/Ui.h"

class wxAppProgressIndicator;

namespace slyver {

/// Runs the jobs of the desktop program, one at a time, and shows their progress on the task bar.
class JobRunner {
 public:
  /// `setBusy` is called with `true` before a job's first step and with `false` after its last.
  JobRunner(Ui& ui, std::function<void(bool busy)> setBusy);
  ~JobRunner();
  JobRunner(const JobRunner&) = delete;
  JobRunner& operator=(const JobRunner&) = delete;

  /// Runs a job of one step. Does nothing while another job runs.
  void RunJob(const std::function<void()>& job);

  /// Runs one step of a job, which ends with the step that returns `false`. Does nothing inside
  /// another step. Shows errors, which end the job; a stopped job ends the program.
  void RunStep(const std::function<bool()>& step);

  bool JobRuns() const { return jobRuns_; }

  /// Returns the time since the start of the last job.
  std::chrono::steady_clock::duration JobHasRun() const {
    return std::chrono::steady_clock::now() - jobStarted_;
  }

  /// Asks the job to stop and clean up.
  void AskToStop() { stopAsked_ = true; }
  bool StopAsked() const { return stopAsked_; }

  /// Shows the share of the bytes copied on the task bar.
  void ShowProgress(const Progress& progress) const;

 private:
  void SetBusy(bool busy);

  Ui& ui_;
  std::function<void(bool busy)> setBusy_;
  std::unique_ptr<wxAppProgressIndicator> taskBar_;
  std::chrono::steady_clock::time_point jobStarted_;
  bool jobRuns_ = false;
  bool stepRuns_ = false;
  bool stopAsked_ = false;
};

}  // namespace slyver
