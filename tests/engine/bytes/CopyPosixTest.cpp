#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "engine/bytes/Copy.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

/// A user who owns nothing and is in no group of this one's.
constexpr uid_t stranger = 4321;

/// What `work` returns in a process of the stranger's.
template <typename Work>
bool AsStranger(const Work& work) {
  const pid_t child = fork();
  if (child == 0)
    _exit(setgroups(0, nullptr) == 0 && setgid(stranger) == 0 && setuid(stranger) == 0 && work()
              ? 0
              : 1);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return status == 0;
}

/// True if the stranger can open the file for reading, given its folder.
bool StrangerReads(const fs::path& path) {
  const int folder = open(path.parent_path().c_str(), O_PATH);
  const bool reads =
      AsStranger([&] { return openat(folder, path.filename().c_str(), O_RDONLY) >= 0; });
  close(folder);
  return reads;
}

constexpr const char* listOfFile = "system.posix_acl_access";
constexpr const char* listForNewFiles = "system.posix_acl_default";

/// Gives a file a list by which the stranger may do `bits`, the rest as `mode` says. False where
/// the file system knows no lists.
bool GiveList(const fs::path& path, const char* attribute, unsigned mode, unsigned bits) {
  struct Entry {
    unsigned tag, bits, id;
  };
  std::string list("\2\0\0\0", 4);
  for (const Entry& e :
       {Entry{1, mode >> 6U & 7U, ~0U}, Entry{2, bits, stranger}, Entry{4, mode >> 3U & 7U, ~0U},
        Entry{16, 7, ~0U}, Entry{32, mode & 7U, ~0U}})
    for (const unsigned byte : {e.tag, 0U, e.bits, 0U, e.id, e.id >> 8U, e.id >> 16U, e.id >> 24U})
      list += static_cast<char>(byte & 0xFFU);
  return setxattr(path.c_str(), attribute, list.data(), list.size(), 0) == 0;
}

class CopyPosix : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    mask_ = umask(022);
    WriteFile(folder / "source", "bytes");
  }
  void TearDown() override {
    (void)umask(mask_);
    TempFolderTest::TearDown();
  }

  /// The error of copying the source to `name`, if any.
  std::string CopyTo(const std::string& name, Rights rights, const Watch& watch) const {
    return ErrorOf([&] { Copy(PlanTo(name, rights), watch); });
  }
  CopyPlan PlanTo(const std::string& name, Rights rights) const {
    CopyPlan plan;
    plan.ranges = {{plan.sources.Add(folder / "source", StateOf(folder / "source")), 0, 5}};
    plan.EndTarget();
    plan.names = {folder, name, "", 0};
    plan.rights = rights;
    plan.existing = Existing::Replace;
    return plan;
  }
  /// A plan for the set of target1 and target2.
  CopyPlan PlanOfSet(Rights rights, Existing existing) const {
    CopyPlan plan = PlanTo("target", rights);
    plan.ranges.push_back(plan.ranges.front());
    plan.EndTarget();
    plan.names.first = 1;
    plan.existing = existing;
    plan.isSet = true;
    return plan;
  }
  static unsigned Mode(const fs::path& path) {
    struct stat found = {};
    EXPECT_EQ(lstat(path.c_str(), &found), 0) << path;
    return found.st_mode & 07777U;
  }

 private:
  mode_t mask_ = 0;
};

TEST_F(CopyPosix, NobodyMayReadMoreThanBefore) {
  struct Case {
    unsigned source, old, result;  // No old file: 0.
    std::uint32_t group = getegid();
  };
  for (const Case& c :
       {Case{0644, 0, 0644}, Case{0600, 0, 0600}, Case{0755, 0, 0755}, Case{0400, 0, 0400},
        Case{0666, 0, 0644}, Case{0640, 0, 0640}, Case{0640, 0, 0600, getegid() + 1},
        Case{0644, 0, 0644, getegid() + 1}, Case{0604, 0, 0600, getegid() + 1},
        Case{0644, 0600, 0600}, Case{0644, 0755, 0755}, Case{0644, 0666, 0666},
        Case{0600, 0644, 0600}, Case{0640, 0644, 0640}}) {
    const fs::path target = folder / "target";
    fs::remove(target);
    if (c.old != 0) {
      WriteFile(target, "old");
      ASSERT_EQ(chmod(target.c_str(), c.old), 0);
    }
    const Rights rights = {static_cast<std::uint16_t>(c.source), false, c.group};
    const auto watch = [&](const CopyProgress&) {
      EXPECT_EQ(Mode(TemporaryPath(target)), c.result | 0600) << "while it is written";
      return true;
    };
    EXPECT_EQ(CopyTo("target", rights, watch), "no error");
    EXPECT_EQ(Mode(target), c.result) << std::oct << c.source << " over " << c.old;
  }
  const Rights program = {0755, false, 7};
  EXPECT_EQ(Narrowed(program, {0644, false, 7}).bits, 0755);
  EXPECT_EQ(Narrowed(program, {0640, false, 7}).bits, 0750);
  EXPECT_EQ(Narrowed(program, {0640, false, 8}).bits, 0700);
  EXPECT_EQ(Narrowed(program, {0604, false, 8}).bits, 0700);
  EXPECT_EQ(WithoutExecute(program).bits, 0644);
}

TEST_F(CopyPosix, AccessListsLetNobodyReadMore) {
  if (geteuid() != 0 || !GiveList(folder, listForNewFiles, 0755, 7))
    GTEST_SKIP() << "only root can be another user, and only where files have access lists";
  struct Case {
    unsigned source;
    bool inherits;  // Whether the folder has a list for new files.
    unsigned old;   // No old file: 0.
    bool oldList;   // By which the stranger may read it.
    uid_t owner;    // Of the old file.
    unsigned result;
    bool reads;  // Whether the stranger may read the new file.
  };
  for (const Case& c :
       {Case{0660, true, 0, false, 0, 0640, false}, Case{0600, true, 0, false, 0, 0600, false},
        Case{0666, true, 0, false, 0, 0644, true}, Case{0644, true, 0600, false, 0, 0600, false},
        Case{0600, true, 0640, true, 0, 0600, false}, Case{0640, false, 0640, true, 0, 0640, false},
        Case{0640, false, 0644, true, 0, 0640, false}, Case{0644, false, 0640, true, 0, 0640, true},
        Case{0600, true, 0600, false, stranger, 0600, true}}) {
    (void)removexattr(folder.c_str(), listForNewFiles);
    const auto makeOld = [&](const fs::path& target) {
      fs::remove(target);
      if (c.old == 0) return;
      WriteFile(target, "old");
      ASSERT_EQ(chown(target.c_str(), c.owner, getegid()), 0);
      ASSERT_EQ(chmod(target.c_str(), c.old), 0);
      ASSERT_TRUE(!c.oldList || GiveList(target, listOfFile, c.old, 5));
      ASSERT_TRUE(!c.oldList || chmod(target.c_str(), c.old) == 0);  // The mask.
    };
    for (const char* const name : {"target", "target1", "target2"}) makeOld(folder / name);
    ASSERT_TRUE(!c.inherits || GiveList(folder, listForNewFiles, 0755, 7));
    const Rights rights = {static_cast<std::uint16_t>(c.source), false, getegid()};
    const auto whileWritten = [&](const CopyProgress&) {
      EXPECT_EQ(StrangerReads(TemporaryPath(folder / "target")), c.reads && c.owner == 0);
      return true;
    };
    EXPECT_EQ(CopyTo("target", rights, whileWritten), "no error");
    (void)Copy(PlanOfSet(rights, c.old == 0 ? Existing::Keep : Existing::Replace),
               [](const CopyProgress&) { return true; });
    for (const char* const name : {"target", "target1", "target2"}) {
      const fs::path target = folder / name;
      EXPECT_EQ(Mode(target), c.result) << name << std::oct << ' ' << c.source << ' ' << c.old;
      EXPECT_EQ(StrangerReads(target), c.reads)
          << name << std::oct << ' ' << c.source << ' ' << c.old;
      struct stat made = {};
      EXPECT_TRUE(stat(target.c_str(), &made) == 0 && made.st_uid == c.owner) << name;
    }
  }
  // A list may also deny what everybody else may do.
  for (const unsigned bits : {0U, 4U}) {
    ASSERT_TRUE(GiveList(folder / "source", listOfFile, bits == 0 ? 0644 : 0640, bits));
    EXPECT_EQ(StateOf(folder / "source").rights.bits, 0600);
  }
}

TEST_F(CopyPosix, WhatCannotBeReplacedIsKnownBefore) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make such files";
  const auto watch = [](const CopyProgress&) { return true; };
  (void)Copy(PlanOfSet({}, Existing::Keep), watch);
  const fs::path fixed = folder / "target2";
  const std::string error = fixed.string() + ": Operation not permitted";
  const int file = open(fixed.c_str(), O_RDONLY);
  for (int flags : {FS_IMMUTABLE_FL, FS_APPEND_FL}) {
    if (ioctl(file, FS_IOC_SETFLAGS, &flags) != 0) continue;
    bool copied = false;
    const auto look = [&](const CopyProgress& p) { return copied = copied || p.bytesDone > 0; };
    EXPECT_EQ(ErrorOf([&] { (void)Copy(PlanOfSet({}, Existing::Replace), look); }), error);
    EXPECT_FALSE(copied);
    EXPECT_EQ(ErrorOf([&] { RequireReplaceable(fixed); }), error);
    int none = 0;
    EXPECT_EQ(ioctl(file, FS_IOC_SETFLAGS, &none), 0);
  }
  close(file);
  const auto isRefused = [&] {
    return AsStranger([&] { return ErrorOf([&] { RequireReplaceable(fixed); }) == error; });
  };
  EXPECT_FALSE(isRefused());
  ASSERT_EQ(chmod(folder.c_str(), 01777), 0);
  EXPECT_TRUE(isRefused());
  ASSERT_EQ(chown(folder.c_str(), stranger, stranger), 0);
  ASSERT_EQ(chown(fixed.c_str(), stranger + 1, stranger), 0);
  EXPECT_EQ(ErrorOf([&] { RequireReplaceable(fixed); }), "no error") << "root acts for owners";
  EXPECT_FALSE(isRefused());
}

TEST_F(CopyPosix, AFileUnderALeaseIsWaitedFor) {
  const int file = open((folder / "source").c_str(), O_RDWR);
  if (fcntl(file, F_SETSIG, SIGURG) != 0 || fcntl(file, F_SETLEASE, F_WRLCK) != 0)
    GTEST_SKIP() << "no leases here";
  std::thread holder([&] {
    while (fcntl(file, F_GETLEASE) == F_WRLCK) std::this_thread::yield();
    EXPECT_EQ(fcntl(file, F_SETLEASE, F_UNLCK), 0);
  });
  EXPECT_EQ(ErrorOf([&] { EXPECT_EQ(StateOf(folder / "source").length, 5U); }), "no error");
  (void)fcntl(file, F_SETLEASE, F_UNLCK);
  holder.join();
  close(file);
}

TEST_F(CopyPosix, TheTrueCulpritIsNamed) {
  const fs::path loop = folder / "loop";
  fs::create_symlink(loop, loop);
  EXPECT_EQ(ErrorOf([&] { (void)NameIsTaken(loop / "x"); }),
            (loop / "x").string() + ": Too many levels of symbolic links");
  EXPECT_EQ(CopyTo(std::string(256, 'n'), {}, [](const CopyProgress&) { return true; }),
            (folder / std::string(256, 'n')).string() + ": File name too long");
}

}  // namespace
}  // namespace slyver
