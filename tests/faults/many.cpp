// Runs the terminal program for one command line after another in one process, which saves the cost
// of starting the sanitizers for each and shows what a run leaves open behind it.
//
// Standard input holds the jobs, one after the other: the working folder and the arguments, each
// followed by a zero byte, and one more zero byte at the end. For each job standard output gets a
// line with its exit status and the lengths of its two outputs, and then these outputs.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <ext/stdio_filebuf.h>
#include <iostream>
#include <string>
#include <vector>

int SlyMain(int argc, char** argv);  // main() of the terminal program, renamed by the build

namespace {

constexpr unsigned patience = 20;  // Seconds until a job that hangs is ended by SIGALRM.

/// Replaces a standard stream by another file; returns where the stream lies now.
int Replace(int standard, int by) {
  const int kept = fcntl(standard, F_DUPFD_CLOEXEC, 3);
  (void)dup2(by, standard);
  return kept;
}

/// A file in memory that takes what is written to a standard stream.
class Output {
 public:
  explicit Output(const char* name, int standard)
      : file_(memfd_create(name, MFD_CLOEXEC)), replaced_(Replace(standard, file_)) {
    (void)fcntl(file_, F_SETFL, O_APPEND);
  }
  int Replaced() const { return replaced_; }

  /// What has been written since the last time.
  std::string Take() const {
    struct stat now = {};
    (void)fstat(file_, &now);
    std::string text(static_cast<std::size_t>(now.st_size), '\0');
    const ssize_t count = pread(file_, text.data(), text.size(), 0);
    text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    (void)ftruncate(file_, 0);
    return text;
  }

 private:
  int file_;
  int replaced_;
};

int RunJob(std::vector<std::string>& words) {
  if (chdir(words.front().c_str()) != 0) return -1;
  words.front() = "sly";
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  (void)alarm(patience);
  const int status = SlyMain(static_cast<int>(words.size()), arguments.data());
  std::cout.flush();
  (void)alarm(0);
  return status;
}

}  // namespace

int main() {
  __gnu_cxx::stdio_filebuf<char> jobs(
      Replace(STDIN_FILENO, open("/dev/null", O_RDONLY | O_CLOEXEC)), std::ios::in);
  const Output out("out", STDOUT_FILENO);
  const Output err("err", STDERR_FILENO);
  std::istream input(&jobs);
  std::vector<std::string> words;
  for (std::string word; std::getline(input, word, '\0');) {
    if (!word.empty()) {
      words.push_back(word);
      continue;
    }
    const int status = RunJob(words);
    const std::string printed = out.Take();
    const std::string said = err.Take();
    (void)dprintf(out.Replaced(), "%d %zu %zu\n", status, printed.size(), said.size());
    for (const std::string& text : {printed, said})
      if (write(out.Replaced(), text.data(), text.size()) != std::ssize(text)) return 1;
    words.clear();
  }
  return 0;
}
