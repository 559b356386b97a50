#pragma once

#include <chrono>

#include "desktop/app/Desktop.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// Talks to the user through dialogs, titled "Slyver" by default, and the forms' progress bars.
class WxUi : public Ui {
 public:
  /// Sets the desktop whose forms show progress. Must be called before a job runs.
  void Serve(Desktop& desktop) { desktop_ = &desktop; }

  void Message(std::string_view text, Icon icon) override;
  Answer Question(std::string_view text, Buttons buttons, Stakes stakes) override;
  std::optional<std::filesystem::path> OpenFile(
      std::string_view title, std::string_view filter,
      const std::filesystem::path& initialFolder) override;
  std::optional<std::filesystem::path> PickFolder() override;
  std::optional<std::string> MaskedInputBox(std::string_view prompt, SecretKind kind) override;
  void ShowProgressForm(std::string_view caption) override;
  void SetProgress(const Progress& progress) override;
  void TellPlace(const std::filesystem::path& made) override;
  bool GoOn() override;
  void EndProgram() override;

 private:
  void NotifyAbsentUser(std::string_view text) const;

  Desktop* desktop_ = nullptr;
  std::chrono::steady_clock::time_point lastYield_;
  std::filesystem::path lastFolder_;  ///< The folder of the last chosen file.
};

}  // namespace slyver
