#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "support/SampleCarrier.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

/// The status that a shell would give a child's end.
int StatusOf(int waitStatus) {
  return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : 128 + WTERMSIG(waitStatus);
}

struct Outcome {
  int status = 0;
  std::string out, err;
};

/// The real program, as $SLY in shell scripts, in a folder with sample files, a carrier of one and
/// one of six, and the password in the file "pw", which scripts name with $P.
class Sly : public TempFolderTest {
 protected:
  void SetUp() override {
    TempFolderTest::SetUp();
    setenv("SLY", SLY_PROGRAM, 1);
    setenv("LC_ALL", "C", 1);
    setenv("P", "--password-file pw", 1);
    // Takes from root the right to pass over permissions; everyone else has none to lose.
    setenv("DROP", getuid() == 0 ? "setpriv --bounding-set=-dac_override,-dac_read_search" : "", 1);
    WriteFile(folder / "pw", "Ab\r\nnot this line\n");
    WriteFile(folder / "m.png", SomeBytes(3000));
    for (std::size_t i = 0; i < sampleFiles.size(); ++i)
      WriteFile(folder / sampleFiles.at(i).name, SampleBytes(i));
    WriteFile(folder / "one", SampleCarrier(3000, 1));
    WriteFile(folder / "two", SampleCarrier(3000, 2));
    WriteFile(folder / "six", SampleCarrier(3000, 6));
    before = Names();
  }
  void TearDown() override {
    const fs::path privateFolder = folder.parent_path() / "run" / "slyver";
    if (fs::exists(privateFolder)) {
      EXPECT_EQ(Names(privateFolder), std::set<std::string>{});
    }
    EXPECT_FALSE(fs::exists(folder / "TempRRR"));
    TempFolderTest::TearDown();
  }
  void StartAnew() {
    TearDown();
    SetUp();
  }

  /// Runs a script without a terminal. In the output the test's folder is "@".
  Outcome Run(const std::string& script) const {
    const std::string work = folder.string();
    const std::string command = "cd '" + work + "' && (" + script +
                                ") </dev/null >../stdout 2>../stderr; status=$?;"
                                "sed -i 's|" +
                                work + "|@|g' ../stdout ../stderr; exit $status";
    const int status = StatusOf(std::system(command.c_str()));
    return {status, ReadFile(folder / "../stdout"), ReadFile(folder / "../stderr")};
  }

  std::set<std::string> before;
};

/// A script that runs on a terminal of its own, with someone typing; for a minute at the most.
class OnTerminal {
 public:
  OnTerminal(const std::filesystem::path& folder, const std::string& script) {
    child_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (child_ < 0) throw std::runtime_error("no terminal can be made");
    if (child_ > 0) return;
    (void)alarm(60);
    // What runs the tests in the background has ignored these.
    for (const int number : {SIGHUP, SIGINT, SIGQUIT}) (void)std::signal(number, SIG_DFL);
    if (chdir(folder.c_str()) == 0) execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
    _exit(127);
  }
  ~OnTerminal() { close(terminal_); }
  OnTerminal(const OnTerminal&) = delete;
  OnTerminal& operator=(const OnTerminal&) = delete;

  /// Reads until `text` is on the screen, behind what was waited for before.
  void WaitFor(const std::string& text) {
    while (shown_.find(text, seen_) == std::string::npos)
      ASSERT_TRUE(ReadSome()) << text << " did not come, but: " << shown_;
    seen_ = shown_.find(text, seen_) + text.size();
  }
  void Type(const std::string& text) const {
    EXPECT_EQ(write(terminal_, text.data(), text.size()), std::ssize(text));
  }
  /// Waits for the script's end; returns its status.
  int Finish() {
    while (ReadSome()) continue;
    int status = 0;
    EXPECT_EQ(waitpid(child_, &status, 0), child_);
    return StatusOf(status);
  }
  const std::string& Shown() const { return shown_; }

 private:
  bool ReadSome() {
    std::array<char, 4096> part = {};
    const ssize_t count = read(terminal_, part.data(), part.size());
    if (count > 0) shown_.append(part.data(), static_cast<std::size_t>(count));
    return count > 0;
  }

  int terminal_ = -1;
  pid_t child_ = -1;
  std::string shown_;
  std::size_t seen_ = 0;
};

/// A script that runs without a terminal. In the output the test's folder is "@".
struct Case {
  std::string script;
  int status;
  std::string out, err;
};

const std::string nobody = " No (no terminal to ask on; --yes answers Yes)\n";
const std::string unproven = " No (no terminal to ask on; --force answers Yes)\n";
const std::string forced = " Yes (--force)\n";
const std::string replace = "a Already Exists. Do You Want To Replace It?";
const std::string askToReplace = replace + " [y/n] ";
const std::string damaged = "e.bin.2.sly Is Damaged. Do You Want To Join Them Anyway?";
const std::string odd =
    "e.bin.2.sly Does Not Have The Size Of The Other Pieces. Do You Want To Join Them Anyway?";
const std::string list =
    "0\t7\ta.bin\n1\t3000\tb.bin\n2\t1\tc.bin\n3\t25\td.bin\n4\t5000\te.bin\n5\t6\tf.bin\n";
const std::string noPassword = "Enter Password : (No terminal to ask on; use --password-file.)\n";
const std::string sameAsList =
    "The Passphrase Is The List's Password, Which Is Not Secret. Choose Another One.\n";

const std::vector<Case> scripts = {
    // Splitting and joining.
    // A hole at the end of one piece, and data at the beginning of the next.
    {"for p in a.1.sly a.2.sly; do echo $p >$p; truncate -s 1M $p; cat $p >>b; done;"
     "$SLY join a.1.sly -q; cmp a b",
     0, "@/a\n", ""},
    {"printf old >a; printf 12 >a.1.sly; printf 3 >a.2.sly; $SLY join a.1.sly -q; cat a;"
     "$SLY join a.1.sly --yes; cat a",
     0, "old@/a\n123",
     replace + nobody + replace + " Yes (--yes)\nFile Joined.\n2 pieces, 3 bytes in all\n"},
    {"$SLY split b.bin -n 3 -q; $SLY join b.bin.1.sly -o new/d -y; cmp b.bin new/d/b.bin", 0,
     "@/new/d/b.bin\n",
     "@/new/d Does Not Exists. Do You Want To Create It? Yes (--yes)\nFile Joined.\n"
     "3 pieces, 3000 bytes in all; b.bin.3.sly is taken for the last one\n"},
    {"printf a >e.1.sly; printf b >e.3.sly; echo >e.sha256; $SLY verify e.1.sly; rm e.sha256;"
     "$SLY verify e.1.sly -q",
     1, "e.1.sly\tOK\ne.2.sly\tMISSING\ne.3.sly\tOK\n",
     "e.sha256 Cannot Be Understood.\n1 Of 3 Pieces Are Damaged Or Missing.\n"
     "There Is No Checksum File Of The Pieces. Their Bytes Were Not Checked.\n"},
    {"$SLY split e.bin --size 2KiB --checksum -v -q; sha256sum -c e.bin.sha256; mv e.bin old;"
     "$SLY join e.bin.2.sly --delete; cmp e.bin old && ls e.bin*",
     0,
     "@/e.bin.1.sly\n@/e.bin.2.sly\n@/e.bin.3.sly\n@/e.bin.sha256\n"
     "e.bin.1.sly: OK\ne.bin.2.sly: OK\ne.bin.3.sly: OK\n@/e.bin\ne.bin\n",
     "File Joined.\n3 pieces, 5000 bytes in all; checked; the pieces are deleted\n"},
    {"$SLY split e.bin -n 2 --checksum -q; printf x >>e.bin.2.sly; rm e.bin;"
     "$SLY join e.bin.1.sly --delete -q -y; $SLY join e.bin.1.sly --delete -q --force; echo $?;"
     "rm e.bin e.bin.sha256; $SLY join e.bin.1.sly --delete -q --force; ls e.bin*",
     0, "@/e.bin\n1\n@/e.bin\ne.bin\n",
     damaged + unproven + damaged + forced +
         "e.bin Was Joined With 1 Damaged Piece.\n"
         "The Pieces Stay, Since Some Are Damaged.\nFile Joined.\n"
         "2 pieces, 5001 bytes in all; damaged\n" +
         odd + forced + "The Pieces Cannot Be Verified. Delete Them Anyway?" + forced},
    // What the caller has closed is neither waited for nor written to.
    {"for c in '' '<&-' '2>&-' '<&- 2>&-' '>&-' '>&- <&-' '>&- 2>&-' '>&- <&- 2>&-'; do mkdir d;"
     "eval $SLY split e.bin -s 2kB --checksum -q -o d $c; s=$?; (cd d; sha256sum -c --quiet *256);"
     "eval $SLY join d/e.bin.1.sly -q $c >o; s=$s$?; cmp e.bin d/e.bin;"
     "eval $SLY list six $P $c >>o; echo $s$? $(wc -l <o); rm -r d; done; rm o",
     0, "000 7\n000 7\n000 7\n000 7\n011 0\n011 0\n011 0\n011 0\n",
     "standard output: cannot be written\nstandard output: cannot be written\n"
     "standard output: cannot be written\nstandard output: cannot be written\n"},
    // Hiding, listing and recovering. The password comes from a stream, with a byte-order mark and
    // without a line end, from a pipe.
    {"$SLY list --password-file - six <pw; printf '\\357\\273\\277Ab' >pw; $SLY list $P six;"
     "mkfifo p; { sleep 0.1; echo Ab; } >p & $SLY list --password-file p six",
     0, list + list + list, ""},
    {"$SLY list --password-file /dev/zero six; printf 'A\\0b\\0\\n' | $SLY list --password-file - "
     "six",
     1, "",
     "/dev/zero: The first line is too long\n"
     "standard input: The text is UTF-16; save it as UTF-8\n"},
    {"cp a.bin a12345678901234567890.bin; printf 'PK\\3\\4....' >z;"
     "$SLY hide -q $P z a12345678901234567890.bin",
     0, "@/Hidden File z\n",
     "a12345678901234567890.bin: The Name Will Come Back As a1234567890123456789.bin\n"
     "z: The New File May Not Open: ZIP Allows No Data After Its End.\n"},
    {"umask 022; cp m.png p; chmod 750 p; cp a.bin s; chmod 604 s; $SLY hide -q $P p s;"
     "$SLY recover -q $P 'Hidden File p'; $SLY recover -q $P --main 'Hidden File p';"
     "stat -c %a 'Hidden File p' 'Original s' 'Original Hidden File p'; rm p s",
     0, "@/Hidden File p\n@/Original s\n@/Original Hidden File p\n700\n600\n700\n", ""},
    {"mkdir temprrr TempRRR; touch temprrr/mine TempRRR/1.ini a.1.sly a.2.sly;"
     "$SLY join a.1.sly; $SLY recover $P one; rm -r temprrr TempRRR a.1.sly a.2.sly",
     0, "",
     "@/temprrr Holds Other Files. Move Them Away.\nUnable To Join File.\n"
     "@/TempRRR Holds Other Files. Move Them Away.\nUnable To Recover File.\n"},
    // Encrypted files. A list that is open to everyone takes no password.
    {"echo p >pp; PP='--passphrase-file pp'; $SLY hide -q -e $PP m.png b.bin;"
     "$SLY hide -q -y $P 'Hidden File m.png' b.bin; $SLY recover $P 'Hidden File m.png';"
     "$SLY hide -q -e $PP $P m.png b.bin; $SLY recover $PP $P --all two;"
     "echo slyver | $SLY hide -e --passphrase-file - m.png b.bin;"
     "printf 'Ab\\nx\\n' | $SLY hide -q -y -e --passphrase-file - $P one b.bin",
     1, "@/Hidden File m.png\n",
     "Incorrect Password.\nIncorrect Password. Unable To Recover File.\n"
     "A New List Takes No Password Where The File Is Encrypted. Leave The Password Out.\n"
     "No File Hidden In two Is Encrypted Under A Passphrase.\nUnable To Recover File.\n" +
         sameAsList + sameAsList},
    {"printf 'Ab\\np\\n' >pw; $SLY hide -q -y -e --passphrase-file - --password-file - one b.bin "
     "<pw;"
     "$SLY recover -q -f 1 --password-file - --passphrase-file - 'Hidden File one' <pw;"
     "cmp b.bin 'Original b.bin'",
     0, "@/Hidden File one\n@/Original b.bin\n", ""},
    // What is refused, with its reason and nothing else.
    {"seq 9999 | $SLY split /dev/stdin", 1, "", "/dev/stdin: Not a regular file\n"},
    {"truncate -s 80000 a; $SLY split a -n 40000; $SLY split a -s 2; rm a", 0, "",
     "Overflow\nOverflow\n"},
    {"$SLY split .", 1, "", "@/.: Is a directory\n"},
    {"mkdir -m 500 ro; $DROP $SLY split e.bin -s 3000 -o ro; rmdir ro", 0, "",
     "@/ro: Permission denied\n"},
    {"cp a.bin b; chmod 0 b; $DROP $SLY split b; rm -f b", 0, "", "@/b: Permission denied\n"},
    // The limit is one of blocks of 512 bytes: piece 2 fits, piece 1 does not and is begun first.
    {"ulimit -f 6; $SLY split e.bin -s 4000", 1, "", "@/e.bin.1.sly: File too large\n"},
    {"ulimit -f 6; $SLY hide $P e.bin a.bin", 1, "",
     "@/Hidden File e.bin: File too large\nUnable To Hide File.\n"},
    {"$SLY list $P six >/dev/full", 1, "", "standard output: cannot be written\n"},
    {"$SLY hide m.png a.bin; $SLY recover six <pw", 1, "", noPassword + noPassword},
    {"$SLY list six --password-file .", 1, "", ".: Is a directory\n"},
    {"timeout 9 $SLY list --password-file - six <&-", 1, "",
     "standard input: Bad file descriptor\n"},
    // These need no password, and none is asked for.
    {"$SLY list m.png --quiet", 1, "", "No File Is Hidden In This File.\n"},
    {"$SLY hide six a.bin --yes", 1, "",
     "There Are Aready 6 Files Hidden In This File. Unable To Hide File. Please Select Another "
     "File.\n"},
    {"$SLY recover $P six", 1, "",
     list + "There are several hidden files; choose one with --file, or all with --all.\n"},
    {"printf '%065536d' 0 >long; $SLY hide -e --passphrase-file long $P m.png a.bin; s=$?; rm long;"
     "exit $s",
     1, "", "long: The first line is too long\n"},
    // A signal that the caller ignores stays ignored.
    {"truncate -s 47GB a; trap '' HUP; $SLY split a & sly=$!;"
     "until [ -e a.9.sly ]; do kill -0 $sly || exit 1; sleep 0.01; done; kill -HUP $sly;"
     "until [ -e a.99.sly ]; do kill -0 $sly || exit 1; sleep 0.01; done; kill $sly;"
     "rm a; wait $sly 2>/dev/null",
     143, "", ""},
};

TEST_F(Sly, DoesAndSaysWhatIsExpected) {
  for (const Case& c : scripts) {
    SCOPED_TRACE(c.script);
    StartAnew();
    const Outcome outcome = Run(c.script);
    EXPECT_EQ(outcome.status, c.status);
    EXPECT_EQ(outcome.out, c.out);
    EXPECT_EQ(outcome.err, c.err);
    if (c.out.empty()) {
      EXPECT_EQ(Names(), before) << "something was left";
    }
  }
}

TEST_F(Sly, TellsWrongUsageInALine) {
  for (const auto& [arguments, said] : {std::pair{"", "subcommand"},
                                        {"split", "FILE"},
                                        {"split a b", "b"},
                                        {"split a -s 5 -n 2", "--size excludes --count"},
                                        {"split a -s 1.5", "--size: \"1.5\""},
                                        {"split a -n 0", "--count: \"0\""},
                                        {"split a -n -1", "--count: \"-1\""},
                                        {"recover six -f 0 -m $P", "--file excludes --main"},
                                        {"split ''", "FILE"},
                                        {"split a -o ''", "--output"},
                                        {"hide '' a.bin", "MAIN"},
                                        {"hide m.png a.bin --passphrase-file pw", "--encrypt"},
                                        {"list six --password-file ''", "--password-file"}}) {
    const Outcome outcome = Run(std::string("$SLY ") + arguments);
    EXPECT_EQ(outcome.status, 2) << arguments;
    EXPECT_EQ(outcome.out, "") << arguments;
    EXPECT_NE(outcome.err.find(said), std::string::npos) << arguments << outcome.err;
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
  }
  for (const char* arguments : {"--help", "split --help", "--version"}) {
    const Outcome outcome = Run(std::string("$SLY ") + arguments);
    EXPECT_TRUE(outcome.status == 0 && !outcome.out.empty() && outcome.err.empty()) << arguments;
  }
  EXPECT_EQ(Names(), before);
}

TEST_F(Sly, TalksOnATerminal) {
  // Runs a script; `turns` are by turns what is waited for, and what is then typed. Then `check`
  // must succeed.
  const auto talks = [this](const std::string& script, int status, const std::string& check,
                            const auto&... turns) {
    SCOPED_TRACE(script);
    StartAnew();
    OnTerminal terminal(folder, script);
    bool types = false;
    for (const std::string& turn : std::vector<std::string>{turns...}) {
      types ? terminal.Type(turn) : terminal.WaitFor(turn);
      types = !types;
    }
    EXPECT_EQ(terminal.Finish(), status) << terminal.Shown();
    EXPECT_EQ(Run(check).status, 0) << terminal.Shown();
    // Neither what is typed for a password nor the progress of reading a directory.
    for (const char* unseen : {"Ab", "AB", "2.50 kB"})
      EXPECT_EQ(terminal.Shown().find(unseen), std::string::npos) << terminal.Shown();
  };
  const std::string join =
      "printf old >a; printf 12 >a.1.sly; printf 3 >a.2.sly; exec $SLY join a.1.sly";
  talks(join, 1, "grep old a", askToReplace, "perhaps\n", askToReplace, "n\n");
  talks(join, 1, "grep old a", askToReplace, "\x04");
  talks(join, 130, "grep old a", askToReplace, "\x03");
  talks(join, 0, "grep 123 a", askToReplace, "YES\n", "File Joined.");

  const std::string hide = "exec $SLY hide m.png a.bin";
  const std::string nothingMade = "! ls | grep -q '^[HO]'";
  const std::string password = "Enter Password :", again = "Re-Enter Password :";
  const std::string differ = "Passwords Do Not Match. Re-Enter Them.";
  talks(hide, 0, "cmp 'Hidden File m.png' one", password, "Ab\n", again, "AB\n", differ, "",
        password, "Ab\n", again, "Ab\n", "File Hidden.");
  talks(hide, 1, nothingMade, password, "Ab\n", again, "AB\n", differ, "", password, "Ab\n", again,
        "AB\n", differ, "", password, "Ab\n", again, "AB\n", differ);
  talks(hide, 1, nothingMade, password, "Ab\n", again, "\x04", "Enter Password.");
  talks(hide, 130, nothingMade, password, "Ab\n", again, "\x03");
  const std::string add =
      "There are Files Already Hidden In This File. Do You Want To Add Another File In It?";
  talks("exec $SLY hide one b.bin", 0, "cmp 'Hidden File one' two", password, "Ab\n", again, "Ab\n",
        add + " [y/n] ", "y\n", "File Hidden.");
  // A terminal at one end only cannot be asked on.
  talks("$SLY hide one b.bin $P <pw", 1, nothingMade, add + " No (no terminal");

  // Whatever ends or stops the prompt, what is typed is seen afterwards, and only then.
  talks("trap : QUIT; ulimit -c 0; $SLY hide m.png a.bin; stty -a", 0, nothingMade, password,
        "\x1c", " echo ");
  talks("(sleep 0.5; kill -STOP $$; stty echo </dev/tty; kill -CONT $$) & exec $SLY list six", 0,
        "true", password, "", password, "Ab\n", "f.bin");
  talks("set -m; $SLY list six; stty -a; fg", 0, "true", password, "A\x1a", " echo ", "", password,
        "Ab\n", "f.bin");
  // The keys that edit a line, and other ways to a terminal.
  const std::string erase = "\x7F", eraseWord = "\x17", eraseLine = "\x15";
  talks("exec $SLY list six --password-file -", 0, "true", password,
        "xy" + eraseLine + "Axx" + erase + erase + "b a a" + eraseWord + eraseWord + erase + "\n",
        "f.bin");
  talks("$SLY list six --password-file /dev/tty <pw", 0, "true", password, "Ab\n", "f.bin");
  talks("mkfifo p; (sleep 0.5; kill $$) & exec $SLY list --password-file p six", 143, "true");

  // What one program encrypts the other opens.
  const std::string passphrase = "a \xC3\xA9\n";
  talks(
      "$SLY hide -e m.png a.bin; $SLY recover --raw 'Hidden File m.png'; "
      "exec age -d -o opened 'Original a.bin.age'",
      0, "cmp a.bin opened", "Enter Passphrase :", passphrase, "Re-Enter Passphrase :", passphrase,
      "File Recovered.", "", "Enter passphrase:", passphrase);
  talks(
      "age -p -o x.age b.bin; $SLY hide -q $P m.png x.age; exec $SLY recover $P 'Hidden File "
      "m.png'",
      0, "cmp b.bin 'Original x'", "Enter passphrase", passphrase, "Confirm passphrase", passphrase,
      "Enter Passphrase Of x.", passphrase, "File Recovered.");
  const std::string pasted(10000, 'p');
  talks("exec $SLY hide -q -e m.png a.bin", 0,
        "printf %010000d 0 | tr 0 p >pp; $SLY recover --passphrase-file pp 'Hidden File m.png'",
        "Enter Passphrase :", pasted + "\n", "Re-Enter Passphrase :", pasted + "\n");

  const std::string recover = "exec $SLY recover six";
  const std::string which = "Serial number of the file to recover, 0 to 5:";
  talks(recover, 0, "cmp d.bin 'Original d.bin'", password, "Ab\n", "d.bin", "", which, "3\n");
  talks(recover, 1, nothingMade, password, "Ab\n", which, "6\n");
  talks(recover, 1, nothingMade, password, "Ab\n", which, "\x04");
  talks(recover, 130, nothingMade, password, "Ab\n", which, "\x03");

  talks("exec $SLY split e.bin -s 2kB", 0, "true",
        "100%  5.00 kB of 5.00 kB\033[K\r\033[KFile Successfully");
  talks("stty cols 20; exec $SLY split e.bin -s 2kB", 0, "true", "\r100%\033[K\r\033[KFile");
  talks(
      "echo begins; (s=$SLY; $s split e.bin -s 2kB -q; $s join e.bin.1.sly -q -y) >out; echo ends",
      0, "grep -c . out | grep 1", "begins\r\nends");
  talks("exec $SLY split \"$(printf 'a\\033[2J\\302\\233\\233\\304\\233')\"", 1, "true",
        "a?[2J??\xC4\x9B: No such file");
  // A terminal gets names that a shell takes back; a file gets them as they are.
  talks(
      "f=$(printf \"a'\\033\\302\\233\\233\\304\\233\"); cp e.bin \"$f\";"
      "$SLY split -q -v -n 2 \"$f\" | grep -F \"$f\" && $SLY verify \"$f.1.sly\";"
      "exec $SLY join \"$f.1.sly\" -y",
      0, "true", "\n$'a\\'\\033\\302\\233\\233\xC4\x9B.1.sly'\tOK", "",
      "/a\\'\\033\\302\\233\\233\xC4\x9B'\r\n");
  // What takes no space on the disk is not copied, so it is reserved.
  talks("fallocate -l 2000000000 a.bin; exec $SLY hide $P m.png a.bin", 130, nothingMade,
        " of 2.00 GB", "\x03");
  talks("truncate -s 47GB a; exec $SLY split a", 130, "! ls | grep sly", " of 47.0 GB", "\x03",
        "\r\033[K");
  talks(
      "truncate -s 2GB a.1.sly a.2.sly; printf '%064d  a.1.sly\n%064d  a.2.sly\n' 0 0 >a.sha256;"
      "exec $SLY verify a.1.sly >out",
      130, "! grep . out", " of 4.00 GB", "\x03", "\r\033[K");
}

}  // namespace
}  // namespace slyver
