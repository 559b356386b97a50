#include "engine/split/SlyIt.h"

#include <gtest/gtest.h>

#include "engine/system/Registry.h"
#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

constexpr const char* companyKey = R"(Software\Orm Valis\FC)";
constexpr const char* failed = "Unable To Sly File. Do You Want To Exit?";

class SlyItJob : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    form.Text1 = folder / "a.dat";
    form.Text2 = folder;
    WriteFile(form.Text1, SomeBytes(1000));
    SaveRegString(RegRoot::LocalMachine, companyKey, "filepath", "left");
  }

  /// Presses "Sly It" under a script; `deletes` tells whether "filepath" is gone afterwards.
  std::int16_t Press(const std::function<void(ScriptedUi&)>& script, bool deletes) {
    ScriptedUi ui;
    script(ui);
    const std::int16_t pieces = SlyIt(form, ui);
    EXPECT_EQ(GetRegString(RegRoot::LocalMachine, companyKey, "filepath"), deletes ? "" : "left");
    SaveRegString(RegRoot::LocalMachine, companyKey, "filepath", "left");
    return pieces;
  }
  static void Success(ScriptedUi& ui) {
    ui.ExpectMessage("File Successfully Sly.", Icon::Information);
    ui.ExpectEndProgram();
  }
  void TakeSize(const std::string& size) {
    form.Option2 = true;
    form.Text3 = size;
  }

  SplitForm form;
};

TEST_F(SlyItJob, CutsDiskettesUnlessASizeIsSpecified) {
  const std::string bytes = SomeBytes(1450001);
  WriteFile(form.Text1, bytes);
  form.Text3 = "10";  // Does not count while the predefined size is chosen.
  EXPECT_EQ(Press(Success, true), 2);
  EXPECT_TRUE(ReadFile(folder / "a.dat.1.sly") == bytes.substr(0, 1450000));
  EXPECT_EQ(ReadFile(folder / "a.dat.2.sly"), bytes.substr(1450000));
  EXPECT_EQ(form.Text2, folder / "");

  fs::remove(folder / "a.dat.1.sly");
  TakeSize("1000000.");
  EXPECT_EQ(Press(Success, true), 2);
  EXPECT_EQ(fs::file_size(folder / "a.dat.2.sly"), 450001U);
}

TEST_F(SlyItJob, AFailureAsksWhetherToExit) {
  const auto fails = [](const std::string& message, Icon icon, Answer exit) {
    return [=](ScriptedUi& ui) {
      ui.ExpectMessage(message, icon);
      ui.ExpectQuestion(failed, exit);
      if (exit == Answer::Yes) ui.ExpectEndProgram();
    };
  };
  WriteFile(form.Text1, SomeBytes(1450000));
  const std::string tooBig = "Chunk Size Bigger Than File Size.";
  EXPECT_EQ(Press(fails(tooBig, Icon::Information, Answer::Yes), true), 0);
  EXPECT_EQ(Press(fails(tooBig, Icon::Information, Answer::No), false), 0);
  TakeSize("1");
  EXPECT_EQ(Press(fails("Overflow", Icon::Critical, Answer::No), false), 0);
  TakeSize("0");
  EXPECT_EQ(
      Press(fails("The piece size must be at least 1 byte.", Icon::Critical, Answer::No), false),
      0);
  fs::remove(form.Text1);
  EXPECT_EQ(
      Press(fails(form.Text1.string() + ": No such file or directory", Icon::Critical, Answer::Yes),
            true),
      0);
  EXPECT_EQ(Names(), std::set<std::string>{});
}

TEST_F(SlyItJob, TheMarkerInEitherFieldComesBeforeAllElse) {
  const auto script = [](ScriptedUi& ui) {
    ui.ExpectMessage("Unable To Divide File.", Icon::Critical);
  };
  form.Text2 = folder / "none";
  form.Text3 = "Unable To Divide File";
  EXPECT_EQ(Press(script, true), 0);
  form.Text3 = "";
  form.Nofile = "Unable To Divide File";
  EXPECT_EQ(Press(script, true), 0);
  EXPECT_EQ(Names(), std::set<std::string>{"a.dat"});
}

TEST_F(SlyItJob, AsksBeforeItMakesTheOutputFolder) {
  form.Text2 = folder / "b" / "c";
  const std::string question = form.Text2.string() + " Does Not Exists. Do You Want To Create It?";
  EXPECT_EQ(Press([&](ScriptedUi& ui) { ui.ExpectQuestion(question, Answer::No); }, false), 0);
  EXPECT_FALSE(fs::exists(folder / "b"));

  TakeSize("600");
  EXPECT_EQ(Press(
                [&](ScriptedUi& ui) {
                  ui.ExpectQuestion(question, Answer::Yes);
                  Success(ui);
                },
                true),
            2);
  EXPECT_EQ(Names(folder / "b" / "c"), (std::set<std::string>{"a.dat.1.sly", "a.dat.2.sly"}));

  form.Text2 = form.Text1;
  EXPECT_EQ(Press(
                [&](ScriptedUi& ui) {
                  ui.ExpectQuestion(
                      form.Text2.string() + " Does Not Exists. Do You Want To Create It?",
                      Answer::Yes);
                  ui.ExpectMessage((form.Text2 / "").string() + ": File exists", Icon::Critical);
                  ui.ExpectQuestion(failed, Answer::No);
                },
                false),
            0);
}

TEST_F(SlyItJob, ASpecifiedSizeMustBeThere) {
  TakeSize("");
  EXPECT_EQ(Press(
                [](ScriptedUi& ui) {
                  ui.ExpectMessage("Please Specify The Size Of The File.", Icon::Information);
                },
                false),
            0);
  EXPECT_EQ(form.Text2, folder / "") << "the separator is added before the size is looked at";
  TakeSize("ten");
  EXPECT_EQ(Press(
                [](ScriptedUi& ui) {
                  ui.ExpectMessage("Please Enter Whole Numbers.", Icon::Information);
                },
                false),
            0);
}

TEST_F(SlyItJob, AFirstPieceBesideTheSourceStopsItWhateverTheOutputFolder) {
  TakeSize("600");
  fs::create_directory(folder / "out");
  form.Text2 = folder / "out";
  WriteFile(folder / "out" / "a.dat.1.sly", "old");
  EXPECT_EQ(Press(Success, true), 2);
  EXPECT_EQ(fs::file_size(folder / "out" / "a.dat.1.sly"), 600U);

  WriteFile(folder / "a.dat.1.sly", "old");
  EXPECT_EQ(Press(
                [](ScriptedUi& ui) {
                  ui.ExpectMessage("Sly File Already Exists. Unable To Sly File.", Icon::Critical);
                  ui.ExpectEndProgram();
                },
                true),
            0);
  EXPECT_EQ(ReadFile(folder / "a.dat.1.sly"), "old");
}

}  // namespace
}  // namespace slyver
