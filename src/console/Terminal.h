#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace slyver {

/// The terminal that the program runs on, and the signals that ask it to stop. While an object
/// lives, Ctrl-C and its kin no longer end the process: whoever works asks StopSignal() now and
/// then and cleans up. There may be one object, made before any thread.
class Terminal {
 public:
  Terminal();
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// The most bytes of a line; a longer one is refused.
  static constexpr std::size_t longestLine = 65535;

  /// Whether someone can be asked: both standard input and standard error are a terminal.
  static bool CanAsk();

  /// Whether standard error is a terminal, on which a line can be drawn anew.
  static bool ShowsErrors();

  /// True if standard output is a terminal, which obeys control characters.
  static bool ShowsOutput();

  /// The columns of a line on standard error; 80 where that is unknown.
  static std::size_t Width();

  /// Shows `prompt` on standard error and reads a line from standard input, without its line end.
  /// `nullopt` at the end of the input. Throws Cancelled when a signal asks to stop, and FileError
  /// if the line cannot be read or is longer than longestLine.
  std::optional<std::string> ReadLine(std::string_view prompt) const;

  /// Reads a line from standard input, whatever that is; nothing of it stays in memory except what
  /// is returned. If it is a terminal, shows `prompt` on standard error, and hides what is typed,
  /// but not while the program is stopped by Ctrl-Z; throws FileError if it cannot be hidden.
  /// Otherwise as ReadLine().
  std::optional<std::string> ReadSecret(std::string_view prompt) const;

  /// Reads the first line of the file, pipe, terminal or other device `path`, as above.
  std::optional<std::string> ReadSecret(std::string_view prompt,
                                        const std::filesystem::path& path) const;

  /// The number of the signal that has asked the program to stop, 0 when none has.
  int StopSignal() const;

  /// Says that the work is done: a signal that asks to stop, be it one that has come already, comes
  /// too late and is ignored. Without it such a signal takes its usual effect at the end of the
  /// object's life, so that a shell sees that its command was interrupted.
  void IgnoreStops() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// The program's arguments, without its own name, as UTF-8. To be called with those of main().
std::vector<std::string> ArgumentsOf(int argc, char** argv);

}  // namespace slyver
