#include "engine/hidden/HideJob.h"

#include <gtest/gtest.h>

#include "engine/system/FileError.h"
#include "engine/system/Files.h"
#include "engine/system/TargetFile.h"
#include "engine/system/WorkFolders.h"
#include "support/SampleCarrier.h"
#include "support/ScriptedUi.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

constexpr const char* addQuestion =
    "There are Files Already Hidden In This File. Do You Want To Add Another File In It?";
constexpr const char* lastPassword = "Enter Password Of The Last File.";
constexpr const char* bigQuestion =
    "The File Size Is Quite Big. It Will Take Several Minutes To Hide This File. Please Exit Other "
    "Applications You Might Be Running. Do You Want To Continue?";

/// A hide of "a.bin" in "m.png".
class Hide : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    privateFolder = PrivateFolder();
    privateBefore = Names(privateFolder);
    form = {folder / "m.png", folder / "a.bin", samplePassword, samplePassword};
    WriteFile(form.Text1, SomeBytes(3000));
    WriteFile(form.Text2, SampleBytes(0));
  }
  void TearDown() override {
    EXPECT_EQ(Names(privateFolder), privateBefore) << "something temporary is left";
    TempFolderTest::TearDown();
  }

  /// Runs all steps. The main file and the hidden one must stay as they are.
  std::optional<fs::path> RunSteps() {
    const std::string mainBefore = ReadFile(form.Text1);
    const std::string hiddenBefore = ReadFile(form.Text2);
    std::optional<fs::path> carrier;
    HideJob job(form, ui, BigFiles::Take);
    if (job.Check() && job.PrepareHide()) {
      EXPECT_EQ(job.CheckIni(), HideJob::Ini::Complete);
      carrier = job.DoAll();
    }
    EXPECT_EQ(ReadFile(form.Text1), mainBefore);
    EXPECT_EQ(ReadFile(form.Text2), hiddenBefore);
    return carrier;
  }
  void ExpectEnd(const std::string& message, Icon icon) {
    ui.ExpectMessage(message, icon);
    ui.ExpectEndProgram();
  }
  void ExpectHidden() { ExpectEnd("File Hidden.", Icon::Information); }
  void ExpectAddition(const std::optional<std::string>& typed) {
    ui.ExpectQuestion(addQuestion, Answer::Yes);
    ui.ExpectMaskedInputBox(lastPassword, typed);
  }

  fs::path privateFolder;
  std::set<std::string> privateBefore;
  HideForm form;
  ScriptedUi ui;
};

TEST_F(Hide, WritesTheCarrierThatWasWorkedOutByHand) {
  for (const SampleMain& main : sampleMains) {
    WriteFile(form.Text1, SomeBytes(main.length));
    ExpectHidden();
    const auto carrier = RunSteps();
    EXPECT_EQ(carrier, folder / "Hidden File m.png") << main.length;
    EXPECT_TRUE(ReadFile(folder / "Hidden File m.png") == SampleCarrier(main, 1)) << main.length;
    fs::remove(folder / "Hidden File m.png");
  }
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png"}));
}

TEST_F(Hide, AddsUpToSixFilesAndRefusesTheSeventh) {
  for (const SampleMain& main : {sampleMains.front(), sampleMains[2], sampleMains.back()}) {
    for (std::size_t count = 1; count < sampleFiles.size(); ++count) {
      WriteFile(form.Text1, SampleCarrier(main, count));
      form.Text2 = folder / sampleFiles.at(count).name;
      WriteFile(form.Text2, SampleBytes(count));
      form.Text3 = form.Text4 = "another one";  // the last file's password counts
      ExpectAddition(samplePassword);
      ExpectHidden();
      const auto carrier = RunSteps();
      ASSERT_TRUE(carrier.has_value());
      EXPECT_TRUE(ReadFile(*carrier) == SampleCarrier(main, count + 1)) << main.length << count;
      fs::remove(*carrier);
    }
    WriteFile(form.Text1, SampleCarrier(main, 6));
    ExpectEnd(
        "There Are Aready 6 Files Hidden In This File. Unable To Hide File. Please Select Another "
        "File.",
        Icon::Information);
    EXPECT_EQ(RunSteps(), std::nullopt);
  }
}

TEST_F(Hide, ADirectoryAloneIsNoCarrier) {
  WriteFile(form.Text1, SampleDirectory("07", sampleFiles[0].record));
  ExpectHidden();
  EXPECT_NE(RunSteps(), std::nullopt);
}

TEST_F(Hide, AnAdditionNeedsConsentAndTheFirstPassword) {
  WriteFile(form.Text1, SampleCarrier(sampleMains[5], 2));
  ui.ExpectQuestion(addQuestion, Answer::No);
  ui.ExpectEndProgram();
  EXPECT_EQ(RunSteps(), std::nullopt);
  for (const std::optional<std::string>& typed :
       {std::optional<std::string>{}, {""}, {"AB"}, {"Ab "}, {"A"}, {"\u0416"}}) {
    ExpectAddition(typed);
    ExpectEnd("Incorrect Password.", Icon::Critical);
    EXPECT_EQ(RunSteps(), std::nullopt);
  }
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png"}));
}

TEST_F(Hide, AddsNothingWhereItCouldNotBeFoundAgain) {
  const std::string whole = SampleCarrier(sampleMains[5], 2);
  std::string longer = whole;
  longer.insert(3000, "x");
  for (const std::string& damaged : {whole.substr(1), longer}) {
    WriteFile(form.Text1, damaged);
    ExpectAddition(samplePassword);
    ui.ExpectMessage(form.Text1.string() + ": The list of the files hidden in it is damaged",
                     Icon::Critical);
    ExpectEnd("Unable To Hide File.", Icon::Critical);
    EXPECT_EQ(RunSteps(), std::nullopt);
  }
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png"}));
}

TEST_F(Hide, ChecksTheFormInItsOrder) {
  const std::string path = folder.string();
  const std::string none, main = path + "/m.png", hidden = path + "/a.bin";
  const std::string empty = path + "/empty.TXT";
  const std::string long25(25, 'x');
  WriteFile(empty, "");
  const auto noData = [](const std::string& file) {
    return "File " + file + " Does Not Contain Any Data In It. Unable To Hide File.";
  };
  const auto hide = [&](const HideForm& held, const std::string& text, Icon icon) {
    ui.ExpectMessage(text, icon);
    HideJob job(held, ui, BigFiles::Ask);
    EXPECT_FALSE(job.Check()) << text;
    return job.Form();
  };
  struct Case {
    HideForm form;
    std::string message;
    bool keepsPasswords = true;
  };
  // What comes behind the check in question is wrong as well.
  for (const Case& c :
       {Case{{none, none, none, none}, "Main File Is Missing. Select The File Again."},
        Case{{empty, none, none, none}, "File To Hide Is Missing. Select The File Again."},
        Case{{empty, empty, none, "x"}, "Enter Password."},
        Case{{empty, empty, "x", none}, "Enter Password."},
        Case{{empty, empty, long25, "x"}, "Passwords Do Not Match. Re-Enter Them.", false},
        Case{{empty, empty, long25, long25},
             "A Password Has 24 Characters At Most. Choose A Shorter One."},
        Case{{empty, empty, "\u0416", "\u0416"},
             "The Password Has A Character That Cannot Be Used. Choose Another Password."},
        Case{{empty, empty, "x", "x"}, noData(empty)},
        Case{{main, empty, "x", "x"}, noData(empty)}}) {
    const HideForm after = hide(c.form, c.message, Icon::Information);
    EXPECT_EQ(after.Text1, c.form.Text1);
    EXPECT_EQ(after.Text2, c.form.Text2);
    EXPECT_EQ(after.Text3, c.keepsPasswords ? c.form.Text3 : "");
    EXPECT_EQ(after.Text4, c.keepsPasswords ? c.form.Text4 : "");
  }
  for (const std::string name : {"m.txt", "m.ini", "m.inf", "m.doc", "m.log", "m.html", "m.htm",
                                 "m.php", "m.rtf", "m.dot", "txt"}) {
    const HideForm after = hide({folder / name, hidden, "x", "y"},
                                "Select Some Other File Format In Which You Want To Hide File. "
                                "Unable To Hide File In " +
                                    name.substr(name.size() - 3) + " Format.",
                                Icon::Information);
    EXPECT_TRUE(after.Text1.empty() && after.Text2.empty() && after.Text3.empty() &&
                after.Text4.empty());
  }
  (void)hide({path + "/none", hidden, "x", "x"}, path + "/none: No such file or directory",
             Icon::Critical);
  (void)hide({main, path, "x", "x"}, path + ": Is a directory", Icon::Critical);
}

TEST_F(Hide, AsksBeforeItTakesABigFileWhereTheFaceWantsThat) {
  for (const fs::path& big : {form.Text1, form.Text2}) {
    fs::resize_file(big, 10000000);
    EXPECT_TRUE(HideJob(form, ui, BigFiles::Ask).Check());
    fs::resize_file(big, 10000001);
    EXPECT_TRUE(HideJob(form, ui, BigFiles::Take).Check());
    ui.ExpectQuestion(bigQuestion, Answer::Yes);
    EXPECT_TRUE(HideJob(form, ui, BigFiles::Ask).Check());
    ui.ExpectQuestion(bigQuestion, Answer::No);
    ui.ExpectEndProgram();
    EXPECT_FALSE(HideJob(form, ui, BigFiles::Ask).Check());
    fs::resize_file(big, 5);
  }
}

TEST_F(Hide, WaitsForTheDirectoryFor80Ticks) {
  const fs::path directory = privateFolder / "tempHHH" / "3.ini";
  const fs::path status = privateFolder / "tempHHH" / "4.ini";
  for (const int ready : {1, 80, 81}) {
    HideJob job(form, ui, BigFiles::Take);
    ASSERT_TRUE(job.Check() && job.PrepareHide());
    const std::string text = ReadFile(directory);
    fs::remove(directory);
    fs::create_directory(status);  // cannot be written either
    for (int tick = 1; tick < 80; ++tick) {
      if (tick == ready) break;
      ASSERT_EQ(job.CheckIni(), HideJob::Ini::Waiting) << tick;
      if (tick == 5) WriteFile(directory, text);
    }
    if (ready > 80) {
      ExpectEnd("Unable To Hide File. Please Try Again.", Icon::Critical);
      EXPECT_EQ(job.CheckIni(), HideJob::Ini::Over);
      EXPECT_EQ(Names(privateFolder), privateBefore);
      continue;
    }
    WriteFile(directory, text);
    fs::remove(status);
    EXPECT_EQ(job.CheckIni(), HideJob::Ini::Complete);
  }
}

TEST_F(Hide, TakesNothingThatAnInterruptedHideHasLeft) {
  for (const std::size_t count : {0U, 1U}) {
    WriteFile(privateFolder / "3.ini", "[s@4)]\r\n&hed#=00\r\n[9dfg%]\r\n&hed#=00\r\n");
    fs::create_directories(privateFolder / "tempHHH" / "sub");
    WriteFile(privateFolder / "tempHHH" / "3.ini", "[9dfg%]\r\n&hed#=00\r\n");
    WriteFile(form.Text1, count == 0 ? SomeBytes(3000) : SampleCarrier(sampleMains[5], 1));
    form.Text2 = folder / sampleFiles.at(count).name;
    WriteFile(form.Text2, SampleBytes(count));
    if (count > 0) ExpectAddition(samplePassword);
    ExpectHidden();
    const auto carrier = RunSteps();
    ASSERT_TRUE(carrier.has_value());
    EXPECT_TRUE(ReadFile(*carrier) == SampleCarrier(sampleMains[5], count + 1)) << count;
  }
}

TEST_F(Hide, TakesTheFirstNameThatIsFree) {
  for (const char* name : {"Hidden File m.png", "[1] Hidden File m.png", "[2] Hidden File m.png"}) {
    ExpectHidden();
    EXPECT_EQ(RunSteps(), folder / name);
  }
  fs::create_directory(folder / "[3] Hidden File m.png");
  ExpectHidden();
  EXPECT_EQ(RunSteps(), folder / "[4] Hidden File m.png");
}

TEST_F(Hide, StoresNamesAndPasswordsInTheCodePage) {
  // The password's one character has the code 233, so the key is "233".
  form.Text3 = form.Text4 = "\u00E9";
  form.Text2 = folder / PathFromText("\u00E9\u20AC.bin");
  WriteFile(form.Text2, "x");
  ExpectHidden();
  auto carrier = RunSteps();
  ASSERT_TRUE(carrier.has_value());
  const std::string directory =
      "[s@4)]\r\n&hed#=5F1D435C54\r\n?Kj*^=01030302\r\n!`<jhbddfu=DB\r\n"
      "[0dfg%]\r\n&hed#=DBB31D505A5D\r\n?Kj*^=03\r";
  EXPECT_EQ(ReadFile(*carrier).substr(3001, directory.size()), directory);

  form.Text3 = form.Text4 = samplePassword;
  form.Text2 = folder / PathFromText("\u0416.bin");
  WriteFile(form.Text2, "x");
  EXPECT_EQ(NameNote(form.Text2), "The Name Has Characters That Will Come Back As \"_\".");
  ExpectHidden();
  carrier = RunSteps();
  ASSERT_TRUE(carrier.has_value());
  EXPECT_NE(ReadFile(*carrier).find("&hed#=691B5B5158\r\n"), std::string::npos);
}

TEST_F(Hide, SaysThatANameWillBeShortened) {
  EXPECT_EQ(NameNote(folder / std::string(24, 'a')), "");
  std::string accents;
  for (int i = 0; i < 24; ++i) accents += "\u00E9";
  EXPECT_EQ(NameNote(folder / PathFromText(accents)), "") << "characters count, not bytes";
  EXPECT_EQ(NameNote(folder / std::string(25, 'a')),
            "The Name Is Longer Than 24 Characters And Will Come Back Shortened.");
}

TEST_F(Hide, AFileThatChangesMeanwhileIsNotHidden) {
  for (const bool main : {true, false}) {
    HideJob job(form, ui, BigFiles::Take);
    ASSERT_TRUE(job.Check() && job.PrepareHide());
    ASSERT_EQ(job.CheckIni(), HideJob::Ini::Complete);
    const fs::path& changed = main ? form.Text1 : form.Text2;
    WriteFile(folder / "other", ReadFile(changed));
    fs::rename(folder / "other", changed);  // The same length and bytes are not enough.
    ui.ExpectMessage(changed.string() + ": The file was changed while it was being hidden",
                     Icon::Critical);
    ExpectEnd("Unable To Hide File.", Icon::Critical);
    EXPECT_EQ(job.DoAll(), std::nullopt);
  }
  HideJob job(form, ui, BigFiles::Take);
  ASSERT_TRUE(job.Check());
  WriteFile(form.Text1, "");
  ExpectEnd("An Error Has Occured. Please Try Again.", Icon::Critical);
  EXPECT_FALSE(job.PrepareHide());
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png"}));
}

TEST_F(Hide, FailureAndCancelLeaveNothing) {
  const fs::path target = folder / "Hidden File m.png";
  {
    const LockedFile other(TemporaryPath(target));
    ui.ExpectMessage(target.string() + ": Another program is writing this file", Icon::Critical);
    ExpectEnd("Unable To Hide File.", Icon::Critical);
    EXPECT_EQ(RunSteps(), std::nullopt);
  }
  fs::remove(TemporaryPath(target));
  WriteFile(privateFolder / "tempHHH", "in the way");
  ui.ExpectMessage((privateFolder / "tempHHH").string() + ": File exists", Icon::Critical);
  ExpectEnd("Unable To Hide File.", Icon::Critical);
  EXPECT_EQ(RunSteps(), std::nullopt);
  fs::remove(privateFolder / "tempHHH");

  ui.StopAtBytes(1);
  EXPECT_THROW((void)RunSteps(), Cancelled);
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png"}));
}

TEST_F(Hide, FollowsNoLinkWhereItWorks) {
  fs::create_directory(folder / "user");
  WriteFile(folder / "user" / "data", "precious");
  if (!MakeFolderLink(folder / "user", privateFolder / "tempHHH")) GTEST_SKIP() << "no links here";
  (void)MakeFileLink(folder / "user" / "data", privateFolder / "3.ini");
  ExpectHidden();
  EXPECT_NE(RunSteps(), std::nullopt);
  EXPECT_EQ(Names(folder / "user"), std::set<std::string>{"data"});
  EXPECT_EQ(ReadFile(folder / "user" / "data"), "precious");
}

}  // namespace
}  // namespace slyver
