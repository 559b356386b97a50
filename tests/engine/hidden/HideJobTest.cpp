#include "engine/hidden/HideJob.h"

#include <gtest/gtest.h>

#include "support/SampleCarrier.h"
#include "support/ScriptedUi.h"

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
  /// Runs all steps; returns the carrier's path, empty if there is none.
  fs::path Run(ScriptedUi& ui) const {
    HideJob job(form, ui, BigFiles::Take);
    if (!Prepared(job)) return {};
    EXPECT_EQ(job.CheckIni(), Next::GoOn);
    return job.DoAll().value_or("");
  }
  /// Tries to add a third file; `typed` answers the question for the last password.
  void ExpectNoAddition(const Script& script, const std::optional<std::string>& typed = {}) const {
    ScriptedUi ui({script.front()});
    if (typed) ui.ExpectMaskedInputBox("Enter Password Of The Last File.", *typed);
    ui.Expect({script.begin() + 1, script.end()});
    ui.Expect({"end"});
    EXPECT_EQ(Run(ui), "");
  }

  std::set<std::string> before;
  HideForm form;
};

TEST_F(Hide, WritesTheDirectoryInTheCodePage) {
  // The password's one character has the code 233, so the key is "233".
  form.Text3 = form.Text4 = "\u00E9";
  form.Text2 = folder / PathFromText("\u00E9\u20AC.bin");
  WriteFile(form.Text2, "x");
  const std::string directory =
      "[s@4)]\r\n&hed#=5F1D435C54\r\n?Kj*^=01030302\r\n!`<jhbddfu=DB\r\n"
      "[0dfg%]\r\n&hed#=DBB31D505A5D\r\n?Kj*^=03\r";
  ScriptedUi ui(hidden);
  EXPECT_EQ(ReadFile(Run(ui)).substr(3001, directory.size()), directory);
  WriteFile(form.Text1, SampleDirectory(1, SampleRecord(0, "a.bin", "7")));
  ui.Expect(hidden);
  EXPECT_EQ(Run(ui), folder / "[1] Hidden File m.png") << "a directory alone is no carrier";
}

TEST_F(Hide, AddsToACarrierShorterThanTwoDirectories) {
  WriteFile(form.Text1, SampleCarrier(1, 1));
  form.Text2 = folder / "b.bin";
  WriteFile(form.Text2, SampleBytes(1));
  ScriptedUi ui({"y" + add});
  ui.ExpectMaskedInputBox("Enter Password Of The Last File.", samplePassword);
  ui.Expect(hidden);
  EXPECT_EQ(ReadFile(Run(ui)), SampleCarrier(1, 2));
}

TEST_F(Hide, AnAdditionNeedsConsentAndTheFirstPasswordAndASoundCarrierWithRoom) {
  const std::string whole = SampleCarrier(3000, 2);
  WriteFile(form.Text1, whole);
  ExpectNoAddition({"n" + add});
  for (const char* typed : {"", "AB", "Ab ", "\u0416"})
    ExpectNoAddition({"y" + add, "x Incorrect Password."}, typed);
  // What is put behind bytes too many or too few could not be found again.
  const std::string damaged =
      form.Text1.string() + ": The list of the files hidden in it is damaged";
  for (const std::string& bytes : {whole.substr(1), std::string(whole).insert(3000, "x")}) {
    WriteFile(form.Text1, bytes);
    ExpectNoAddition({"y" + add, "x " + damaged, "x Unable To Hide File."}, samplePassword);
  }
  WriteFile(form.Text1, SampleCarrier(3000, 6));
  ExpectNoAddition({full});
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png"}));
}

TEST_F(Hide, ChecksTheFormInItsOrder) {
  const std::string none, main = form.Text1.string(), file = form.Text2.string(),
                          empty = folder.string() + "/empty.TXT", long24(24, 'x'), long25(25, 'x');
  WriteFile(empty, "");
  const std::string noData =
      "i File " + empty + " Does Not Contain Any Data In It. Unable To Hide File.";
  const auto refused = [](const HideForm& given, const std::string& line) {
    ScriptedUi ui({line});
    HideJob job(given, ui, BigFiles::Ask);
    EXPECT_EQ(job.Check(), Next::Form);
    return job.Form();
  };
  const auto refusedAtOnce = [&](const HideForm& given, const std::string& line) {
    ScriptedUi ui({line});
    HideJob job({given.Text1, given.Text2, {}, {}, given.output}, ui, BigFiles::Take);
    EXPECT_FALSE(job.CheckFiles()) << "without a password";
  };
  // What comes behind the check in question is wrong as well.
  for (const auto& [given, line] : std::vector<std::pair<HideForm, std::string>>{
           {{none, none, none, none}, "i Main File Is Missing. Select The File Again."},
           {{empty, none, none, none}, "i File To Hide Is Missing. Select The File Again."},
           {{empty, file, long24, long24}, noData},
           {{main, empty, "x", "x"}, noData},
           {{main + "no", file, "x", "x"}, "x " + main + "no: No such file or directory"},
           {{main, folder, "x", "x"}, "x " + folder.string() + ": Is a directory"}}) {
    EXPECT_EQ(refused(given, line).Text3, given.Text3);
    refusedAtOnce(given, line);
  }
  for (const auto& [password, again, line] :
       {std::tuple{"", "x", "i Enter Password."},
        {"x", "", "i Enter Password."},
        {"slyver", "slyver",
         "i Everybody Knows This Password, As Lists Without A Password Have It. Choose Another "
         "One."}})
    EXPECT_EQ(refused({empty, empty, password, again}, line).Text4, Secret(again));
  const HideForm left =
      refused({main, file, long25, "x"}, "i Passwords Do Not Match. Re-Enter Them.");
  EXPECT_TRUE(left.Text1 == main && left.Text3.Text().empty() && left.Text4.Text().empty());
  for (const std::string name : {"m.txt", "m.ini", "m.inf", "m.doc", "m.log", "m.html", "m.htm",
                                 "m.php", "m.rtf", "m.dot", "txt"}) {
    const HideForm given = {folder / name, file, "x", "y"};
    const std::string line =
        "i Select Some Other File Format In Which You Want To Hide File. Unable To Hide File In " +
        name.substr(name.size() - 3) + " Format.";
    const HideForm cleared = refused(given, line);
    EXPECT_TRUE(cleared.Text1.empty() && cleared.Text2.empty() && cleared.Text3.Text().empty());
    refusedAtOnce(given, line);
  }
  const fs::path output = folder / "none";
  refusedAtOnce({main, file, "", "", output},
                "x " + (output / "Hidden File m.png").string() + ": No such file or directory");
}

TEST_F(Hide, AsksBeforeItTakesABigFileWhereTheFaceWantsThat) {
  const Script no = {
      "n The File Size Is Quite Big. It Will Take Several Minutes To Hide This File. Please Exit "
      "Other Applications You Might Be Running. Do You Want To Continue?",
      "end"};
  for (const fs::path& big : {form.Text1, form.Text2})
    for (const auto& [length, asks] :
         {std::pair{10000000U, false}, {10000001U, true}, {5U, false}}) {
      fs::resize_file(big, length);
      ScriptedUi ui(asks ? no : Script{});
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
    if (ready > 80) ui.Expect({"x Unable To Hide File. Please Try Again.", "end"});
    EXPECT_EQ(job.CheckIni(), ready > 80 ? Next::Over : Next::GoOn);
    EXPECT_EQ(Names(PrivateFolder()) == before, ready > 80);
  }
}

TEST_F(Hide, TellsWhatWillNotComeBackOrOpenAsItIs) {
  const fs::path name = folder / "Holiday pictures from Spain.zip";
  EXPECT_EQ(NameNote(name), "The Name Will Come Back As Holiday pictures fro.zip");
  EXPECT_EQ(NameNote(name, true), "The Name Will Come Back As Holiday pictures.zip");
  EXPECT_EQ(NameNote(folder / std::string(24, 'a')), "");
  const auto note = [this](const char* bytes) {
    WriteFile(form.Text1, bytes);
    return FormatNote(form.Text1);
  };
  for (const char* bytes : {"PK\x03\x04..", "PK\x05\x06..", "\x1F\x8B....", "\xFD\x37zXZ.",
                            "\x28\xB5\x2F\xFD..", "7z\xBC\xAF.."})
    EXPECT_TRUE(note(bytes).starts_with("The New File May Not Open")) << bytes;
  for (const char* bytes : {"\x89PNG..", "PK\x03\x04", "PK\x03\x03.."})
    EXPECT_EQ(note(bytes), "") << bytes;
  EXPECT_EQ(FormatNote(folder), "");
}

TEST_F(Hide, AFileThatChangesMeanwhileIsNotHidden) {
  ScriptedUi ui;
  for (const fs::path& changed : {form.Text1, form.Text2}) {
    HideJob job(form, ui, BigFiles::Take);
    ASSERT_TRUE(Prepared(job) && job.CheckIni() == Next::GoOn);
    WriteFile(folder / "other", ReadFile(changed));
    fs::rename(folder / "other", changed);  // The same length and bytes are not enough.
    ui.Expect({"x " + changed.string() + ": The file was changed while it was being hidden",
               "x Unable To Hide File.", "end"});
    EXPECT_EQ(job.DoAll(), std::nullopt);
  }
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png"}));
}

}  // namespace
}  // namespace slyver
