#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <thread>

#include "console/Terminal.h"
#include "support/SlyProgram.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

constexpr const char* nobody = " No (nobody is at the terminal; --yes answers Yes)\n";

class Sly : public SlyProgramTest {
 protected:
  /// Takes from root the right to pass over permissions; everyone else has none to lose.
  static std::string Unprivileged(const std::string& command) {
    return "if [ $(id -u) = 0 ]; then set -- setpriv "
           "--bounding-set=-dac_override,-dac_read_search; "
           "fi; \"$@\" " +
           command;
  }
};

TEST_F(Sly, CutsAsSplitDoesAndJoinsAsCatDoes) {
  WriteFile(folder / "my file.v1.dat", SomeBytes(3000001));
  const Outcome outcome = Run(R"(
    set -e
    "$SLY" split 'my file.v1.dat' --size 100kB
    split -b 100000 -a 2 --numeric-suffixes=1 'my file.v1.dat' gnu.
    i=0
    for part in gnu.*; do i=$((i + 1)); cmp "$part" "my file.v1.dat.$i.sly"; done
    [ $i = 31 ]
    mv 'my file.v1.dat' before
    "$SLY" join 'my file.v1.dat.10.sly'
    cmp before 'my file.v1.dat')");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, (folder / "my file.v1.dat\n").string()) << "the path alone";
  EXPECT_EQ(outcome.err, "File Successfully Sly.\nFile Joined.\n");
}

TEST_F(Sly, TellsApartDoneFailedAndWrongUsage) {
  WriteFile(folder / "a", "0123456789");
  struct Case {
    const char* arguments;
    int status;
  };
  for (const Case& c : {Case{"split a --size 5", 0},
                        Case{"split a --size 5 --yes", 1},
                        Case{"split a", 1},
                        Case{"join none.1.sly", 1},
                        Case{"--help", 0},
                        Case{"split --help", 0},
                        Case{"--version", 0},
                        Case{"", 2},
                        Case{"splot a", 2},
                        Case{"split", 2},
                        Case{"join", 2},
                        Case{"split a b", 2},
                        Case{"split a --size 5 --count 2", 2},
                        Case{"split a --size 1.5", 2},
                        Case{"split a --size 0", 2},
                        Case{"split a --size big", 2},
                        Case{"split a --count 0", 2},
                        Case{"split a --count -1", 2},
                        Case{"split a --count x", 2},
                        Case{"join a.1.sly --size 5", 2}}) {
    const Outcome outcome = Run(std::string("\"$SLY\" ") + c.arguments);
    EXPECT_EQ(outcome.status, c.status) << c.arguments << "\n" << outcome.err;
    EXPECT_EQ(outcome.err.empty(), std::string_view(c.arguments).starts_with("--") ||
                                       std::string_view(c.arguments).ends_with("--help"))
        << c.arguments;
  }
  EXPECT_TRUE(Run("\"$SLY\" --version").out.starts_with("sly "));
}

TEST_F(Sly, ReadsUnitsAndPutsPiecesIntoTheOutputFolder) {
  WriteFile(folder / "a", SomeBytes(5000));
  const Outcome outcome = Run("$SLY split a --size 2KiB -o new/out --yes --verbose --quiet");
  EXPECT_EQ(outcome.status, 0);
  std::string expected;
  for (const char* piece : {"a.1.sly", "a.2.sly", "a.3.sly"})
    expected += (folder / "new" / "out" / piece).string() + "\n";
  EXPECT_EQ(outcome.out, expected);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(Run("wc -c < new/out/a.1.sly; wc -c < new/out/a.3.sly").out, "2048\n904\n");
}

TEST_F(Sly, DividesIntoACountOfPieces) {
  WriteFile(folder / "a", SomeBytes(1000));
  EXPECT_EQ(Run("$SLY split a --count 3 -q; wc -c < a.1.sly; wc -c < a.2.sly; wc -c < a.3.sly").out,
            "334\n334\n332\n");
  EXPECT_EQ(Names().size(), 4U);
  for (const char* count : {"1", "1000", "2000"})
    ExpectRefused(std::string("$SLY split a --count ") + count, "Unable To Divide File.\n");

  WriteFile(folder / "b", SomeBytes(80000));
  for (const char* cut : {"--count 40000", "--size 2"})
    ExpectRefused(std::string("$SLY split b ") + cut, "Overflow\n");
  EXPECT_EQ(Names().size(), 5U) << "nothing written";
}

TEST_F(Sly, AnswersNoWithoutATerminalAndYesWhenTold) {
  WriteFile(folder / "a", "old");
  WriteFile(folder / "a.1.sly", "12");
  WriteFile(folder / "a.2.sly", "3");
  const std::string question = "a Already Exists. Do You Want To Replace It?";
  ExpectRefused("$SLY join a.1.sly", question + nobody);
  ExpectRefused("$SLY join a.1.sly --quiet", question + nobody);
  EXPECT_EQ(ReadFile(folder / "a"), "old");
  EXPECT_EQ(Run("$SLY join a.1.sly --yes").err, question + " Yes (--yes)\nFile Joined.\n");
  const Outcome quiet = Run("$SLY join a.1.sly -y -q");
  EXPECT_EQ(quiet.out, (folder / "a\n").string());
  EXPECT_EQ(quiet.err, "");
  EXPECT_EQ(ReadFile(folder / "a"), "123");
  ExpectRefused("$SLY split a -o none", (folder / "none").string() +
                                            " Does Not Exists. Do You Want To Create It?" + nobody);
}

TEST_F(Sly, NamesTheFileAndTheCauseOfAFailure) {
  WriteFile(folder / "a", SomeBytes(20000));
  const auto path = [&](const char* name) { return (folder / name).string(); };
  ExpectRefused("$SLY split none", path("none") + ": No such file or directory\n");
  ExpectRefused("$SLY split none --count 3", path("none") + ": No such file or directory\n");
  ExpectRefused("$SLY split a --quiet", "Chunk Size Bigger Than File Size.\n");
  ExpectRefused("$SLY split .", path(".") + ": Is a directory\n");
  ExpectRefused("mkdir ro; chmod 500 ro; " + Unprivileged("$SLY split a -s 15000 -o ro"),
                path("ro/a.1.sly") + ": Permission denied\n");
  ExpectRefused("cp a b; chmod 0 b; " + Unprivileged("$SLY split b"),
                path("b") + ": Permission denied\n");
  // The limit is one of blocks of 512 bytes: piece 2 fits, piece 1 does not and is begun first.
  ExpectRefused("ulimit -f 20; $SLY split a -s 15000", path("a.1.sly") + ": File too large\n");
  EXPECT_EQ(Names(), (std::set<std::string>{"a", "b", "ro"}));
  EXPECT_EQ(Names(folder / "ro"), std::set<std::string>{});

  WriteFile(folder / "c.1.sly", SomeBytes(20000));
  ExpectRefused("ulimit -f 20; $SLY join c.1.sly",
                path("c") + ": File too large\nUnable To Join File.\n");
  EXPECT_FALSE(fs::exists(folder / "c"));
  ExpectRefused("$SLY join c.1.sly >/dev/full",
                "File Joined.\nstandard output: cannot be written\n");
}

TEST_F(Sly, RemovesAScratchFolderThatIsReadOnly) {
  const Outcome outcome = Run(R"(
    printf x >a.1.sly
    mkdir -p temprrr/sub
    mkdir -m 500 user
    ln -s ../../user temprrr/sub/link
    chmod -R 500 temprrr
    )" + Unprivileged("$SLY join a.1.sly -q"));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(Names(), (std::set<std::string>{"a", "a.1.sly", "user"}));
  EXPECT_EQ(Run("stat -c %a user").out, "500\n") << "what a link leads to keeps its rights";
}

TEST_F(Sly, CtrlCStopsABigSplitAndLeavesNothing) {
  WriteFile(folder / "big", "x");
  fs::resize_file(folder / "big", std::uint64_t{47} * 1000 * 1000 * 1000);
  OnTerminal terminal(folder, "exec $SLY split big");
  terminal.WaitFor(" of 47.0 GB");
  for (int i = 0; i < 3000 && !fs::exists(folder / "big.9.sly"); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  terminal.Type("\x03");
  EXPECT_EQ(terminal.Finish(), 130);
  EXPECT_EQ(Names(), std::set<std::string>{"big"});
  EXPECT_TRUE(terminal.Shown().ends_with("\r\033[K")) << "the progress line is cleared";
}

TEST_F(Sly, IgnoresASignalThatItsCallerIgnores) {
  WriteFile(folder / "big", "x");
  fs::resize_file(folder / "big", std::uint64_t{47} * 1000 * 1000 * 1000);
  const Outcome outcome = Run(R"(
    trap '' HUP
    $SLY split big & sly=$!
    until [ -e big.9.sly ]; do kill -0 $sly || exit 1; sleep 0.01; done
    kill -HUP $sly
    until [ -e big.99.sly ]; do kill -0 $sly || exit 1; sleep 0.01; done
    kill -TERM $sly
    wait $sly)");
  EXPECT_EQ(outcome.status, 143) << outcome.err;
  EXPECT_EQ(Names(), std::set<std::string>{"big"});
}

TEST(Terminal, IgnoresASignalThatComesWhenTheWorkIsDone) {
  const auto live = [](bool done) {
    {
      const Terminal terminal;
      (void)std::raise(SIGTERM);
      if (terminal.StopSignal() == SIGTERM && done) terminal.IgnoreStops();
    }
    std::_Exit(0);
  };
  EXPECT_EXIT(live(true), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(live(false), testing::KilledBySignal(SIGTERM), "");
}

TEST_F(Sly, AsksOnATerminal) {
  const std::string question = "a Already Exists. Do You Want To Replace It? [y/n] ";
  WriteFile(folder / "a", "old");
  WriteFile(folder / "a.1.sly", "new");
  struct Case {
    const char* typed;
    int status;
    const char* bytes;
  };
  for (const Case& c : {Case{"n\n", 1, "old"}, Case{"\x04", 1, "old"}, Case{"\x03", 130, "old"},
                        Case{"y\n", 0, "new"}}) {
    OnTerminal terminal(folder, "exec $SLY join a.1.sly");
    terminal.WaitFor(question);
    terminal.Type("perhaps\n");
    terminal.WaitFor(question);
    terminal.Type(c.typed);
    EXPECT_EQ(terminal.Finish(), c.status) << terminal.Shown();
    EXPECT_EQ(ReadFile(folder / "a"), c.bytes);
  }
  // With a terminal at one end only there is nobody to ask.
  OnTerminal halfway(folder, "$SLY join a.1.sly </dev/null");
  EXPECT_EQ(halfway.Finish(), 1);
  EXPECT_NE(halfway.Shown().find("nobody is at the terminal"), std::string::npos);
}

TEST_F(Sly, DrawsTheProgressOnATerminalAlone) {
  WriteFile(folder / "a", SomeBytes(5000));
  OnTerminal terminal(folder, "$SLY split a -s 2kB");
  terminal.WaitFor("100%  5.00 kB of 5.00 kB");
  terminal.WaitFor("\r\033[KFile Successfully Sly.");
  EXPECT_EQ(terminal.Finish(), 0);
  OnTerminal quiet(folder, "rm a; $SLY join a.1.sly --quiet");
  EXPECT_EQ(quiet.Finish(), 0);
  EXPECT_EQ(quiet.Shown(), (folder / "a\r\n").string());
}

}  // namespace
}  // namespace slyver
