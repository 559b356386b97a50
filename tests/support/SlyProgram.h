#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/TempFolder.h"

namespace slyver {

/// The status that a shell would give a child's end.
inline int StatusOf(int waitStatus) {
  return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : 128 + WTERMSIG(waitStatus);
}

struct Outcome {
  int status = 0;
  std::string out, err;
};

/// Tests that run the real program, as $SLY, in shell scripts in the test's folder.
class SlyProgramTest : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    setenv("SLY", SLY_PROGRAM, 1);
    setenv("LC_ALL", "C", 1);
  }

  /// Runs a script without a terminal. In the output the test's folder is "@".
  Outcome Run(const std::string& script) const {
    const auto read = [&](const char* name) {
      std::string text = ReadFile(folder.parent_path() / name);
      const std::string path = folder.string();
      for (std::size_t at = 0; (at = text.find(path, at)) != std::string::npos;)
        text.replace(at, path.size(), "@");
      return text;
    };
    const std::string command =
        "cd '" + folder.string() + "' && (" + script + ") </dev/null >../stdout 2>../stderr";
    const int status = StatusOf(std::system(command.c_str()));
    return {status, read("stdout"), read("stderr")};
  }
};

/// A script that runs on a terminal of its own, with someone typing.
class OnTerminal {
 public:
  OnTerminal(const std::filesystem::path& folder, const std::string& script) {
    child_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (child_ != 0) return;
    if (chdir(folder.c_str()) == 0) execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
    _exit(127);
  }
  ~OnTerminal() {
    if (child_ > 0) {
      kill(child_, SIGKILL);
      (void)waitpid(child_, nullptr, 0);
    }
    close(terminal_);
  }
  OnTerminal(const OnTerminal&) = delete;
  OnTerminal& operator=(const OnTerminal&) = delete;

  /// Reads until `text` is on the screen, behind what was waited for before.
  void WaitFor(const std::string& text) {
    while (shown_.find(text, seen_) == std::string::npos)
      ASSERT_TRUE(ReadSome()) << text << " did not come, but: " << shown_;
    seen_ = shown_.find(text, seen_) + text.size();
  }
  void Type(const std::string& text) const {
    EXPECT_EQ(write(terminal_, text.data(), text.size()), std::ssize(text));
  }
  /// Waits for the script's end; returns its status.
  int Finish() {
    while (ReadSome()) continue;
    int status = 0;
    EXPECT_EQ(waitpid(child_, &status, 0), child_);
    child_ = -1;
    return StatusOf(status);
  }
  const std::string& Shown() const { return shown_; }

 private:
  /// False when the script has ended, or is ended because it is silent for too long.
  bool ReadSome() {
    pollfd waiting = {terminal_, POLLIN, 0};
    if (poll(&waiting, 1, 30000) <= 0) {
      kill(child_, SIGKILL);
      return false;
    }
    std::array<char, 4096> part = {};
    const ssize_t count = read(terminal_, part.data(), part.size());
    if (count <= 0) return false;
    shown_.append(part.data(), static_cast<std::size_t>(count));
    return true;
  }

  int terminal_ = -1;
  pid_t child_ = -1;
  std::string shown_;
  std::size_t seen_ = 0;
};

}  // namespace slyver
