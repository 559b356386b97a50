#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

#include "engine/system/FileError.h"
#include "engine/system/FolderLock.h"

namespace slyver {

struct FolderLock::State {
  int descriptor = -1;

  ~State() {
    if (descriptor >= 0) close(descriptor);
  }
};

FolderLock::FolderLock(const std::filesystem::path& folder, Ui& ui, std::chrono::seconds patience)
    : state_(std::make_unique<State>()) {
  state_->descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (state_->descriptor < 0)
    throw FileError(folder, std::error_code(errno, std::generic_category()));
  const auto giveUp = std::chrono::steady_clock::now() + patience;
  while (flock(state_->descriptor, LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK) return;
    if (std::chrono::steady_clock::now() >= giveUp)
      throw FileError(folder, "Another program is working in this folder");
    if (!ui.GoOn()) throw Cancelled{};
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

FolderLock::~FolderLock() = default;

}  // namespace slyver
