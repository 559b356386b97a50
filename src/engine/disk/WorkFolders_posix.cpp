#include "engine/disk/WorkFolders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "engine/base/Posix.h"

namespace slyver {

namespace {

/// Returns an absolute path from the environment; empty if missing or relative.
std::filesystem::path PathFromEnvironment(const char* name) {
  const char* const value = std::getenv(name);
  const std::filesystem::path path = value == nullptr ? "" : value;
  return path.is_absolute() ? path : std::filesystem::path{};
}

bool IsFolderOfThisUser(const std::filesystem::path& path) {
  struct stat found = {};
  return !path.empty() && stat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode) &&
         found.st_uid == geteuid();
}

/// Creates a folder for this user alone, or uses an existing one. False if it is another user's or
/// not a folder. Throws FileError if it cannot be created.
bool TakeFolder(const std::filesystem::path& folder) {
  if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) FailWithLastError(folder);
  struct stat found = {};
  if (lstat(folder.c_str(), &found) != 0) FailWithLastError(folder);
  if (!S_ISDIR(found.st_mode) || found.st_uid != geteuid()) return false;
  if ((found.st_mode & (S_IRWXG | S_IRWXO)) != 0 && chmod(folder.c_str(), S_IRWXU) != 0)
    FailWithLastError(folder);
  return true;
}

constexpr int mostPrivateFolders = 100;

}  // namespace

std::filesystem::path PrivateFolder() {
  // After a change of user the variable may still be the other user's.
  const std::filesystem::path runtime = PathFromEnvironment("XDG_RUNTIME_DIR");
  const std::filesystem::path base =
      IsFolderOfThisUser(runtime)
          ? runtime / "slyver"
          : std::filesystem::path("/tmp/slyver-" + std::to_string(geteuid()));
  std::filesystem::path folder = base;
  // Anybody can create a name in /tmp, which must not stop this user's jobs.
  for (int number = 1; !TakeFolder(folder); ++number) {
    if (number == mostPrivateFolders)
      throw FileError(base,
                      "This and the 99 names after it are not yours; set XDG_RUNTIME_DIR "
                      "to a folder of yours");
    folder = base;
    folder += "." + std::to_string(number);
  }
  return folder;
}

std::filesystem::path HomeFolder() {
  std::filesystem::path home = PathFromEnvironment("HOME");
  if (!home.empty()) return home;
  // The entry is copied at once; only another thread's look-up could change it.
  const passwd* const user = getpwuid(geteuid());  // NOLINT(concurrency-mt-unsafe)
  return user == nullptr ? "/" : user->pw_dir;
}

}  // namespace slyver
