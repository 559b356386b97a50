#include "console/Terminal.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <system_error>

#include "engine/system/FileError.h"

namespace slyver {

namespace {

constexpr std::array<int, 3> stopSignals = {SIGINT, SIGTERM, SIGHUP};

[[noreturn]] void Fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

/// Switches the terminal's echo off while it lives.
class EchoOff {
 public:
  EchoOff() : known_(tcgetattr(STDIN_FILENO, &before_) == 0) {
    if (!known_) return;
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    silent.c_lflag |= ECHONL;
    (void)tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }
  ~EchoOff() {
    if (known_) (void)tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
  }
  EchoOff(const EchoOff&) = delete;
  EchoOff& operator=(const EchoOff&) = delete;

 private:
  termios before_ = {};
  bool known_;
};

}  // namespace

struct Terminal::State {
  sigset_t before = {};
  sigset_t stopping = {};
  int signals = -1;
};

Terminal::Terminal() : state_(std::make_unique<State>()) {
  // A signal that is blocked waits to be asked about. One that the caller has had ignored, as a
  // shell does for a job in the background, must not be blocked: it would be kept all the same.
  (void)sigemptyset(&state_->stopping);
  for (const int signal : stopSignals) {
    struct sigaction before = {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
      (void)sigaddset(&state_->stopping, signal);
  }
  if (sigprocmask(SIG_BLOCK, &state_->stopping, &state_->before) != 0) Fail("signals");
  state_->signals = signalfd(-1, &state_->stopping, SFD_NONBLOCK | SFD_CLOEXEC);
  if (state_->signals < 0) Fail("signals");
  // A file that grows past its size limit shall give an error with a name, not a silent end.
  (void)std::signal(SIGXFSZ, SIG_IGN);
}

Terminal::~Terminal() {
  close(state_->signals);
  (void)sigprocmask(SIG_SETMASK, &state_->before, nullptr);
}

bool Terminal::CanAsk() {
  return isatty(STDIN_FILENO) == 1 && ShowsErrors();
}

bool Terminal::ShowsErrors() {
  return isatty(STDERR_FILENO) == 1;
}

std::optional<std::string> Terminal::ReadLine(bool echo, std::string_view prompt) const {
  const std::optional<EchoOff> silence =
      echo ? std::nullopt : std::optional<EchoOff>(std::in_place);
  std::cerr << prompt << std::flush;
  std::string line;
  while (true) {
    std::array<pollfd, 2> waiting = {pollfd{state_->signals, POLLIN, 0},
                                     pollfd{STDIN_FILENO, POLLIN, 0}};
    if (poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR) Fail("standard input");
    if (StopSignal() != 0) throw Cancelled{};
    if (waiting[1].revents == 0) continue;
    char c = 0;
    const ssize_t count = read(STDIN_FILENO, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail("standard input");
    if (count == 0 && line.empty()) return std::nullopt;
    if (count == 0 || c == '\n') return line;
    line += c;
  }
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
