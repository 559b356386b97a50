#include "engine/hidden/HideJob.h"

#include <gtest/gtest.h>

#include "engine/split/Scene.h"
#include "support/SampleCarrier.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;
using Next = HideJob::Next;

const Script hidden = {"i File Hidden.", "end"};
const std::string add =
    " There are Files Already Hidden In This File. Do You Want To Add Another File In It?";
const std::string full =
    "i There Are Aready 6 Files Hidden In This File. Unable To Hide File. Please Select Another "
    "File.";

/// A hide of "a.bin" in "m.png".
class Hide : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    form = {folder / "m.png", folder / "a.bin", samplePassword, samplePassword};
    WriteFile(form.Text1, SomeBytes(3000));
    WriteFile(form.Text2, SampleBytes(0));
    before = Names(PrivateFolder());
  }
  void TearDown() override {
    EXPECT_EQ(Names(PrivateFolder()), before) << "something temporary is left";
    TempFolderTest::TearDown();
  }

  static bool Prepared(HideJob& job) {
    return job.Check() == Next::GoOn && job.PrepareHide() == Next::GoOn;
  }
  /// Runs all steps. The main file and the hidden one must stay as they are. `typed` answers the
  /// question for the last password of an addition.
  fs::path Run(const Script& script, const std::optional<std::string>& typed = samplePassword) {
    ScriptedUi ui;
    for (const std::string& line : script) {
      Expect(ui, {line});
      if (line == "y" + add) ui.ExpectMaskedInputBox("Enter Password Of The Last File.", typed);
    }
    const std::string mainBefore = ReadFile(form.Text1);
    const std::string hiddenBefore = ReadFile(form.Text2);
    std::optional<fs::path> carrier;
    HideJob job(form, ui, BigFiles::Take);
    if (Prepared(job)) {
      EXPECT_EQ(job.CheckIni(), Next::GoOn);
      carrier = job.DoAll();
    }
    EXPECT_EQ(ReadFile(form.Text1), mainBefore);
    EXPECT_EQ(ReadFile(form.Text2), hiddenBefore);
    return carrier.value_or("");
  }
  /// What can be said without a password.
  bool FilesWillDo(const Script& script = {}) {
    ScriptedUi ui;
    Expect(ui, script);
    return HideJob({form.Text1, form.Text2, {}, {}, form.output}, ui, BigFiles::Take).CheckFiles();
  }

  std::set<std::string> before;
  HideForm form;
};

TEST_F(Hide, WritesTheCarrierThatWasWorkedOutByHand) {
  form.output = folder / "out";
  fs::create_directory(form.output);
  for (const SampleMain& main : sampleMains) {
    WriteFile(form.Text1, SomeBytes(main.length));
    const fs::path carrier = Run(hidden);
    EXPECT_EQ(carrier, form.output / "Hidden File m.png");
    EXPECT_TRUE(ReadFile(carrier) == SampleCarrier(main, 1)) << main.length;
    fs::remove(carrier);
  }
  WriteFile(form.Text1, SampleDirectory("07", sampleFiles[0].record));
  EXPECT_NE(Run(hidden), "") << "a directory alone is no carrier";
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png", "out"}));
}

TEST_F(Hide, AddsUpToSixFilesAndRefusesTheSeventh) {
  for (const SampleMain& main : {sampleMains.front(), sampleMains[2], sampleMains.back()}) {
    for (std::size_t count = 1; count < sampleFiles.size(); ++count) {
      WriteFile(form.Text1, SampleCarrier(main, count));
      form.Text2 = folder / sampleFiles.at(count).name;
      WriteFile(form.Text2, SampleBytes(count));
      form.Text3 = form.Text4 = "another one";  // the last file's password counts
      EXPECT_TRUE(FilesWillDo());
      const fs::path carrier = Run({"y" + add, hidden[0], "end"});
      EXPECT_TRUE(ReadFile(carrier) == SampleCarrier(main, count + 1)) << main.length << count;
      fs::remove(carrier);
    }
    WriteFile(form.Text1, SampleCarrier(main, 6));
    EXPECT_FALSE(FilesWillDo({full}));
    EXPECT_EQ(Run({full, "end"}), "");
  }
}

TEST_F(Hide, AnAdditionNeedsConsentAndTheFirstPasswordAndASoundCarrier) {
  const std::string whole = SampleCarrier(sampleMains[5], 2);
  WriteFile(form.Text1, whole);
  EXPECT_EQ(Run({"n" + add, "end"}), "");
  for (const std::optional<std::string>& typed :
       {std::optional<std::string>{}, {""}, {"AB"}, {"Ab "}, {"A"}, {"\u0416"}})
    EXPECT_EQ(Run({"y" + add, "x Incorrect Password.", "end"}, typed), "");
  // What is put behind bytes too many or too few could not be found again.
  for (const std::string& damaged : {whole.substr(1), std::string(whole).insert(3000, "x")}) {
    WriteFile(form.Text1, damaged);
    EXPECT_EQ(Run({"y" + add,
                   "x " + form.Text1.string() + ": The list of the files hidden in it is damaged",
                   "x Unable To Hide File.", "end"}),
              "");
  }
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png"}));
}

TEST_F(Hide, ChecksTheFormInItsOrder) {
  enum Then { Keeps, LosesPasswords, LosesAll };
  struct Case {
    HideForm form;
    std::string line;
    bool atOnce = true;  // Said before there is a password, too.
    Then then = Keeps;
  };
  const std::string none, main = form.Text1.string(), file = form.Text2.string(),
                          empty = folder.string() + "/empty.TXT", long24(24, 'x'), long25(25, 'x');
  WriteFile(empty, "");
  const std::string noData =
      "i File " + empty + " Does Not Contain Any Data In It. Unable To Hide File.";
  // What comes behind the check in question is wrong as well.
  std::vector<Case> cases = {
      {{none, none, none, none}, "i Main File Is Missing. Select The File Again."},
      {{empty, none, none, none}, "i File To Hide Is Missing. Select The File Again."},
      {{empty, empty, none, "x"}, "i Enter Password.", false},
      {{empty, empty, "x", none}, "i Enter Password.", false},
      {{empty, empty, long25, "x"},
       "i Passwords Do Not Match. Re-Enter Them.",
       false,
       LosesPasswords},
      {{empty, empty, long25, long25},
       "i A Password Has At Most 24 Characters. Choose A Shorter One.",
       false},
      {{empty, empty, "slyver", "slyver"},
       "i Everybody Knows This Password, As Lists Without A Password Have It. Choose Another One.",
       false},
      {{empty, empty, "\u0416", "\u0416"},
       "i The Password Has A Character That Cannot Be Used. Choose Another Password.",
       false},
      {{empty, file, long24, long24}, noData},
      {{main, empty, "x", "x"}, noData},
      {{main + "no", file, "x", "x"}, "x " + main + "no: No such file or directory"},
      {{main, folder, "x", "x"}, "x " + folder.string() + ": Is a directory"}};
  for (const std::string name : {"m.txt", "m.ini", "m.inf", "m.doc", "m.log", "m.html", "m.htm",
                                 "m.php", "m.rtf", "m.dot", "txt"})
    cases.push_back({{folder / name, file, "x", "y"},
                     "i Select Some Other File Format In Which You Want To Hide File. Unable To "
                     "Hide File In " +
                         name.substr(name.size() - 3) + " Format.",
                     true,
                     LosesAll});
  for (const Case& c : cases) {
    ScriptedUi ui;
    Expect(ui, {c.line});
    HideJob job(c.form, ui, BigFiles::Ask);
    EXPECT_EQ(job.Check(), Next::Form) << c.line;
    EXPECT_EQ(job.Form().Text1, c.then == LosesAll ? fs::path() : c.form.Text1);
    EXPECT_EQ(job.Form().Text2, c.then == LosesAll ? fs::path() : c.form.Text2);
    EXPECT_EQ(job.Form().Text3, c.then == Keeps ? c.form.Text3 : "");
    EXPECT_EQ(job.Form().Text4, c.then == Keeps ? c.form.Text4 : "");
    form = c.form;
    if (c.atOnce) {
      EXPECT_FALSE(FilesWillDo({c.line}));
    }
  }
  form = {main, file, "x", "x", folder / "none"};
  EXPECT_FALSE(FilesWillDo(
      {"x " + (form.output / "Hidden File m.png").string() + ": No such file or directory"}));
}

TEST_F(Hide, AsksBeforeItTakesABigFileWhereTheFaceWantsThat) {
  const Script no = {
      "n The File Size Is Quite Big. It Will Take Several Minutes To Hide This File. Please Exit "
      "Other Applications You Might Be Running. Do You Want To Continue?",
      "end"};
  for (const fs::path& big : {form.Text1, form.Text2})
    for (const auto& [length, asks] : {std::pair{10000000, false}, {10000001, true}, {5, false}}) {
      ScriptedUi ui;
      fs::resize_file(big, static_cast<std::uintmax_t>(length));
      if (asks) Expect(ui, no);
      EXPECT_EQ(HideJob(form, ui, BigFiles::Ask).Check(), asks ? Next::Over : Next::GoOn);
      EXPECT_EQ(HideJob(form, ui, BigFiles::Take).Check(), Next::GoOn);
    }
}

TEST_F(Hide, WaitsForTheDirectoryFor80Ticks) {
  const fs::path work = PrivateFolder() / "slyver-run" / "tempHHH";
  for (const int ready : {1, 80, 81}) {
    ScriptedUi ui;
    HideJob job(form, ui, BigFiles::Take);
    ASSERT_TRUE(Prepared(job));
    const std::string text = ReadFile(work / "3.ini");
    fs::remove(work / "3.ini");
    fs::create_directory(work / "4.ini");  // cannot be written either
    for (int tick = 1; tick < 80 && tick != ready; ++tick) {
      ASSERT_EQ(job.CheckIni(), Next::Wait) << tick;
      if (tick == 5) WriteFile(work / "3.ini", text);
    }
    fs::remove(work / "4.ini");
    // In the end with all values, or without the last one.
    WriteFile(work / "3.ini", text.substr(0, ready > 80 ? text.rfind('?') : text.size()));
    if (ready > 80) Expect(ui, {"x Unable To Hide File. Please Try Again.", "end"});
    EXPECT_EQ(job.CheckIni(), ready > 80 ? Next::Over : Next::GoOn);
    EXPECT_EQ(Names(PrivateFolder()) == before, ready > 80);
  }
}

TEST_F(Hide, StoresNamesAndPasswordsInTheCodePage) {
  // The password's one character has the code 233, so the key is "233".
  form.Text3 = form.Text4 = "\u00E9";
  form.Text2 = folder / PathFromText("\u00E9\u20AC.bin");
  WriteFile(form.Text2, "x");
  const std::string directory =
      "[s@4)]\r\n&hed#=5F1D435C54\r\n?Kj*^=01030302\r\n!`<jhbddfu=DB\r\n"
      "[0dfg%]\r\n&hed#=DBB31D505A5D\r\n?Kj*^=03\r";
  EXPECT_EQ(ReadFile(Run(hidden)).substr(3001, directory.size()), directory);
}

TEST_F(Hide, TellsWhatWillNotComeBackOrOpenAsItIs) {
  EXPECT_EQ(NameNote(folder / PathFromText("\u0416.bin")), "The Name Will Come Back As _.bin");
  EXPECT_EQ(NameNote(folder / "Holiday pictures from Spain.jpg"),
            "The Name Will Come Back As Holiday pictures fro.jpg");
  EXPECT_EQ(NameNote(folder / std::string(24, 'a')), "");
  EXPECT_EQ(NameNote(folder / "Holiday pictures from Spain.zip", true),
            "The Name Will Come Back As Holiday pictures.zip");
  for (const auto& [bytes, warns] : {std::pair{"PK\x03\x04..", true},
                                     {"PK\x05\x06..", true},
                                     {"\x1F\x8B....", true},
                                     {"\xFD\x37zXZ.", true},
                                     {"\x28\xB5\x2F\xFD..", true},
                                     {"7z\xBC\xAF..", true},
                                     {"\x89PNG..", false},
                                     {"PK\x03\x04", false},
                                     {"PK\x03\x03..", false}}) {
    WriteFile(form.Text1, bytes);
    EXPECT_EQ(FormatNote(form.Text1).starts_with("The New File May Not Open"), warns) << bytes;
  }
  EXPECT_EQ(FormatNote(folder), "");
}

TEST_F(Hide, AFileThatChangesMeanwhileIsNotHidden) {
  ScriptedUi ui;
  for (const fs::path& changed : {form.Text1, form.Text2}) {
    HideJob job(form, ui, BigFiles::Take);
    ASSERT_TRUE(Prepared(job) && job.CheckIni() == Next::GoOn);
    WriteFile(folder / "other", ReadFile(changed));
    fs::rename(folder / "other", changed);  // The same length and bytes are not enough.
    Expect(ui, {"x " + changed.string() + ": The file was changed while it was being hidden",
                "x Unable To Hide File.", "end"});
    EXPECT_EQ(job.DoAll(), std::nullopt);
  }
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png"}));
}

}  // namespace
}  // namespace slyver
