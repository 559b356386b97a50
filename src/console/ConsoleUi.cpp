#include "console/ConsoleUi.h"

#include <iostream>

#include "console/Printable.h"
#include "engine/base/Ascii.h"
#include "engine/base/PathText.h"
#include "engine/talk/ProgressText.h"

namespace slyver {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds drawInterval{100};

/// Returns `text` safe for standard error.
std::string ForErrors(std::string_view text) {
  return Terminal::ShowsErrors() ? Printable(text) : std::string(text);
}

/// Returns the leading parts of `line` that fit `width`; two blanks separate parts.
std::string Fitting(std::string line, std::size_t width) {
  if (line.size() <= width) return line;
  const std::size_t gap = line.rfind("  ", width);
  line.resize(gap == std::string::npos || gap == 0 ? width : gap);
  return line;
}

}  // namespace

ConsoleUi::ConsoleUi(const Terminal& terminal, ConsoleOptions options)
    : terminal_(terminal), options_(options) {}

ConsoleUi::~ConsoleUi() {
  ClearProgressLine();
}

void ConsoleUi::Message(std::string_view text, Icon icon) {
  ClearProgressLine();
  if (options_.quiet && icon == Icon::Information)
    heldBack_.append(text) += '\n';
  else
    std::cerr << ForErrors(text) << std::endl;
}

// Jobs ask only Yes-or-No questions.
Answer ConsoleUi::Question(std::string_view text, Buttons /*buttons*/, Stakes stakes) {
  ClearProgressLine();
  const bool unproven = stakes == Stakes::Unproven;
  const std::string shown = ForErrors(text);
  if (options_.force || (options_.yes && !unproven)) {
    if (!options_.quiet || unproven)
      std::cerr << shown << " Yes (" << (options_.force ? "--force" : "--yes") << ")" << std::endl;
    return Answer::Yes;
  }
  ShowHeldBack();
  if (Terminal::CanAsk()) return AnswerFromTerminal(shown) ? Answer::Yes : Answer::No;
  std::cerr << shown << " No (no terminal to ask on; " << (unproven ? "--force" : "--yes")
            << " answers Yes)" << std::endl;
  return Answer::No;
}

bool ConsoleUi::AnswerFromTerminal(std::string_view text) {
  while (true) {
    const std::optional<std::string> line = terminal_.ReadLine(std::string(text) + " [y/n] ");
    if (!line) {
      std::cerr << std::endl;
      return false;
    }
    if (SameIgnoringCase(*line, "y") || SameIgnoringCase(*line, "yes")) return true;
    if (SameIgnoringCase(*line, "n") || SameIgnoringCase(*line, "no")) return false;
  }
}

// Files and folders come from the arguments.
std::optional<std::filesystem::path> ConsoleUi::OpenFile(
    std::string_view /*title*/, std::string_view /*filter*/,
    const std::filesystem::path& /*initialFolder*/) {
  return std::nullopt;
}

std::optional<std::filesystem::path> ConsoleUi::PickFolder() {
  return std::nullopt;
}

std::optional<std::string> ConsoleUi::MaskedInputBox(std::string_view prompt, SecretKind kind) {
  ClearProgressLine();
  if (Terminal::CanAsk()) {
    std::optional<std::string> line = terminal_.ReadSecret(ForErrors(prompt) + " ");
    if (!line) std::cerr << "(no answer)" << std::endl;
    return line;
  }
  ShowHeldBack();
  std::cerr << ForErrors(prompt) << " (No terminal to ask on; use "
            << (kind == SecretKind::Password ? "--password-file" : "--passphrase-file") << ".)"
            << std::endl;
  return std::nullopt;
}

std::optional<std::string> ConsoleUi::AskLine(std::string_view prompt) {
  ClearProgressLine();
  if (!Terminal::CanAsk()) return std::nullopt;
  return terminal_.ReadLine(ForErrors(prompt) + " ");
}

void ConsoleUi::ShowProgressForm(std::string_view /*caption*/) {}

void ConsoleUi::SetProgress(const Progress& progress) {
  if (options_.quiet || progress.bytesTotal + progress.searched == 0 || !Terminal::ShowsErrors())
    return;
  const Clock::time_point now = Clock::now();
  const bool another =
      progress.bytesTotal != last_.bytesTotal || progress.bytesDone < last_.bytesDone;
  if (another) started_ = now;
  const bool complete = progress.searched == 0 && progress.bytesDone == progress.bytesTotal;
  const bool drawn =
      lineShown_ && progress.bytesDone == last_.bytesDone && progress.searched == last_.searched;
  if (!another && (drawn || (!complete && now - drawn_ < drawInterval))) return;
  last_ = progress;
  drawn_ = now;
  lineShown_ = true;
  const double seconds = std::chrono::duration<double>(now - started_).count();
  // A line as wide as the terminal would wrap. The control sequence clears the rest of a longer
  // line.
  std::cerr << "\r" << Fitting(ProgressLine(progress, seconds), Terminal::Width() - 1) << "\033[K"
            << std::flush;
}

bool ConsoleUi::GoOn() {
  return terminal_.StopSignal() == 0;
}

// The program ends when the job returns.
void ConsoleUi::EndProgram() {}

std::string ConsoleUi::ReadSecret(const std::string& file, std::string_view prompt) {
  ClearProgressLine();
  const std::string shown = ForErrors(prompt) + " ";
  return (file == "-" ? terminal_.ReadSecret(shown)
                      : terminal_.ReadSecret(shown, PathFromText(file)))
      .value_or("");
}

void ConsoleUi::ShowHeldBack() {
  ClearProgressLine();
  std::cerr << ForErrors(heldBack_) << std::flush;
  heldBack_.clear();
}

void ConsoleUi::ClearProgressLine() {
  if (lineShown_) std::cerr << "\r\033[K" << std::flush;
  lineShown_ = false;
}

}  // namespace slyver
