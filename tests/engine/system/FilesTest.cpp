#include "engine/system/Files.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <stdexcept>

#include "engine/system/Disk.h"
#include "engine/system/FileError.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t mebibyte = std::uint64_t{1024} * 1024;

bool GoOn(const CopyProgress& /*progress*/) {
  return true;
}
bool StopNow(const CopyProgress& /*progress*/) {
  return false;
}

class Files : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    source = folder / "source";
    target = folder / "target";
    WriteFile(source, bytes);
  }

  void ConcatenateSource(Existing existing, const Watch& watch = GoOn) const {
    const std::array ranges = {ByteRange{source, 0, bytes.size()}};
    Concatenate(ranges, target, existing, watch);
  }

  /// Copies the source in two halves; `between` runs when the first is copied.
  void ConcatenateHalves(const std::function<void()>& between) const {
    const std::uint64_t half = bytes.size() / 2;
    int asked = 0;  // Each range is asked for once before the copy, too.
    const auto range = [&](std::size_t i) {
      if (i == 1 && ++asked == 2) between();
      return ByteRange{source, i * half, half};
    };
    WriteOutputs(
        1,
        [&](std::size_t) {
          return Output{target, 2 * half, 2, range};
        },
        2 * half, GoOn);
  }

  const std::string bytes = SomeBytes(1000);
  fs::path source;
  fs::path target;
};

TEST_F(Files, ConcatenatesRangesOfSeveralFilesAcrossSlices) {
  const std::string big = SomeBytes(9 * mebibyte + 3);
  WriteFile(folder / "big", big);
  const std::array ranges = {ByteRange{folder / "big", 1, big.size() - 1},
                             ByteRange{source, 7, 0},
                             ByteRange{source, 997, 3},
                             ByteRange{folder / "big", 4 * mebibyte - 1, 5 * mebibyte},
                             ByteRange{source, 1000, 0},
                             ByteRange{source, 0, 1000}};
  CopyProgress last;
  Concatenate(ranges, target, Existing::Keep, [&](const CopyProgress& progress) {
    EXPECT_GE(progress.bytesDone, last.bytesDone);
    last = progress;
    return true;
  });
  const std::string expected =
      big.substr(1) + bytes.substr(997) + big.substr(4 * mebibyte - 1, 5 * mebibyte) + bytes;
  EXPECT_TRUE(ReadFile(target) == expected);
  EXPECT_EQ(last.rangesStarted, 6U);
  EXPECT_EQ(last.bytesDone, expected.size());
  EXPECT_EQ(last.bytesTotal, expected.size());
  EXPECT_EQ(Names(), (std::set<std::string>{"big", "source", "target"}));
}

TEST_F(Files, ReadsBeyondFourGibibytes) {
  constexpr std::uint64_t far = 5000 * mebibyte;
  fs::resize_file(source, far);
  std::ofstream(source, std::ios::binary | std::ios::app) << "far";
  EXPECT_EQ(FileLength(source), far + 3);
  const std::array ranges = {ByteRange{source, far - 2, 5}};
  Concatenate(ranges, target, Existing::Keep, GoOn);
  EXPECT_EQ(ReadFile(target), std::string("\0\0far", 5));
}

TEST_F(Files, HolesStayHoles) {
  constexpr std::uint64_t size = 8 * mebibyte;
  fs::resize_file(source, size);
  if (SpaceTaken(source) >= size) GTEST_SKIP() << "the file system has no holes";
  const auto put = [&](std::uint64_t offset) {
    std::fstream(source, std::ios::binary | std::ios::in | std::ios::out)
        .seekp(static_cast<std::streamoff>(offset))
        .write(bytes.data(), std::ssize(bytes));
  };
  put(mebibyte - 500);
  put(5 * mebibyte);
  WriteFile(folder / "dense", bytes);
  // The last range ends in a hole, the one before it with data.
  const std::array ranges = {
      ByteRange{source, 3, size - 3, StateOf(source)}, ByteRange{folder / "dense", 0, 1000},
      ByteRange{source, 0, 5 * mebibyte + 700}, ByteRange{source, 5 * mebibyte, 3 * mebibyte}};
  CopyProgress last;
  Concatenate(ranges, target, Existing::Keep, [&](const CopyProgress& progress) {
    last = progress;
    return true;
  });
  const std::string whole = ReadFile(source);
  EXPECT_TRUE(ReadFile(target) == whole.substr(3) + bytes + whole.substr(0, 5 * mebibyte + 700) +
                                      whole.substr(5 * mebibyte));
  EXPECT_EQ(last.bytesDone, last.bytesTotal);
  EXPECT_LT(SpaceTaken(target), mebibyte);
}

TEST_F(Files, WritesEmptyFilesAndTheLongestNames) {
  Concatenate({}, target, Existing::Keep, GoOn);
  EXPECT_EQ(fs::file_size(target), 0U);
  target = folder / std::string(255, 'n');
  ConcatenateSource(Existing::Keep);
  EXPECT_EQ(ReadFile(target), bytes);
}

TEST_F(Files, KeepsOrReplacesAnExistingTarget) {
  WriteFile(target, "old");
  EXPECT_EQ(ErrorOf([&] { ConcatenateSource(Existing::Keep); }), target.string() + ": File exists");
  EXPECT_EQ(ReadFile(target), "old");
  ConcatenateSource(Existing::Replace);
  EXPECT_EQ(ReadFile(target), bytes);

  fs::remove(target);
  EXPECT_EQ(ErrorOf([&] { ConcatenateHalves([&] { WriteFile(target, "came meanwhile"); }); }),
            target.string() + ": File exists");
  EXPECT_EQ(ReadFile(target), "came meanwhile");

  EXPECT_EQ(Names(), (std::set<std::string>{"source", "target"}));
}

TEST_F(Files, ReplacesALinkAndDoesNotWriteThroughIt) {
  WriteFile(folder / "other", "other");
  if (!MakeFileLink(folder / "other", target)) GTEST_SKIP() << "no links here";
  EXPECT_TRUE(ErrorOf([&] { ConcatenateSource(Existing::Keep); }).ends_with(": File exists"));
  ConcatenateSource(Existing::Replace);
  EXPECT_FALSE(fs::is_symlink(target));
  EXPECT_EQ(ReadFile(folder / "other"), "other");
  EXPECT_EQ(Names(), (std::set<std::string>{"other", "source", "target"}));
}

TEST_F(Files, RemovesWhatAKilledRunHasLeftAndNeverWritesThroughIt) {
  const fs::path temporary = TemporaryPath(target);
  const fs::path userData = folder / "user data";
  WriteFile(userData, "precious");
  const std::array<std::function<void()>, 4> leftovers = {
      [&] { WriteFile(temporary, SomeBytes(5000)); },
      [&] {
        WriteFile(temporary, "");
        fs::permissions(temporary, fs::perms::owner_read);
      },
      [&] { (void)MakeFileLink(userData, temporary); },
      [&] { fs::create_hard_link(userData, temporary); }};
  for (const auto& leave : leftovers) {
    leave();
    ConcatenateSource(Existing::Replace);
    EXPECT_EQ(ReadFile(target), bytes);
    EXPECT_EQ(ReadFile(userData), "precious");
    EXPECT_EQ(Names(), (std::set<std::string>{"source", "target", "user data"}));
  }
}

TEST_F(Files, RefusesATargetThatAnotherProgramIsWriting) {
  const fs::path temporary = TemporaryPath(target);
  const LockedFile other(temporary);
  EXPECT_EQ(ErrorOf([&] { ConcatenateSource(Existing::Replace); }),
            target.string() + ": Another program is writing this file");
  EXPECT_TRUE(fs::exists(temporary));
  EXPECT_FALSE(fs::exists(target));
}

TEST_F(Files, RefusesWhatIsNoRegularFile) {
  fs::create_directory(folder / "sub");
  struct Case {
    fs::path source, target;
    std::string error;
  };
  const std::string missing = ": No such file or directory";
  const auto text = [&](const char* name, const char* cause) {
    return (folder / name).string() + ": " + cause;
  };
  for (const Case& c : {Case{source, folder / "sub", text("sub", "Is a directory")},
                        Case{source, folder / "no" / "t", (folder / "no" / "t").string() + missing},
                        Case{folder / "sub", target, text("sub", "Is a directory")},
                        Case{folder / "none", target, (folder / "none").string() + missing}}) {
    const std::array ranges = {ByteRange{c.source, 0, 1}};
    EXPECT_EQ(ErrorOf([&] { Concatenate(ranges, c.target, Existing::Replace, GoOn); }), c.error);
  }
  EXPECT_EQ(Names(), (std::set<std::string>{"source", "sub"}));
}

TEST_F(Files, RefusesRangesBeyondTheSourcesEnd) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  for (const ByteRange& range : {ByteRange{source, 0, 1001}, ByteRange{source, 1000, 1},
                                 ByteRange{source, 1001, 0}, ByteRange{source, most, 2}}) {
    EXPECT_EQ(ErrorOf([&] {
                Concatenate({&range, 1}, target, Existing::Keep, GoOn);
              }),
              source.string() + ": The file is too short");
    EXPECT_EQ(Names(), std::set<std::string>{"source"});
  }
}

TEST_F(Files, StopsBothThreadsWhereASourceCannotBeOpened) {
  const fs::path missing = folder / "missing";
  const auto output = [&](std::size_t) {
    return Output{target, 1000, 1, [&](std::size_t) { return ByteRange{missing, 0, 1000}; }};
  };
  // What one thread finds while the other one fails depends on the moment.
  for (int i = 0; i < 300; ++i) {
    EXPECT_EQ(ErrorOf([&] { WriteOutputs(1, output, mebibyte, GoOn); }),
              missing.string() + ": No such file or directory");
  }
  EXPECT_EQ(Names(), std::set<std::string>{"source"});
}

TEST_F(Files, NoticesThatASourceChangesWhileItIsRead) {
  EXPECT_EQ(
      ErrorOf([&] { ConcatenateHalves([&] { std::ofstream(source, std::ios::app) << "more"; }); }),
      source.string() + ": The file was changed while it was being read");
  EXPECT_EQ(ErrorOf([&] { ConcatenateHalves([&] { fs::resize_file(source, 600); }); }),
            source.string() + ": The file ends too early");
  EXPECT_EQ(Names(), std::set<std::string>{"source"});
}

TEST_F(Files, GivesTheLastFileItsNameAfterAllOthersAndLeavesNothingHalfWritten) {
  const auto output = [&](std::size_t i) {
    return Output{folder / std::to_string(i), 10, 1, [this, i](std::size_t) {
                    return ByteRange{source, 10 * i, 10};
                  }};
  };
  WriteOutputs(4, output, 40, GoOn);
  EXPECT_EQ(Names(), (std::set<std::string>{"0", "1", "2", "3", "source"}));
  EXPECT_EQ(ReadFile(folder / "2"), bytes.substr(20, 10));

  for (const char* name : {"0", "1", "2", "3"}) fs::remove(folder / name);
  fs::create_directory(folder / "2");
  EXPECT_EQ(ErrorOf([&] { WriteOutputs(4, output, 40, GoOn); }),
            (folder / "2").string() + ": Is a directory");
  EXPECT_EQ(Names(), (std::set<std::string>{"0", "1", "2", "source"})) << "complete files stay";

  for (const char* name : {"0", "1", "2"}) fs::remove(folder / name);
  EXPECT_THROW(WriteOutputs(4, output, 40, StopNow), Cancelled);
  EXPECT_EQ(Names(), std::set<std::string>{"source"});
}

TEST_F(Files, KeepsAnOldTargetWhenCancelledOrWhenTheWatchThrows) {
  WriteFile(target, "old");
  EXPECT_THROW(ConcatenateSource(Existing::Replace, StopNow), Cancelled);
  EXPECT_THROW(ConcatenateSource(
                   Existing::Replace,
                   [](const CopyProgress&) -> bool { throw std::runtime_error("from the watch"); }),
               std::runtime_error);
  EXPECT_EQ(ReadFile(target), "old");
  EXPECT_EQ(Names(), (std::set<std::string>{"source", "target"}));
}

TEST_F(Files, TakesALinkThatLeadsNowhereForATakenName) {
  EXPECT_TRUE(NameIsTaken(folder));
  EXPECT_FALSE(NameIsTaken(folder / "none"));
  EXPECT_FALSE(NameIsTaken(source / "below a file"));
  if (!MakeFileLink(folder / "none", target)) GTEST_SKIP() << "no links here";
  EXPECT_TRUE(NameIsTaken(target));
}

}  // namespace
}  // namespace slyver
