#include "engine/split/SplitM.h"

#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"
#include "engine/split/ChecksumFile.h"
#include "engine/split/PieceName.h"
#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

constexpr const char* thirteen = "abcdefghijklm";

class SplitM : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    source = folder / "f";
    options.outputFolder = chunkOptions.folder = out = folder / "out";
  }

  /// The whole values that the bar was set to after its start at 0.
  static std::vector<int> Steps(const ScriptedUi& ui) {
    std::vector<int> steps(ui.Values().begin(), ui.Values().end());
    std::erase(steps, 0);
    return steps;
  }

  fs::path source;
  fs::path out;
  SplitOptions options;
  ChunkOptions chunkOptions;
  ScriptedUi ui;
};

TEST_F(SplitM, CutsIntoNumberedPiecesInEqualSteps) {
  WriteFile(source, thirteen);
  options.NumberMask = "0";
  EXPECT_EQ(SplitFile(source, 6, options, ui).NumberMask, "00") << "grows by every call's digits";
  EXPECT_EQ(Steps(ui), (std::vector<int>{33, 66, 100}));
  EXPECT_EQ(ui.LastProgress().bar, "pb");
  EXPECT_EQ(ui.LastProgress().bytesDone, 13U);
  EXPECT_EQ(ui.LastProgress().bytesTotal, 13U);

  // A recovery has another bar and names its pieces by the mask.
  ScriptedUi recovery;
  fs::remove_all(out);
  options.forRecovery = true;
  (void)SplitFile(source, 5, options, recovery);
  EXPECT_EQ(FilesIn(out), (Files{{"f.01", "abcde"}, {"f.02", "fghij"}, {"f.03", "klm"}}));
  EXPECT_EQ(Steps(recovery), (std::vector<int>{10, 20, 30}));
  EXPECT_EQ(recovery.LastProgress().bar, "PB1");
}

TEST_F(SplitM, TheSwitchesCutOutParts) {
  struct Case {
    std::uint64_t size;
    std::string switches;  // Two pieces, a range, a trailer.
    std::int16_t count;
    std::string first, second;
  };
  WriteFile(source, thirteen);
  options.SecondPieceSize = 2;
  options.TrailerSize = 3;
  const std::vector<Case> cases = {{4, "2", 4, "abcd", "ef"}, {7, "2", 2, "abcdefg", "hijklm"},
                                   {4, "R", 4, "ef", ""},     {12, "R", 2, "m", ""},
                                   {4, "2T", 4, "efg", ""},   {4, "2RT", 4, "ef", ""}};
  for (const Case& c : cases) {
    options.TwoPieceMode = c.switches.find('2') != std::string::npos;
    options.SkipThenRange = c.switches.find('R') != std::string::npos;
    options.SkipThenTrailer = c.switches.find('T') != std::string::npos;
    EXPECT_EQ(SplitFile(source, c.size, options, ui).pieces, c.count);
    Files expected = {{"f.1.sly", c.first}};
    if (!c.second.empty()) expected["f.2.sly"] = c.second;
    EXPECT_EQ(FilesIn(out), expected) << c.size << c.switches;
    fs::remove_all(out);
  }
  // Two equal pieces leave no remainder, so that the second size counts.
  options.TwoPieceMode = true;
  options.SkipThenRange = options.SkipThenTrailer = false;
  WriteFile(source, "abcdef");
  EXPECT_EQ(SplitFile(source, 3, options, ui).pieces, 2);
  EXPECT_EQ(FilesIn(out), (Files{{"f.1.sly", "abc"}, {"f.2.sly", "de"}}));
}

TEST_F(SplitM, RefusesAndWritesNothing) {
  WriteFile(source, SomeBytes(32768));
  const auto refused = [&](std::uint64_t size, const std::string& message) {
    ui.Expect({message});
    EXPECT_EQ(SplitFile(source, size, options, ui).pieces, 0);
  };
  refused(32768, "i Chunk Size Bigger Than File Size.");
  refused(1, "x Overflow");
  refused(0, "x The Piece Size Must Be At Least 1 Byte.");
  ui.Expect({"m This file cannot be split as filesize is less or equal to maximum chunksize",
             "x Overflow"});
  EXPECT_EQ(ChunkToTemp(source, 32768, chunkOptions, ui).chunks, 0);
  EXPECT_EQ(ChunkToTemp(source, 1, chunkOptions, ui).chunks, 0);
  for (const char* folderName : {"no/such", "f"}) {
    options.outputFolder = folder / folderName;
    refused(10000, "x " + ErrorOf([&] { (void)MakeFolder(options.outputFolder); }));
  }
  options.outputFolder = out;
  EXPECT_EQ(Names(), std::set<std::string>{"f"});

  // One piece out of many is no matter of counts; 32767 pieces are not too many.
  options.SkipThenRange = true;
  EXPECT_EQ(SplitFile(source, 1, options, ui).pieces, 32767);
}

TEST_F(SplitM, RestoresTheSetThatAKilledExchangeHasPutAside) {
  Files earlier = {{"f.sha256", ""}};
  for (int i = 1; i <= 4; ++i) {
    earlier[PieceNameOf("f", i)] = "old" + std::to_string(i);
    earlier["f.sha256"] += ChecksumLine(PieceNameOf("f", i), {});
  }
  const fs::path staging = TemporaryPath(out / "f.1.sly").replace_extension(".set");
  std::vector<std::pair<fs::path, fs::path>> moves;
  for (const char* name : {"f.sha256", "f.1.sly", "f.4.sly", "f.2.sly", "f.3.sly"})
    moves.emplace_back(out / name, staging / "earlier" / name);
  for (const char* name : {"f.2.sly", "f.3.sly"}) moves.emplace_back(staging / name, out / name);
  for (std::size_t killedAfter = 1; killedAfter <= moves.size(); ++killedAfter) {
    fs::remove_all(out);
    fs::create_directories(staging / "earlier");
    MakeFiles(staging, "f.2.sly=new f.3.sly=new");
    for (const auto& [name, bytes] : earlier) WriteFile(out / name, bytes);
    for (std::size_t i = 0; i < killedAfter; ++i) fs::rename(moves[i].first, moves[i].second);
    WriteFile(source, thirteen);
    ui.Expect({"n Pieces Of An Earlier Split Of f Are In " + out.string() +
               ". Do You Want To Replace Them?"});
    EXPECT_TRUE(SplitFile(source, 6, options, ui).declined);
    EXPECT_EQ(FilesIn(out), earlier) << killedAfter;
  }
}

TEST_F(SplitM, CutsOnlyTheStateThatWasAskedFor) {
  MakeFiles(folder, "f=abcd other=abcd");
  options.state = chunkOptions.state = StateOf(source);
  fs::rename(folder / "other", source);
  const std::string changed =
      "x " + source.string() + ": The file was changed while it was being read";
  ui.Expect({changed, changed});
  EXPECT_EQ(SplitFile(source, 1, options, ui).pieces, 0);
  EXPECT_EQ(ChunkToTemp(source, 1, chunkOptions, ui).chunks, 0);
  EXPECT_EQ(FilesIn(out), Files{});
}

TEST_F(SplitM, ChunksAreFilledToTheMaskAndTheirTailIsSmall) {
  struct Case {
    std::uint64_t size, tail;  // No tail: all chunks are alike.
    std::int16_t count;
    std::vector<std::string> chunks;
    const char* last;
  };
  WriteFile(source, thirteen);
  const std::vector<Case> cases = {{10, 3, 2, {"abcdefghij", "klm"}, "1.2.ini"},
                                   {10, 5, 2, {"abcdefghij", "klm"}, "1.2.ini"},
                                   {6, 3, 3, {"abcdef", "ghi", "jkl"}, "1.3.ini"},
                                   {6, 9, 3, {"abcdef", "ghijklm"}, "1.2.ini"},
                                   {1, 12, 13, {"a", "bcdefghijklm"}, "1.02.ini"},
                                   {5, 0, 3, {"abcde", "fghij", "klm"}, "1.3.ini"}};
  for (const Case& c : cases) {
    chunkOptions.SmallTailChunks = c.tail > 0;
    chunkOptions.TrailerSize = c.tail;
    const ChunkResult result = ChunkToTemp(source, c.size, chunkOptions, ui);
    EXPECT_EQ(result.chunks, c.count);
    EXPECT_EQ(result.NumberMask, c.count > 9 ? "00" : "0");
    std::vector<std::string> chunks;  // In the order of their names, so of their numbers.
    for (const auto& [name, chunk] : FilesIn(out)) chunks.push_back(chunk);
    EXPECT_EQ(chunks, c.chunks);
    EXPECT_TRUE(fs::exists(out / c.last)) << c.last;
    fs::remove_all(out);
  }
}

}  // namespace
}  // namespace slyver
