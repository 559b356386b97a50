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

#include "engine/system/FileError.h"
#include "engine/system/Posix.h"

namespace slyver {

namespace {

constexpr std::array<int, 4> stopSignals = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};

/// Switches the terminal's echo off while it lives.
class EchoOff {
 public:
  EchoOff() : known_(tcgetattr(STDIN_FILENO, &before_) == 0) { Apply(); }
  ~EchoOff() {
    if (known_) (void)tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
  }
  EchoOff(const EchoOff&) = delete;
  EchoOff& operator=(const EchoOff&) = delete;

  void Apply() const {
    if (!known_) return;
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    silent.c_lflag |= ECHONL;
    (void)tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }

 private:
  termios before_ = {};
  bool known_;
};

/// Reads a line from `file`; `continued` is called when the program goes on after a stop by Ctrl-Z.
template <typename Continued>
std::optional<std::string> Read(int file, const std::filesystem::path& name,
                                const Descriptor& signals, const Terminal& terminal,
                                const Continued& continued) {
  std::string line;
  line.reserve(Terminal::longestLine);  // Growing, it would leave copies behind.
  while (line.size() < Terminal::longestLine) {
    std::array<pollfd, 2> waiting = {pollfd{signals.Get(), POLLIN, 0}, pollfd{file, POLLIN, 0}};
    if (poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR) FailWithLastError(name);
    if (terminal.StopSignal() != 0) throw Cancelled{};
    signalfd_siginfo signal = {};
    if (waiting[0].revents != 0 && read(signals.Get(), &signal, sizeof signal) > 0) continued();
    if (waiting[1].revents == 0) continue;
    char c = 0;
    const ssize_t count = read(file, &c, 1);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count < 0) FailWithLastError(name);
    if (count == 0 && line.empty()) return std::nullopt;
    if (count == 0 || c == '\n') break;
    line += c;
  }
  return line;
}

}  // namespace

struct Terminal::State {
  sigset_t before = {};
  sigset_t stopping = {};
  Descriptor signals;  ///< Readable when one of `stopping` has come, or SIGCONT.
};

Terminal::Terminal() : state_(std::make_unique<State>()) {
  if (!OpenStandardDescriptors()) FailWithLastError("/dev/null");
  // A signal that is blocked waits to be asked about. One that the caller has had ignored, as a
  // shell does for a job in the background, must not be blocked: it would be kept all the same.
  (void)sigemptyset(&state_->stopping);
  for (const int signal : stopSignals) {
    struct sigaction before = {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
      (void)sigaddset(&state_->stopping, signal);
  }
  sigset_t noticed = state_->stopping;
  (void)sigaddset(&noticed, SIGCONT);
  (void)sigprocmask(SIG_BLOCK, &noticed, &state_->before);
  state_->signals = Descriptor(signalfd(-1, &noticed, SFD_NONBLOCK | SFD_CLOEXEC));
  if (!state_->signals) FailWithLastError("signals");
  // A file that grows past its size limit and a closed pipe shall give errors, not a silent end
  // that leaves work folders behind.
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

std::optional<std::string> Terminal::ReadLine(bool echo, std::string_view prompt) const {
  std::optional<EchoOff> silence;
  if (!echo) silence.emplace();
  std::cerr << prompt << std::flush;
  return Read(STDIN_FILENO, "standard input", state_->signals, *this, [&] {
    // Shells switch the echo on again when they bring back a program that Ctrl-Z has stopped.
    if (silence) silence->Apply();
    std::cerr << prompt << std::flush;
  });
}

std::optional<std::string> Terminal::ReadFirstLine(const std::filesystem::path& path) const {
  // A pipe that nobody writes to yet must not hold up the opening, where no signal is seen.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file) FailWithLastError(path);
  return Read(file.Get(), path, state_->signals, *this, [] {});
}

int Terminal::StopSignal() const {
  // Only looked at, never taken: a signal that has come stays for every later question.
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
