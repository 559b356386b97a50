#include "engine/split/SplitM.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "engine/system/Files.h"
#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

using Pieces = std::map<std::string, std::string>;

class SplitM : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    source = folder / "my file.v1.dat";
    options.outputFolder = chunkOptions.folder = out = folder / "out";
  }

  /// The source becomes `length` bytes long; returns them.
  std::string MakeSource(std::size_t length) const {
    std::string bytes = SomeBytes(length);
    WriteFile(source, bytes);
    return bytes;
  }

  /// The files in the output folder with their bytes.
  Pieces Written() const {
    Pieces pieces;
    for (const std::string& name : Names(out)) pieces[name] = ReadFile(out / name);
    return pieces;
  }

  /// The values that the bar was set to after its start at 0.
  std::vector<double> Steps() const {
    std::vector<double> steps;
    for (const double value : ui.Values())
      if (value > 0) steps.push_back(std::round(value * 100) / 100);
    return steps;
  }

  fs::path source;
  fs::path out;
  SplitOptions options;
  ChunkOptions chunkOptions;
  ScriptedUi ui;
};

TEST_F(SplitM, CutsIntoNumberedPieces) {
  const std::string bytes = MakeSource(25);
  const SplitResult result = SplitFile(source, 2, options, ui);
  EXPECT_EQ(result.pieces, 13);
  EXPECT_EQ(result.NumberMask, "00");
  Pieces expected;
  for (std::size_t i = 0; i < 13; ++i)
    expected["my file.v1.dat." + std::to_string(i + 1) + ".sly"] = bytes.substr(2 * i, 2);
  EXPECT_EQ(Written(), expected);
  EXPECT_EQ(ReadFile(source), bytes);
}

TEST_F(SplitM, GivesFullPiecesWhenTheSizeDividesTheLength) {
  const std::string bytes = MakeSource(std::size_t{9} * 1024 * 1024);
  options.NumberMask = "000";
  const SplitResult result = SplitFile(source, std::uint64_t{9} * 512 * 1024, options, ui);
  EXPECT_EQ(result.pieces, 2);
  EXPECT_EQ(result.NumberMask, "0000") << "grows by the digits of every call";
  EXPECT_TRUE(Written() == (Pieces{{"my file.v1.dat.1.sly", bytes.substr(0, bytes.size() / 2)},
                                   {"my file.v1.dat.2.sly", bytes.substr(bytes.size() / 2)}}));
}

TEST_F(SplitM, SetsTheBarInEqualSteps) {
  (void)MakeSource(100);
  EXPECT_EQ(SplitFile(source, 40, options, ui).pieces, 3);
  EXPECT_EQ(Steps(), (std::vector<double>{33.33, 66.67, 100}));
  EXPECT_EQ(ui.LastProgress().bar, "pb");
  EXPECT_EQ(ui.LastProgress().bytesDone, 100U);
  EXPECT_EQ(ui.LastProgress().bytesTotal, 100U);
}

TEST_F(SplitM, RecoveryNamesItsPiecesByTheMask) {
  const std::string bytes = MakeSource(30);
  options.forRecovery = true;
  options.NumberMask = "0";
  EXPECT_EQ(SplitFile(source, 10, options, ui).NumberMask, "00");
  EXPECT_EQ(Written(), (Pieces{{"my file.v1.dat.01", bytes.substr(0, 10)},
                               {"my file.v1.dat.02", bytes.substr(10, 10)},
                               {"my file.v1.dat.03", bytes.substr(20)}}));
  EXPECT_EQ(Steps(), (std::vector<double>{10, 20, 30}));
  EXPECT_EQ(ui.LastProgress().bar, "PB1");
}

TEST_F(SplitM, TheSwitchesCutOutParts) {
  struct Case {
    std::size_t length;
    std::uint64_t size;
    bool twoPieces, skipThenRange, skipThenTrailer;
    std::uint64_t second;
    std::int16_t count;
    std::vector<std::pair<std::size_t, std::size_t>> pieces;  // offset, length
  };
  using Ranges = std::vector<std::pair<std::size_t, std::size_t>>;
  for (const Case& c : {Case{100, 30, true, false, false, 20, 4, Ranges{{0, 30}, {30, 20}}},
                        Case{100, 60, true, false, false, 20, 2, Ranges{{0, 60}, {60, 40}}},
                        Case{100, 50, true, false, false, 20, 2, Ranges{{0, 50}, {50, 20}}},
                        Case{100, 90, true, false, false, 20, 2, Ranges{{0, 90}, {90, 10}}},
                        Case{100, 30, false, true, false, 45, 4, Ranges{{30, 45}}},
                        Case{100, 90, false, true, false, 45, 2, Ranges{{90, 10}}},
                        Case{9000, 1000, false, false, true, 45, 9, Ranges{{1000, 2500}}},
                        Case{9000, 6500, true, false, true, 45, 2, Ranges{{6500, 2500}}},
                        Case{9000, 1000, true, true, true, 45, 9, Ranges{{1000, 45}}}}) {
    const std::string bytes = MakeSource(c.length);
    options.TwoPieceMode = c.twoPieces;
    options.SkipThenRange = c.skipThenRange;
    options.SkipThenTrailer = c.skipThenTrailer;
    options.TrailerSize = 2500;
    options.SecondPieceSize = c.second;
    EXPECT_EQ(SplitFile(source, c.size, options, ui).pieces, c.count);
    Pieces expected;
    for (const auto& [offset, length] : c.pieces)
      expected["my file.v1.dat." + std::to_string(expected.size() + 1) + ".sly"] =
          bytes.substr(offset, length);
    EXPECT_EQ(Written(), expected) << c.length << " by " << c.size;
    fs::remove_all(out);
  }
}

TEST_F(SplitM, CutsBeyondFourGibibytes) {
  constexpr std::uint64_t far = std::uint64_t{6} * 1024 * 1024 * 1024;
  const std::string tail = MakeSource(2500);
  fs::rename(source, folder / "tail");
  WriteFile(source, "");
  fs::resize_file(source, far);
  std::ofstream(source, std::ios::binary | std::ios::app) << tail;
  options.SkipThenTrailer = true;
  options.TrailerSize = 2500;
  EXPECT_EQ(SplitFile(source, far, options, ui).pieces, 2);
  EXPECT_EQ(Written(), (Pieces{{"my file.v1.dat.1.sly", tail}}));
}

TEST_F(SplitM, RefusesAndWritesNothing) {
  (void)MakeSource(40000);
  const auto refused = [&](std::uint64_t size, const std::string& message, Icon icon) {
    ui.ExpectMessage(message, icon);
    const SplitResult result = SplitFile(source, size, options, ui);
    EXPECT_EQ(result.pieces, 0);
    EXPECT_FALSE(fs::exists(out));
  };
  refused(40000, "Chunk Size Bigger Than File Size.", Icon::Information);
  refused(40001, "Chunk Size Bigger Than File Size.", Icon::Information);
  refused(1, "Overflow", Icon::Critical);
  refused(0, "The piece size must be at least 1 byte.", Icon::Critical);
  options.outputFolder = folder / "no" / "such";
  refused(10000, options.outputFolder.string() + ": No such file or directory", Icon::Critical);
  options.outputFolder = source;
  refused(10000, source.string() + ": File exists", Icon::Critical);
  source = folder / "none";
  refused(10000, source.string() + ": No such file or directory", Icon::Critical);
}

TEST_F(SplitM, CountsUpTo32767Pieces) {
  (void)MakeSource(32767);
  options.SkipThenRange = true;  // Counts them all and writes one.
  options.SecondPieceSize = 5;
  EXPECT_EQ(SplitFile(source, 1, options, ui).pieces, 32767);
  EXPECT_EQ(Written().size(), 1U);
  std::ofstream(source, std::ios::app) << "x";
  // One piece out of a long file is no matter of counts.
  EXPECT_EQ(SplitFile(source, 1, options, ui).pieces, 32767);
  options.SkipThenRange = false;
  ui.ExpectMessage("Overflow", Icon::Critical);
  EXPECT_EQ(SplitFile(source, 1, options, ui).pieces, 0);
}

TEST_F(SplitM, KeepsCompletePiecesOnFailureAndWritesPieceOneLast) {
  const std::string bytes = MakeSource(40);
  fs::create_directories(out / "my file.v1.dat.4.sly");
  WriteFile(out / "my file.v1.dat.1.sly", "old");
  WriteFile(out / "my file.v1.dat.2.sly", "old");
  ui.ExpectMessage((out / "my file.v1.dat.4.sly").string() + ": Is a directory", Icon::Critical);
  EXPECT_EQ(SplitFile(source, 10, options, ui).pieces, 0);
  fs::remove(out / "my file.v1.dat.4.sly");
  EXPECT_EQ(Written(), (Pieces{{"my file.v1.dat.2.sly", bytes.substr(10, 10)},
                               {"my file.v1.dat.3.sly", bytes.substr(20, 10)}}))
      << "an old piece 1 would make a mixture look whole";
}

TEST_F(SplitM, TouchesNoPieceThatAnotherSplitIsWritingOrHasWritten) {
  const std::string bytes = MakeSource(40);
  fs::create_directory(out);
  const Pieces old = {{"my file.v1.dat.1.sly", "old"}, {"my file.v1.dat.3.sly", "old"}};
  for (const auto& [name, data] : old) WriteFile(out / name, data);
  const fs::path first = out / "my file.v1.dat.1.sly";
  {
    const LockedFile other(TemporaryPath(first));
    ui.ExpectMessage(first.string() + ": Another program is writing this file", Icon::Critical);
    EXPECT_EQ(SplitFile(source, 10, options, ui).pieces, 0);
  }
  fs::remove(TemporaryPath(first));
  options.firstPiece = Existing::Keep;
  ui.ExpectMessage(first.string() + ": File exists", Icon::Critical);
  EXPECT_EQ(SplitFile(source, 10, options, ui).pieces, 0);
  EXPECT_EQ(Written(), old);
}

TEST_F(SplitM, CutsOnlyTheStateThatWasAskedFor) {
  (void)MakeSource(40);
  options.state = chunkOptions.state = StateOf(source);
  WriteFile(folder / "other", std::string(40, 'o'));
  fs::rename(folder / "other", source);
  for (const bool chunks : {false, true}) {
    ui.ExpectMessage(source.string() + ": The file was changed while it was being read",
                     Icon::Critical);
    EXPECT_EQ(chunks ? ChunkToTemp(source, 10, chunkOptions, ui).chunks
                     : SplitFile(source, 10, options, ui).pieces,
              0);
  }
  EXPECT_EQ(Written(), Pieces{});
}

TEST_F(SplitM, LeavesNoPieceWhenCancelled) {
  (void)MakeSource(1000);
  ui.StopAtBytes(1);
  EXPECT_THROW(SplitFile(source, 10, options, ui), Cancelled);
  EXPECT_THROW(ChunkToTemp(source, 10, chunkOptions, ui), Cancelled);
  EXPECT_EQ(Written(), Pieces{});
}

TEST_F(SplitM, ChunksAreFilledToTheMask) {
  const std::string bytes = MakeSource(25);
  const ChunkResult result = ChunkToTemp(source, 2, chunkOptions, ui);
  EXPECT_EQ(result.chunks, 13);
  EXPECT_EQ(result.NumberMask, "00");
  const Pieces written = Written();
  EXPECT_EQ(written.size(), 13U);
  std::string joined;  // In the order of their names, which is now that of their numbers.
  for (const auto& [name, chunk] : written) joined += chunk;
  EXPECT_EQ(joined, bytes);
  EXPECT_EQ(written.begin()->first, "1.01.ini");
  EXPECT_EQ(written.rbegin()->first, "1.13.ini");
}

TEST_F(SplitM, SmallTailChunksAreADirectoryLong) {
  chunkOptions.SmallTailChunks = true;
  chunkOptions.TrailerSize = 2500;
  struct Case {
    std::size_t length;
    std::uint64_t size;
    std::int16_t count;
    std::vector<std::size_t> lengths;
  };
  for (const Case& c : {Case{12500, 10000, 2, {10000, 2500}}, Case{10010, 10000, 2, {10000, 10}},
                        Case{4000, 1500, 3, {1500, 2500}}, Case{2600, 100, 26, {100, 2500}},
                        Case{30000, 10000, 3, {10000, 2500, 2500}}}) {
    const std::string bytes = MakeSource(c.length);
    EXPECT_EQ(ChunkToTemp(source, c.size, chunkOptions, ui).chunks, c.count);
    std::vector<std::size_t> lengths;
    std::string joined;
    for (const auto& [name, chunk] : Written()) {
      lengths.push_back(chunk.size());
      joined += chunk;
    }
    EXPECT_EQ(lengths, c.lengths) << c.length << " by " << c.size;
    EXPECT_EQ(joined, bytes.substr(0, joined.size()));
    fs::remove_all(out);
  }
}

TEST_F(SplitM, ChunkToTempRefusesAndWritesNothing) {
  (void)MakeSource(40000);
  ui.ExpectMessage("This file cannot be split as filesize is less or equal to maximum chunksize",
                   Icon::None);
  EXPECT_EQ(ChunkToTemp(source, 40000, chunkOptions, ui).chunks, 0);
  ui.ExpectMessage("Overflow", Icon::Critical);
  EXPECT_EQ(ChunkToTemp(source, 1, chunkOptions, ui).chunks, 0);
  EXPECT_FALSE(fs::exists(out));
}

}  // namespace
}  // namespace slyver
