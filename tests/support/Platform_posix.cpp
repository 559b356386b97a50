#include "support/Platform.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <system_error>

namespace slyver {

namespace fs = std::filesystem;

std::shared_ptr<void> KeepPlacesIn(const fs::path& root) {
  setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
  setenv("XDG_RUNTIME_DIR", (root / "run").c_str(), 1);
  setenv("HOME", root.c_str(), 1);
  return nullptr;
}

bool KeysReachForms() {
  return true;
}

bool MakeLink(const fs::path& to, const fs::path& at) {
  std::error_code error;
  fs::create_symlink(to, at, error);
  return !error;
}

std::uint64_t SpaceTaken(const fs::path& path) {
  struct stat found = {};
  EXPECT_EQ(stat(path.c_str(), &found), 0);
  return static_cast<std::uint64_t>(found.st_blocks) * 512;
}

std::shared_ptr<void> LockFile(const fs::path& path) {
  const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  EXPECT_EQ(flock(descriptor, LOCK_EX | LOCK_NB), 0);
  return {nullptr, [descriptor](void* /*none*/) { close(descriptor); }};
}

}  // namespace slyver
