#include "engine/split/JoinM.h"

#include "engine/split/Scene.h"
#include "engine/system/Files.h"
#include "engine/system/Registry.h"
#include "engine/system/WorkFolders.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

constexpr const char* companyKey = R"(Software\Orm Valis\FC)";
constexpr const char* twelve =
    "f.1.sly=a f.2.sly=b f.3.sly=c f.4.sly=d f.5.sly=e f.6.sly=f f.7.sly=g f.8.sly=h f.9.sly=i "
    "f.10.sly=j f.11.sly=k f.12.sly=l ";
const std::string replace = " f Already Exists. Do You Want To Replace It?";
const std::string sizes =
    " Does Not Have The Size Of The Other Pieces. Do You Want To Join Them All The Same?";

const std::string noPiece = " Is Not A Piece Of A Split File.";

class Join : public TempFolderTest {
 protected:
  /// Joins the file "f" from the piece `chosen`; the script lacks what is always said at the end.
  /// Nothing but "f", which gets the bytes `joined`, may change in the folder.
  void Run(const std::string& chosen, Script script, const std::string& joined = "") {
    Files files = FilesIn(folder);
    if (!joined.empty()) script.insert(script.end(), {"p Joining Files", "i File Joined."});
    if (!script.empty() && script.back()[0] == 'x') script.emplace_back("x Unable To Join File.");
    script.emplace_back("end");
    if (!joined.empty()) files["f"] = joined;
    ScriptedUi ui;
    Expect(ui, script);
    SaveRegString(RegRoot::LocalMachine, companyKey, "filepath", "left");
    result = JoinPieces(folder / chosen, ui);
    EXPECT_EQ(PathOf(result), joined.empty() ? fs::path() : folder / "f");
    EXPECT_EQ(GetRegString(RegRoot::LocalMachine, companyKey, "filepath"), "");
    EXPECT_EQ(FilesIn(folder), files) << chosen;
    values = ui.Values();
    last = ui.LastProgress();
  }

  static fs::path PathOf(const std::optional<JoinedFile>& file) {
    return file ? file->path : fs::path();
  }

  std::optional<JoinedFile> result;
  std::vector<double> values;
  Progress last;
};

TEST_F(Join, JoinsThePiecesOfOneSplitOrSaysWhyNot) {
  struct Case {
    std::string files;
    std::string chosen;
    Script script;
    std::string joined = {};
  };
  const std::string two = "f.1.sly=ab f.2.sly=cd ";
  const std::string others = "f.b.1.sly=x x.3.sly=x f.03.sly=x f.3.txt=x f3.sly=x f.123456.sly=x ";
  const std::vector<Case> cases = {
      {twelve, "f.12.sly", {}, "abcdefghijkl"},
      {twelve, "f.1.sly", {}, "abcdefghijkl"},
      {"f.1.sly=ab sub/f.2.sly=cd f.3.SLY=e " + others, "f.123456.sly", {}, "abcde"},
      {two + "a/f.2.sly=xx b/f.2.sly=xx", "f.1.sly", {}, "abcd"},
      {"f.1.sly=ab a/f.2.sly=xx b/f.2.sly=xx", "f.1.sly", {"x f.2.sly Is There More Than Once."}},
      {two + "f.4.sly=x", "f.4.sly", {"x f.3.sly Is Missing."}},
      {"f.2.sly=ab", "f.2.sly", {"x f.1.sly Is Missing."}},
      {"f.1.sly=ab", "f.1.sly", {"x f.2.sly Is Missing."}},
      {"f.123456.sly=x", "f.123456.sly", {"x f.1.sly Is Missing."}},
      {two + "sub/f.3.sly=e", "f.3.sly", {"x f.3.sly Is Missing."}},
      {two + "f=old", "f.99999.sly", {"x f.99999.sly Is Missing."}},
      {two, "f.123456.sly", {"x f.123456.sly Is Missing."}},
      {two + "f.12345x.sly=x", "f.12345x.sly", {"x f.12345x.sly" + noPiece}},
      {two + "f.03.sly=e", "f.03.sly", {"x f.03.sly" + noPiece}},
      {two, "notes.sly", {"x notes.sly" + noPiece}},
      {two + "f.3.sly=e", "f.1.sly", {}, "abcde"},
      {two + "f.3.sly=efg", "f.1.sly", {"n f.3.sly" + sizes}},
      {two + "f.3.sly=efg", "f.1.sly", {"y f.3.sly" + sizes}, "abcdefg"},
      {"f.1.sly=ab f.2.sly=c f.3.sly=ef", "f.1.sly", {"n f.2.sly" + sizes}},
      {"f.1.sly=ab f.2.sly=cde f.3.sly=ef", "f.1.sly", {"n f.2.sly" + sizes}},
      {two + "f=old", "f.1.sly", {"n" + replace}},
      {two + "f=old", "f.1.sly", {"y" + replace}, "abcd"}};
  for (const Case& c : cases) {
    fs::remove_all(folder);
    fs::create_directory(folder);
    MakeFiles(folder, c.files);
    Run(c.chosen, c.script, c.joined);
  }
}

TEST_F(Join, SetsTheBarInGrowingStepsAndTellsWhatItHasMade) {
  MakeFiles(folder, twelve);
  Run("f.1.sly", {}, "abcdefghijkl");
  EXPECT_EQ(result->pieces, 12U);
  EXPECT_EQ(result->length, 12U);
  EXPECT_EQ(result->lastPiece, "f.12.sly");
  EXPECT_TRUE(result->allAlike);
  EXPECT_EQ(values, (std::vector<double>{0, 5, 15, 30, 50, 75, 100}));
  EXPECT_EQ(last.bar, "PB1");
  EXPECT_EQ(last.bytesDone, 12U);
  EXPECT_EQ(last.bytesTotal, 12U);
}

TEST_F(Join, NamesTheFileThatStandsInItsWay) {
  MakeFiles(folder, "f=old f.1.sly=ab f.2.sly=cd");
  const fs::path target = folder / "f";
  {
    const LockedFile other(TemporaryPath(target));
    Run("f.1.sly",
        {"y" + replace, "x " + target.string() + ": Another program is writing this file"});
  }
  fs::remove(TemporaryPath(target));
  const auto isFolder = [&](const char* name) {
    return "x " + ErrorOf([&] { (void)StateOf(folder / name); });
  };
  fs::create_directory(folder / "f.5.sly");
  Run("f.5.sly", {"y" + replace, isFolder("f.5.sly")});
  fs::create_directory(folder / "f.3.sly");
  Run("f.2.sly", {"y" + replace, isFolder("f.3.sly")});
  MakeFiles(folder, "sub/f.3.sly=e");
  Run("f.3.sly", {"y" + replace, isFolder("f.3.sly")});
}

/// A user who does something else while a question is open.
struct BusyUser : ScriptedUi {
  Answer Question(std::string_view text, Buttons buttons, Icon icon) override {
    meanwhile();
    return ScriptedUi::Question(text, buttons, icon);
  }
  std::function<void()> meanwhile;
};

TEST_F(Join, HoldsNothingWhileItAsksAndJoinsNoMixture) {
  MakeFiles(folder, "f.1.sly=ab f.2.sly=cde");
  const Files before = FilesIn(folder);
  BusyUser ui;
  ui.meanwhile = [&] {
    EXPECT_EQ(FilesIn(folder), before);
    MakeFiles(folder, "new=xy");
    fs::rename(folder / "new", folder / "f.1.sly");
  };
  const std::string first = (folder / "f.1.sly").string();
  Expect(ui, {"y f.2.sly" + sizes, "p Joining Files",
              "x " + first + ": " + std::string(fileWasChanged), "x Unable To Join File.", "end"});
  EXPECT_EQ(PathOf(JoinPieces(first, ui)), "");
  EXPECT_EQ(Names().size(), 2U);
}

TEST_F(Join, LeavesNothingWhenCancelled) {
  MakeFiles(folder, "f=old f.1.sly=ab f.2.sly=cd");
  const Files before = FilesIn(folder);
  for (const std::uint64_t bytes : {0, 1}) {  // While it searches, and while it copies.
    ScriptedUi ui;
    Expect(ui, {"y" + replace});
    if (bytes > 0) Expect(ui, {"p Joining Files"});
    ui.StopAtBytes(bytes);
    EXPECT_THROW(JoinPieces(folder / "f.1.sly", ui), Cancelled);
    EXPECT_EQ(FilesIn(folder), before);
  }
}

TEST_F(Join, WritesIntoTheOutputFolderAlone) {
  MakeFiles(folder, "f.1.sly=ab f.2.sly=c out/f=old");
  const Files before = FilesIn(folder);
  ScriptedUi ui;
  Expect(ui, {"y" + replace, "p Joining Files", "i File Joined.", "end"});
  const auto joined = JoinPieces(folder / "f.1.sly", ui, folder / "out");
  EXPECT_EQ(PathOf(joined), folder / "out" / "f");
  EXPECT_FALSE(joined->allAlike);
  Files after = before;
  after[PathText(fs::path("out") / "f")] = "abc";
  EXPECT_EQ(FilesIn(folder), after);
}

TEST_F(Join, AScratchFolderCostsNobodysData) {
  MakeFiles(folder, "temprrr/f.1.sly=ab temprrr/f.2.sly=cd temprrr/temprrr/data=precious");
  folder /= "temprrr";  // Its own name is no harm.
  const fs::path scratch = folder / "temprrr";
  Run("f.1.sly", {"x " + scratch.string() + " Holds Other Files. Move Them Away."});
  fs::rename(scratch, folder / "user");
  if (MakeFolderLink(folder / "user", scratch)) {
    Run("f.1.sly", {"x " + scratch.string() + ": File exists"});
    fs::remove(scratch);
  }
  WriteFile(scratch, "precious");
  Run("f.1.sly", {"x " + scratch.string() + ": File exists"});
  fs::remove(scratch);
  fs::create_directory(scratch);  // Left by a join that was killed.
  ScriptedUi ui;
  Expect(ui, {"p Joining Files", "i File Joined.", "end"});
  EXPECT_EQ(PathOf(JoinPieces(folder / "f.1.sly", ui)), folder / "f");
  EXPECT_FALSE(fs::exists(scratch));
}

TEST_F(Join, JoinFolderRefusesAnExistingTargetAndTooManyRanges) {
  MakeFiles(folder, "piece=bytes");
  const fs::path target = folder / "f";
  CopyPlan joined;
  joined.names = {folder, "f", "", 0};
  joined.ranges.assign(
      32768, ByteRange{joined.sources.Add(folder / "piece", StateOf(folder / "piece")), 0, 0});
  joined.rangeEnds = {32768};
  const Watch watch = [](const CopyProgress&) { return true; };
  ScriptedUi ui;
  Expect(ui, {"x Overflow"});
  EXPECT_EQ(JoinFolder(joined, false, ui, watch), 0);
  joined.ranges.pop_back();
  joined.rangeEnds = {32767};
  EXPECT_EQ(JoinFolder(joined, false, ui, watch), 32767);
  Expect(ui, {"x '" + target.string() + "' already exists, action canceled"});
  EXPECT_EQ(JoinFolder(joined, false, ui, watch), 0);
}

TEST_F(Join, TheDialogueAsksForAPiece) {
  MakeFiles(folder, "f.1.sly=ab f.2.sly=cd");
  const auto talk = [&](const Script& script, const char* title, const fs::path& initial,
                        const auto& job) {
    ScriptedUi ui;
    const bool joins = script.back() == "choose";
    for (const std::string& line : script)
      if (line == "cancel" || line == "choose")
        ui.ExpectOpenFile(title, "Sly File (*.Sly)|*.Sly;|", initial,
                          joins ? std::optional(folder / "f.2.sly") : std::nullopt);
      else
        Expect(ui, {line});
    if (joins) Expect(ui, {"p Joining Files", "i File Joined.", "end"});
    EXPECT_EQ(PathOf(job(ui)), joins ? folder / "f" : fs::path());
    fs::remove(folder / "f");
  };
  const std::string together =
      " Please Make Sure All The Sly Files Are In The Same Folder. Are They In The Same Folder?";
  const std::string exit = " No File Selected. Do You Want To Exit?";
  const std::vector<Script> scripts = {{"n" + together, "y Do You Want To Exit?", "end"},
                                       {"n" + together, "n Do You Want To Exit?", "choose"},
                                       {"y" + together, "cancel", "n" + exit},
                                       {"y" + together, "cancel", "y" + exit, "end"}};
  for (const Script& script : scripts)
    talk(script, "Select File To Join.", HomeFolder(), [](Ui& ui) { return JoinFile(ui); });
  const std::vector<Script> fromCommandLine = {{"n" + together, "end"},
                                               {"y" + together, "cancel", "y" + exit, "end"},
                                               {"y" + together, "choose"}};
  for (const Script& script : fromCommandLine)
    talk(script, "Please Select Any Other File To Join.", folder / "",
         [&](Ui& ui) { return JoinFromCommandLine(folder / "f.1.sly", ui); });
}

}  // namespace
}  // namespace slyver
