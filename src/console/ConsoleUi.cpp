#include "console/ConsoleUi.h"

#include <iostream>

#include "engine/system/ProgressText.h"

namespace slyver {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds drawInterval{100};

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
    std::cerr << text << std::endl;
}

Answer ConsoleUi::Question(std::string_view text, Buttons buttons, Icon /*icon*/) {
  ClearProgressLine();
  bool yes = options_.yes;
  if (options_.yes) {
    if (!options_.quiet) std::cerr << text << " Yes (--yes)" << std::endl;
  } else if (Terminal::CanAsk()) {
    yes = AnswerFromTerminal(text);
  } else {
    std::cerr << text << " No (nobody is at the terminal; --yes answers Yes)" << std::endl;
  }
  if (buttons == Buttons::OkCancel) return yes ? Answer::Ok : Answer::Cancel;
  return yes ? Answer::Yes : Answer::No;
}

bool ConsoleUi::AnswerFromTerminal(std::string_view text) {
  while (true) {
    const std::optional<std::string> line = terminal_.ReadLine(true, std::string(text) + " [y/n] ");
    if (!line) {
      std::cerr << std::endl;
      return false;
    }
    if (*line == "y" || *line == "Y" || *line == "yes" || *line == "Yes") return true;
    if (*line == "n" || *line == "N" || *line == "no" || *line == "No") return false;
  }
}

// What the dialogs would ask for comes from the arguments here.
std::optional<std::filesystem::path> ConsoleUi::OpenFile(
    std::string_view /*title*/, std::string_view /*filter*/,
    const std::filesystem::path& /*initialFolder*/) {
  return std::nullopt;
}

std::optional<std::filesystem::path> ConsoleUi::PickFolder() {
  return std::nullopt;
}

std::optional<std::string> ConsoleUi::MaskedInputBox(std::string_view prompt) {
  if (password_) return password_;
  ClearProgressLine();
  if (!Terminal::CanAsk()) return std::nullopt;
  return terminal_.ReadLine(false, std::string(prompt) + " ");
}

std::optional<std::string> ConsoleUi::AskLine(std::string_view prompt) {
  ClearProgressLine();
  if (!Terminal::CanAsk()) return std::nullopt;
  return terminal_.ReadLine(true, std::string(prompt) + " ");
}

void ConsoleUi::ShowProgressForm(std::string_view /*caption*/) {}

void ConsoleUi::SetProgress(const Progress& progress) {
  if (options_.quiet || !Terminal::ShowsErrors()) return;
  const Clock::time_point now = Clock::now();
  if (!started_) started_ = now;
  if (progress.bytesTotal == 0 || now - drawn_ < drawInterval) return;
  drawn_ = now;
  lineShown_ = true;
  const double seconds = std::chrono::duration<double>(now - *started_).count();
  // The control sequence clears what a longer line has left.
  std::cerr << "\r" << ProgressLine(progress, seconds) << "\033[K" << std::flush;
}

bool ConsoleUi::GoOn() {
  return terminal_.StopSignal() == 0;
}

// The program ends when the job returns.
void ConsoleUi::EndProgram() {}

void ConsoleUi::JobFailed() {
  std::cerr << heldBack_ << std::flush;
  heldBack_.clear();
}

void ConsoleUi::ClearProgressLine() {
  if (lineShown_) std::cerr << "\r\033[K" << std::flush;
  lineShown_ = false;
}

}  // namespace slyver
