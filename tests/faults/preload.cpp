/// Preloaded into the terminal program: counts the calls that touch files below one folder and
/// makes one of them fail, or ends the process there. What the loader and the C library do for
/// themselves passes by uncounted. The environment tells what to do:
///
/// SLYVER_FAULT_ROOT    the folder; its absolute path
/// SLYVER_FAULT_AT      the number of the call, from 1; 0 for none
/// SLYVER_FAULT         what happens to it: an error number, "kill" (SIGKILL instead of the call),
///                      "interrupt" (SIGINT before it), "short" (half of the bytes are moved) or
///                      "nothing" (none are, as at the end of a file); for the last two only calls
///                      that move bytes are counted. "slow" makes all that move bytes take a
///                      millisecond more and none fail.
/// SLYVER_FAULT_STAYS   "all": all calls from that number on fail, as on a disk that has died;
///                      "writes": only calls that need the disk to take something in are counted,
///                      and all of them fail from that number on, as on a disk that is full
/// SLYVER_FAULT_REPORT  a file that is told of the call; with number 0 and no effect, of all calls
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

enum class Kind { Look, Read, Write, Change, Remove };

std::string Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string{} : value;
}

struct Settings {
  std::string root = Variable("SLYVER_FAULT_ROOT") + "/";
  long at = std::atol(Variable("SLYVER_FAULT_AT").c_str());
  std::string effect = Variable("SLYVER_FAULT");
  int error = std::atoi(effect.c_str());
  std::string stays = Variable("SLYVER_FAULT_STAYS");
  std::string report = Variable("SLYVER_FAULT_REPORT");
};

const Settings& TheSettings() {
  static const Settings settings;
  return settings;
}

/// The path behind a descriptor; AT_FDCWD is the working folder. System calls are made directly
/// here, since the names of their functions are taken.
std::string PathOf(int descriptor) {
  const std::string link = descriptor == AT_FDCWD ? std::string("/proc/self/cwd")
                                                  : "/proc/self/fd/" + std::to_string(descriptor);
  std::array<char, PATH_MAX> path = {};
  const long length = syscall(SYS_readlink, link.c_str(), path.data(), path.size());
  return length < 0 ? std::string{} : std::string(path.data(), static_cast<std::size_t>(length));
}

std::string PathAt(int folder, const char* name) {
  return *name == '/' ? std::string(name) : PathOf(folder) + "/" + name;
}

void Report(long number, const char* call, const std::string& path) {
  const std::string line = std::to_string(number) + " " + call + " " + path + "\n";
  const int file = static_cast<int>(
      syscall(SYS_open, TheSettings().report.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600));
  (void)syscall(SYS_write, file, line.data(), line.size());
  (void)syscall(SYS_close, file);
}

/// Counts the call; whether it is one that must fail. Then errno is set.
bool Strikes(const char* call, Kind kind, const std::string& path) {
  static std::atomic<long> count = 0;
  const Settings& settings = TheSettings();
  const bool takesIn = kind == Kind::Write || kind == Kind::Change;
  const bool moves = kind == Kind::Read || kind == Kind::Write;
  if (settings.stays == "writes" && !takesIn) return false;
  const bool movesOnly =
      settings.effect == "short" || settings.effect == "nothing" || settings.effect == "slow";
  if (movesOnly && !moves) return false;
  const int before = errno;
  const bool counted = path.starts_with(settings.root);
  const long number = counted ? ++count : 0;
  const bool strikes = counted && settings.at > 0 &&
                       (number == settings.at || (!settings.stays.empty() && number > settings.at));
  const bool report = settings.at == 0 ? settings.effect.empty() : number == settings.at;
  if (counted && report) Report(number, call, path);
  if (strikes && settings.effect == "kill") (void)syscall(SYS_kill, getpid(), SIGKILL);
  if (strikes && settings.effect == "interrupt") (void)syscall(SYS_kill, getpid(), SIGINT);
  if (counted && settings.effect == "slow") (void)usleep(1000);
  const bool fails = strikes && settings.effect != "interrupt";
  errno = fails ? settings.error : before;
  return fails;
}

/// For calls that move `size` bytes: what is left of them. `failed` tells whether the call fails.
std::size_t SizeAfter(const char* call, Kind kind, int descriptor, std::size_t size, bool& failed) {
  if (!Strikes(call, kind, PathOf(descriptor))) return size;
  if (TheSettings().effect == "short") return size > 1 ? size / 2 : size;
  failed = true;
  return 0;
}

ssize_t FailedMove() {
  return TheSettings().effect == "nothing" ? 0 : -1;
}

}  // namespace

// NOLINTBEGIN(bugprone-macro-parentheses, readability-inconsistent-declaration-parameter-name)
// The function of the same name that would have been called.
#define REAL(name) \
  static const auto real = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name))

#define FAIL_OR_CALL(name, kind, path, failed, ...)    \
  REAL(name);                                          \
  if (Strikes(#name, Kind::kind, path)) return failed; \
  return real(__VA_ARGS__)

// What is closed is closed, whatever the call returns.
#define CALL_AND_FAIL(name, path, failed, ...)           \
  REAL(name);                                            \
  const bool strikes = Strikes(#name, Kind::Look, path); \
  const int error = errno;                               \
  const int result = real(__VA_ARGS__);                  \
  if (strikes) errno = error;                            \
  return strikes ? (failed) : result

#define MOVE(name, kind, descriptor, ...)                        \
  REAL(name);                                                    \
  bool failed = false;                                           \
  size = SizeAfter(#name, Kind::kind, descriptor, size, failed); \
  if (failed) return FailedMove();                               \
  return real(__VA_ARGS__)

// With 64-bit offsets the two names of a function are one.
#define ALSO_64(name) asm(".globl " #name "64\n.set " #name "64, " #name)

extern "C" {

int open(const char* path, int flags, ...) {
  std::va_list list;
  va_start(list, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(list, mode_t) : 0;
  va_end(list);
  REAL(open);
  const Kind kind = (flags & O_CREAT) != 0 ? Kind::Change : Kind::Look;
  if (Strikes("open", kind, PathAt(AT_FDCWD, path))) return -1;
  return real(path, flags, mode);
}
ALSO_64(open);

int openat(int folder, const char* path, int flags, ...) {
  std::va_list list;
  va_start(list, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(list, mode_t) : 0;
  va_end(list);
  REAL(openat);
  const Kind kind = (flags & O_CREAT) != 0 ? Kind::Change : Kind::Look;
  if (Strikes("openat", kind, PathAt(folder, path))) return -1;
  return real(folder, path, flags, mode);
}
ALSO_64(openat);

FILE* fopen64(const char* path, const char* mode) {
  FAIL_OR_CALL(fopen64, Look, PathAt(AT_FDCWD, path), nullptr, path, mode);
}

int fcntl(int descriptor, int command, ...) {
  std::va_list list;
  va_start(list, command);
  void* const argument = va_arg(list, void*);
  va_end(list);
  REAL(fcntl);
  const bool duplicates = command == F_DUPFD || command == F_DUPFD_CLOEXEC;
  if (duplicates && Strikes("fcntl", Kind::Look, PathOf(descriptor))) return -1;
  return real(descriptor, command, argument);
}
ALSO_64(fcntl);

int dup(int descriptor) noexcept {
  FAIL_OR_CALL(dup, Look, PathOf(descriptor), -1, descriptor);
}
int flock(int descriptor, int operation) noexcept {
  FAIL_OR_CALL(flock, Look, PathOf(descriptor), -1, descriptor, operation);
}
int close(int descriptor) {
  CALL_AND_FAIL(close, PathOf(descriptor), -1, descriptor);
}
int fclose(FILE* file) {
  CALL_AND_FAIL(fclose, PathOf(fileno(file)), EOF, file);
}

ssize_t read(int descriptor, void* buffer, std::size_t size) {
  MOVE(read, Read, descriptor, descriptor, buffer, size);
}
ssize_t pread(int descriptor, void* buffer, std::size_t size, off_t offset) {
  MOVE(pread, Read, descriptor, descriptor, buffer, size, offset);
}
ALSO_64(pread);
ssize_t write(int descriptor, const void* buffer, std::size_t size) {
  MOVE(write, Write, descriptor, descriptor, buffer, size);
}
ssize_t pwrite(int descriptor, const void* buffer, std::size_t size, off_t offset) {
  MOVE(pwrite, Write, descriptor, descriptor, buffer, size, offset);
}
ALSO_64(pwrite);
ssize_t copy_file_range(int in, off64_t* inOffset, int out, off64_t* outOffset, std::size_t size,
                        unsigned flags) {
  MOVE(copy_file_range, Write, out, in, inOffset, out, outOffset, size, flags);
}
ssize_t sendfile(int out, int in, off_t* offset, std::size_t size) noexcept {
  MOVE(sendfile, Write, out, out, in, offset, size);
}
ALSO_64(sendfile);

int ftruncate(int descriptor, off_t length) noexcept {
  FAIL_OR_CALL(ftruncate, Change, PathOf(descriptor), -1, descriptor, length);
}
ALSO_64(ftruncate);
int truncate(const char* path, off_t length) noexcept {
  FAIL_OR_CALL(truncate, Change, PathAt(AT_FDCWD, path), -1, path, length);
}
ALSO_64(truncate);
int fallocate(int descriptor, int mode, off_t offset, off_t length) {
  FAIL_OR_CALL(fallocate, Change, PathOf(descriptor), -1, descriptor, mode, offset, length);
}
ALSO_64(fallocate);
int fsync(int descriptor) {
  FAIL_OR_CALL(fsync, Change, PathOf(descriptor), -1, descriptor);
}
int fdatasync(int descriptor) {
  FAIL_OR_CALL(fdatasync, Change, PathOf(descriptor), -1, descriptor);
}
off_t lseek(int descriptor, off_t offset, int whence) noexcept {
  FAIL_OR_CALL(lseek, Look, PathOf(descriptor), -1, descriptor, offset, whence);
}
ALSO_64(lseek);

int stat(const char* path, struct stat* found) noexcept {
  FAIL_OR_CALL(stat, Look, PathAt(AT_FDCWD, path), -1, path, found);
}
ALSO_64(stat);
int lstat(const char* path, struct stat* found) noexcept {
  FAIL_OR_CALL(lstat, Look, PathAt(AT_FDCWD, path), -1, path, found);
}
ALSO_64(lstat);
int fstat(int descriptor, struct stat* found) noexcept {
  FAIL_OR_CALL(fstat, Look, PathOf(descriptor), -1, descriptor, found);
}
ALSO_64(fstat);
int fstatat(int folder, const char* path, struct stat* found, int flags) noexcept {
  FAIL_OR_CALL(fstatat, Look, PathAt(folder, path), -1, folder, path, found, flags);
}
ALSO_64(fstatat);
int statx(int folder, const char* path, int flags, unsigned mask, struct statx* found) noexcept {
  FAIL_OR_CALL(statx, Look, PathAt(folder, path), -1, folder, path, flags, mask, found);
}
int access(const char* path, int mode) noexcept {
  FAIL_OR_CALL(access, Look, PathAt(AT_FDCWD, path), -1, path, mode);
}
ssize_t readlink(const char* path, char* buffer, std::size_t size) noexcept {
  FAIL_OR_CALL(readlink, Look, PathAt(AT_FDCWD, path), -1, path, buffer, size);
}

int rename(const char* from, const char* to) noexcept {
  FAIL_OR_CALL(rename, Change, PathAt(AT_FDCWD, from), -1, from, to);
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) noexcept {
  FAIL_OR_CALL(renameat2, Change, PathAt(fromFolder, from), -1, fromFolder, from, toFolder, to,
               flags);
}
int link(const char* from, const char* to) noexcept {
  FAIL_OR_CALL(link, Change, PathAt(AT_FDCWD, from), -1, from, to);
}
int symlink(const char* text, const char* path) noexcept {
  FAIL_OR_CALL(symlink, Change, PathAt(AT_FDCWD, path), -1, text, path);
}
int mkdir(const char* path, mode_t mode) noexcept {
  FAIL_OR_CALL(mkdir, Change, PathAt(AT_FDCWD, path), -1, path, mode);
}
int mkdirat(int folder, const char* path, mode_t mode) noexcept {
  FAIL_OR_CALL(mkdirat, Change, PathAt(folder, path), -1, folder, path, mode);
}
int chmod(const char* path, mode_t mode) noexcept {
  FAIL_OR_CALL(chmod, Change, PathAt(AT_FDCWD, path), -1, path, mode);
}
int fchmodat(int folder, const char* path, mode_t mode, int flags) noexcept {
  FAIL_OR_CALL(fchmodat, Change, PathAt(folder, path), -1, folder, path, mode, flags);
}

int unlink(const char* path) noexcept {
  FAIL_OR_CALL(unlink, Remove, PathAt(AT_FDCWD, path), -1, path);
}
int unlinkat(int folder, const char* path, int flags) noexcept {
  FAIL_OR_CALL(unlinkat, Remove, PathAt(folder, path), -1, folder, path, flags);
}
int rmdir(const char* path) noexcept {
  FAIL_OR_CALL(rmdir, Remove, PathAt(AT_FDCWD, path), -1, path);
}
int remove(const char* path) noexcept {
  FAIL_OR_CALL(remove, Remove, PathAt(AT_FDCWD, path), -1, path);
}

DIR* opendir(const char* path) {
  FAIL_OR_CALL(opendir, Look, PathAt(AT_FDCWD, path), nullptr, path);
}
DIR* fdopendir(int descriptor) {
  FAIL_OR_CALL(fdopendir, Look, PathOf(descriptor), nullptr, descriptor);
}
struct dirent* readdir(DIR* folder) {
  FAIL_OR_CALL(readdir, Look, PathOf(dirfd(folder)), nullptr, folder);
}
ALSO_64(readdir);
int closedir(DIR* folder) {
  CALL_AND_FAIL(closedir, PathOf(dirfd(folder)), -1, folder);
}

}  // extern "C"
// NOLINTEND(bugprone-macro-parentheses, readability-inconsistent-declaration-parameter-name)
