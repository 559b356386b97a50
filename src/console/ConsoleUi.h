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
  bool yes = false;    ///< Answers Yes, except to questions with Stakes::Unproven.
  bool force = false;  ///< Answers Yes to every question.
  bool quiet = false;  ///< Shows no progress and no messages of success.
};

/// Talks to the user on standard error, one line per message. Asks questions on the terminal;
/// without one, shows them and answers No.
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
  /// Does nothing: the commands print paths to standard output.
  void TellPlace(const std::filesystem::path& /*made*/) override {}
  bool GoOn() override;
  void EndProgram() override;

  /// Reads the first line of a file, or of standard input for "-". Shows `prompt` on a terminal.
  /// Throws as Terminal::ReadSecret() does.
  std::string ReadSecret(const std::string& file, std::string_view prompt);

  /// Asks for a line of text on the terminal. `nullopt` without a terminal or at the end of input.
  std::optional<std::string> AskLine(std::string_view prompt);

  /// Shows the messages that quiet mode has held back. They explain a failure or a question.
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
