#include <gtest/gtest.h>

#include <thread>

#include "support/SampleCarrier.h"
#include "support/SlyProgram.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

constexpr const char* addQuestion =
    "There are Files Already Hidden In This File. Do You Want To Add Another File In It?";
constexpr const char* nobodyForPassword =
    "Enter Password. (Nobody is at the terminal; --password-file names a file with it.)\n";
constexpr const char* list =
    "0\t7\ta.bin\n1\t3000\tb.bin\n2\t1\tc.bin\n3\t25\td.bin\n4\t5000\te.bin\n5\t6\tf.bin\n";

/// The program in a folder with "m.png", sample files and the password in the file "pw".
class SlyHidden : public SlyProgramTest {
 protected:
  void SetUp() override {
    SlyProgramTest::SetUp();
    setenv("P", "--password-file pw", 1);
    WriteFile(folder / "pw", "Ab\r\nnot this line\n");
    WriteFile(folder / "m.png", SomeBytes(3000));
    for (std::size_t i = 0; i < sampleFiles.size(); ++i)
      WriteFile(folder / sampleFiles.at(i).name, SampleBytes(i));
    WriteFile(folder / "six", SampleCarrier(sampleMains[5], 6));
    before = Names();
  }
  void TearDown() override {
    const fs::path privateFolder = folder.parent_path() / "run" / "slyver";
    if (fs::exists(privateFolder)) {
      EXPECT_EQ(Names(privateFolder), std::set<std::string>{});
    }
    EXPECT_FALSE(fs::exists(folder / "TempRRR"));
    SlyProgramTest::TearDown();
  }

  std::string Path(const std::string& name) const { return (folder / name).string(); }

  std::set<std::string> before;
};

TEST_F(SlyHidden, HidesListsAndRecovers) {
  Outcome outcome = Run("$SLY hide $P m.png a.bin");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, Path("Hidden File m.png\n"));
  EXPECT_EQ(outcome.err, "File Hidden.\n");
  EXPECT_TRUE(ReadFile(Path("Hidden File m.png")) == SampleCarrier(sampleMains[5], 1));

  outcome = Run("mv 'Hidden File m.png' c; $SLY recover $P c -q; $SLY recover $P --file 0 -q c");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, Path("Original a.bin\n") + Path("Original [1] a.bin\n"));
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(Run("cmp a.bin 'Original [1] a.bin'").status, 0);

  outcome = Run("$SLY list --password-file - six <pw");
  EXPECT_EQ(outcome.out, list);
  EXPECT_EQ(outcome.err, "");
  outcome = Run("$SLY recover $P six -f 4 && cmp e.bin 'Original e.bin'");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, Path("Original e.bin\n"));
  EXPECT_EQ(outcome.err, "File Recovered.\n");
  outcome = Run("$SLY recover $P six --main && cmp m.png 'Original six'");
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(SlyHidden, RefusesWithTheReason) {
  ExpectRefused("$SLY hide m.png a.bin", nobodyForPassword);
  ExpectRefused("$SLY list six", nobodyForPassword);
  ExpectRefused("$SLY recover six <pw", nobodyForPassword);
  ExpectRefused("$SLY list six --password-file no", "no: No such file or directory\n");
  ExpectRefused("$SLY list six --password-file .", ".: Is a directory\n");
  ExpectRefused("$SLY list six --password-file /dev/null", "Enter Password.\n");
  ExpectRefused("$SLY list six --password-file -", "Enter Password.\n");
  ExpectRefused("$SLY hide --password-file - m.png a.bin", "Enter Password.\n");
  ExpectRefused("$SLY list $P none", Path("none") + ": No such file or directory\n");
  ExpectRefused("$SLY list $P m.png", "No File Is Hidden In This File.\n");
  ExpectRefused("$SLY list $P m.png --quiet", "No File Is Hidden In This File.\n");
  ExpectRefused("$SLY list $P a.bin", "Unable To Recover File.\n");
  ExpectRefused("echo ab | $SLY recover six --main --password-file -",
                "Incorrect Password. Unable To Recover File.\n");
  ExpectRefused(
      "$SLY recover $P six",
      std::string(list) + "There are several hidden files; name one of them with --file.\n");
  for (const char* number : {"6", "65535"})
    ExpectRefused(std::string("$SLY recover $P six --file ") + number, "There is no such file.\n");
  ExpectRefused("$SLY hide $P six a.bin --yes",
                "There Are Aready 6 Files Hidden In This File. Unable To Hide File. Please Select "
                "Another File.\n");
  for (const char* usage :
       {"recover six --file 0 --main", "recover six --file -1", "recover six --file x",
        "recover six --file 65536", "hide m.png", "list", "list six --password Ab"})
    EXPECT_EQ(Run(std::string("$SLY ") + usage + " $P").status, 2) << usage;
  EXPECT_EQ(Names(), before);
}

TEST_F(SlyHidden, AddsWhenToldTo) {
  WriteFile(folder / "one", SampleCarrier(sampleMains[5], 1));
  ExpectRefused("$SLY hide $P one b.bin",
                std::string(addQuestion) + " No (nobody is at the terminal; --yes answers Yes)\n");
  const Outcome outcome = Run("$SLY hide $P one b.bin --yes -q");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_TRUE(ReadFile(Path("Hidden File one")) == SampleCarrier(sampleMains[5], 2));
  ExpectRefused("echo other | $SLY hide --password-file - one b.bin --yes -q",
                "Incorrect Password.\n");
}

TEST_F(SlyHidden, WarnsOfANameThatWillNotComeBackWhole) {
  const std::string name(25, 'a');
  WriteFile(folder / name, "x");
  const std::string warning =
      name + ": The Name Is Longer Than 24 Characters And Will Come Back Shortened.\n";
  EXPECT_EQ(Run("$SLY hide $P m.png " + name).err, warning + "File Hidden.\n");
  EXPECT_EQ(Run("$SLY hide -q $P m.png " + name).err, warning) << "a warning is no success";
}

TEST_F(SlyHidden, AsksForThePasswordOnATerminalWithoutShowingIt) {
  struct Case {
    const char* again;
    int status;
    const char* said;
  };
  for (const Case& c :
       {Case{"Ab\n", 0, "File Hidden."}, Case{"AB\n", 1, "Passwords Do Not Match. Re-Enter Them."},
        Case{"\x04", 1, "Enter Password."}, Case{"\x03", 130, ""}}) {
    OnTerminal terminal(folder, "exec $SLY hide m.png a.bin");
    terminal.WaitFor("Enter Password :");
    terminal.Type("Ab\n");
    terminal.WaitFor("Re-Enter Password :");
    terminal.Type(c.again);
    terminal.WaitFor(c.said);
    EXPECT_EQ(terminal.Finish(), c.status) << terminal.Shown();
    EXPECT_EQ(terminal.Shown().find("Ab"), std::string::npos) << terminal.Shown();
    EXPECT_EQ(terminal.Shown().find("AB"), std::string::npos) << terminal.Shown();
  }
  EXPECT_TRUE(ReadFile(Path("Hidden File m.png")) == SampleCarrier(sampleMains[5], 1));

  OnTerminal addition(folder, "exec $SLY hide 'Hidden File m.png' b.bin");
  addition.WaitFor("Enter Password :");
  addition.Type("Ab\n");
  addition.WaitFor("Re-Enter Password :");
  addition.Type("Ab\n");
  addition.WaitFor(std::string(addQuestion) + " [y/n] ");
  addition.Type("y\n");
  addition.WaitFor("File Hidden.");
  EXPECT_EQ(addition.Finish(), 0);
  EXPECT_TRUE(ReadFile(Path("Hidden File Hidden File m.png")) == SampleCarrier(sampleMains[5], 2));
}

TEST_F(SlyHidden, AsksWhichFileOnATerminal) {
  for (const auto& [typed, status] :
       {std::pair{"3\n", 0}, std::pair{"6\n", 1}, std::pair{"\x04", 1}, std::pair{"\x03", 130}}) {
    OnTerminal terminal(folder, "exec $SLY recover six");
    terminal.WaitFor("Enter Password :");
    terminal.Type("Ab\n");
    terminal.WaitFor("3\t25\td.bin");
    terminal.WaitFor("Serial number of the file to recover, 0 to 5:");
    terminal.Type(typed);
    EXPECT_EQ(terminal.Finish(), status) << terminal.Shown();
    EXPECT_FALSE(fs::exists(folder / "TempRRR"));
  }
  EXPECT_TRUE(ReadFile(Path("Original d.bin")) == SampleBytes(3));
  EXPECT_EQ(Names().size(), before.size() + 1);
}

TEST_F(SlyHidden, CtrlCLeavesNothing) {
  // Reserved, since what takes no space is not copied.
  ASSERT_EQ(Run("fallocate -l 2000000000 a.bin").status, 0);
  OnTerminal terminal(folder, "exec $SLY hide $P m.png a.bin");
  terminal.WaitFor(" of 2.00 GB");
  terminal.Type("\x03");
  EXPECT_EQ(terminal.Finish(), 130);
  EXPECT_EQ(Names(), before);
}

TEST_F(SlyHidden, SeveralAtOnceDoNotMix) {
  const Outcome outcome = Run(R"(
    for i in 0 1 2; do
      $SLY hide $P -q m.png a.bin >/dev/null & a=$!
      $SLY hide $P -q b.bin c.bin >/dev/null & b=$!
      $SLY recover $P -q six --file 1 >/dev/null & c=$!
      $SLY recover $P -q six --main >/dev/null & d=$!
      wait $a && wait $b && wait $c && wait $d || exit
    done
    for mark in '' '[1] ' '[2] '; do
      cmp b.bin "Original ${mark}b.bin" || exit
      cmp m.png "Original ${mark}six" || exit
      $SLY list $P "${mark}Hidden File b.bin" || exit
    done)");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, "0\t1\tc.bin\n0\t1\tc.bin\n0\t1\tc.bin\n");
  for (const char* carrier :
       {"Hidden File m.png", "[1] Hidden File m.png", "[2] Hidden File m.png"})
    EXPECT_TRUE(ReadFile(Path(carrier)) == SampleCarrier(sampleMains[5], 1)) << carrier;
}

}  // namespace
}  // namespace slyver
