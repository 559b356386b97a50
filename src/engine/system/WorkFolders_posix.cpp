#include "engine/system/WorkFolders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include "engine/system/FileError.h"

namespace slyver {

namespace {

/// An absolute path from the environment; empty when the variable is missing or holds none.
std::filesystem::path PathFromEnvironment(const char* name) {
  const char* const value = std::getenv(name);
  const std::filesystem::path path = value == nullptr ? "" : value;
  return path.is_absolute() ? path : std::filesystem::path{};
}

[[noreturn]] void Fail(const std::filesystem::path& path) {
  throw FileError(path, std::error_code(errno, std::generic_category()));
}

}  // namespace

std::filesystem::path PrivateFolder() {
  const std::filesystem::path runtime = PathFromEnvironment("XDG_RUNTIME_DIR");
  std::filesystem::path folder =
      runtime.empty() ? std::filesystem::path("/tmp/slyver-" + std::to_string(getuid()))
                      : runtime / "slyver";
  if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) Fail(folder);
  struct stat found = {};
  if (lstat(folder.c_str(), &found) != 0) Fail(folder);
  if (!S_ISDIR(found.st_mode)) throw FileError(folder, "Not a folder");
  if (found.st_uid != getuid()) throw FileError(folder, "The folder belongs to another user");
  if ((found.st_mode & (S_IRWXG | S_IRWXO)) != 0 && chmod(folder.c_str(), S_IRWXU) != 0)
    Fail(folder);
  return folder;
}

std::filesystem::path HomeFolder() {
  std::filesystem::path home = PathFromEnvironment("HOME");
  if (!home.empty()) return home;
  // The entry is copied at once; only another look-up in another thread could change it.
  const passwd* const user = getpwuid(getuid());  // NOLINT(concurrency-mt-unsafe)
  return user == nullptr ? "/" : user->pw_dir;
}

}  // namespace slyver
