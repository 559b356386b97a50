#include "engine/split/JoinM.h"

#include <gtest/gtest.h>

#include "engine/split/PieceName.h"
#include "engine/system/FileError.h"
#include "engine/system/Files.h"
#include "engine/system/Registry.h"
#include "engine/system/WorkFolders.h"
#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

constexpr const char* companyKey = R"(Software\Orm Valis\FC)";
constexpr const char* together =
    "Please Make Sure All The Sly Files Are In The Same Folder. Are They In The Same Folder?";

/// A join of "my file.v1.dat", whose first bytes are those of `bytes`.
class Join : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    target = folder / name;
    SaveRegString(RegRoot::LocalMachine, companyKey, "filepath", "left");
  }
  void TearDown() override {
    EXPECT_FALSE(fs::exists(folder / "temprrr"));
    TempFolderTest::TearDown();
  }

  fs::path Piece(int number) const { return folder / PieceNameOf(name, number); }

  /// Puts pieces number `first` to `last` of `size` bytes each into the folder.
  void MakePieces(int first, int last, std::size_t size = 10) const {
    for (int i = first; i <= last; ++i)
      WriteFile(Piece(i), bytes.substr((static_cast<std::size_t>(i) - 1) * size, size));
  }

  void JoinFrom(const fs::path& piece, bool joins = true) {
    const auto joined = JoinPieces(piece, ui);
    EXPECT_EQ(joined, joins ? std::optional(target) : std::nullopt);
    EXPECT_EQ(GetRegString(RegRoot::LocalMachine, companyKey, "filepath"), "");
  }

  void ExpectJoined() {
    ui.ExpectProgressForm("Joining Files");
    ui.ExpectMessage("File Joined.", Icon::Information);
    ui.ExpectEndProgram();
  }
  void ExpectFailed(const std::string& why) {
    ui.ExpectMessage(why, Icon::Critical);
    ui.ExpectMessage("Unable To Join File.", Icon::Critical);
    ui.ExpectEndProgram();
  }
  void ExpectReplaceQuestion(Answer answer) {
    ui.ExpectQuestion(name + " Already Exists. Do You Want To Replace It?", answer);
  }
  void ExpectSizeQuestion(int number, Answer answer) {
    ui.ExpectQuestion(PieceNameOf(name, number) +
                          " Does Not Have The Size Of The Other Pieces. Do You Want To Join Them "
                          "All The Same?",
                      answer);
  }

  const std::string name = "my file.v1.dat";
  const std::string bytes = SomeBytes(1000);
  fs::path target;
  ScriptedUi ui;
};

TEST_F(Join, PutsPiecesTogetherInTheOrderOfTheirNumbersFromAnyOfThem) {
  MakePieces(1, 30);
  WriteFile(Piece(31), bytes.substr(300, 1));
  for (const int chosen : {1, 12, 31}) {
    ExpectJoined();
    JoinFrom(Piece(chosen));
    EXPECT_EQ(ReadFile(target), bytes.substr(0, 301));
    fs::remove(target);
  }
  EXPECT_EQ(Names().size(), 31U) << "the pieces stay";
}

TEST_F(Join, SetsTheBarInGrowingSteps) {
  MakePieces(1, 8);
  ExpectJoined();
  JoinFrom(Piece(1));
  EXPECT_EQ(ui.Values(), (std::vector<double>{0, 5, 15, 30, 50, 75, 100}));
  EXPECT_EQ(ui.LastProgress().bar, "PB1");
  EXPECT_EQ(ui.LastProgress().bytesDone, 80U);
  EXPECT_EQ(ui.LastProgress().bytesTotal, 80U);
}

TEST_F(Join, GathersThePiecesOfThisSplitAlone) {
  MakePieces(1, 2);
  fs::create_directory(folder / "sub");
  fs::rename(Piece(2), folder / "sub" / Piece(2).filename());
  for (const char* other :
       {"my file.v1.dat.bak.1.sly", "other.3.sly", "my file.v1.dat.03.sly", "my file.v1.3.sly",
        "my file.v1.dat.123456.sly", "my file.v1.dat.3.txt", "my file.v1.dat3.sly"})
    WriteFile(folder / other, "other");
  for (const fs::path& chosen : {Piece(1), folder / "my file.v1.dat.123456.sly"}) {
    ExpectJoined();
    JoinFrom(chosen);
    EXPECT_EQ(ReadFile(target), bytes.substr(0, 20));
    fs::remove(target);
  }
}

TEST_F(Join, APieceInTheFolderCountsBeforeOneBelowIt) {
  MakePieces(1, 3);
  fs::create_directories(folder / "a");
  fs::create_directories(folder / "b");
  WriteFile(folder / "a" / Piece(2).filename(), "other");
  WriteFile(folder / "b" / Piece(2).filename(), "other");
  ExpectJoined();
  JoinFrom(Piece(3));
  EXPECT_EQ(ReadFile(target), bytes.substr(0, 30));
  fs::remove(target);
  fs::remove(Piece(2));
  ExpectFailed("my file.v1.dat.2.sly Is There More Than Once.");
  JoinFrom(Piece(3), false);
}

TEST_F(Join, NamesTheFirstPieceThatIsMissing) {
  MakePieces(1, 12);
  WriteFile(target, "old");
  for (const int missing : {10, 2, 1}) {
    fs::remove(Piece(missing));
    ExpectReplaceQuestion(Answer::Yes);
    ExpectFailed(PieceNameOf(name, missing) + " Is Missing.");
    JoinFrom(Piece(12), false);
    EXPECT_EQ(ReadFile(target), "old");
  }
  ExpectReplaceQuestion(Answer::Yes);
  ExpectFailed("my file.v1.dat.1.sly Is Missing.");
  JoinFrom(folder / "my file.v1.dat.100000.sly", false);

  ExpectFailed("notes.sly Is Not A Piece Of A Split File.");
  JoinFrom(folder / "notes.sly", false);
}

TEST_F(Join, AsksWhenTheSizesAreNotThoseOfOneSplit) {
  MakePieces(1, 4);
  WriteFile(Piece(3), "short");
  ExpectSizeQuestion(3, Answer::No);
  ui.ExpectEndProgram();
  JoinFrom(Piece(1), false);
  EXPECT_FALSE(fs::exists(target));

  ExpectSizeQuestion(3, Answer::Yes);
  ExpectJoined();
  JoinFrom(Piece(1));
  EXPECT_EQ(ReadFile(target), bytes.substr(0, 20) + "short" + bytes.substr(30, 10));

  MakePieces(3, 3);
  WriteFile(Piece(4), "longer than it may be");
  ExpectReplaceQuestion(Answer::Yes);
  ExpectSizeQuestion(4, Answer::No);
  ui.ExpectEndProgram();
  JoinFrom(Piece(1), false);
}

TEST_F(Join, ReplacesAnExistingTargetOnlyWhenToldTo) {
  MakePieces(1, 3);
  WriteFile(target, "old");
  ExpectReplaceQuestion(Answer::No);
  ui.ExpectEndProgram();
  JoinFrom(Piece(1), false);
  EXPECT_EQ(ReadFile(target), "old");
  ExpectReplaceQuestion(Answer::Yes);
  ExpectJoined();
  JoinFrom(Piece(1));
  EXPECT_EQ(ReadFile(target), bytes.substr(0, 30));
}

TEST_F(Join, AnOldTargetSurvivesFailureAndCancel) {
  MakePieces(1, 3);
  WriteFile(target, "old");
  const std::set<std::string> before = Names();
  {
    const LockedFile other(TemporaryPath(target));
    ExpectReplaceQuestion(Answer::Yes);
    ui.ExpectProgressForm("Joining Files");
    ExpectFailed(target.string() + ": Another program is writing this file");
    JoinFrom(Piece(1), false);
  }
  fs::remove(TemporaryPath(target));
  ui.StopAtBytes(1);
  ExpectReplaceQuestion(Answer::Yes);
  ui.ExpectProgressForm("Joining Files");
  EXPECT_THROW(JoinPieces(Piece(1), ui), Cancelled);
  EXPECT_EQ(ReadFile(target), "old");
  EXPECT_EQ(Names(), before);
}

TEST_F(Join, ALastPieceThatCannotBeReadIsNotPassedOver) {
  MakePieces(1, 3);
  if (!MakeFileLink(folder / "nowhere", Piece(4))) GTEST_SKIP() << "no links here";
  ExpectFailed(ErrorOf([&] { (void)FileLength(Piece(4)); }));
  JoinFrom(Piece(1), false);
}

TEST_F(Join, WaitsForNoSplitThatReplacesThePieces) {
  MakePieces(1, 3);
  {
    const LockedFile other(TemporaryPath(Piece(1)));
    ExpectFailed(Piece(1).string() + ": Another program is writing this file");
    JoinFrom(Piece(2), false);
  }
  fs::remove(TemporaryPath(Piece(1)));
}

TEST_F(Join, PiecesLeftInAScratchFolderAreNoPieces) {
  MakePieces(1, 2);
  fs::create_directories(folder / "temprrr" / "sub");
  WriteFile(folder / "temprrr" / Piece(3).filename(), "stale");
  WriteFile(folder / "temprrr" / "sub" / Piece(3).filename(), "stale");
  ExpectJoined();
  JoinFrom(Piece(1));
  EXPECT_EQ(ReadFile(target), bytes.substr(0, 20));
}

TEST_F(Join, AScratchFolderThatIsALinkOrAFileCostsNobodysData) {
  MakePieces(1, 2);
  fs::create_directory(folder / "user");
  WriteFile(folder / "user" / "data", "precious");
  if (MakeFolderLink(folder / "user", folder / "temprrr")) {
    ExpectJoined();
    JoinFrom(Piece(1));
    EXPECT_EQ(ReadFile(folder / "user" / "data"), "precious");
    fs::remove(target);
  }

  WriteFile(folder / "temprrr", "precious");
  ExpectFailed((folder / "temprrr").string() + ": File exists");
  JoinFrom(Piece(1), false);
  EXPECT_EQ(ReadFile(folder / "temprrr"), "precious");
  fs::remove(folder / "temprrr");
}

TEST_F(Join, WorksInAFolderThatBearsTheScratchName) {
  folder /= "temprrr";
  fs::create_directory(folder);
  target = folder / name;
  MakePieces(1, 2);
  ExpectJoined();
  JoinFrom(Piece(1));
  EXPECT_EQ(ReadFile(target), bytes.substr(0, 20));
}

TEST_F(Join, JoinFolderRefusesAnExistingTargetAndTooManyRanges) {
  WriteFile(folder / "piece", bytes);
  Output joined{target, 0, 32768, [&](std::size_t) { return ByteRange{folder / "piece", 0, 0}; }};
  const Watch watch = [](const CopyProgress&) { return true; };
  ui.ExpectMessage("Overflow", Icon::Critical);
  EXPECT_EQ(JoinFolder(joined, false, ui, watch), 0);
  EXPECT_FALSE(fs::exists(target));
  joined.rangeCount = 32767;
  EXPECT_EQ(JoinFolder(joined, false, ui, watch), 32767);
  WriteFile(target, "old");
  ui.ExpectMessage("'" + target.string() + "' already exists, action canceled", Icon::Critical);
  EXPECT_EQ(JoinFolder(joined, false, ui, watch), 0);
  EXPECT_EQ(ReadFile(target), "old");
}

TEST_F(Join, JoinFileAsksForAPiece) {
  MakePieces(1, 2);
  const auto expectDialog = [&](std::optional<fs::path> chosen) {
    ui.ExpectOpenFile("Select File To Join.", "Sly File (*.Sly)|*.Sly;|", HomeFolder(),
                      std::move(chosen));
  };
  ui.ExpectQuestion(together, Answer::No);
  ui.ExpectQuestion("Do You Want To Exit?", Answer::Yes);
  ui.ExpectEndProgram();
  EXPECT_EQ(JoinFile(ui), std::nullopt);
  EXPECT_EQ(GetRegString(RegRoot::LocalMachine, companyKey, "filepath"), "");

  SaveRegString(RegRoot::LocalMachine, companyKey, "filepath", "left");
  ui.ExpectQuestion(together, Answer::Yes);
  expectDialog({});
  ui.ExpectQuestion("No File Selected. Do You Want To Exit?", Answer::No);
  EXPECT_EQ(JoinFile(ui), std::nullopt);
  EXPECT_EQ(GetRegString(RegRoot::LocalMachine, companyKey, "filepath"), "left");

  ui.ExpectQuestion(together, Answer::Yes);
  expectDialog({});
  ui.ExpectQuestion("No File Selected. Do You Want To Exit?", Answer::Yes);
  ui.ExpectEndProgram();
  EXPECT_EQ(JoinFile(ui), std::nullopt);

  ui.ExpectQuestion(together, Answer::No);
  ui.ExpectQuestion("Do You Want To Exit?", Answer::No);  // goes on all the same
  expectDialog(Piece(2));
  ExpectJoined();
  EXPECT_EQ(JoinFile(ui), target);
  EXPECT_EQ(ReadFile(target), bytes.substr(0, 20));
}

}  // namespace
}  // namespace slyver
