#include "console/ConsoleUi.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>

namespace slyver {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds drawInterval{100};

std::string Formatted(const char* format, double number, const char* unit) {
  std::array<char, 64> text = {};
  (void)std::snprintf(text.data(), text.size(), format, number, unit);
  return text.data();
}

/// Hours, minutes and seconds as "1:02:03", or "2:03" below an hour.
std::string ReadableSeconds(double seconds) {
  const auto total = static_cast<unsigned long>(std::lround(seconds));
  std::array<char, 32> text = {};
  const unsigned long hours = total / 3600;
  (void)(hours > 0 ? std::snprintf(text.data(), text.size(), "%lu:%02lu:%02lu", hours,
                                   total / 60 % 60, total % 60)
                   : std::snprintf(text.data(), text.size(), "%lu:%02lu", total / 60, total % 60));
  return text.data();
}

std::string ProgressLine(const Progress& progress, double seconds) {
  const auto done = static_cast<double>(progress.bytesDone);
  const auto total = static_cast<double>(progress.bytesTotal);
  std::string line = Formatted("%3.0f%%%s", total > 0 ? done / total * 100 : 0, "  ") +
                     ReadableBytes(done) + " of " + ReadableBytes(total);
  if (seconds < 0.5 || done <= 0) return line;
  const double rate = done / seconds;
  return line + "  " + ReadableBytes(rate) + "/s  " + ReadableSeconds((total - done) / rate) +
         " left";
}

}  // namespace

std::string ReadableBytes(double bytes) {
  if (bytes < 1000) return Formatted("%.0f%s", bytes, " bytes");
  static constexpr std::array<const char*, 6> units = {" kB", " MB", " GB", " TB", " PB", " EB"};
  std::size_t unit = 0;
  for (bytes /= 1000; bytes >= 999.5 && unit + 1 < units.size(); ++unit) bytes /= 1000;
  return Formatted(bytes < 9.995   ? "%.2f%s"
                   : bytes < 99.95 ? "%.1f%s"
                                   : "%.0f%s",
                   bytes, units.at(unit));
}

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
