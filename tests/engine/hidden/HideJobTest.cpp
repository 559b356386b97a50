#include "engine/hidden/HideJob.h"

#include <gtest/gtest.h>

#include "engine/system/FileError.h"
#include "engine/system/TargetFile.h"
#include "engine/system/Text8.h"
#include "support/SampleCarrier.h"
#include "support/ScriptedUi.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;
using Next = HideJob::Next;

constexpr const char* addQuestion =
    "There are Files Already Hidden In This File. Do You Want To Add Another File In It?";
constexpr const char* lastPassword = "Enter Password Of The Last File.";
constexpr const char* full =
    "There Are Aready 6 Files Hidden In This File. Unable To Hide File. Please Select Another "
    "File.";
constexpr const char* bigQuestion =
    "The File Size Is Quite Big. It Will Take Several Minutes To Hide This File. Please Exit Other "
    "Applications You Might Be Running. Do You Want To Continue?";

/// A hide of "a.bin" in "m.png".
class Hide : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    form = {folder / "m.png", folder / "a.bin", samplePassword, samplePassword};
    WriteFile(form.Text1, SomeBytes(3000));
    WriteFile(form.Text2, SampleBytes(0));
    privateBefore = Names(PrivateFolder());
  }
  void TearDown() override {
    EXPECT_EQ(Names(PrivateFolder()), privateBefore) << "something temporary is left";
    TempFolderTest::TearDown();
  }

  /// Runs all steps. The main file and the hidden one must stay as they are.
  std::optional<fs::path> RunSteps() {
    const std::string mainBefore = ReadFile(form.Text1);
    const std::string hiddenBefore = ReadFile(form.Text2);
    std::optional<fs::path> carrier;
    HideJob job(form, ui, BigFiles::Take);
    if (job.Check() == Next::GoOn && job.PrepareHide() == Next::GoOn) {
      EXPECT_EQ(job.CheckIni(), Next::GoOn);
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
  void ExpectUnable(const std::string& reason) {
    ui.ExpectMessage(reason, Icon::Critical);
    ExpectEnd("Unable To Hide File.", Icon::Critical);
  }
  void ExpectAddition(const std::optional<std::string>& typed) {
    ui.ExpectQuestion(addQuestion, Answer::Yes);
    ui.ExpectMaskedInputBox(lastPassword, typed);
  }

  std::set<std::string> privateBefore;
  HideForm form;
  ScriptedUi ui;
};

TEST_F(Hide, WritesTheCarrierThatWasWorkedOutByHand) {
  form.output = folder / "out";
  fs::create_directory(form.output);
  for (const SampleMain& main : sampleMains) {
    WriteFile(form.Text1, SomeBytes(main.length));
    ExpectHidden();
    EXPECT_EQ(RunSteps(), form.output / "Hidden File m.png") << main.length;
    EXPECT_TRUE(ReadFile(form.output / "Hidden File m.png") == SampleCarrier(main, 1))
        << main.length;
    fs::remove(form.output / "Hidden File m.png");
  }
  WriteFile(form.Text1, SampleDirectory("07", sampleFiles[0].record));
  ExpectHidden();
  EXPECT_NE(RunSteps(), std::nullopt) << "a directory alone is no carrier";
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png", "out"}));
}

TEST_F(Hide, AddsUpToSixFilesAndRefusesTheSeventh) {
  for (const SampleMain& main : {sampleMains.front(), sampleMains[2], sampleMains.back()}) {
    for (std::size_t count = 1; count < sampleFiles.size(); ++count) {
      WriteFile(form.Text1, SampleCarrier(main, count));
      form.Text2 = folder / sampleFiles.at(count).name;
      WriteFile(form.Text2, SampleBytes(count));
      form.Text3 = form.Text4 = "another one";  // the last file's password counts
      EXPECT_TRUE(HideJob(form, ui, BigFiles::Take).CheckFiles());
      ExpectAddition(samplePassword);
      ExpectHidden();
      const auto carrier = RunSteps();
      ASSERT_TRUE(carrier.has_value());
      EXPECT_TRUE(ReadFile(*carrier) == SampleCarrier(main, count + 1)) << main.length << count;
      fs::remove(*carrier);
    }
    WriteFile(form.Text1, SampleCarrier(main, 6));
    ui.ExpectMessage(full, Icon::Information);
    EXPECT_FALSE(HideJob(form, ui, BigFiles::Take).CheckFiles());
    ExpectEnd(full, Icon::Information);
    EXPECT_EQ(RunSteps(), std::nullopt);
  }
}

TEST_F(Hide, AnAdditionNeedsConsentAndTheFirstPasswordAndASoundCarrier) {
  const std::string whole = SampleCarrier(sampleMains[5], 2);
  WriteFile(form.Text1, whole);
  ui.ExpectQuestion(addQuestion, Answer::No);
  ui.ExpectEndProgram();
  EXPECT_EQ(RunSteps(), std::nullopt);
  for (const std::optional<std::string>& typed :
       {std::optional<std::string>{}, {""}, {"AB"}, {"Ab "}, {"A"}, {"\u0416"}}) {
    ExpectAddition(typed);
    ExpectEnd("Incorrect Password.", Icon::Critical);
    EXPECT_EQ(RunSteps(), std::nullopt);
  }
  // What is put behind bytes too many or too few could not be found again.
  std::string longer = whole;
  for (const std::string& damaged : {whole.substr(1), longer.insert(3000, "x")}) {
    WriteFile(form.Text1, damaged);
    ExpectAddition(samplePassword);
    ExpectUnable(form.Text1.string() + ": The list of the files hidden in it is damaged");
    EXPECT_EQ(RunSteps(), std::nullopt);
  }
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png"}));
}

TEST_F(Hide, ChecksTheFormInItsOrder) {
  enum Then { Keeps, LosesPasswords, LosesAll };
  const auto refuses = [&](const HideForm& held, const std::string& message, Then then = Keeps,
                           Icon icon = Icon::Information) {
    ui.ExpectMessage(message, icon);
    HideJob job(held, ui, BigFiles::Ask);
    EXPECT_EQ(job.Check(), Next::Form) << message;
    const HideForm& after = job.Form();
    EXPECT_EQ(after.Text1, then == LosesAll ? fs::path() : held.Text1);
    EXPECT_EQ(after.Text2, then == LosesAll ? fs::path() : held.Text2);
    EXPECT_EQ(after.Text3, then == Keeps ? held.Text3 : "");
    EXPECT_EQ(after.Text4, then == Keeps ? held.Text4 : "");
  };
  // What needs no password is said before there is one, too.
  const auto refusesAtOnce = [&](const HideForm& held, const std::string& message,
                                 Then then = Keeps, Icon icon = Icon::Information) {
    refuses(held, message, then, icon);
    ui.ExpectMessage(message, icon);
    EXPECT_FALSE(HideJob({held.Text1, held.Text2, {}, {}}, ui, BigFiles::Take).CheckFiles());
  };
  const std::string none, main = form.Text1.string(), hidden = form.Text2.string(),
                          empty = folder.string() + "/empty.TXT", long25(25, 'x');
  WriteFile(empty, "");
  const std::string noData =
      "File " + empty + " Does Not Contain Any Data In It. Unable To Hide File.";
  // What comes behind the check in question is wrong as well.
  refusesAtOnce({none, none, none, none}, "Main File Is Missing. Select The File Again.");
  refusesAtOnce({empty, none, none, none}, "File To Hide Is Missing. Select The File Again.");
  refuses({empty, empty, none, "x"}, "Enter Password.");
  refuses({empty, empty, "x", none}, "Enter Password.");
  refuses({empty, empty, long25, "x"}, "Passwords Do Not Match. Re-Enter Them.", LosesPasswords);
  refuses({empty, empty, long25, long25},
          "A Password Has 24 Characters At Most. Choose A Shorter One.");
  refuses({empty, empty, "\u0416", "\u0416"},
          "The Password Has A Character That Cannot Be Used. Choose Another Password.");
  refusesAtOnce({empty, empty, "x", "x"}, noData);
  refusesAtOnce({main, empty, "x", "x"}, noData);
  refusesAtOnce({main + "no", hidden, "x", "x"}, main + "no: No such file or directory", Keeps,
                Icon::Critical);
  refusesAtOnce({main, folder, "x", "x"}, folder.string() + ": Is a directory", Keeps,
                Icon::Critical);
  for (const std::string name : {"m.txt", "m.ini", "m.inf", "m.doc", "m.log", "m.html", "m.htm",
                                 "m.php", "m.rtf", "m.dot", "txt"})
    refusesAtOnce({folder / name, hidden, "x", "y"},
                  "Select Some Other File Format In Which You Want To Hide File. Unable To Hide "
                  "File In " +
                      name.substr(name.size() - 3) + " Format.",
                  LosesAll);
  form.output = folder / "none";
  ui.ExpectMessage((form.output / "Hidden File m.png").string() + ": No such file or directory",
                   Icon::Critical);
  EXPECT_FALSE(HideJob(form, ui, BigFiles::Take).CheckFiles());
}

TEST_F(Hide, AsksBeforeItTakesABigFileWhereTheFaceWantsThat) {
  for (const fs::path& big : {form.Text1, form.Text2}) {
    fs::resize_file(big, 10000000);
    EXPECT_EQ(HideJob(form, ui, BigFiles::Ask).Check(), Next::GoOn);
    fs::resize_file(big, 10000001);
    EXPECT_EQ(HideJob(form, ui, BigFiles::Take).Check(), Next::GoOn);
    ui.ExpectQuestion(bigQuestion, Answer::No);
    ui.ExpectEndProgram();
    EXPECT_EQ(HideJob(form, ui, BigFiles::Ask).Check(), Next::Over);
    fs::resize_file(big, 5);
  }
}

TEST_F(Hide, WaitsForTheDirectoryFor80Ticks) {
  const fs::path work = PrivateFolder() / "slyver-run" / "tempHHH";
  for (const int ready : {1, 80, 81}) {
    HideJob job(form, ui, BigFiles::Take);
    ASSERT_TRUE(job.Check() == Next::GoOn && job.PrepareHide() == Next::GoOn);
    const std::string text = ReadFile(work / "3.ini");
    fs::remove(work / "3.ini");
    fs::create_directory(work / "4.ini");  // cannot be written either
    for (int tick = 1; tick < 80 && tick != ready; ++tick) {
      ASSERT_EQ(job.CheckIni(), Next::Wait) << tick;
      if (tick == 5) WriteFile(work / "3.ini", text);
    }
    fs::remove(work / "4.ini");
    if (ready <= 80) {
      WriteFile(work / "3.ini", text);
      EXPECT_EQ(job.CheckIni(), Next::GoOn);
    } else {
      WriteFile(work / "3.ini", text.substr(0, text.rfind('?')));  // without the last value
      ExpectEnd("Unable To Hide File. Please Try Again.", Icon::Critical);
      EXPECT_EQ(job.CheckIni(), Next::Over);
      EXPECT_EQ(Names(PrivateFolder()), privateBefore);
    }
  }
}

TEST_F(Hide, TakesTheFirstNameThatNobodyHasOrIsWriting) {
  for (const char* name : {"Hidden File m.png", "[1] Hidden File m.png"}) {
    ExpectHidden();
    EXPECT_EQ(RunSteps(), folder / name);
  }
  fs::create_directory(folder / "[2] Hidden File m.png");
  const LockedFile other(TemporaryPath(folder / "[3] Hidden File m.png"));
  ExpectHidden();
  EXPECT_EQ(RunSteps(), folder / "[4] Hidden File m.png");
}

TEST_F(Hide, StoresNamesAndPasswordsInTheCodePage) {
  // The password's one character has the code 233, so the key is "233".
  form.Text3 = form.Text4 = "\u00E9";
  form.Text2 = folder / PathFromText("\u00E9\u20AC.bin");
  WriteFile(form.Text2, "x");
  EXPECT_EQ(NameNote(form.Text2), "");
  ExpectHidden();
  const auto carrier = RunSteps();
  ASSERT_TRUE(carrier.has_value());
  const std::string directory =
      "[s@4)]\r\n&hed#=5F1D435C54\r\n?Kj*^=01030302\r\n!`<jhbddfu=DB\r\n"
      "[0dfg%]\r\n&hed#=DBB31D505A5D\r\n?Kj*^=03\r";
  EXPECT_EQ(ReadFile(*carrier).substr(3001, directory.size()), directory);
}

TEST_F(Hide, TellsWhatWillNotComeBackOrOpenAsItIs) {
  EXPECT_EQ(NameNote(folder / PathFromText("\u0416.bin")), "The Name Will Come Back As _.bin");
  EXPECT_EQ(NameNote(folder / "Holiday pictures from Spain.jpg"),
            "The Name Will Come Back As Holiday pictures fro.jpg");
  EXPECT_EQ(NameNote(folder / std::string(24, 'a')), "");
  for (const char* bytes : {"PK\x03\x04..", "PK\x05\x06..", "\x1F\x8B....", "\xFD\x37zXZ.",
                            "\x28\xB5\x2F\xFD..", "7z\xBC\xAF.."}) {
    WriteFile(form.Text1, bytes);
    EXPECT_TRUE(FormatNote(form.Text1).starts_with("The New File May Not Open")) << bytes;
  }
  for (const char* bytes : {"\x89PNG..", "PK\x03\x04", "PK\x03\x03.."}) {
    WriteFile(form.Text1, bytes);
    EXPECT_EQ(FormatNote(form.Text1), "") << bytes;
  }
  EXPECT_EQ(FormatNote(folder), "");
}

TEST_F(Hide, AFileThatChangesMeanwhileIsNotHidden) {
  for (const bool main : {true, false}) {
    HideJob job(form, ui, BigFiles::Take);
    ASSERT_TRUE(job.Check() == Next::GoOn && job.PrepareHide() == Next::GoOn);
    ASSERT_EQ(job.CheckIni(), Next::GoOn);
    const fs::path& changed = main ? form.Text1 : form.Text2;
    WriteFile(folder / "other", ReadFile(changed));
    fs::rename(folder / "other", changed);  // The same length and bytes are not enough.
    ExpectUnable(changed.string() + ": The file was changed while it was being hidden");
    EXPECT_EQ(job.DoAll(), std::nullopt);
  }
  HideJob job(form, ui, BigFiles::Take);
  ASSERT_EQ(job.Check(), Next::GoOn);
  WriteFile(form.Text1, "");
  ExpectEnd("An Error Has Occured. Please Try Again.", Icon::Critical);
  EXPECT_EQ(job.PrepareHide(), Next::Over);
  EXPECT_EQ(Names(), (std::set<std::string>{"a.bin", "m.png"}));
}

TEST_F(Hide, WorksBesideAnotherHideAndLeavesNothingWhenStopped) {
  HideJob other(form, ui, BigFiles::Take);
  ASSERT_TRUE(other.Check() == Next::GoOn && other.PrepareHide() == Next::GoOn);
  ExpectHidden();
  EXPECT_EQ(RunSteps(), folder / "Hidden File m.png");
  ui.StopAtBytes(0);
  EXPECT_THROW((void)other.CheckIni(), Cancelled);
  ScriptedUi stopping;
  stopping.StopAtBytes(1);
  HideJob job(form, stopping, BigFiles::Take);
  ASSERT_EQ(job.Check(), Next::GoOn);
  EXPECT_THROW((void)job.PrepareHide(), Cancelled);
  EXPECT_EQ(Names(), (std::set<std::string>{"Hidden File m.png", "a.bin", "m.png"}));
}

}  // namespace
}  // namespace slyver
