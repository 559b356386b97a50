#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "engine/system/Copy.h"
#include "engine/system/Disk.h"
#include "engine/system/Files.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

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
    return ErrorOf([&] {
      CopyPlan plan;
      plan.ranges = {{plan.sources.Add(folder / "source", StateOf(folder / "source")), 0, 5}};
      plan.EndTarget();
      plan.names = {folder, name, "", 0};
      plan.rights = rights;
      plan.existing = Existing::Replace;
      Copy(plan, watch);
    });
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
        Case{0644, 0, 0644, getegid() + 1}, Case{0644, 0600, 0600}, Case{0644, 0755, 0755},
        Case{0644, 0666, 0666}, Case{0600, 0644, 0600}, Case{0640, 0644, 0640}}) {
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
  EXPECT_EQ(WithoutExecute(program).bits, 0644);
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
