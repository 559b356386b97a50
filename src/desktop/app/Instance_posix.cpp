#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <exception>

#include "desktop/app/Instance.h"
#include "engine/disk/WorkFolders.h"

namespace slyver {

namespace {

int OpenLockFile() {
  try {
    return open((PrivateFolder() / "instances").c_str(), O_RDWR | O_CREAT | O_CLOEXEC,
                S_IRUSR | S_IWUSR);
  } catch (const std::exception&) {
    return -1;
  }
}

}  // namespace

struct Instance::State {
  int file = -1;
  bool anotherRuns = false;
};

Instance::Instance() : state_(std::make_unique<State>()) {
  state_->file = OpenLockFile();
  if (state_->file < 0) return;
  // Every instance holds a shared lock, so an exclusive one is granted only to the first.
  state_->anotherRuns = flock(state_->file, LOCK_EX | LOCK_NB) != 0;
  (void)flock(state_->file, LOCK_SH | LOCK_NB);
}

Instance::~Instance() {
  if (state_->file >= 0) (void)close(state_->file);
}

bool Instance::AnotherRuns() const {
  return state_->anotherRuns;
}

}  // namespace slyver
