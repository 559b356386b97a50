#include "engine/hidden/RecoverJob.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "engine/split/Scene.h"
#include "support/SampleAge.h"
#include "support/SampleCarrier.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;
using Next = RecoverJob::Next;

const std::string progress = "p Recovering Files";
const std::string unable = "x Unable To Recover File.";
const std::string noneHidden = "i No File Is Hidden In This File.";
const std::string incorrect = "x Incorrect Password. Unable To Recover File.";
const std::string big =
    " The File Size Is Quite Big. It Will Take Several Minutes To Recover From This File. Please "
    "Exit Other Applications You Might Be Running. Do You Want To Continue?";
constexpr int all = -1;
constexpr int theMainFile = -2;

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
  void PutCarrierOf(const std::string& records) const {
    PutCarrier("abc" + SomeBytes(100) + SampleDirectory("05", records));
  }
  /// Recovers the main file, all files, or file `chosen` (1-based) of several; 0: of one.
  std::vector<fs::path> Recovered(int chosen = 0) const {
    ScriptedUi ui;
    Expect(ui, {progress, "i File Recovered."});
    if (chosen != theMainFile) ui.Expect({"end"});
    RecoverJob job(form, ui, BigFiles::Take);
    if (chosen > 0) {
      EXPECT_EQ(job.RecHidden(), Next::Choose);
      EXPECT_FALSE(fs::exists(folder / "TempRRR")) << "while the user chooses";
      EXPECT_EQ(job.DorestOfStuff(chosen), Next::Over);
    } else {
      EXPECT_EQ(Run(job, chosen), chosen == theMainFile ? Next::Unload : Next::Over);
    }
    // What comes before is the cutting of the directory.
    const std::vector<double> named = chosen == theMainFile
                                          ? std::vector<double>{60, 85, 100}
                                          : std::vector<double>{40, 50, 60, 75, 85, 90, 95, 100};
    const auto from = std::find(ui.Values().begin(), ui.Values().end(), named[0]);
    EXPECT_EQ(std::vector<double>(from, ui.Values().end()), named);
    return job.Recovered();
  }
  static Next Run(RecoverJob& job, int what) {
    return what == theMainFile ? job.RecMain() : what == all ? job.RecAll() : job.RecHidden();
  }
  /// All procedures and the list, and perhaps the count, refuse with `message`.
  void ExpectRefused(const std::string& message, bool alsoCount) const {
    const std::set<std::string> before = Names();
    ScriptedUi ui;
    for (const int what : {0, all, theMainFile}) {
      Expect(ui, {progress, message, "end"});
      RecoverJob job(form, ui, BigFiles::Take);
      EXPECT_EQ(Run(job, what), Next::Over);
      EXPECT_TRUE(job.Recovered().empty());
    }
    Expect(ui, {message});
    EXPECT_EQ(ListHiddenFiles(form.Text1, form.Text2, ui), std::nullopt);
    if (alsoCount) Expect(ui, {message});
    EXPECT_EQ(CountHiddenFiles(form.Text1, ui).has_value(), !alsoCount);
    EXPECT_EQ(Names(), before);
  }

  RecoverForm form;
};

TEST_F(Recover, GivesEachFileOfHandMadeCarriersBack) {
  for (const SampleMain& main : sampleMains) {
    const std::string carrier = SampleCarrier(main, 6);
    PutCarrier(carrier);
    const auto isOriginal = [&](const fs::path& path, std::size_t i) {
      EXPECT_EQ(path, folder / (std::string("Original ") + sampleFiles.at(i).name));
      EXPECT_TRUE(ReadFile(path) == SampleBytes(i)) << main.length << " " << i;
      fs::remove(path);
    };
    for (std::size_t i = 0; i < 6; ++i) isOriginal(Recovered(static_cast<int>(i) + 1).at(0), i);
    const std::vector<fs::path> paths = Recovered(all);
    ASSERT_EQ(paths.size(), 6U);
    for (std::size_t i = 0; i < 6; ++i) isOriginal(paths[i], i);
    EXPECT_EQ(Recovered(theMainFile).at(0), folder / "Original m.png");
    EXPECT_TRUE(ReadFile(folder / "Original m.png") == SomeBytes(main.length)) << main.length;
    fs::remove(folder / "Original m.png");
    EXPECT_TRUE(ReadFile(form.Text1) == carrier);
    EXPECT_EQ(Names(), std::set<std::string>{"m.png"});
  }
}

TEST_F(Recover, ASmallMainFileOfABigCarrier) {
  // 3 and 99997497 and 2500 are a hundred million.
  PutCarrier("PNG");
  fs::resize_file(form.Text1, 100000000 - 2500);
  std::ofstream(form.Text1, std::ios::binary | std::ios::app)
      << SampleDirectory("05", "[0dfg%]\r\n&hed#=571B5B5158\r\n?Kj*^=0F0C00010101000F\r\n");
  EXPECT_EQ(ReadFile(Recovered(theMainFile).at(0)), "PNG");
  EXPECT_EQ(fs::file_size(Recovered().at(0)), 99997497U);

  form.Text2 = "";
  for (const int what : {0, theMainFile}) {
    ScriptedUi ui;
    Expect(ui, {"n" + big, "end", "y" + big, "i Enter Password.", "i Enter Password."});
    for (const auto& [length, next] :
         {std::pair{10000001U, Next::Over}, {10000001U, Next::Form}, {10000000U, Next::Form}}) {
      fs::resize_file(form.Text1, length);
      RecoverJob job(form, ui, BigFiles::Ask);
      EXPECT_EQ(Run(job, what), next);
    }
  }
}

TEST_F(Recover, RefusesWrongPasswordsAndFilesWithoutADirectory) {
  PutCarrier(SampleCarrier(sampleMains[0], 2));
  for (const char* wrong : {"AB", "ab", "A", "Abc", "Ab ", "\u00E9", "7757"}) {
    form.Text2 = wrong;
    ExpectRefused(incorrect, false);
  }
  PutCarrierOf("");
  ExpectRefused(noneHidden, true);
  form.Text2 = samplePassword;
  PutCarrier(SomeBytes(3000));
  ExpectRefused(noneHidden, true);
  PutCarrier(SampleDirectory("05", sampleFiles[0].record));
  ExpectRefused(unable, true);
  PutCarrier("");
  ExpectRefused(unable, true);
  ScriptedUi ui;
  PutCarrier(SampleCarrier(sampleMains[0], 2));
  EXPECT_EQ(CountHiddenFiles(form.Text1, ui), 2);
}

TEST_F(Recover, WhatCanBeMendedReturnsToTheForm) {
  PutCarrier(SampleCarrier(sampleMains[0], 1));
  for (const auto& [carrier, typed, message] :
       {std::tuple{form.Text1, "", "i Enter Password."},
        {form.Text1, "1234567890123456789012345",
         "i A Password Has At Most 24 Characters. Choose A Shorter One."},
        {form.Text1, "\u0416",
         "i The Password Has A Character That Cannot Be Used. Choose Another Password."},
        {fs::path(), "", "i Main File Is Missing. Select The File Again."}}) {
    form = {carrier, typed};
    ScriptedUi ui;
    Expect(ui, {message, message, message});
    EXPECT_EQ(RecoverJob(form, ui, BigFiles::Take).RecHidden(), Next::Form);
    EXPECT_EQ(RecoverJob(form, ui, BigFiles::Take).RecMain(), Next::Form);
    EXPECT_EQ(ListHiddenFiles(carrier, typed, ui), std::nullopt);
  }
  EXPECT_EQ(Names(), std::set<std::string>{"m.png"});
}

TEST_F(Recover, NamesComeBackAsTheyWereStored) {
  // Of a name longer than 24 characters an older program left half of the 25th: 5 xor "6".
  const std::string name24 = "575458595754585957545859575458595754585957545859";
  for (const auto& [value, name] : {std::pair{name24, std::string(24, 'a')},
                                    {name24 + "5", std::string(24, 'a') + "3"},
                                    {std::string("DFB5175A5F5B"), std::string("\u00E9\u20AC.bin")},
                                    {Enciphered("nul.txt"), std::string("nul.txt")}}) {
    PutCarrierOf("[0dfg%]\r\n&hed#=" + value + "\r\n?Kj*^=07\r\n");
    EXPECT_EQ(Recovered().at(0), folder / PathFromText("Original " + name));
  }
}

TEST_F(Recover, DeciphersWhatAPassphraseOpens) {
  struct Case {
    std::string hidden, given;
    std::optional<std::optional<std::string>> typed;
    Script script;
    std::string name, bytes;
    bool raw = false;
    const char* stored = "n.age";
    bool ask = true;
  };
  const Script done = {"i File Recovered.", "end"};
  const Script asItIs = {"m n.age Is Still Encrypted.", "i File Recovered.", "end"};
  const Script damaged = {"x n Is Damaged.", unable, "end"};
  const Script wrong = {"x Incorrect Passphrase.", unable, "end"};
  const std::string forKeys = "age-encryption.org/v1\n-> X25519 a\nYQ\n--- YQ\n";
  const auto changed = [](std::size_t at) {
    std::string bytes = sampleAge;
    bytes[at] = '?';
    return bytes;
  };
  for (const Case& c : std::initializer_list<Case>{
           {sampleAge, {}, sampleAgePassphrase, done, "Original n", "age"},
           {sampleAge, sampleAgePassphrase, {}, done, "Original n", "age"},
           {sampleAge, {}, "", asItIs, "Original n.age", sampleAge},
           {sampleAge, {}, {}, asItIs, "Original n.age", sampleAge, false, "n.age", false},
           {forKeys, {}, {}, asItIs, "Original n.age", forKeys},
           {sampleAge, {}, {}, done, "Original n.age", sampleAge, true},
           {"-> scrypt", {}, {}, done, "Original n.age", "-> scrypt"},
           {sampleAge, {}, {}, done, "Original n.x", sampleAge, false, "n.x"},
           {sampleAge, {}, {}, done, "Original .age", sampleAge, false, ".age"},
           {sampleAge, {}, std::optional<std::string>(), {"end"}, "", ""},
           {sampleAge, {}, "Password", wrong, "", ""},
           {sampleAge, "Password", {}, wrong, "", ""},
           {"plain",
            "p",
            {},
            {"x n.x Is Not Encrypted Under A Passphrase.", unable, "end"},
            "",
            "",
            false,
            "n.x"},
           {forKeys,
            "p",
            {},
            {"x n.age Is Not Encrypted Under A Passphrase.", unable, "end"},
            "",
            ""},
           {changed(0), "p", {}, {"x n.age Is Damaged.", unable, "end"}, "", ""},
           {changed(32), {}, {}, damaged, "", ""},
           {changed(184), sampleAgePassphrase, {}, damaged, "", ""}}) {
    const std::string value = Enciphered(std::to_string(c.hidden.size()));
    PutCarrier("PNG" + c.hidden +
               SampleDirectory("05", "[0dfg%]\r\n&hed#=" + Enciphered(c.stored) +
                                         "\r\n?Kj*^=" + value + "\r\n"));
    form.passphrase = c.given;
    form.raw = c.raw;
    form.ask = c.ask;
    ScriptedUi ui;
    Expect(ui, {progress});
    if (c.typed) ui.ExpectMaskedInputBox("Enter Passphrase Of n.", *c.typed);
    Expect(ui, c.script);
    RecoverJob job(form, ui, BigFiles::Take);
    EXPECT_EQ(job.RecHidden(), Next::Over);
    EXPECT_EQ(Names().size(), c.name.empty() ? 1U : 2U);
    if (c.name.empty()) continue;
    EXPECT_EQ(job.Recovered().at(0), folder / c.name);
    EXPECT_EQ(ReadFile(folder / c.name), c.bytes);
    fs::remove(folder / c.name);
  }
}

TEST_F(Recover, ACarrierThatIsReplacedWhileTheUserChoosesIsRefused) {
  PutCarrier(SampleCarrier(sampleMains[9], 2));
  ScriptedUi ui;
  Expect(ui, {progress});
  RecoverJob job(form, ui, BigFiles::Take);
  EXPECT_EQ(job.RecHidden(), Next::Choose);
  WriteFile(folder / "other", ReadFile(form.Text1));
  fs::rename(folder / "other", form.Text1);  // The same length and bytes are not enough.
  Expect(ui,
         {"x " + form.Text1.string() + ": The file was changed while it was being recovered from",
          unable, "end"});
  EXPECT_EQ(job.DorestOfStuff(1), Next::Over);
  EXPECT_EQ(Names(), std::set<std::string>{"m.png"});
}

}  // namespace
}  // namespace slyver
