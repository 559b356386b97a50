#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "engine/base/FileError.h"

namespace slyver {

enum class Icon { None, Information, Critical };
enum class Buttons { YesNo, OkCancel };
enum class Answer { Yes, No, Ok, Cancel };

/// What a Yes may cost. Decides who may answer and which button is the default.
enum class Stakes {
  None,      ///< Nothing; Yes is the default.
  Replaces,  ///< Something is replaced or deleted; No is the default.
  Unproven   ///< The result may not be what was split. No is the default; only a person, or an
             ///< option for exactly that, answers Yes.
};

/// What a masked box asks for: the password of a carrier's list, 24 characters at most, or a
/// passphrase of any length.
enum class SecretKind { Password, Passphrase };

/// The state of a progress bar.
struct Progress {
  std::string_view bar;  ///< The bar's name: "pb" of the split form, "PB1" of the join form.
  double value = 0;      ///< 0 to 100, in the job's own steps.
  std::uint64_t bytesDone = 0;
  std::uint64_t bytesTotal = 0;  ///< 0 if no bytes are being copied.
  std::uint64_t searched = 0;    ///< The names that a search has seen; 0 if none runs.
};

/// How the engine talks to the user; the desktop, the terminal and the tests each implement it.
/// Every message box has the title "Slyver". All text is UTF-8.
class Ui {
 public:
  Ui() = default;
  virtual ~Ui() = default;
  Ui(const Ui&) = delete;
  Ui& operator=(const Ui&) = delete;

  /// Shows a text with an OK button.
  virtual void Message(std::string_view text, Icon icon) = 0;

  /// Asks a question, without an icon. Returns one of `buttons`.
  virtual Answer Question(std::string_view text, Buttons buttons, Stakes stakes) = 0;

  /// Lets the user choose an existing file. `filter` is "description|pattern;|" or empty for all
  /// files. Returns its full path; `nullopt` if the user cancels.
  virtual std::optional<std::filesystem::path> OpenFile(
      std::string_view title, std::string_view filter,
      const std::filesystem::path& initialFolder) = 0;

  /// Lets the user choose a folder. Returns its full path; `nullopt` if the user cancels.
  virtual std::optional<std::filesystem::path> PickFolder() = 0;

  /// Asks for one line that is not shown while it is typed; `nullopt` if the user cancels.
  virtual std::optional<std::string> MaskedInputBox(std::string_view prompt, SecretKind kind) = 0;

  /// Opens the progress form under `caption` ("Joining Files", "Recovering Files").
  virtual void ShowProgressForm(std::string_view caption) = 0;

  /// Sets a progress bar.
  virtual void SetProgress(const Progress& progress) = 0;

  /// Reports the path of the file that a job has written, before the job's final message.
  virtual void TellPlace(const std::filesystem::path& made) = 0;

  /// Lets pending events run. Jobs call it between units of work, and stop if it returns false.
  virtual bool GoOn() = 0;

  /// Ends the program after the job has returned.
  virtual void EndProgram() = 0;
};

/// Asks a yes-or-no question; `true` for Yes.
inline bool AskYesNo(Ui& ui, std::string_view text, Stakes stakes = Stakes::None) {
  return ui.Question(text, Buttons::YesNo, stakes) == Answer::Yes;
}

/// Asks whether to leave the program, after the user has chosen no file; `true` for Yes.
inline bool ExitWithoutFile(Ui& ui) {
  return AskYesNo(ui, "No File Selected. Do You Want To Exit?");
}

/// Returns what `work` returns. On an exception, shows TextFor() it with the critical icon and
/// returns `failed`. Cancelled passes through.
template <typename Work>
auto ShowingErrors(Ui& ui, std::invoke_result_t<const Work&> failed, const Work& work)
    -> decltype(work()) {
  try {
    return work();
  } catch (const std::exception& error) {
    ui.Message(TextFor(error), Icon::Critical);
    return failed;
  }
}

}  // namespace slyver
