#include "engine/hidden/RecoverJob.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "engine/hidden/HideJob.h"
#include "engine/system/FileError.h"
#include "support/SampleCarrier.h"
#include "support/ScriptedUi.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;
using Next = RecoverJob::Next;

constexpr const char* unable = "Unable To Recover File.";
constexpr const char* noneHidden = "No File Is Hidden In This File.";
constexpr const char* incorrect = "Incorrect Password. Unable To Recover File.";
constexpr const char* bigQuestion =
    "The File Size Is Quite Big. It Will Take Several Minutes To Recover From This File. Please "
    "Exit Other Applications You Might Be Running. Do You Want To Continue?";

/// Recovers from "m.png", which no recovery may change.
class Recover : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    form = {folder / "m.png", samplePassword};
  }
  void TearDown() override {
    EXPECT_FALSE(fs::exists(folder / "TempRRR"));
    TempFolderTest::TearDown();
  }

  void PutCarrier(const std::string& bytes) const { WriteFile(form.Text1, bytes); }
  void PutCarrierOf(const std::string& records, const std::string& mainLength = "05") const {
    PutCarrier("abc" + SomeBytes(100) + SampleDirectory(mainLength, records));
  }
  static void ExpectOver(ScriptedUi& ui, const std::string& message, Icon icon) {
    ui.ExpectProgressForm("Recovering Files");
    ui.ExpectMessage(message, icon);
    ui.ExpectEndProgram();
  }
  /// "Rec Hidden", and file `chosen` (1-based) of several. Returns the path of the recovered file.
  fs::path RecHidden(int chosen = 0) const {
    ScriptedUi ui;
    ExpectOver(ui, "File Recovered.", Icon::Information);
    RecoverJob job(form, ui, BigFiles::Take);
    if (chosen > 0) {
      EXPECT_EQ(job.RecHidden(), Next::Choose);
      EXPECT_EQ(job.DorestOfStuff(chosen), Next::Over);
    } else {
      EXPECT_EQ(job.RecHidden(), Next::Over);
    }
    EXPECT_EQ(FromNamed(ui.Values(), 40), (std::vector<double>{40, 50, 60, 75, 85, 90, 95, 100}));
    return job.Recovered().value_or("");
  }
  fs::path RecMain() const {
    ScriptedUi ui;
    ui.ExpectProgressForm("Recovering Files");
    ui.ExpectMessage("File Recovered.", Icon::Information);
    RecoverJob job(form, ui, BigFiles::Take);
    EXPECT_EQ(job.RecMain(), Next::Unload);
    EXPECT_EQ(FromNamed(ui.Values(), 60), (std::vector<double>{60, 85, 100}));
    return job.Recovered().value_or("");
  }
  /// The values from `first` on; what comes before is the cutting of the directory.
  static std::vector<double> FromNamed(const std::vector<double>& values, double first) {
    return {std::find(values.begin(), values.end(), first), values.end()};
  }
  /// Both procedures and the list refuse with `message`; nothing is written.
  void ExpectRefused(const std::string& message, Icon icon, bool alsoMain = true) const {
    const std::set<std::string> before = Names();
    ScriptedUi ui;
    ExpectOver(ui, message, icon);
    RecoverJob job(form, ui, BigFiles::Take);
    EXPECT_EQ(job.RecHidden(), Next::Over);
    EXPECT_EQ(job.Recovered(), std::nullopt);
    ui.ExpectMessage(message, icon);
    EXPECT_EQ(ListHiddenFiles(form.Text1, form.Text2, ui), std::nullopt);
    if (alsoMain) {
      ExpectOver(ui, message, icon);
      RecoverJob mainJob(form, ui, BigFiles::Take);
      EXPECT_EQ(mainJob.RecMain(), Next::Over);
    }
    EXPECT_EQ(Names(), before);
    EXPECT_EQ(Names(folder.parent_path()), (std::set<std::string>{"run", "work"}));
  }

  RecoverForm form;
};

TEST_F(Recover, GivesEachFileOfHandMadeCarriersBack) {
  for (const SampleMain& main : sampleMains) {
    const std::string carrier = SampleCarrier(main, 6);
    PutCarrier(carrier);
    for (int k = 1; k <= 6; ++k) {
      const auto i = static_cast<std::size_t>(k) - 1;
      const fs::path recovered = RecHidden(k);
      EXPECT_EQ(recovered, folder / (std::string("Original ") + sampleFiles.at(i).name));
      EXPECT_TRUE(ReadFile(recovered) == SampleBytes(i)) << main.length << " " << k;
      fs::remove(recovered);
    }
    EXPECT_EQ(RecMain(), folder / "Original m.png");
    EXPECT_TRUE(ReadFile(folder / "Original m.png") == SomeBytes(main.length)) << main.length;
    fs::remove(folder / "Original m.png");
    EXPECT_TRUE(ReadFile(form.Text1) == carrier);
    EXPECT_EQ(Names(), std::set<std::string>{"m.png"});
  }
}

TEST_F(Recover, ASingleFileAtOnceAndNeverOverAnother) {
  PutCarrier(SampleCarrier(sampleMains[5], 1));
  for (const char* name : {"Original a.bin", "Original [1] a.bin", "Original [2] a.bin"}) {
    EXPECT_EQ(RecHidden(), folder / name);
    EXPECT_TRUE(ReadFile(folder / name) == SampleBytes(0));
  }
  EXPECT_EQ(RecMain(), folder / "Original m.png");
  EXPECT_EQ(RecMain(), folder / "Original [1] m.png");
}

TEST_F(Recover, ASmallMainFileOfABigCarrier) {
  // 3 and 99997497 and 2500 are a hundred million.
  PutCarrier("PNG");
  fs::resize_file(form.Text1, 100000000 - 2500);
  std::ofstream(form.Text1, std::ios::binary | std::ios::app)
      << SampleDirectory("05", "[0dfg%]\r\n&hed#=571B5B5158\r\n?Kj*^=0F0C00010101000F\r\n");
  EXPECT_EQ(ReadFile(RecMain()), "PNG");
  const fs::path hidden = RecHidden();
  EXPECT_EQ(fs::file_size(hidden), 99997497U);
  EXPECT_EQ(fs::file_size(form.Text1), 100000000U);

  ScriptedUi ui;
  for (const bool main : {false, true}) {
    ui.ExpectQuestion(bigQuestion, Answer::No);
    ui.ExpectEndProgram();
    RecoverJob job(form, ui, BigFiles::Ask);
    EXPECT_EQ(main ? job.RecMain() : job.RecHidden(), Next::Over);
  }
  ui.ExpectQuestion(bigQuestion, Answer::Yes);
  ui.ExpectMessage("Enter Password.", Icon::Information);
  form.Text2.clear();
  EXPECT_EQ(RecoverJob(form, ui, BigFiles::Ask).RecHidden(), Next::Form);
  fs::resize_file(form.Text1, 10000000);
  ui.ExpectMessage("Enter Password.", Icon::Information);
  EXPECT_EQ(RecoverJob(form, ui, BigFiles::Ask).RecMain(), Next::Form);
}

TEST_F(Recover, RefusesWrongPasswordsAndFilesWithoutADirectory) {
  PutCarrier(SampleCarrier(sampleMains[0], 2));
  for (const char* wrong : {"AB", "ab", "A", "Abc", "Ab ", "\u00E9", "7757"}) {
    form.Text2 = wrong;
    ExpectRefused(incorrect, Icon::Critical);
  }
  PutCarrier(SomeBytes(3000));
  ExpectRefused(noneHidden, Icon::Information);
  PutCarrierOf("");
  ExpectRefused(noneHidden, Icon::Information);
  form.Text2 = samplePassword;
  PutCarrier(SampleDirectory("05", sampleFiles[0].record));
  ExpectRefused(unable, Icon::Critical);
  for (const std::size_t length : {0U, 1U, 2499U, 2500U}) {
    PutCarrier(SomeBytes(length));
    ExpectRefused(unable, Icon::Critical);
  }
}

TEST_F(Recover, PasswordsThatCannotBeRightReturnToTheForm) {
  PutCarrier(SampleCarrier(sampleMains[0], 1));
  for (const auto& [typed, message] :
       {std::pair{"", "Enter Password."},
        {"1234567890123456789012345",
         "A Password Has 24 Characters At Most. Choose A Shorter One."},
        {"\u0416", "The Password Has A Character That Cannot Be Used. Choose Another Password."}}) {
    form.Text2 = typed;
    ScriptedUi ui;
    for (int i = 0; i < 3; ++i) ui.ExpectMessage(message, Icon::Information);
    EXPECT_EQ(RecoverJob(form, ui, BigFiles::Take).RecHidden(), Next::Form);
    EXPECT_EQ(RecoverJob(form, ui, BigFiles::Take).RecMain(), Next::Form);
    EXPECT_EQ(ListHiddenFiles(form.Text1, typed, ui), std::nullopt);
  }
  EXPECT_EQ(Names(), std::set<std::string>{"m.png"});
}

TEST_F(Recover, HostileDirectoriesWriteNothingAnywhere) {
  const auto record = [](int i, const std::string& name, const std::string& length) {
    return "[" + std::to_string(i) + "dfg%]\r\n&hed#=" + Enciphered(name) +
           "\r\n?Kj*^=" + Enciphered(length) + "\r\n";
  };
  // The carrier has 100 bytes behind its main file of 3.
  for (const char* name : {"../a", "/tmp/slyver-evil", "..", ".", "a/b", "a\\b", "..\\a", "c:\\a",
                           "c:a", "a\nb", "\x1B[2J", "\x9D;x", "nul", "COM1.txt"})
    for (const int i : {0, 1}) {
      PutCarrierOf((i == 0 ? "" : record(0, "a", "1")) + record(i, name, "1"));
      ExpectRefused(unable, Icon::Critical, false);
    }
  for (const char* length : {"", "0", "-1", "x", "1.5", " 1", "101", "18446744073709551615",
                             "18446744073709551617", "999999999999999999999999"}) {
    PutCarrierOf(record(0, "a", length));
    ExpectRefused(unable, Icon::Critical, false);
    PutCarrierOf(record(0, "a", "1") + record(1, "b", length));
    ExpectRefused(unable, Icon::Critical, false);
    PutCarrierOf(record(0, "a", "1"), Enciphered(std::string(length) == "101" ? "104" : length));
    ExpectRefused(unable, Icon::Critical);
  }
  PutCarrierOf(record(0, "a", "60") + record(1, "b", "41"));
  ExpectRefused(unable, Icon::Critical, false);
}

TEST_F(Recover, LongNamesComeBackAsAReadOf49CharactersGivesThem) {
  // The key is "112" 24 times over. The 25th "a" meets a "1" and becomes 50; of that the lone "5"
  // is left, and 5 xor "1" is "4".
  ScriptedUi ui;
  PutCarrier(SomeBytes(100));
  const HideForm hide = {form.Text1, folder / std::string(25, 'a'), std::string(24, 'p'),
                         std::string(24, 'p')};
  WriteFile(hide.Text2, "x");
  ui.ExpectMessage("File Hidden.", Icon::Information);
  ui.ExpectEndProgram();
  HideJob job(hide, ui, BigFiles::Take);
  ASSERT_TRUE(job.Check() && job.PrepareHide());
  ASSERT_EQ(job.CheckIni(), HideJob::Ini::Complete);
  form = {job.DoAll().value_or(""), hide.Text3};
  EXPECT_EQ(RecHidden().filename(), "Original " + std::string(24, 'a') + "4");
}

TEST_F(Recover, NamesOf24CharactersAndAccentsComeBackWhole) {
  const std::string name(24, 'a');
  PutCarrierOf("[0dfg%]\r\n&hed#=575458595754585957545859575458595754585957545859\r\n?Kj*^=07\r\n");
  EXPECT_EQ(RecHidden(), folder / ("Original " + name));
  PutCarrierOf("[0dfg%]\r\n&hed#=DFB5175A5F5B\r\n?Kj*^=07\r\n");
  EXPECT_EQ(RecHidden(), folder / PathFromText("Original \u00E9\u20AC.bin"));
}

TEST_F(Recover, CancelAndFailureLeaveNothing) {
  PutCarrier(SampleCarrier(sampleMains[9], 2));
  for (const bool main : {true, false}) {
    ScriptedUi ui;
    ui.StopAtBytes(1);
    ui.ExpectProgressForm("Recovering Files");
    RecoverJob job(form, ui, BigFiles::Take);
    EXPECT_THROW((void)(main ? job.RecMain() : job.RecHidden()), Cancelled);
  }
  {
    ScriptedUi ui;
    ui.ExpectProgressForm("Recovering Files");
    RecoverJob job(form, ui, BigFiles::Take);
    EXPECT_EQ(job.RecHidden(), Next::Choose);
    ui.StopAtBytes(2600);
    EXPECT_THROW((void)job.DorestOfStuff(2), Cancelled);
  }
  {
    ScriptedUi ui;
    ui.ExpectProgressForm("Recovering Files");
    RecoverJob job(form, ui, BigFiles::Take);
    EXPECT_EQ(job.RecHidden(), Next::Choose);
    WriteFile(folder / "other", ReadFile(form.Text1));
    fs::rename(folder / "other", form.Text1);  // The same length and bytes are not enough.
    ui.ExpectMessage(
        form.Text1.string() + ": The file was changed while it was being recovered from",
        Icon::Critical);
    ui.ExpectMessage(unable, Icon::Critical);
    ui.ExpectEndProgram();
    EXPECT_EQ(job.DorestOfStuff(1), Next::Over);
  }
  fs::remove(form.Text1);
  ScriptedUi ui;
  ui.ExpectMessage(form.Text1.string() + ": No such file or directory", Icon::Critical);
  ui.ExpectMessage(unable, Icon::Critical);
  ui.ExpectEndProgram();
  EXPECT_EQ(RecoverJob(form, ui, BigFiles::Take).RecMain(), Next::Over);
  EXPECT_EQ(Names(), std::set<std::string>{});
}

TEST_F(Recover, AWorkFolderThatIsALinkOrAFileCostsNobodysData) {
  PutCarrier(SampleCarrier(sampleMains[5], 1));
  fs::create_directory(folder / "user");
  WriteFile(folder / "user" / "data", "precious");
  if (MakeFolderLink(folder / "user", folder / "TempRRR")) {
    EXPECT_TRUE(ReadFile(RecHidden()) == SampleBytes(0));
    EXPECT_EQ(ReadFile(folder / "user" / "data"), "precious");
  }

  WriteFile(folder / "TempRRR", "precious");
  ScriptedUi ui;
  ui.ExpectMessage((folder / "TempRRR").string() + ": File exists", Icon::Critical);
  ui.ExpectMessage(unable, Icon::Critical);
  ui.ExpectEndProgram();
  EXPECT_EQ(RecoverJob(form, ui, BigFiles::Take).RecHidden(), Next::Over);
  EXPECT_EQ(ReadFile(folder / "TempRRR"), "precious");
  fs::remove(folder / "TempRRR");
}

}  // namespace
}  // namespace slyver
