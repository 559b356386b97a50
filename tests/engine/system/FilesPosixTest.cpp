#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>

#include "engine/system/Disk.h"
#include "engine/system/Files.h"
#include "support/TempFolder.h"

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

TEST_F(TempFolderTest, ANameThatCannotBeLookedAtIsNotTakenForFree) {
  const auto loop = folder / "loop";
  std::filesystem::create_symlink(loop, loop);
  EXPECT_EQ(ErrorOf([&] { (void)NameIsTaken(loop / "x"); }),
            (loop / "x").string() + ": Too many levels of symbolic links");
}

}  // namespace
}  // namespace slyver
