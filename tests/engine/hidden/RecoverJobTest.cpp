#include "engine/hidden/RecoverJob.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/SampleAge.h"
#include "support/SampleCarrier.h"
#include "support/ScriptedUi.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;
using Next = RecoverJob::Next;

const std::string progress = "p Recovering Files";
const std::string unable = "x Unable To Recover File.";
const Script recovered = {progress, "i File Recovered.", "end"};

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
  /// The values that the bar was set to from `first` on: what comes before is the cutting of the
  /// directory.
  static std::vector<double> ValuesFrom(double first, const ScriptedUi& ui) {
    return {std::find(ui.Values().begin(), ui.Values().end(), first), ui.Values().end()};
  }

  RecoverForm form;
};

TEST_F(Recover, SetsTheBarAtItsSteps) {
  PutCarrier(SampleCarrier(2501, 3));
  const std::vector<double> steps = {40, 50, 60, 75, 85, 90, 95, 100};
  for (const bool one : {true, false}) {
    ScriptedUi ui(recovered);
    RecoverJob job(form, ui, BigFiles::Take);
    EXPECT_EQ(one ? job.RecHidden() : job.RecAll(), one ? Next::Choose : Next::Over);
    EXPECT_FALSE(fs::exists(folder / "TempRRR")) << "while the user chooses";
    EXPECT_TRUE(!one || job.DorestOfStuff(2) == Next::Over);
    EXPECT_EQ(ReadFile(job.Recovered().at(one ? 0 : 1)), SampleBytes(1));
    EXPECT_EQ(ValuesFrom(40, ui), steps);
  }
  ScriptedUi ui({progress, "i File Recovered."});
  EXPECT_EQ(RecoverJob(form, ui, BigFiles::Take).RecMain(), Next::Unload);
  EXPECT_EQ(ReadFile(folder / "Original m.png"), SomeBytes(2501));
  EXPECT_EQ(ValuesFrom(60, ui), (std::vector<double>{60, 85, 100}));
}

TEST_F(Recover, ASmallMainFileOfABigCarrier) {
  // 3 and 99997497 and 2500 are a hundred million.
  PutCarrier("PNG");
  fs::resize_file(form.Text1, 100000000 - 2500);
  std::ofstream(form.Text1, std::ios::binary | std::ios::app)
      << SampleDirectory(3, SampleRecord(0, "a.bin", "99997497"));
  ScriptedUi ui({progress, "i File Recovered."});
  ui.Expect(recovered);
  RecoverJob job(form, ui, BigFiles::Take);
  (void)job.RecMain();
  (void)job.RecHidden();
  EXPECT_EQ(ReadFile(job.Recovered().at(0)), "PNG");
  EXPECT_EQ(fs::file_size(job.Recovered().at(1)), 99997497U);
}

TEST_F(Recover, AsksBeforeItTakesABigFileAndForThePassword) {
  PutCarrier("");
  form.Text2 = "";
  const std::string big =
      " The File Size Is Quite Big. It Will Take Several Minutes To Recover From This File. Please "
      "Exit Other Applications You Might Be Running. Do You Want To Continue?";
  for (const auto& [length, script, next] :
       {std::tuple{10000001U, Script{"n" + big, "end"}, Next::Over},
        {10000001U, {"y" + big, "i Enter Password."}, Next::Form},
        {10000000U, {"i Enter Password."}, Next::Form}}) {
    fs::resize_file(form.Text1, length);
    ScriptedUi ui(script);
    EXPECT_EQ(RecoverJob(form, ui, BigFiles::Ask).RecHidden(), next);
    ui.Expect(script);
    EXPECT_EQ(RecoverJob(form, ui, BigFiles::Ask).RecMain(), next);
  }
}

TEST_F(Recover, RefusesWrongPasswordsAndFilesWithoutADirectory) {
  const std::string noneHidden = "i No File Is Hidden In This File.";
  const std::string sample = SampleCarrier(1, 2);
  ScriptedUi ui;
  for (const auto& [carrier, message] :
       {std::pair{sample, "x Incorrect Password. Unable To Recover File."},
        {"abc" + SampleDirectory(3, ""), noneHidden.c_str()},
        {SampleDirectory(1, SampleRecord(0, "a.bin", "7")), unable.c_str()}}) {
    PutCarrier(carrier);
    form.Text2 = "AB";
    ui.Expect({progress, message, "end", progress, message, "end", message});
    RecoverJob job(form, ui, BigFiles::Take);
    EXPECT_EQ(job.RecHidden(), Next::Over);
    EXPECT_EQ(job.RecMain(), Next::Over);
    EXPECT_EQ(ListHiddenFiles(form.Text1, form.Text2, ui), std::nullopt);
    if (carrier != sample) ui.Expect({message});
    EXPECT_EQ(CountHiddenFiles(form.Text1, ui).value_or(0), carrier == sample ? 2 : 0);
  }
}

TEST_F(Recover, WhatCanBeMendedReturnsToTheForm) {
  PutCarrier(SampleCarrier(1, 1));
  for (const auto& [carrier, typed, message] :
       {std::tuple{form.Text1, "", "i Enter Password."},
        {form.Text1, "1234567890123456789012345",
         "i A Password Has At Most 24 Characters. Choose A Shorter One."},
        {form.Text1, "\u0416",
         "i The Password Has A Character That Cannot Be Used. Choose Another Password."},
        {fs::path(), "", "i Main File Is Missing. Select The File Again."}}) {
    ScriptedUi ui({message, message, message});
    EXPECT_EQ(RecoverJob({carrier, typed}, ui, BigFiles::Take).RecHidden(), Next::Form);
    EXPECT_EQ(RecoverJob({carrier, typed}, ui, BigFiles::Take).RecMain(), Next::Form);
    EXPECT_EQ(ListHiddenFiles(carrier, typed, ui), std::nullopt);
  }
}

TEST_F(Recover, TakesAgeFilesAsTheyAreOrSaysWhyNot) {
  struct Case {
    std::string name, hidden;
    const char* passphrase;
    Script script;
    bool recovers = false;
  };
  const std::string asks = "masked input box Enter Passphrase Of n.";
  const Script done = {"i File Recovered.", "end"};
  const Script asItIs = {"m n.age Is Still Encrypted.", "i File Recovered.", "end"};
  const Script damaged = {"x n Is Damaged.", unable, "end"};
  const std::string forKeys = "age-encryption.org/v1\n-> X25519 a\nYQ\n--- YQ\n";
  const auto changed = [](std::size_t at) {
    std::string bytes = sampleAge;
    bytes[at] = '?';
    return bytes;
  };
  for (const Case& c : std::vector<Case>{
           {"n.age", forKeys, "", asItIs, true},
           {"n.age", "-> scrypt", "", done, true},
           {"n.x", sampleAge, "", done, true},
           {".age", sampleAge, "", done, true},
           {"n.age", sampleAge, "", {asks, "end"}},
           {"n.age", sampleAge, "Password", {"x Incorrect Passphrase.", unable, "end"}},
           {"n.x", "plain", "p", {"x n.x Is Not Encrypted Under A Passphrase.", unable, "end"}},
           {"n.age", forKeys, "p", {"x n.age Is Not Encrypted Under A Passphrase.", unable, "end"}},
           {"n.age", changed(0), "p", {"x n.age Is Damaged.", unable, "end"}},
           {"n.age", changed(32), "", damaged},
           {"n.age", changed(184), sampleAgePassphrase, damaged}}) {
    SCOPED_TRACE(c.script.front());
    PutCarrier("PNG" + c.hidden +
               SampleDirectory(3, SampleRecord(0, c.name, std::to_string(c.hidden.size()))));
    form.passphrase = c.passphrase;
    ScriptedUi ui({progress});
    ui.Expect(c.script);
    RecoverJob job(form, ui, BigFiles::Take);
    EXPECT_EQ(job.RecHidden(), Next::Over);
    EXPECT_EQ(Names().size(), c.recovers ? 2U : 1U);
    if (!c.recovers) continue;
    const fs::path made = folder / ("Original " + c.name);
    EXPECT_EQ(ReadFile(made), c.hidden);
    fs::remove(made);
  }
}

TEST_F(Recover, ACarrierThatIsReplacedWhileTheUserChoosesIsRefused) {
  PutCarrier(SampleCarrier(1, 2));
  ScriptedUi ui({progress});
  RecoverJob job(form, ui, BigFiles::Take);
  EXPECT_EQ(job.RecHidden(), Next::Choose);
  WriteFile(folder / "other", ReadFile(form.Text1));
  fs::rename(folder / "other", form.Text1);  // The same length and bytes are not enough.
  ui.Expect(
      {"x " + form.Text1.string() + ": The file was changed while it was being recovered from",
       unable, "end"});
  EXPECT_EQ(job.DorestOfStuff(1), Next::Over);
  EXPECT_EQ(Names(), std::set<std::string>{"m.png"});
}

}  // namespace
}  // namespace slyver
