#include "console/Terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <optional>
#include <utility>

#include "engine/base/FileError.h"
#include "engine/base/Posix.h"
#include "engine/base/Secret.h"

namespace slyver {

namespace {

constexpr std::array<int, 4> stopSignals = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};
constexpr const char* inputName = "standard input";

bool IsIgnored(int signal) {
  struct sigaction current = {};
  return sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_IGN;
}

/// Switches a terminal's echo off while it lives, and its line mode, which cuts lines at 4095
/// bytes. Blocks SIGTSTP, so that the terminal is restored before the program stops.
class UnseenTyping {
 public:
  UnseenTyping(int terminal, std::filesystem::path name)
      : terminal_(terminal), name_(std::move(name)) {
    if (tcgetattr(terminal_, &before_) != 0) FailWithLastError(name_);
    (void)sigemptyset(&suspending_);
    if (!IsIgnored(SIGTSTP)) (void)sigaddset(&suspending_, SIGTSTP);
    (void)sigprocmask(SIG_BLOCK, &suspending_, &signalsBefore_);
    Hide();
  }
  ~UnseenTyping() {
    Restore();
    (void)sigprocmask(SIG_SETMASK, &signalsBefore_, nullptr);
    std::cerr << std::endl;  // Enter was not shown either.
  }
  UnseenTyping(const UnseenTyping&) = delete;
  UnseenTyping& operator=(const UnseenTyping&) = delete;

  /// Switches the echo off and drops input typed before. Stops a program in the background.
  void Hide() const {
    termios unseen = before_;
    unseen.c_iflag |= ICRNL;
    unseen.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL | ICANON | IEXTEN);
    unseen.c_cc[VMIN] = 1;
    unseen.c_cc[VTIME] = 0;
    if (tcsetattr(terminal_, TCSAFLUSH, &unseen) != 0) FailWithLastError(name_);
  }

  /// Restores the terminal and stops the program as Ctrl-Z does; returns when it continues.
  void Suspend() const {
    Restore();
    (void)raise(SIGTSTP);
    (void)sigprocmask(SIG_UNBLOCK, &suspending_, nullptr);
    (void)sigprocmask(SIG_BLOCK, &suspending_, nullptr);
  }

  bool IsEnd(char key) const { return Is(VEOF, key); }

  /// Edits the line if `key` is an editing key; `false` for any other key.
  bool Edit(std::string& line, char key) const {
    if (Is(VKILL, key)) {
      Wipe(line);
    } else if (Is(VWERASE, key)) {
      while (line.ends_with(' ')) line.pop_back();
      while (!line.empty() && !line.ends_with(' ')) line.pop_back();
    } else if (Is(VERASE, key) || key == '\b' || key == '\x7F') {
      const bool isUtf8 = (before_.c_iflag & IUTF8) != 0;
      while (isUtf8 && line.size() > 1 && (line.back() & 0xC0) == 0x80) line.pop_back();
      if (!line.empty()) line.pop_back();
    } else {
      return false;
    }
    return true;
  }

 private:
  bool Is(std::size_t control, char key) const {
    const cc_t code = before_.c_cc[control];
    return code != _POSIX_VDISABLE && code == static_cast<cc_t>(key);
  }
  void Restore() const { (void)tcsetattr(terminal_, TCSAFLUSH, &before_); }

  const int terminal_;
  const std::filesystem::path name_;
  termios before_ = {};
  sigset_t suspending_ = {};
  sigset_t signalsBefore_ = {};
};

/// Reads a line from `file`. Shows `prompt` again when a stopped program continues.
std::optional<std::string> Read(int file, const std::filesystem::path& name,
                                std::string_view prompt, const UnseenTyping* unseen,
                                const Descriptor& signals, const Terminal& terminal) {
  std::string line;
  line.reserve(Terminal::longestLine + 1);  // Growth would leave copies in memory.
  std::cerr << prompt << std::flush;
  while (true) {
    std::array<pollfd, 2> waiting = {pollfd{signals.Get(), POLLIN, 0}, pollfd{file, POLLIN, 0}};
    if (poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR) FailWithLastError(name);
    if (terminal.StopSignal() != 0) throw Cancelled{};
    signalfd_siginfo signal = {};
    if (waiting[0].revents != 0 && read(signals.Get(), &signal, sizeof signal) > 0) {
      if (unseen != nullptr) {
        Wipe(line);  // The user types it again.
        if (signal.ssi_signo == SIGTSTP) unseen->Suspend();
        // Shells switch the echo on when they continue a stopped program.
        unseen->Hide();
      }
      if (signal.ssi_signo == SIGCONT) std::cerr << prompt << std::flush;
      continue;
    }
    if (waiting[1].revents == 0) continue;
    char c = 0;
    const ssize_t count = read(file, &c, 1);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count < 0) FailWithLastError(name);
    const bool ends = count == 0 || (unseen != nullptr && unseen->IsEnd(c));
    if (ends && line.empty()) return std::nullopt;
    if (ends || c == '\n') return line;
    if (unseen != nullptr && unseen->Edit(line, c)) continue;
    if (line.size() == Terminal::longestLine) {
      Wipe(line);
      throw FileError(name, "The first line is too long");
    }
    line += c;
  }
}

std::optional<std::string> ReadUnseen(int file, const std::filesystem::path& name,
                                      std::string_view prompt, const Descriptor& signals,
                                      const Terminal& terminal) {
  if (isatty(file) != 1) return Read(file, name, {}, nullptr, signals, terminal);
  const UnseenTyping unseen(file, name);
  return Read(file, name, prompt, &unseen, signals, terminal);
}

}  // namespace

struct Terminal::State {
  sigset_t before = {};
  sigset_t stopping = {};
  Descriptor signals;  ///< Readable on a stop signal, SIGCONT or a blocked SIGTSTP.
};

Terminal::Terminal() : state_(std::make_unique<State>()) {
  if (!OpenStandardDescriptors()) FailWithLastError("/dev/null");
  // Blocked signals stay pending until StopSignal() looks. Signals that the parent ignores, as
  // shells do for background jobs, must not be blocked, or they would become pending too.
  (void)sigemptyset(&state_->stopping);
  for (const int signal : stopSignals)
    if (!IsIgnored(signal)) (void)sigaddset(&state_->stopping, signal);
  sigset_t noticed = state_->stopping;
  (void)sigaddset(&noticed, SIGCONT);
  (void)sigprocmask(SIG_BLOCK, &noticed, &state_->before);
  (void)sigaddset(&noticed, SIGTSTP);  // UnseenTyping blocks it.
  state_->signals = Descriptor(signalfd(-1, &noticed, SFD_NONBLOCK | SFD_CLOEXEC));
  if (!state_->signals) FailWithLastError("signals");
  // A file over its size limit and a closed pipe must return errors, not kill the process before it
  // deletes its work folders.
  (void)std::signal(SIGXFSZ, SIG_IGN);
  (void)std::signal(SIGPIPE, SIG_IGN);
}

Terminal::~Terminal() {
  (void)sigprocmask(SIG_SETMASK, &state_->before, nullptr);
}

bool Terminal::CanAsk() {
  return isatty(STDIN_FILENO) == 1 && ShowsErrors();
}

bool Terminal::ShowsErrors() {
  return isatty(STDERR_FILENO) == 1;
}

bool Terminal::ShowsOutput() {
  return isatty(STDOUT_FILENO) == 1;
}

std::size_t Terminal::Width() {
  winsize size = {};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::optional<std::string> Terminal::ReadLine(std::string_view prompt) const {
  return Read(STDIN_FILENO, inputName, prompt, nullptr, state_->signals, *this);
}

std::optional<std::string> Terminal::ReadSecret(std::string_view prompt) const {
  return ReadUnseen(STDIN_FILENO, inputName, prompt, state_->signals, *this);
}

std::optional<std::string> Terminal::ReadSecret(std::string_view prompt,
                                                const std::filesystem::path& path) const {
  // Opening a pipe without a writer would block, and no signal would end it.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file) FailWithLastError(path);
  return ReadUnseen(file.Get(), path, prompt, state_->signals, *this);
}

int Terminal::StopSignal() const {
  // Leaves the signal pending, so that later calls see it too.
  sigset_t pending = {};
  (void)sigpending(&pending);
  for (const int signal : stopSignals)
    if (sigismember(&state_->stopping, signal) == 1 && sigismember(&pending, signal) == 1)
      return signal;
  return 0;
}

void Terminal::IgnoreStops() const {
  for (const int signal : stopSignals)
    if (sigismember(&state_->stopping, signal) == 1) (void)std::signal(signal, SIG_IGN);
}

std::vector<std::string> ArgumentsOf(int argc, char** argv) {
  return {argv + std::min(argc, 1), argv + argc};
}

}  // namespace slyver
