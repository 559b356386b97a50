/// Preloaded into the terminal program: counts its calls that touch files below one folder, or that
/// start a thread, and has something happen at one of them. The environment says what:
///
/// SLYVER_FAULT_ROOT    the folder, an absolute path
/// SLYVER_FAULT_AT      the number of the call, from 1; 0 for none
/// SLYVER_FAULT_EFFECT  an error number: the call fails with it;
///                      "signal N": the process gets this signal before the call;
///                      "short", "nothing": half of the bytes are moved, or none
/// SLYVER_FAULT_STAYS   "all": all calls from that number on fail, as on a disk that has died;
///                      "writes": only calls that need room on the disk count, and all of them
///                      fail from that number on, as on a full disk
///                      "names": only calls that rename count, and all of them fail from there on
/// SLYVER_FAULT_DISK    "shares": files share blocks of 300 bytes, by imitation, since most file
///                      systems cannot; a clone that fails has brought over a half;
///                      "network": the disk says that it is a network file system, which
///                      has no files without names, and no exclusive lock on what
///                      was opened for reading
/// SLYVER_FAULT_REPORT  a file that is told of the call; with number 0 and no effect, of all calls:
///                      lines of number, call, path and what was asked for, separated by tabs
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

enum class Kind { Look, Read, Write, Change };

std::string Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string{} : value;
}

struct Settings {
  std::string root = Variable("SLYVER_FAULT_ROOT") + "/";
  long at = std::atol(Variable("SLYVER_FAULT_AT").c_str());
  std::string effect = Variable("SLYVER_FAULT_EFFECT");
  int error = std::atoi(effect.c_str());
  int signal = effect.starts_with("signal ") ? std::atoi(effect.c_str() + 7) : 0;
  std::string stays = Variable("SLYVER_FAULT_STAYS");
  std::string report = Variable("SLYVER_FAULT_REPORT");
  bool shares = Variable("SLYVER_FAULT_DISK") == "shares";
  bool network = Variable("SLYVER_FAULT_DISK") == "network";
};

const Settings& TheSettings() {
  static const Settings settings;
  return settings;
}

/// The path behind a descriptor; AT_FDCWD is the working folder. System calls are made directly
/// here, since the names of their functions are taken. A file that never had a name has
/// one that ends in " (deleted)"; once it is named, its folder stands for it.
std::string PathOf(int descriptor) {
  const std::string link = descriptor == AT_FDCWD ? std::string("/proc/self/cwd")
                                                  : "/proc/self/fd/" + std::to_string(descriptor);
  std::array<char, PATH_MAX> path = {};
  const long length = syscall(SYS_readlink, link.c_str(), path.data(), path.size());
  std::string text(path.data(), static_cast<std::size_t>(std::max(length, 0L)));
  struct stat found = {};
  const bool named = text.ends_with(" (deleted)") && syscall(SYS_fstat, descriptor, &found) == 0 &&
                     found.st_nlink > 0;
  return named ? text.substr(0, text.rfind('/') + 1) : text;
}

/// The length of an open file in bytes.
std::string LengthOf(int descriptor) {
  struct stat found = {};
  (void)syscall(SYS_fstat, descriptor, &found);
  return std::to_string(found.st_size);
}

std::string PathAt(int folder, const char* name) {
  return *name == '/' ? std::string(name) : PathOf(folder) + "/" + name;
}

std::string At(const char* name) {
  return PathAt(AT_FDCWD, name);
}

void Report(long number, const char* call, const std::string& path, const std::string& asked) {
  const std::string line = std::to_string(number) + "\t" + call + "\t" + path + "\t" + asked + "\n";
  const int file = static_cast<int>(
      syscall(SYS_open, TheSettings().report.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600));
  (void)syscall(SYS_write, file, line.data(), line.size());
  (void)syscall(SYS_close, file);
}

/// Counts the call; whether it is to fail. Then errno is set.
bool Strikes(const char* call, Kind kind, const std::string& path, const std::string& asked = {}) {
  static std::atomic<long> count = 0;
  const Settings& settings = TheSettings();
  const bool moves = kind == Kind::Read || kind == Kind::Write;
  const bool movesOnly = settings.effect == "short" || settings.effect == "nothing";
  if (settings.stays == "writes" && kind != Kind::Write && kind != Kind::Change) return false;
  if (settings.stays == "names" && std::strncmp(call, "rename", 6) != 0) return false;
  if ((movesOnly && !moves) || !path.starts_with(settings.root)) return false;
  const int before = errno;
  const long number = ++count;
  const bool strikes =
      settings.at > 0 && (settings.stays.empty() ? number == settings.at : number >= settings.at);
  if (settings.at == 0 ? settings.effect.empty() : number == settings.at)
    Report(number, call, path, asked);
  if (strikes && settings.signal > 0) (void)syscall(SYS_kill, getpid(), settings.signal);
  const bool fails = strikes && settings.signal == 0;
  errno = fails ? settings.error : before;
  return fails;
}

/// What a call that moves `size` bytes is to move instead; -1 when it fails.
ssize_t SizeAfter(const char* call, Kind kind, int descriptor, std::size_t size,
                  const std::string& asked = {}) {
  if (!Strikes(call, kind, PathOf(descriptor), asked)) return static_cast<ssize_t>(size);
  if (TheSettings().effect == "nothing") return 0;
  return TheSettings().effect == "short" ? static_cast<ssize_t>((size + 1) / 2) : -1;
}

/// Bytes as the report has them, in hexadecimal digits.
std::string Digits(const void* bytes, std::size_t size) {
  if (TheSettings().report.empty() || TheSettings().at > 0) return {};
  std::string text;
  for (std::size_t i = 0; i < size; ++i)
    for (const int shift : {4, 0})
      text += "0123456789abcdef"[static_cast<const unsigned char*>(bytes)[i] >> shift & 15];
  return text;
}

constexpr unsigned sharedBlock = 300;

/// Brings over bytes as a file system would by itself; of a call that fails, a half.
ssize_t Bring(const char* call, int source, std::uint64_t from, int target, std::uint64_t to,
              std::size_t size) {
  std::string bytes(size, '\0');
  (void)syscall(SYS_pread64, source, bytes.data(), size, from);
  const ssize_t count = SizeAfter(call, Kind::Write, target, size,
                                  std::to_string(to) + "\t" + Digits(bytes.data(), size));
  const int error = errno;
  (void)syscall(SYS_pwrite64, target, bytes.data(), count < 0 ? size / 2 : count, to);
  errno = error;
  return count;
}

/// A clone is all or nothing, of whole blocks, but for the last one of both files.
int Clone(const file_clone_range& range, int target) {
  struct stat from = {};
  struct stat to = {};
  (void)syscall(SYS_fstat, range.src_fd, &from);
  (void)syscall(SYS_fstat, target, &to);
  const auto length = static_cast<std::uint64_t>(from.st_size);
  const std::uint64_t size = range.src_length == 0 ? length - range.src_offset : range.src_length;
  const bool endsBoth = range.src_offset + size == length &&
                        range.dest_offset + size >= static_cast<std::uint64_t>(to.st_size);
  errno = EINVAL;
  if (size > 0 && (range.src_offset % sharedBlock != 0 || range.dest_offset % sharedBlock != 0 ||
                   (size % sharedBlock != 0 && !endsBoth)))
    return -1;
  const ssize_t count = Bring("ioctl", static_cast<int>(range.src_fd), range.src_offset, target,
                              range.dest_offset, size);
  return count == static_cast<ssize_t>(size) ? 0 : -1;
}

}  // namespace

// NOLINTBEGIN(bugprone-macro-parentheses, readability-inconsistent-declaration-parameter-name)
// The function of the same name that would have been called.
#define REAL(name) \
  static const auto real = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name))

#define UNPACKED(...) __VA_ARGS__
#define CALL(type, name, parameters, failed, kind, where, ...)     \
  type name parameters {                                           \
    REAL(name);                                                    \
    if (Strikes(#name, Kind::kind, UNPACKED where)) return failed; \
    return real(__VA_ARGS__);                                      \
  }

// What is closed is closed, whatever the call returns.
#define CLOSE(type, name, descriptor)                                                          \
  int name(type file) {                                                                        \
    REAL(name);                                                                                \
    const bool strikes = Strikes(#name, Kind::Look, PathOf(descriptor), LengthOf(descriptor)); \
    const int error = errno;                                                                   \
    const int result = real(file);                                                             \
    if (strikes) errno = error;                                                                \
    return strikes ? -1 : result;                                                              \
  }

#define MOVE(name, parameters, kind, asked, ...)                                 \
  ssize_t name parameters {                                                      \
    REAL(name);                                                                  \
    const ssize_t count = SizeAfter(#name, Kind::kind, descriptor, size, asked); \
    if (count < 0 || (count == 0 && size > 0)) return count;                     \
    size = static_cast<std::size_t>(count);                                      \
    return real(__VA_ARGS__);                                                    \
  }

// With 64-bit offsets the two names of a function are one.
#define ALSO_64(name) asm(".globl " #name "64\n.set " #name "64, " #name)
#define CALL_64(type, name, ...) \
  CALL(type, name, __VA_ARGS__)  \
  ALSO_64(name)

#define OPEN(name, parameters, folder, ...)                                        \
  int name parameters {                                                            \
    std::va_list list;                                                             \
    va_start(list, flags);                                                         \
    const bool nameless = (flags & O_TMPFILE) == O_TMPFILE;                        \
    const bool makes = (flags & O_CREAT) != 0;                                     \
    const mode_t mode = makes || nameless ? va_arg(list, mode_t) : 0;              \
    va_end(list);                                                                  \
    REAL(name);                                                                    \
    const Kind kind = makes || nameless ? Kind::Change : Kind::Look;               \
    if (Strikes(#name, kind, PathAt(folder, path), makes ? "new" : "")) return -1; \
    if (nameless && TheSettings().network) return (errno = EOPNOTSUPP), -1;        \
    return real(__VA_ARGS__, flags, mode);                                         \
  }                                                                                \
  ALSO_64(name)

extern "C" {

OPEN(open, (const char* path, int flags, ...), AT_FDCWD, path);
OPEN(openat, (int folder, const char* path, int flags, ...), folder, folder, path);

CALL_64(FILE*, fopen, (const char* path, const char* mode), nullptr, Look, (At(path)), path, mode);
CLOSE(int, close, file)
CLOSE(FILE*, fclose, fileno(file))
CLOSE(DIR*, closedir, dirfd(file))

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

int flock(int descriptor, int operation) noexcept {
  REAL(flock);
  if (Strikes("flock", Kind::Look, PathOf(descriptor))) return -1;
  const bool writable = (fcntl(descriptor, F_GETFL) & O_ACCMODE) != O_RDONLY;
  if (!TheSettings().network || writable) return real(descriptor, operation);
  errno = EBADF;
  return -1;
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) noexcept {
  REAL(pthread_create);
  if (Strikes("pthread_create", Kind::Look, TheSettings().root)) return errno;
  return real(thread, attributes, start, argument);
}

MOVE(read, (int descriptor, void* buffer, std::size_t size), Read, "", descriptor, buffer, size)
MOVE(pread, (int descriptor, void* buffer, std::size_t size, off_t offset), Read, "", descriptor,
     buffer, size, offset)
ALSO_64(pread);
MOVE(pwrite, (int descriptor, const void* buffer, std::size_t size, off_t offset), Write,
     std::to_string(offset) + "\t" + Digits(buffer, size), descriptor, buffer, size, offset)
ALSO_64(pwrite);

int ioctl(int file, unsigned long request, ...) noexcept {
  std::va_list list;
  va_start(list, request);
  void* const argument = va_arg(list, void*);
  va_end(list);
  REAL(ioctl);
  if (request == FICLONERANGE && TheSettings().shares)
    return Clone(*static_cast<const file_clone_range*>(argument), file);
  if (request == FICLONERANGE && Strikes("ioctl", Kind::Change, PathOf(file))) return -1;
  return real(file, request, argument);
}

ssize_t copy_file_range(int source, off_t* from, int target, off_t* to, std::size_t size,
                        unsigned /*flags*/) {
  const ssize_t count = Bring("copy_file_range", source, *from, target, *to, size);
  if (count > 0) *from += count;
  if (count > 0) *to += count;
  return count;
}
ALSO_64(copy_file_range);

int fstatfs(int file, struct statfs* to) noexcept {
  REAL(fstatfs);
  if (Strikes("fstatfs", Kind::Look, PathOf(file))) return -1;
  const int result = real(file, to);
  if (TheSettings().shares) to->f_bsize = sharedBlock;
  if (TheSettings().network) to->f_type = NFS_SUPER_MAGIC;
  return result;
}
ALSO_64(fstatfs);

CALL_64(int, fallocate, (int file, int mode, off_t offset, off_t length), -1, Change,
        (PathOf(file)), file, mode, offset, length);
CALL(int, fsync, (int file), -1, Change, (PathOf(file)), file)
CALL(int, fchmod, (int file, mode_t mode) noexcept, -1, Change, (PathOf(file)), file, mode)
CALL(int, fchown, (int file, uid_t user, gid_t group) noexcept, -1, Change, (PathOf(file)), file,
     user, group)
CALL(ssize_t, fgetxattr, (int file, const char* name, void* to, std::size_t size) noexcept, -1,
     Look, (PathOf(file)), file, name, to, size)
CALL(int, fsetxattr,
     (int file, const char* name, const void* from, std::size_t size, int flags) noexcept, -1,
     Change, (PathOf(file)), file, name, from, size, flags)
CALL(int, fremovexattr, (int file, const char* name) noexcept, -1, Change, (PathOf(file)), file,
     name)
CALL_64(int, statvfs, (const char* path, struct statvfs* to) noexcept, -1, Look, (At(path)), path,
        to);
CALL_64(int, stat, (const char* path, struct stat* to) noexcept, -1, Look, (At(path)), path, to);
CALL_64(int, lstat, (const char* path, struct stat* to) noexcept, -1, Look, (At(path)), path, to);
CALL_64(int, fstat, (int file, struct stat* found) noexcept, -1, Look, (PathOf(file)), file, found);

// A name that only moves needs no room.
CALL(int, rename, (const char* from, const char* to) noexcept, -1, Look, (At(from), At(to)), from,
     to)
CALL(int, renameat2, (int in, const char* from, int out, const char* to, unsigned flags) noexcept,
     -1, Look, (PathAt(in, from), PathAt(out, to)), in, from, out, to, flags)
CALL(int, linkat, (int folder, const char* from, int in, const char* to, int flags) noexcept, -1,
     Change,
     (PathOf((flags & AT_EMPTY_PATH) != 0 ? folder : std::atoi(std::strrchr(from, '/') + 1)),
      PathAt(in, to)),
     folder, from, in, to, flags)
CALL(int, mkdir, (const char* path, mode_t mode) noexcept, -1, Change, (At(path)), path, mode)
CALL(int, unlink, (const char* path) noexcept, -1, Look, (At(path)), path)
CALL(int, unlinkat, (int folder, const char* path, int flags) noexcept, -1, Look,
     (PathAt(folder, path)), folder, path, flags)
CALL(int, rmdir, (const char* path) noexcept, -1, Look, (At(path)), path)
CALL(int, remove, (const char* path) noexcept, -1, Look, (At(path)), path)

CALL(DIR*, opendir, (const char* path), nullptr, Look, (At(path)), path)
CALL_64(struct dirent*, readdir, (DIR * folder), nullptr, Look, (PathOf(dirfd(folder))), folder);

}  // extern "C"
// NOLINTEND(bugprone-macro-parentheses, readability-inconsistent-declaration-parameter-name)
