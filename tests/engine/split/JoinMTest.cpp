#include "engine/split/JoinM.h"

#include "engine/disk/Files.h"
#include "engine/disk/WorkFolders.h"
#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

const std::string sizes =
    " Does Not Have The Size Of The Other Pieces. Do You Want To Join Them Anyway?";

/// A user who does something else while a question is open.
struct BusyUser : ScriptedUi {
  Answer Question(std::string_view text, Buttons buttons, Stakes stakes) override {
    meanwhile();
    return ScriptedUi::Question(text, buttons, stakes);
  }
  std::function<void()> meanwhile;
};

class Join : public TempFolderTest {
 protected:
  /// Joins the file "f" from the piece `chosen`; the script lacks what is always said at the end.
  /// Nothing but "f", which gets the bytes `joined`, may change in the folder, and nothing at all
  /// while a question is open.
  void Run(const std::string& chosen, Script script, const std::string& joined = "") {
    Files files = FilesIn(folder);
    BusyUser ui;
    ui.meanwhile = [this, before = files] { EXPECT_EQ(FilesIn(folder), before); };
    if (!joined.empty()) {
      files["f"] = joined;
      if (script.empty() || script.front()[0] != 'p') script.emplace_back("p Joining Files");
      script.emplace_back("i File Joined.");
    } else if (script.back()[0] == 'x') {
      script.emplace_back("x Unable To Join File.");
    }
    ui.Expect(script);
    ui.Expect({"end"});
    LeaveFilePathValue();
    result = JoinPieces(folder / chosen, ui);
    EXPECT_EQ(PathOf(result), joined.empty() ? fs::path() : folder / "f");
    EXPECT_FALSE(FilePathValueIsLeft());
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
    std::string files, chosen;
    Script script;
    std::string joined = {}, list = {};
  };
  const std::string two = "f.1.sly=ab f.2.sly=cd ";
  const std::string in = " Is In " + PathText(folder / "");
  const std::string anyway = " Do You Want To Join Them Anyway?";
  const std::string list =
      "fb8e20fc2e4c3f248c60c39bd652f3c1347298bb977b8b4d5903b85055620603  f.1.sly\n"
      "21e721c35a5823fdb452fa2f9f0a612c74fb952e06927489c6b27a43b817bed4 *f.2.sly\r\n"
      "3F79BB7B435B05321651DAEFD374CDC681DC06FAA65E374E38337B88CA046DEA  f.3.sly\n";
  const std::string abcde = "36bbe50ed96841d10443bcb670d6554f0a34b761be67ec9c4a8ad2c0c44ca42c  f\n";
  const std::vector<Case> cases = {
      {two + "a/b/f.3.sly=ef a/b/f.4.sly=g",
       "f.1.sly",
       {"n f.3.sly" + in + PathText(fs::path("a") / "b") +
        ", And 1 More In Subfolders. Do You Want To Join Them Too?"}},
      {"f.1.sly=ab a/f.2.sly=xx b/f.2.sly=xx",
       "f.1.sly",
       {"x f.2.sly" + in + "a And In " + PathText(folder / "b") + "."}},
      {two + "f.4.sly=x", "f.4.sly", {"x f.3.sly Is Missing."}},
      {two + "f.03.sly=e", "f.03.sly", {"x f.03.sly Is Not A Piece Of A Split File."}},
      {two + "f.3.sly=efg", "f.1.sly", {"y f.3.sly" + sizes}, "abcdefg"},
      // With a checksum file.
      {two + "f.3.sly=e", "f.1.sly", {}, "abcde", list},
      {"f.1.sly=cd f.2.sly=ab f.3.sly=e",
       "f.1.sly",
       {"p Joining Files", "y f.1.sly And 1 More Are Damaged." + anyway,
        "x f Was Joined With 2 Damaged Pieces."},
       "cdabe",
       list},
      {two + "f.3.sly=e f.4.sly=f",
       "f.1.sly",
       {"n f.4.sly Is Not In f.sha256." + anyway},
       "",
       list},
      {two,
       "f.1.sly",
       {"p Joining Files", "y f Is Damaged." + anyway, "x f Was Joined, But Is Damaged."},
       "abcd",
       abcde}};
  for (const Case& c : cases) {
    fs::remove_all(folder);
    fs::create_directory(folder);
    MakeFiles(folder, c.files);
    if (!c.list.empty()) WriteFile(folder / "f.sha256", c.list);
    Run(c.chosen, c.script, c.joined);
    EXPECT_TRUE(!result || result->checked == c.script.empty());
    EXPECT_TRUE(!result || result->damaged == (!c.script.empty() && c.script.back()[0] == 'x'));
  }
}

TEST_F(Join, SetsTheBarInGrowingStepsAndTellsWhatItHasMade) {
  const std::string bytes = "abcdefghijkl";
  for (std::size_t i = 0; i < bytes.size(); ++i)
    WriteFile(folder / ("f." + std::to_string(i + 1) + ".sly"), bytes.substr(i, 1));
  Run("f.1.sly", {}, bytes);
  EXPECT_EQ(result->pieces, 12U);
  EXPECT_EQ(result->length, 12U);
  EXPECT_EQ(result->lastPiece, "f.12.sly");
  EXPECT_TRUE(result->allAlike);
  EXPECT_EQ(values, (std::vector<double>{0, 5, 15, 30, 50, 75, 100}));
  EXPECT_EQ(last.bar, "PB1");
  EXPECT_EQ(last.bytesDone, 12U);
  EXPECT_EQ(last.bytesTotal, 12U);
}

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
  ui.Expect({"y f.2.sly" + sizes, "p Joining Files",
             "x " + first + ": " + std::string(fileWasChanged), "x Unable To Join File.", "end"});
  EXPECT_EQ(PathOf(JoinPieces(first, ui)), "");
  EXPECT_EQ(Names().size(), 2U);
}

TEST_F(Join, JoinFolderRefusesAnExistingTargetAndTooManyRanges) {
  MakeFiles(folder, "piece=bytes");
  CopyPlan joined;
  joined.names = {folder, "f", "", 0};
  const std::uint32_t piece = joined.sources.Add(folder / "piece", StateOf(folder / "piece"));
  const std::string exists = "'" + (folder / "f").string() + "' already exists, action canceled";
  ScriptedUi ui({"x Overflow", "x " + exists});
  for (const auto& [ranges, joins] : {std::pair{32768U, 0}, {32767U, 32767}, {32767U, 0}}) {
    joined.ranges.assign(ranges, ByteRange{piece, 0, 0});
    joined.rangeEnds = {ranges};
    EXPECT_EQ(JoinFolder(joined, false, ui, [](const CopyProgress&) { return true; }).ranges,
              joins);
  }
}

TEST_F(Join, TheDialogueAsksForAPiece) {
  const std::string together =
      " Please Make Sure All The Sly Files Are In The Same Folder. Are They In The Same Folder?";
  const std::string exit = " No File Selected. Do You Want To Exit?";
  const std::string filter = "Sly File (*.Sly)|*.Sly;|";
  const std::string cancels =
      ScriptedUi::OpenFileLine("Select File To Join.", filter, HomeFolder());
  const std::string cancelsOther =
      ScriptedUi::OpenFileLine("Please Select Any Other File To Join.", filter, folder / "");
  ScriptedUi ui;
  for (const Script& script : {Script{"n" + together, "y Do You Want To Exit?", "end"},
                               {"y" + together, cancels, "n" + exit},
                               {"y" + together, cancels, "y" + exit, "end"}}) {
    ui.Expect(script);
    EXPECT_EQ(JoinFile(ui), std::nullopt);
  }
  ui.Expect({"n" + together, "end"});
  EXPECT_EQ(JoinFromCommandLine(folder / "f.1.sly", ui), std::nullopt);
  ui.Expect({"y" + together, cancelsOther, "n" + exit, cancelsOther, "y" + exit, "end"});
  EXPECT_EQ(JoinFromCommandLine(folder / "f.1.sly", ui), std::nullopt);
}

}  // namespace
}  // namespace slyver
