#include "console/Terminal.h"

#include <windows.h>
// shellapi.h needs windows.h first.
#include <shellapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <iostream>

#include "engine/base/FileError.h"
#include "engine/base/Secret.h"
#include "engine/base/Wide_win32.h"

namespace slyver {

namespace {

/// The milliseconds that the system grants a program to clean up after its window was closed.
constexpr DWORD closingTime = 5000;

constexpr const char* inputName = "standard input";
constexpr const char* tooLong = "The first line is too long";

/// Returns a console's mode; `nullopt` if the handle is not a console.
std::optional<DWORD> ModeOf(HANDLE handle) {
  DWORD mode = 0;
  return GetConsoleMode(handle, &mode) != 0 ? std::optional(mode) : std::nullopt;
}

/// Changes a console's mode while it lives.
class ConsoleMode {
 public:
  ConsoleMode(HANDLE handle, DWORD added, DWORD taken) : handle_(handle), before_(ModeOf(handle_)) {
    if (before_) (void)SetConsoleMode(handle_, (*before_ | added) & ~taken);
  }
  ~ConsoleMode() {
    if (before_) (void)SetConsoleMode(handle_, *before_);
  }
  ConsoleMode(const ConsoleMode&) = delete;
  ConsoleMode& operator=(const ConsoleMode&) = delete;

 private:
  HANDLE handle_;
  std::optional<DWORD> before_;
};

/// Sets the console's output to UTF-8 while it lives.
class Utf8Output {
 public:
  Utf8Output() : before_(GetConsoleOutputCP()) { (void)SetConsoleOutputCP(CP_UTF8); }
  ~Utf8Output() {
    if (before_ != 0) (void)SetConsoleOutputCP(before_);
  }
  Utf8Output(const Utf8Output&) = delete;
  Utf8Output& operator=(const Utf8Output&) = delete;

 private:
  UINT before_;
};

/// What OnControl() needs; the system passes it no user data.
struct Stopping {
  std::atomic<int> signal = 0;
  Handle asked{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  Handle done{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};
std::atomic<Stopping*> current = nullptr;

/// Handles Ctrl-C and the closing of the window; the system calls it on a thread of its own.
BOOL WINAPI OnControl(DWORD event) {
  Stopping* const stopping = current;
  if (stopping == nullptr) return FALSE;
  const bool interrupted = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  int none = 0;
  (void)stopping->signal.compare_exchange_strong(none, interrupted ? SIGINT : SIGTERM);
  (void)SetEvent(stopping->asked.Get());
  // After any other event, the system ends the process when this function returns.
  if (!interrupted) (void)WaitForSingleObject(stopping->done.Get(), closingTime);
  return TRUE;
}

/// The most characters typed in a line; older systems' buffers hold 64 KiB.
constexpr DWORD longestTyped = 16384;

/// Returns the next line typed at the console, with its line end; empty if there is none. Throws
/// FileError if it is too long.
std::wstring ReadTypedLine(HANDLE input, const std::filesystem::path& name,
                           const Stopping& stopping) {
  std::wstring line;
  while (!line.ends_with(L'\n')) {
    std::wstring part(longestTyped, L'\0');
    DWORD count = 0;
    SetLastError(ERROR_SUCCESS);
    const bool read = ReadConsoleW(input, part.data(), longestTyped, &count, nullptr) != 0;
    // Ctrl-C ends the read; the handler may run a moment later.
    if (count == 0 && GetLastError() == ERROR_OPERATION_ABORTED)
      (void)WaitForSingleObject(stopping.asked.Get(), 1000);
    if (stopping.signal != 0) throw Cancelled{};
    if (!read) FailWithLastError(name);
    if (count == 0) return line;
    line.append(part.data(), count);
    Wipe(part);
    // The console silently drops characters over its limit.
    if (line.size() + 2 >= longestTyped) {
      Wipe(line);
      throw FileError(name, tooLong);
    }
    // Ctrl-Z at the start of a line ends the input.
    if (line.starts_with(L'\x1A')) return {};
  }
  return line;
}

/// Waits until a pipe has bytes or is closed, or a stop is asked for: ReadFile() ignores stops.
void WaitForPipe(HANDLE input, const Stopping& stopping) {
  DWORD available = 0;
  while (GetFileType(input) == FILE_TYPE_PIPE &&
         PeekNamedPipe(input, nullptr, 0, nullptr, &available, nullptr) != 0 && available == 0 &&
         WaitForSingleObject(stopping.asked.Get(), 20) == WAIT_TIMEOUT) {
  }
}

/// Reads a line from a file, a pipe or a device that is no console.
std::optional<std::string> Read(HANDLE file, const std::filesystem::path& name,
                                const Stopping& stopping) {
  std::string line;
  line.reserve(Terminal::longestLine + 1);  // Growth would leave copies in memory.
  while (true) {
    WaitForPipe(file, stopping);
    if (stopping.signal != 0) throw Cancelled{};
    char c = 0;
    DWORD count = 0;
    if (ReadFile(file, &c, 1, &count, nullptr) == 0 && GetLastError() != ERROR_BROKEN_PIPE &&
        GetLastError() != ERROR_HANDLE_EOF)
      FailWithLastError(name);
    if (count == 0 && line.empty()) return std::nullopt;
    if (count == 0 || c == '\n') return line;
    if (line.size() == Terminal::longestLine) {
      Wipe(line);
      throw FileError(name, tooLong);
    }
    line += c;
  }
}

/// Reads a line from a console, after `prompt`, or from a file or pipe.
std::optional<std::string> ReadAny(HANDLE input, const std::filesystem::path& name, bool echo,
                                   std::string_view prompt, const Stopping& stopping) {
  if (!ModeOf(input)) return Read(input, name, stopping);
  const ConsoleMode silence(input, ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT,
                            echo ? 0 : ENABLE_ECHO_INPUT);
  std::cerr << prompt << std::flush;
  std::wstring typed = ReadTypedLine(input, name, stopping);
  if (!echo) std::cerr << std::endl;
  if (typed.empty()) return std::nullopt;
  std::string line = Utf8Of(std::wstring_view(typed).substr(0, typed.find_first_of(L"\r\n")));
  Wipe(typed);
  return line;
}

}  // namespace

struct Terminal::State {
  Stopping stopping;
  Utf8Output output;
  ConsoleMode sequences{GetStdHandle(STD_ERROR_HANDLE), ENABLE_VIRTUAL_TERMINAL_PROCESSING, 0};
};

Terminal::Terminal() : state_(std::make_unique<State>()) {
  current = &state_->stopping;
  if (SetConsoleCtrlHandler(OnControl, TRUE) == 0) FailWithLastError("signals");
}

Terminal::~Terminal() {
  (void)SetEvent(state_->stopping.done.Get());
  (void)SetConsoleCtrlHandler(OnControl, FALSE);
  current = nullptr;
}

bool Terminal::CanAsk() {
  return ModeOf(GetStdHandle(STD_INPUT_HANDLE)) && ModeOf(GetStdHandle(STD_ERROR_HANDLE));
}

bool Terminal::ShowsErrors() {
  const std::optional<DWORD> mode = ModeOf(GetStdHandle(STD_ERROR_HANDLE));
  return mode && (*mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

bool Terminal::ShowsOutput() {
  return ModeOf(GetStdHandle(STD_OUTPUT_HANDLE)).has_value();
}

std::size_t Terminal::Width() {
  CONSOLE_SCREEN_BUFFER_INFO info = {};
  if (GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info) == 0) return 80;
  return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

std::optional<std::string> Terminal::ReadLine(std::string_view prompt) const {
  return ReadAny(GetStdHandle(STD_INPUT_HANDLE), inputName, true, prompt, state_->stopping);
}

std::optional<std::string> Terminal::ReadSecret(std::string_view prompt) const {
  return ReadAny(GetStdHandle(STD_INPUT_HANDLE), inputName, false, prompt, state_->stopping);
}

std::optional<std::string> Terminal::ReadSecret(std::string_view prompt,
                                                const std::filesystem::path& path) const {
  const Handle file(CreateFileW(LongPath(path).c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) FailWithLastError(path);
  return ReadAny(file.Get(), path, false, prompt, state_->stopping);
}

int Terminal::StopSignal() const {
  return state_->stopping.signal;
}

void Terminal::IgnoreStops() const {
  // OnControl() has handled earlier signals; only new ones are left to ignore.
  (void)SetConsoleCtrlHandler(nullptr, TRUE);
}

std::vector<std::string> ArgumentsOf(int /*argc*/, char** /*argv*/) {
  // Those of main() are in the code page, which lacks characters of some names.
  int count = 0;
  wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
  if (wide == nullptr) FailWithLastError("arguments");
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(Utf8Of(wide[i]));
  (void)LocalFree(wide);
  return arguments;
}

}  // namespace slyver
