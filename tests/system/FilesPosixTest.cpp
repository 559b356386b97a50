#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>

#include "support/TempFolder.h"
#include "system/Disk.h"
#include "system/Files.h"

namespace slyver {
namespace {

TEST_F(TempFolderTest, PipesAreNeitherReadNorReplacedNorWaitedFor) {
  const auto source = folder / "source";
  const auto target = folder / "target";
  const auto pipe = folder / "pipe";
  WriteFile(source, "bytes");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const std::string refusal = pipe.string() + ": Not a regular file";
  const auto goOn = [](const CopyProgress&) { return true; };
  const std::array fromPipe = {ByteRange{pipe, 0, 1}};
  const std::array fromSource = {ByteRange{source, 0, 5}};
  EXPECT_EQ(ErrorOf([&] { Concatenate(fromPipe, target, Existing::Replace, goOn); }), refusal);
  EXPECT_EQ(ErrorOf([&] { Concatenate(fromSource, pipe, Existing::Replace, goOn); }), refusal);
  EXPECT_EQ(ErrorOf([&] { (void)FileLength(pipe); }), refusal);
  EXPECT_EQ(Names(), (std::set<std::string>{"pipe", "source"}));

  ASSERT_EQ(mkfifo(TemporaryPath(target).c_str(), 0600), 0);
  Concatenate(fromSource, target, Existing::Keep, goOn);
  EXPECT_EQ(ReadFile(target), "bytes") << "a pipe with the temporary name is a leftover";
  EXPECT_EQ(Names(), (std::set<std::string>{"pipe", "source", "target"}));
}

TEST_F(TempFolderTest, AnotherFileUnderTheSourcesNameDoesNotMixIn) {
  const auto source = folder / "source";
  const auto target = folder / "target";
  WriteFile(source, "oldold");
  WriteFile(folder / "new", "newnew");
  int asked = 0;  // Each range is asked for once before the copy, too.
  const auto range = [&](std::size_t i) {
    if (i == 1 && ++asked == 2) std::filesystem::rename(folder / "new", source);
    return ByteRange{source, 3 * i, 3};
  };
  const auto output = [&](std::size_t) { return Output{target, 6, 2, range}; };
  WriteOutputs(1, output, 6, [](const CopyProgress&) { return true; });
  EXPECT_EQ(ReadFile(target), "oldold");
}

TEST_F(TempFolderTest, ANameThatCannotBeSeenIsNotTakenForFree) {
  const auto loop = folder / "loop";
  std::filesystem::create_symlink(loop, loop);
  EXPECT_EQ(ErrorOf([&] { (void)NameIsTaken(loop / "x"); }),
            (loop / "x").string() + ": Too many levels of symbolic links");
}

TEST_F(TempFolderTest, HolesStayHoles) {
  constexpr std::uint64_t mebibyte = std::uint64_t{1024} * 1024;
  const auto source = folder / "source";
  const auto target = folder / "target";
  const std::string bytes = SomeBytes(1000);
  WriteFile(source, "");
  constexpr std::uint64_t size = 8 * mebibyte;
  const auto taken = [](const std::filesystem::path& path) {
    struct stat found = {};
    EXPECT_EQ(stat(path.c_str(), &found), 0);
    return static_cast<std::uint64_t>(found.st_blocks) * 512;
  };
  std::filesystem::resize_file(source, size);
  if (taken(source) >= size) GTEST_SKIP() << "the file system has no holes";
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
  EXPECT_LT(taken(target), mebibyte);
}

}  // namespace
}  // namespace slyver
