#include "engine/split/SlyIt.h"

#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

constexpr const char* marker = "Unable To Divide File";
const Script done = {"i File Successfully Sly.", "end"};

class SlyItJob : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    MakeFiles(folder,
              "a.dat=0123456789 s/a.dat=0123456789 s/a.dat.1.sly=old out/a.dat.1.sly=old "
              "out/a.dat.7.SLY=old out/aa.dat.1.sly=other");
  }

  /// Presses "Sly It"; "filepath" is deleted where the program ends or `deletes` says so.
  int Press(const Script& script, bool deletes = false, AfterFailure after = AfterFailure::Ask) {
    ScriptedUi ui(script);
    LeaveFilePathValue();
    const int pieces = SlyIt(form, ui, after);
    EXPECT_EQ(FilePathValueIsLeft(), !deletes && script.back() != "end");
    return pieces;
  }

  SplitForm form;
};

TEST_F(SlyItJob, ChecksTheFormInOrderThenSplits) {
  struct Case {
    std::string file, to, size, count;
    Script script;
    int pieces = 0;
  };
  const std::string create = " Does Not Exists. Do You Want To Create It?";
  const auto at = [&](const char* name) { return (folder / name).string(); };
  const std::string exit = " Unable To Sly File. Do You Want To Exit?";
  const std::string tooBig = "i Chunk Size Bigger Than File Size.";
  const std::string earlier =
      "Pieces Of An Earlier Split Of a.dat Are In " + at("out") + ". Do You Want To Replace Them?";
  const std::vector<Case> cases = {
      {"a.dat", "none", marker, "", {"x Unable To Divide File."}},
      {"a.dat", "none", "", marker, {"x Unable To Divide File."}},
      {"a.dat", "b/c", "", "", {"n " + at("b/c") + create}},
      {"a.dat", "out", "", "", {"i Please Specify The Size Of The File."}},
      {"a.dat", "out", "ten", "", {"i Please Enter Whole Numbers."}},
      {"s/a.dat", "out", "6", "", {"x Sly File Already Exists. Unable To Sly File.", "end"}},
      {"a.dat", "out", "10", "", {tooBig, "n" + exit}},
      {"a.dat", "out", "10", "", {tooBig, "y" + exit, "end"}},
      {"none", "out", "6", "", {"x " + at("none") + ": No such file or directory", "n" + exit}},
      {"a.dat", "a.dat", "6", "", {"x " + at("a.dat") + ": Not a directory"}},
      {"a.dat", "a.dat/b/", "6", "", {"x " + at("a.dat") + ": Not a directory"}},
      {"a.dat", "b/c", "10", "", {"y " + at("b/c") + create, tooBig, "n" + exit}},
      {"a.dat", "b/c", "6.", "", {"y " + at("b/c") + create, done[0], done[1]}, 2},
      {"a.dat", "out", "6", "", {"n " + earlier}},
      {"a.dat", "out", "6", "", {"y " + earlier, done[0], done[1]}, 2}};
  for (const Case& c : cases) {
    form = {folder / c.file, folder / c.to, true, c.size, c.count};
    const Files before = FilesIn(folder);
    const bool marked = c.size == marker || c.count == marker;
    EXPECT_EQ(Press(c.script, marked), c.pieces) << c.script.front();
    EXPECT_TRUE(c.pieces > 0 || FilesIn(folder) == before) << c.script.front();
  }
  EXPECT_EQ(FilesIn(folder / "out"),
            (Files{{"a.dat.1.sly", "012345"}, {"a.dat.2.sly", "6789"}, {"aa.dat.1.sly", "other"}}));
  EXPECT_EQ(form.Text2, folder / "out" / "");
  form.Text3 = "10";
  EXPECT_EQ(Press({tooBig, "end"}, true, AfterFailure::End), 0);
}

TEST_F(SlyItJob, CutsDiskettesUnlessASizeIsSpecified) {
  const std::string bytes = SomeBytes(1450001);
  form = {folder / "a.dat", folder, false, "6", ""};
  WriteFile(form.Text1, bytes);
  EXPECT_EQ(Press(done), 2);
  EXPECT_EQ(ReadFile(folder / "a.dat.2.sly"), bytes.substr(1450000));
}

}  // namespace
}  // namespace slyver
