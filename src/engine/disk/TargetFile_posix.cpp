#include <fcntl.h>
#include <linux/capability.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>

#include "engine/base/Posix.h"
#include "engine/disk/AccessList_posix.h"
#include "engine/disk/Disk.h"
#include "engine/disk/TargetFile.h"

namespace slyver {

namespace {

bool SameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// True if `path` is still the open file.
bool NameStillBelongs(const std::filesystem::path& path, const Descriptor& file) {
  struct stat named = {};
  struct stat opened = {};
  return lstat(path.c_str(), &named) == 0 && fstat(file.Get(), &opened) == 0 &&
         SameFile(named, opened);
}

/// True if this user owns the file. Leaves errno unchanged.
bool IsOwn(const std::filesystem::path& path) {
  const int error = errno;
  struct stat found = {};
  const bool own = lstat(path.c_str(), &found) == 0 && found.st_uid == geteuid();
  errno = error;
  return own;
}

/// Deletes a killed run's leftover, which is not locked. It is never written to: it could be a hard
/// link to the user's data. Throws FileError if another program is writing it.
void RemoveLeftover(const std::filesystem::path& temporary, const std::filesystem::path& target) {
  constexpr int flags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  Descriptor file(open(temporary.c_str(), O_RDWR | flags));
  if (!file && errno == EACCES) file = Descriptor(open(temporary.c_str(), O_RDONLY | flags));
  if (!file && errno == ENOENT) return;
  // A link, a socket or this user's unreadable file is not being written. Another user's may be.
  if (!file && errno != ELOOP && errno != ENXIO && (errno != EACCES || !IsOwn(temporary)))
    FailWithLastError(temporary);
  if (file && !TryLock(file)) throw FileError(target, "Another program is writing this file");
  if (file && !NameStillBelongs(temporary, file)) return;
  if (unlink(temporary.c_str()) != 0 && errno != ENOENT) FailWithLastError(temporary);
}

/// Creates and locks the temporary file, writable for this user: a run that cannot open it did not
/// create it.
Descriptor CreateTemporary(const std::filesystem::path& temporary,
                           const std::filesystem::path& target, mode_t bits) {
  while (true) {
    Descriptor file(open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                         bits | S_IRUSR | S_IWUSR));
    if (file) {
      // Another program may have deleted it as a leftover before it was locked.
      if (TryLock(file)) {
        if (NameStillBelongs(temporary, file)) return file;
      } else if (errno != EWOULDBLOCK) {
        const std::error_code error = LastError();
        (void)unlink(temporary.c_str());
        throw FileError(target, error);
      }
    } else if (errno == EEXIST) {
      RemoveLeftover(temporary, target);
    } else if (errno == EACCES || errno == EPERM || errno == EROFS) {
      FailWithLastError(target.parent_path());
    } else if (errno != EINTR) {
      FailWithLastError(target);
    }
  }
}

/// Returns the bits for a file of `group`, as for an unknown group if `rights` are for another.
mode_t BitsFor(const Rights& rights, gid_t group) {
  const bool known = rights.group == Rights::anyGroup || rights.group == group;
  return known ? rights.bits : ForAnyGroup(rights).bits;
}

/// Returns the group that a new file in the folder will probably have.
gid_t GroupIn(const std::filesystem::path& folder) {
  struct stat found = {};
  if (stat(folder.c_str(), &found) == 0 && (found.st_mode & S_ISGID) != 0) return found.st_gid;
  return getegid();
}

/// Returns the user's mask; all but the owner's bits if unknown.
unsigned UserMask() {
  std::ifstream status("/proc/self/status");
  unsigned mask = 0;
  for (std::string word; status >> word;)
    if (word == "Umask:" && status >> std::oct >> mask) return mask;
  return S_IRWXG | S_IRWXO;
}

/// True if this user may do what only a file's owner may.
bool ActsForOwners() {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets = {};
  return syscall(SYS_capget, &header, sets.data()) == 0 &&
         (sets[CAP_TO_INDEX(CAP_FOWNER)].effective & CAP_TO_MASK(CAP_FOWNER)) != 0;
}

/// True if this user can neither rename nor delete a file, whatever its mode.
bool IsFixed(const std::filesystem::path& path, const struct stat& found) {
  constexpr std::uint64_t fixing = STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND;
  struct statx attributes = {};
  if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, 0, &attributes) == 0 &&
      (attributes.stx_attributes & fixing) != 0)
    return true;
  struct stat folder = {};
  return found.st_uid != geteuid() && stat(path.parent_path().c_str(), &folder) == 0 &&
         (folder.st_mode & S_ISVTX) != 0 && folder.st_uid != geteuid() && !ActsForOwners();
}

/// Returns the state of `path`, links not followed; `nullopt` if missing. Throws FileError if it
/// cannot be replaced by a file.
std::optional<struct stat> Replaceable(const std::filesystem::path& path) {
  struct stat found = {};
  if (lstat(path.c_str(), &found) != 0) {
    // A name that is too long, for example, should fail before the long work.
    if (errno != ENOENT) FailWithLastError(path);
    return std::nullopt;
  }
  if (S_ISDIR(found.st_mode))
    throw FileError(path, std::make_error_code(std::errc::is_a_directory));
  if (!S_ISREG(found.st_mode) && !S_ISLNK(found.st_mode))
    throw FileError(path, "Not a regular file");
  if (IsFixed(path, found))
    throw FileError(path, std::make_error_code(std::errc::operation_not_permitted));
  return found;
}

/// Returns the state of a file to replace, whose rights and owner are kept; `nullopt` if missing or
/// a link.
std::optional<struct stat> Replaced(const std::filesystem::path& path) {
  std::optional<struct stat> found;
  if (!path.empty()) found = Replaceable(path);
  if (found && S_ISLNK(found->st_mode)) found.reset();
  return found;
}

/// Sets the group and access list of `earlier`, the file at `path`, on a new file, for people who
/// may also read by `source`. Returns the rights to set then.
Rights KeepGroupAndList(const Descriptor& file, const std::filesystem::path& path,
                        const struct stat& earlier, const Rights& source) {
  struct stat made = {};
  if (fstat(file.Get(), &made) != 0) FailWithLastError(path);
  const bool keepsGroup = made.st_gid == earlier.st_gid ||
                          fchown(file.Get(), static_cast<uid_t>(-1), earlier.st_gid) == 0;
  AccessList list = AccessList::Of(path);
  const unsigned before = list.IsEmpty() ? earlier.st_mode & 0777U : list.ClassBits();
  Rights rights = Narrowed({static_cast<std::uint16_t>(before), true, earlier.st_gid}, source);
  if (!keepsGroup) rights = ForAnyGroup(rights);
  if (!list.IsEmpty())
    rights.bits = static_cast<std::uint16_t>(list.Narrow(rights.bits, ForEverybody(source)));
  if (!list.SetOn(file)) FailWithLastError(path);
  rights.group = Rights::anyGroup;
  return rights;
}

/// Sets rights that the user's mask must not narrow, or for another group than expected. Keeps the
/// owner's write access unless `complete`.
void SetRights(const Descriptor& file, const Rights& rights, bool complete,
               const std::filesystem::path& target) {
  struct stat found = {};
  if (fstat(file.Get(), &found) != 0) FailWithLastError(target);
  mode_t bits = BitsFor(rights, found.st_gid);
  if (!rights.exact) bits &= found.st_mode;
  if (!complete) bits |= S_IRUSR | S_IWUSR;
  if (bits != (found.st_mode & 0777U) && fchmod(file.Get(), bits) != 0) FailWithLastError(target);
}

/// Removes a new file's inherited access list. Throws FileError.
void RemoveList(const Descriptor& file, const std::filesystem::path& target) {
  if (!AccessList().SetOn(file)) FailWithLastError(target);
}

bool IsOnNetwork(const struct statfs& found) {
  switch (static_cast<std::uint32_t>(found.f_type)) {
    case NFS_SUPER_MAGIC:
    case SMB_SUPER_MAGIC:
    case CIFS_SUPER_MAGIC:
    case SMB2_SUPER_MAGIC:
      return true;
    default:
      return false;
  }
}

/// Clones `length` bytes of the source; 0 means up to the source's end.
bool Clone(int source, std::uint64_t sourceOffset, int target, std::uint64_t targetOffset,
           std::uint64_t length) {
  const struct file_clone_range range = {source, sourceOffset, length, targetOffset};
  int result = 0;
  do result = ioctl(target, FICLONERANGE, &range);
  while (result != 0 && errno == EINTR);
  return result == 0;
}

bool CopyOnServer(int source, std::uint64_t sourceOffset, int target, std::uint64_t targetOffset,
                  std::uint64_t length) {
  auto from = static_cast<off_t>(sourceOffset);
  auto to = static_cast<off_t>(targetOffset);
  while (length > 0) {
    const ssize_t count = copy_file_range(source, &from, target, &to, length, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    length -= static_cast<std::uint64_t>(count);
  }
  return true;
}

/// Renames without replacing; false with errno set on an error.
bool RenameToFreeName(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // Some file systems lack the flag, and some of those hard links.
  if (link(from.c_str(), to.c_str()) == 0) {
    (void)unlink(from.c_str());
    return true;
  }
  if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK) return false;
  struct stat found = {};
  if (lstat(to.c_str(), &found) == 0) {
    errno = EEXIST;
    return false;
  }
  return rename(from.c_str(), to.c_str()) == 0;
}

Descriptor OpenNameless(const std::filesystem::path& folder, mode_t bits) {
  int file = -1;
  do file = open(folder.c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, bits);
  while (file < 0 && errno == EINTR);
  return Descriptor(file);
}

/// Links a nameless file to `name` without replacing; false with errno set on an error.
bool GiveFirstName(const Descriptor& file, const std::filesystem::path& name) {
  if (linkat(file.Get(), "", AT_FDCWD, name.c_str(), AT_EMPTY_PATH) == 0) return true;
  if (errno == EEXIST) return false;
  // Older kernels let only root link a descriptor.
  std::array<char, 32> link = {};
  (void)std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", file.Get());
  return linkat(AT_FDCWD, link.data(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

}  // namespace

bool CanBeNamelessUntil(const std::filesystem::path& target) {
  // Some file systems refuse only the link, and so does a system without /proc.
  const std::filesystem::path name = TemporaryPath(target);
  const Descriptor file = OpenNameless(name.parent_path(), S_IRUSR | S_IWUSR);
  return file && GiveFirstName(file, name) && unlink(name.c_str()) == 0;
}

void RemoveLeftoverOf(const std::filesystem::path& target) {
  RemoveLeftover(TemporaryPath(target), target);
}

struct TargetFile::State {
  std::filesystem::path target;
  std::filesystem::path temporary;  ///< Empty for a nameless file.
  Existing existing = Existing::Keep;
  Rights rights;
  Descriptor file;
  std::optional<uid_t> owner;  ///< To set at the end, if not this user.
  bool flushed = false;
  bool named = false;

  ~State() {
    if (file && !named && !temporary.empty() && NameStillBelongs(temporary, file))
      (void)unlink(temporary.c_str());
  }
};

TargetFile::TargetFile(std::filesystem::path target, Existing existing, Rights rights,
                       std::filesystem::path inPlaceOf)
    : state_(std::make_unique<State>()) {
  state_->temporary = TemporaryPath(target);
  state_->target = std::move(target);
  state_->existing = existing;
  if (existing == Existing::Replace) inPlaceOf = state_->target;
  const std::filesystem::path folder = state_->target.parent_path();
  state_->rights = RightsIn(folder, rights);
  // Nobody else may open it before its access list is set.
  const bool isClosed = state_->rights.exact || Replaced(inPlaceOf);
  state_->file = CreateTemporary(state_->temporary, state_->target,
                                 isClosed ? 0 : BitsFor(state_->rights, GroupIn(folder)));
  // Look only under the lock: another program may have created the target just now.
  if (Replaceable(state_->target) && existing == Existing::Keep)
    throw FileError(state_->target, std::make_error_code(std::errc::file_exists));
  if (const std::optional<struct stat> earlier = Replaced(inPlaceOf)) {
    state_->rights = KeepGroupAndList(state_->file, inPlaceOf, *earlier, rights);
    if (earlier->st_uid != geteuid()) state_->owner = earlier->st_uid;
  } else if (state_->rights.exact) {
    RemoveList(state_->file, state_->target);
  }
  SetRights(state_->file, state_->rights, false, state_->target);
}

TargetFile::TargetFile(std::unique_ptr<State> state) : state_(std::move(state)) {}

std::shared_ptr<TargetFile> TargetFile::StartNameless(const std::filesystem::path& folder,
                                                      std::filesystem::path target, Rights rights) {
  auto state = std::make_unique<State>();
  state->file = OpenNameless(folder, rights.exact ? S_IRUSR | S_IWUSR : rights.bits);
  if (!state->file) FailWithLastError(target);
  if (rights.exact) RemoveList(state->file, target);
  state->target = std::move(target);
  state->rights = rights;
  return std::shared_ptr<TargetFile>(new TargetFile(std::move(state)));
}

TargetFile::~TargetFile() = default;

void TargetFile::Reserve(std::uint64_t length) {
  // A small file gets its space as fast by writing it.
  constexpr std::uint64_t worthItsTime = std::uint64_t{128} * 1024;
  if (length <= worthItsTime) return;
  int result = 0;
  do result = fallocate(state_->file.Get(), 0, 0, static_cast<off_t>(length));
  while (result != 0 && errno == EINTR);
  // Ignore file systems that cannot reserve; a full disk should fail before the long work.
  if (result != 0 && errno != EOPNOTSUPP && errno != ENOSYS && errno != EINVAL)
    FailWithLastError(state_->target);
}

Sharing TargetFile::SharingWith(const SourceFile& source) const {
  const FileState& state = source.Opened();
  struct statfs disk = {};
  struct stat own = {};
  if (fstatfs(state_->file.Get(), &disk) != 0 || fstat(state_->file.Get(), &own) != 0) return {};
  if (IsOnNetwork(disk)) return {own.st_dev == state.device ? 1U : 0U, state.device, true};
  // Cloning 0 bytes at the end shows if the file system can clone.
  const bool shares = Clone(source.Descriptor(), state.length, state_->file.Get(), 0, 0);
  return {shares ? static_cast<std::uint64_t>(disk.f_bsize) : 0U, state.device, false};
}

bool TargetFile::Share(const Sharing& promised, const SourceFile& source,
                       std::uint64_t sourceOffset, std::uint64_t targetOffset,
                       std::uint64_t length) {
  return (promised.byServer ? CopyOnServer : Clone)(source.Descriptor(), sourceOffset,
                                                    state_->file.Get(), targetOffset, length);
}

void TargetFile::Write(std::uint64_t offset, std::span<const char> bytes) {
  while (!bytes.empty()) {
    const ssize_t count =
        pwrite(state_->file.Get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count == 0) errno = ENOSPC;
    if (count <= 0) FailWithLastError(state_->target);
    offset += static_cast<std::uint64_t>(count);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

void TargetFile::Flush() {
  if (fsync(state_->file.Get()) != 0) FailWithLastError(state_->target);
  state_->flushed = true;
}

void TargetFile::Commit() {
  const State& state = *state_;
  const bool nameless = state.temporary.empty();
  const bool replaces = state.existing == Existing::Replace && NameIsTaken(state.target);
  SetRights(state.file, state.rights, true, state.target);
  // Only now: the new owner could open it while it is written.
  if (state.owner) (void)fchown(state.file.Get(), *state.owner, static_cast<gid_t>(-1));
  if (replaces && !state.flushed) Flush();
  // Some file systems report a failed write only at close. Closing a duplicate asks for that
  // report and keeps the lock.
  const int duplicate = fcntl(state.file.Get(), F_DUPFD_CLOEXEC, 0);
  if (duplicate < 0 || close(duplicate) != 0) FailWithLastError(state.target);
  if (!nameless && !NameStillBelongs(state.temporary, state.file))
    throw FileError(state.target, "Another program has removed it while it was being written");
  // ext4 flushes a file that replaces another, which scratch files do not need.
  if (state.existing == Existing::ReplaceScratch) (void)unlink(state.target.c_str());
  const bool done = nameless ? GiveFirstName(state.file, state.target)
                    : state.existing == Existing::Keep
                        ? RenameToFreeName(state.temporary, state.target)
                        : rename(state.temporary.c_str(), state.target.c_str()) == 0;
  if (!done) FailWithLastError(state.target);
  state_->named = true;
  if (replaces) FlushFolder(state.target.parent_path());
}

Rights RightsIn(const std::filesystem::path& folder, Rights rights) {
  const AccessList inherited = AccessList::DefaultOf(folder);
  if (inherited.IsEmpty()) return rights;
  // The system does not apply the mask if files inherit a list.
  const unsigned most = inherited.Mode() & ~UserMask();
  rights.exact = rights.exact || !ForEverybody(rights);
  rights.bits = static_cast<std::uint16_t>(rights.bits & most);
  return rights;
}

void RequireReplaceable(const std::filesystem::path& path) {
  (void)Replaceable(path);
}

bool MoveToFreeName(const std::filesystem::path& from, const std::filesystem::path& to,
                    const std::filesystem::path& named) {
  if (RenameToFreeName(from, to)) return true;
  if (errno != EEXIST) FailWithLastError(named);
  return false;
}

}  // namespace slyver
