#include "engine/bytes/Copy.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <limits>
#include <stdexcept>
#include <thread>

#include "engine/base/FileError.h"
#include "engine/base/Workers.h"
#include "engine/bytes/TargetSet.h"
#include "engine/disk/Files.h"
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

TEST(Workers, TickWhileTheyWork) {
  std::atomic<int> ticks = 0;
  const auto untilTicked = [&](unsigned /*worker*/, const Tick& /*between*/) {
    for (int i = 0; i < 1000 && ticks < 2; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
  };
  RunOnThreads(2, untilTicked, [&] { ++ticks; });
  EXPECT_GE(ticks, 2);
}

struct Part {
  fs::path path;
  std::uint64_t offset, length;
};

class Copied : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    source = folder / "source";
    target = folder / "target";
    WriteFile(source, bytes);
    whole = {{source, 0, bytes.size()}};
  }

  CopyPlan PlanOf(const std::vector<Part>& parts, Existing existing = Existing::Keep) const {
    CopyPlan plan;
    for (const Part& part : parts)
      plan.ranges.push_back(
          {plan.sources.Add(part.path, StateOf(part.path)), part.offset, part.length});
    plan.EndTarget();
    plan.names = {target.parent_path(), PathText(target.filename()), "", 0};
    plan.existing = existing;
    return plan;
  }

  /// A set of `count` targets of 10 bytes of the source each: "s1.x", "s2.x" and so on.
  CopyPlan SetOf(std::size_t count, Existing existing) const {
    CopyPlan plan;
    plan.sources.Add(source, StateOf(source));
    for (std::size_t i = 0; i < count; ++i) {
      plan.ranges.push_back({0, 10 * i, 10});
      plan.EndTarget();
    }
    plan.names = {folder / "out", "s", ".x", 1};
    plan.isSet = true;
    plan.existing = existing;
    return plan;
  }

  const std::string bytes = SomeBytes(1000);
  fs::path source;
  fs::path target;
  std::vector<Part> whole;
};

TEST_F(Copied, RangesOfSeveralFilesAcrossSlices) {
  const std::string big = SomeBytes(9 * mebibyte + 3);
  WriteFile(folder / "big", big);
  CopyProgress last;
  Copy(PlanOf({{folder / "big", 1, big.size() - 1},
               {source, 7, 0},
               {source, 997, 3},
               {folder / "big", 4 * mebibyte - 1, 5 * mebibyte},
               {source, 1000, 0},
               {source, 0, 1000}}),
       [&](const CopyProgress& progress) {
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

TEST(SpaceOfAPlan, SharedBlocksNeedNone) {
  struct Case {
    std::vector<ByteRange> ranges;
    std::uint64_t needed, reserved;
    Sharing sharing = {4096, 7, false};
  };
  for (const Case& c : std::vector<Case>{{{{0, 0, 10000}}, 0, 0},
                                         {{{0, 0, 9000}}, 808, 0},
                                         {{{0, 0, 10000}, {0, 0, 0}}, 1808, 0},
                                         {{{0, 100, 9900}}, 9900, 9900},
                                         {{{0, 0, 100}, {0, 4196, 5804}}, 4096, 0},
                                         {{{0, 0, 100}, {0, 4196, 3000}}, 3100, 3100},
                                         {{{0, 0, 10000}}, 10000, 10000, {4096, 8, false}},
                                         {{{0, 0, 10000}}, 10000, 10000, {1, 7, true}}}) {
    CopyPlan plan;
    plan.sources.Add("source", {10000, 7, 0, 0, 0, {}, 10000});
    plan.ranges = c.ranges;
    plan.EndTarget();
    EXPECT_EQ(plan.SpaceNeeded(c.sharing), c.needed) << c.ranges.back().offset;
    EXPECT_EQ(plan.SpaceToReserve(0, c.sharing), c.reserved) << c.ranges.back().offset;
  }
}

TEST_F(Copied, HolesStayHolesAlsoBeyondFourGibibytes) {
  constexpr std::uint64_t far = 5000 * mebibyte;
  fs::resize_file(source, far);
  std::ofstream(source, std::ios::binary | std::ios::app) << "far";
  if (SpaceTaken(source) >= far) GTEST_SKIP() << "the file system has no holes";
  WriteFile(folder / "dense", bytes);
  CopyProgress last;
  // The first range ends with data, the last one in a hole.
  Copy(PlanOf({{source, 3, far}, {folder / "dense", 0, 1000}, {source, 500, 8 * mebibyte}}),
       [&](const CopyProgress& progress) {
         last = progress;
         return true;
       });
  EXPECT_EQ(last.bytesDone, last.bytesTotal);
  EXPECT_EQ(FileLength(target), far + 1000 + 8 * mebibyte);
  const SourceFile made(target);
  std::string found(2003, 'x');
  made.Read(far - 1003, found);
  EXPECT_TRUE(found == std::string(1000, '\0') + "far" + bytes);
  EXPECT_LT(SpaceTaken(target), mebibyte);
}

TEST_F(Copied, KeepsOrReplacesWhatBearsTheName) {
  WriteFile(target, "old");
  const auto error = [&](Existing existing, const Watch& watch) {
    return ErrorOf([&] { Copy(PlanOf(whole, existing), watch); });
  };
  EXPECT_EQ(error(Existing::Keep, StopNow), target.string() + ": File exists") << "at once";
  EXPECT_THROW(Copy(PlanOf(whole, Existing::Replace), StopNow), Cancelled);
  const auto fails = [](const CopyProgress&) -> bool { throw std::runtime_error("the watch"); };
  EXPECT_THROW(Copy(PlanOf(whole, Existing::Replace), fails), std::runtime_error);
  EXPECT_EQ(ReadFile(target), "old");
  EXPECT_EQ(Names(), (std::set<std::string>{"source", "target"}));
  EXPECT_EQ(error(Existing::Replace, GoOn), "no error");
  EXPECT_EQ(ReadFile(target), bytes);

  fs::remove(target);
  const auto takesTheName = [&](const CopyProgress&) {
    WriteFile(target, "came meanwhile");
    return true;
  };
  EXPECT_EQ(error(Existing::Keep, takesTheName), target.string() + ": File exists");
  EXPECT_EQ(ReadFile(target), "came meanwhile");
  const auto removesTheFile = [&](const CopyProgress&) {
    fs::remove(TemporaryPath(target));
    return true;
  };
  if (fs::exists("/dev/null")) {  // Elsewhere an open file cannot be removed.
    EXPECT_EQ(error(Existing::Replace, removesTheFile),
              target.string() + ": Another program has removed it while it was being written");
    EXPECT_EQ(ReadFile(target), "came meanwhile");
  }
}

TEST_F(Copied, WaitsForNoOtherProgramThatWritesTheFile) {
  const auto other = LockFile(TemporaryPath(target));
  EXPECT_EQ(ErrorOf([&] { Copy(PlanOf(whole, Existing::Replace), GoOn); }),
            target.string() + ": Another program is writing this file");
  EXPECT_TRUE(fs::exists(TemporaryPath(target)));
}

TEST_F(Copied, RefusesWhatCannotBeDone) {
  fs::create_directory(folder / "sub");
  const FileState state = StateOf(source);
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  struct Case {
    const char* source;
    const char* target;
    std::uint64_t offset, length;
    std::string error;
  };
  for (const Case& c : {Case{"source", "sub", 0, 1, "sub: Is a directory"},
                        Case{"source", "no/t", 0, 1, "no/t: No such file or directory"},
                        Case{"sub", "target", 0, 1, "sub: Is a directory"},
                        Case{"none", "target", 0, 1, "none: No such file or directory"},
                        Case{"none", "target", 0, 4 * mebibyte, "none: No such file or directory"},
                        Case{"source", "target", 0, 1001, "source: The file is too short"},
                        Case{"source", "target", 1001, 0, "source: The file is too short"},
                        Case{"source", "target", most, 2, "source: The file is too short"}}) {
    target = folder / fs::path(c.target).make_preferred();
    CopyPlan plan = PlanOf({});
    FileState expected = state;
    expected.length = std::max(expected.length, c.length);
    const bool itself = std::string_view(c.source) == "source";
    plan.ranges = {
        {plan.sources.Add(folder / c.source, itself ? state : expected), c.offset, c.length}};
    plan.rangeEnds = {1};
    const fs::path named = folder / fs::path(c.error.substr(0, c.error.find(':'))).make_preferred();
    EXPECT_EQ(ErrorOf([&] { Copy(plan, GoOn); }),
              named.string() + c.error.substr(c.error.find(':')));
  }
  FileState huge = state;
  huge.length = huge.space = std::uint64_t{1} << 60U;
  CopyPlan plan = PlanOf({});
  plan.ranges = {{plan.sources.Add(source, huge), 0, huge.length}};
  plan.rangeEnds = {1};
  EXPECT_TRUE(ErrorOf([&] { Copy(plan, GoOn); })
                  .starts_with("Not Enough Space In " + folder.string() +
                               ": 1152921504606846976 Bytes Are Needed, "));
  EXPECT_EQ(Names(), (std::set<std::string>{"source", "sub"}));
}

TEST_F(Copied, ASourceThatChangesIsNoticed) {
  if (fs::exists("/dev/null")) {  // Elsewhere an open file cannot be replaced.
    const SourceFile file(source);
    std::string read(1000, '\0');
    WriteFile(folder / "other", "other");
    fs::rename(folder / "other", source);
    file.Read(0, read);
    EXPECT_EQ(read, bytes) << "another file under its name does not mix in";
    EXPECT_EQ(ErrorOf([&] { file.Read(1, read); }), source.string() + ": The file ends too early");
  }
  WriteFile(source, SomeBytes(32 * mebibyte));
  const CopyPlan plan = PlanOf({{source, 0, 32 * mebibyte}});
  std::jthread writer([&](const std::stop_token& stop) {
    while (!stop.stop_requested())
      if (fs::exists(TemporaryPath(target))) std::ofstream(source, std::ios::app) << "more";
  });
  EXPECT_EQ(ErrorOf([&] { Copy(plan, GoOn); }),
            source.string() + ": The file was changed while it was being read");
  EXPECT_FALSE(fs::exists(target));
}

TEST_F(Copied, FilesInARowAreEachCheckedOnEnteringAndLeaving) {
  const auto read = [this](std::size_t step, const std::function<void()>& meanwhile) {
    SourceList files;
    for (const auto& [name, text] : {std::pair{"1", "abc"}, {"2", ""}, {"3", "defgh"}}) {
      WriteFile(folder / name, text);
      fs::last_write_time(folder / name, fs::file_time_type{});
      files.Add(folder / name, StateOf(folder / name));
    }
    const auto row = FilesInARow(std::move(files));
    const auto reader = row->NewReader();
    std::string all(static_cast<std::size_t>(row->Length()), 'x');
    for (std::size_t at = 0; at < all.size(); at += step, meanwhile())
      reader->Read(at, std::span(all).subspan(at, std::min(step, all.size() - at)));
    reader->ThrowIfChanged();
    return all;
  };
  for (const std::size_t step : {1, 3, 4, 100}) EXPECT_EQ(read(step, [] {}), "abcdefgh") << step;
  for (const char* const name : {"1", "3"})
    EXPECT_EQ(ErrorOf([&] { (void)read(2, [&] { WriteFile(folder / name, "other"); }); }),
              (folder / name).string() + ": The file was changed while it was being read");
}

TEST_F(Copied, TheFirstOfASetComesLast) {
  fs::create_directories(folder / "out" / "s3.x");
  CopyPlan plan = SetOf(4, Existing::Keep);
  EXPECT_EQ(ErrorOf([&] { Copy(plan, GoOn); }),
            (folder / "out" / "s3.x").string() + ": Is a directory");
  EXPECT_EQ(Names(folder / "out"), std::set<std::string>{"s3.x"});
  plan.isSet = false;
  EXPECT_EQ(ErrorOf([&] { Copy(plan, GoOn); }),
            (folder / "out" / "s3.x").string() + ": Is a directory");
  EXPECT_EQ(Names(folder / "out"), (std::set<std::string>{"s2.x", "s3.x"})) << "complete ones stay";
  fs::remove_all(folder / "out");
  fs::create_directories(folder / "out");
  Copy(SetOf(4, Existing::Keep), GoOn);
  EXPECT_EQ(Names(folder / "out"), (std::set<std::string>{"s1.x", "s2.x", "s3.x", "s4.x"}));
  EXPECT_EQ(ReadFile(folder / "out" / "s3.x"), bytes.substr(20, 10));
  fs::remove(folder / "out" / "s1.x");
  EXPECT_TRUE(ErrorOf([&] { Copy(SetOf(1, Existing::Keep), GoOn); }).ends_with(": File exists"));
}

TEST_F(Copied, ManySmallRangesGoTogether) {
  const fs::path out = folder / "out";
  const std::string big = SomeBytes(2 * mebibyte);
  const std::string turned(big.rbegin(), big.rend());
  WriteFile(folder / "big", big);
  WriteFile(folder / "turned", turned);
  CopyPlan plan = SetOf(0, Existing::Keep);
  const std::uint32_t first = plan.sources.Add(folder / "big", StateOf(folder / "big"));
  const std::uint32_t other = plan.sources.Add(folder / "turned", StateOf(folder / "turned"));
  // Some follow each other, some do not, some are empty, and some are where the one before them is,
  // but of another source.
  std::vector<std::string> expected;
  for (std::uint64_t at = 0; at + 10003 <= big.size(); at += at % 7 == 0 ? 10000 : 10003) {
    const std::uint64_t length = at % 11 == 0 ? 0 : 10000;
    plan.ranges.push_back({first, at, length});
    expected.push_back(big.substr(at, length));
    plan.EndTarget();
    if (expected.size() % 10 != 5) continue;
    plan.ranges.push_back({other, at, length});
    expected.push_back(turned.substr(at, length));
    plan.EndTarget();
  }
  fs::create_directory(out);
  WriteFile(out / "s150.x", "another program's");
  EXPECT_EQ(ErrorOf([&] { Copy(plan, GoOn); }), (out / "s150.x").string() + ": File exists");
  EXPECT_FALSE(fs::exists(out / "s1.x"));
  fs::remove_all(out);
  fs::create_directory(out);
  EXPECT_THROW(Copy(plan, StopNow), Cancelled);
  EXPECT_EQ(Names(out), std::set<std::string>());
  Copy(plan, GoOn);
  EXPECT_EQ(Names(out).size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i)
    ASSERT_TRUE(ReadFile(plan.names.Path(i)) == expected[i]) << i;
}

TEST_F(Copied, ASetReplacesAnotherAsOne) {
  const fs::path out = folder / "out";
  const std::set<std::string> earlier = {"s5.X", "s1.x", "s3.x", "s9.x"};
  fs::create_directory(out);
  for (const std::string& name : earlier) WriteFile(out / name, "old");
  const CopyPlan plan = SetOf(4, Existing::Replace);
  const fs::path staging = TemporaryPath(out / "s1.x").replace_extension(".set");
  fs::create_directory(staging);
  for (const char* name : {"letter.tmp", ".slyver-letter"}) WriteFile(staging / name, "precious");
  EXPECT_EQ(ErrorOf([&] { Copy(plan, GoOn); }),
            staging.string() + " Holds Other Files. Move Them Away.");
  EXPECT_EQ(fs::remove_all(staging), 3U) << "what no job made was removed";
  // A name that is taken in the middle of the exchange: everything goes back.
  const auto takesAName = [&](const CopyProgress&) {
    WriteFile(out / "s4.x", "came meanwhile");
    return true;
  };
  EXPECT_NE(ErrorOf([&] { Copy(plan, takesAName); }), "no error");
  EXPECT_TRUE(fs::remove(out / "s4.x")) << "what another program made was removed";
  EXPECT_EQ(Names(out), earlier);
  for (const std::string& name : earlier) EXPECT_EQ(ReadFile(out / name), "old");

  // Nor is a set replaced that came after the user has agreed.
  CopyPlan agreed = plan;
  agreed.replaces = StateOfFirst(plan);
  WriteFile(out / "s1.x", "came meanwhile");
  EXPECT_EQ(ErrorOf([&] { Copy(agreed, GoOn); }),
            (out / "s1.x").string() + ": Another program has replaced it");
  agreed.replaces = StateOfFirst(plan);
  Copy(agreed, GoOn);
  EXPECT_EQ(Names(out), (std::set<std::string>{"s1.x", "s2.x", "s3.x", "s4.x"}));
  EXPECT_EQ(ReadFile(out / "s1.x"), bytes.substr(0, 10));
  EXPECT_EQ(ReadFile(out / "s3.x"), bytes.substr(20, 10));
}

}  // namespace
}  // namespace slyver
