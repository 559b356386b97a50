#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "console/Terminal.h"
#include "engine/talk/Ui.h"

namespace slyver {

struct ConsoleOptions {
  bool yes = false;    ///< Answers Yes, but where other bytes than were split may come of it.
  bool force = false;  ///< Answers every question with Yes.
  bool quiet = false;  ///< Neither progress nor messages of success.
};

/// Talks to the user on standard error, one line a message. Questions are asked on the terminal;
/// without one they are shown and answered with No.
class ConsoleUi final : public Ui {
 public:
  ConsoleUi(const Terminal& terminal, ConsoleOptions options);
  ~ConsoleUi() override;

  void Message(std::string_view text, Icon icon) override;
  Answer Question(std::string_view text, Buttons buttons, Stakes stakes) override;
  std::optional<std::filesystem::path> OpenFile(
      std::string_view title, std::string_view filter,
      const std::filesystem::path& initialFolder) override;
  std::optional<std::filesystem::path> PickFolder() override;
  std::optional<std::string> MaskedInputBox(std::string_view prompt, SecretKind kind) override;
  void ShowProgressForm(std::string_view caption) override;
  void SetProgress(const Progress& progress) override;
  /// Nothing: the paths of what is made go to standard output.
  void TellPlace(const std::filesystem::path& /*made*/) override {}
  bool GoOn() override;
  void EndProgram() override;

  /// Reads the first line of a file, or of standard input for "-"; shows `prompt` if it is a
  /// terminal. Throws what Terminal::ReadSecret() throws.
  std::string ReadSecret(const std::string& file, std::string_view prompt);

  /// Asks for a line of text on the terminal. Nothing when nobody is there.
  std::optional<std::string> AskLine(std::string_view prompt);

  /// Says what the quiet mode has held back, when a job has failed or a question comes: those
  /// messages are the reason.
  void ShowHeldBack();

 private:
  bool AnswerFromTerminal(std::string_view text);
  void ClearProgressLine();

  const Terminal& terminal_;
  const ConsoleOptions options_;
  std::string heldBack_;
  Progress last_;
  std::chrono::steady_clock::time_point started_;
  std::chrono::steady_clock::time_point drawn_;
  bool lineShown_ = false;
};

}  // namespace slyver
