#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace slyver {

/// The terminal. Holds stop signals (Ctrl-C, SIGTERM, SIGHUP, ...) while it lives; long work polls
/// StopSignal(). At most one object, created before any thread.
class Terminal {
 public:
  Terminal();
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// The most bytes of a line; longer lines are refused.
  static constexpr std::size_t longestLine = 65535;

  /// True if standard input and standard error are a terminal, so that a user can be asked.
  static bool CanAsk();

  /// True if standard error is a terminal, on which a line can be redrawn.
  static bool ShowsErrors();

  /// True if standard output is a terminal, which obeys control characters.
  static bool ShowsOutput();

  /// Returns the columns of standard error; 80 if unknown.
  static std::size_t Width();

  /// Shows `prompt` on standard error and reads a line from standard input, without its line end.
  /// `nullopt` at the end of the input. Throws Cancelled on a stop signal, and FileError if the
  /// line cannot be read or is longer than longestLine.
  std::optional<std::string> ReadLine(std::string_view prompt) const;

  /// Reads a line from standard input of any kind; no other copy of it stays in memory. On a
  /// terminal, shows `prompt` on standard error and switches the echo off, except while Ctrl-Z has
  /// stopped the program. Throws as ReadLine(), and FileError if the echo cannot be switched off.
  std::optional<std::string> ReadSecret(std::string_view prompt) const;

  /// Reads the first line of `path`, a file, pipe or device, as above.
  std::optional<std::string> ReadSecret(std::string_view prompt,
                                        const std::filesystem::path& path) const;

  /// Returns the number of a stop signal that has come; 0 if none has.
  int StopSignal() const;

  /// Ignores stop signals from now on, pending ones included. Must be called when the work is done:
  /// otherwise the destructor lets a pending signal end the process, as shells expect.
  void IgnoreStops() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Returns the program's arguments without its name, as UTF-8. Takes those of main().
std::vector<std::string> ArgumentsOf(int argc, char** argv);

}  // namespace slyver
