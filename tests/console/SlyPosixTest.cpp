#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "support/SampleCarrier.h"

namespace slyver {
namespace {

namespace fs = std::filesystem;

#define UNPROVEN " No (no terminal to ask on; --force answers Yes)\n"
#define FORCED " Yes (--force)\n"
#define DAMAGED "e.bin.2.sly Is Damaged. Do You Want To Join Them Anyway?"
#define ODD \
  "e.bin.2.sly Does Not Have The Size Of The Other Pieces. Do You Want To Join Them Anyway?"
#define NOBODY " No (no terminal to ask on; --yes answers Yes)\n"
#define REPLACE "a Already Exists. Do You Want To Replace It?"
#define ADD "There are Files Already Hidden In This File. Do You Want To Add Another File In It?"
#define NO_PASSWORD "Enter Password : (No terminal to ask on; use --password-file.)\n"
#define UNCHECKED "There Is No Checksum File Of The Pieces. Their Bytes Were Not Checked.\n"
#define SAME "The Passphrase Is The List's Password, Which Is Not Secret. Choose Another One.\n"
#define NOT_ITS_PASSWORD "Incorrect Password. Unable To Recover File.\n"
#define LIST "0\t7\ta.bin\n1\t3000\tb.bin\n2\t1\tc.bin\n3\t25\td.bin\n4\t5000\te.bin\n5\t6\tf.bin\n"

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
    WriteFile(folder / "one", SampleCarrier(sampleMains[5], 1));
    WriteFile(folder / "two", SampleCarrier(sampleMains[5], 2));
    WriteFile(folder / "six", SampleCarrier(sampleMains[5], 6));
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
    const auto read = [&](const char* name) {
      std::string text = ReadFile(folder.parent_path() / name);
      const std::string path = folder.string();
      for (std::size_t at = 0; (at = text.find(path, at)) != std::string::npos;)
        text.replace(at, path.size(), "@");
      return text;
    };
    const std::string command =
        "cd '" + folder.string() + "' && (" + script + ") </dev/null >../stdout 2>../stderr";
    const int status = StatusOf(std::system(command.c_str()));
    return {status, read("stdout"), read("stderr")};
  }

  std::set<std::string> before;
};

/// A script that runs on a terminal of its own, with someone typing.
class OnTerminal {
 public:
  OnTerminal(const std::filesystem::path& folder, const std::string& script) {
    child_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    // Killing child -1 would kill all processes of this user.
    if (child_ < 0) throw std::runtime_error("no terminal can be made");
    if (child_ > 0) return;
    if (chdir(folder.c_str()) == 0) execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
    _exit(127);
  }
  ~OnTerminal() {
    if (child_ > 0) {
      kill(child_, SIGKILL);
      (void)waitpid(child_, nullptr, 0);
    }
    close(terminal_);
  }
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
    child_ = -1;
    return StatusOf(status);
  }
  const std::string& Shown() const { return shown_; }

 private:
  /// False when the script has ended, or is ended because it is silent for too long.
  bool ReadSome() {
    pollfd waiting = {terminal_, POLLIN, 0};
    if (poll(&waiting, 1, 30000) <= 0) {
      kill(child_, SIGKILL);
      return false;
    }
    std::array<char, 4096> part = {};
    const ssize_t count = read(terminal_, part.data(), part.size());
    if (count <= 0) return false;
    shown_.append(part.data(), static_cast<std::size_t>(count));
    return true;
  }

  int terminal_ = -1;
  pid_t child_ = -1;
  std::string shown_;
  std::size_t seen_ = 0;
};

/// A script that runs without a terminal. In the output the test's folder is "@".
struct Case {
  const char* script;
  int status;
  const char* out;
  const char* err;
};

// NOLINTBEGIN(modernize-avoid-c-arrays,modernize-raw-string-literal): tables of scripts.
constexpr Case scripts[] = {
    // Splitting and joining.
    // A hole at the end of one piece, and data at the beginning of the next.
    {"for p in a.1.sly a.2.sly; do echo $p >$p; truncate -s 1M $p; cat $p >>b; done;"
     "$SLY join a.1.sly -q; cmp a b",
     0, "@/a\n", ""},
    {"$SLY split e.bin --size 2KiB -o new/out --yes --verbose --quiet; wc -c <new/out/e.bin.3.sly",
     0, "@/new/out/e.bin.1.sly\n@/new/out/e.bin.2.sly\n@/new/out/e.bin.3.sly\n904\n", ""},
    {"printf old >a; printf 12 >a.1.sly; printf 3 >a.2.sly; $SLY join a.1.sly -q; cat a;"
     "$SLY join a.1.sly --yes; cat a; $SLY join a.1.sly -y -q",
     0, "old@/a\n123@/a\n",
     REPLACE NOBODY REPLACE " Yes (--yes)\nFile Joined.\n2 pieces, 3 bytes in all\n"},
    {"$SLY split b.bin -n 3 -q; mv b.bin old; $SLY join b.bin.1.sly -o new/d -y; cmp old "
     "new/d/b.bin",
     0, "@/new/d/b.bin\n",
     "@/new/d Does Not Exists. Do You Want To Create It? Yes (--yes)\nFile Joined.\n"
     "3 pieces, 3000 bytes in all; b.bin.3.sly is taken for the last one\n"},
    {"printf a >e.1.sly; printf b >e.3.sly; echo >e.sha256; $SLY verify e.1.sly; rm e.sha256;"
     "$SLY verify e.1.sly -q",
     1, "e.1.sly\tOK\ne.2.sly\tMISSING\ne.3.sly\tOK\n",
     "e.sha256 Cannot Be Understood.\n1 Of 3 Pieces Are Damaged Or Missing.\n" UNCHECKED},
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
     DAMAGED UNPROVEN DAMAGED FORCED "e.bin Was Joined With 1 Damaged Piece.\n"
                                     "The Pieces Stay, Since Some Are Damaged.\nFile Joined.\n2 "
                                     "pieces, 5001 bytes in all; damaged\n" ODD FORCED
                                     "The Pieces Cannot Be Verified. Delete Them Anyway?" FORCED},
    // What the caller has closed is neither waited for nor written to.
    {"for c in '' '<&-' '2>&-' '<&- 2>&-' '>&-' '>&- <&-' '>&- 2>&-' '>&- <&- 2>&-'; do mkdir d;"
     "eval $SLY split e.bin -s 2kB --checksum -q -o d $c; s=$?; (cd d; sha256sum -c --quiet *256);"
     "eval $SLY join d/e.bin.1.sly -q $c >o; s=$s$?; cmp e.bin d/e.bin;"
     "eval $SLY list six $P $c >>o; echo $s$? $(wc -l <o); rm -r d; done; rm o",
     0, "000 7\n000 7\n000 7\n000 7\n011 0\n011 0\n011 0\n011 0\n",
     "standard output: cannot be written\nstandard output: cannot be written\n"
     "standard output: cannot be written\nstandard output: cannot be written\n"},
    // Hiding, listing and recovering.
    {"mkdir d; $SLY hide $P m.png a.bin -o d -q; $SLY recover $P two --all --output d -q;"
     "cmp 'd/Hidden File m.png' one && cmp a.bin 'd/Original a.bin' && cmp b.bin 'd/Original "
     "b.bin'",
     0, "@/d/Hidden File m.png\n@/d/Original a.bin\n@/d/Original b.bin\n", ""},
    {"$SLY recover $P one -q; $SLY recover $P --file 0 one; cmp a.bin 'Original [1] a.bin'", 0,
     "@/Original a.bin\n@/Original [1] a.bin\n", "File Recovered.\n"},
    {"$SLY list --password-file - six <pw", 0, LIST, ""},
    // A byte-order mark, a missing line end, a pipe.
    {"printf '\\357\\273\\277Ab' >pw; $SLY list $P six", 0, LIST, ""},
    {"mkfifo p; { sleep 0.1; echo Ab; } >p & $SLY list --password-file p six", 0, LIST, ""},
    {"$SLY list --password-file /dev/zero six; printf '\\377\\376A\\0b\\0' >u;"
     "$SLY list --password-file u six; printf 'A\\0b\\0\\n' | $SLY list --password-file - six; rm "
     "u",
     0, "",
     "/dev/zero: The first line is too long\nu: The text is UTF-16; save it as UTF-8\n"
     "standard input: The text is UTF-16; save it as UTF-8\n"},
    {"$SLY list --password-file no six", 1, "", "no: No such file or directory\n"},
    {"cp a.bin aaaaaaaaaaaaaaaaaaaaaaaaa; $SLY hide -q $P m.png aaaaaaaaaaaaaaaaaaaaaaaaa", 0,
     "@/Hidden File m.png\n",
     "aaaaaaaaaaaaaaaaaaaaaaaaa: The Name Will Come Back As aaaaaaaaaaaaaaaaaaaaaaaa\n"},
    {"umask 022; cp m.png p; chmod 750 p; cp a.bin s; chmod 604 s; $SLY hide -q $P p s;"
     "$SLY recover -q $P 'Hidden File p'; $SLY recover -q $P --main 'Hidden File p';"
     "stat -c %a 'Hidden File p' 'Original s' 'Original Hidden File p'; rm p s",
     0, "@/Hidden File p\n@/Original s\n@/Original Hidden File p\n700\n600\n700\n", ""},
    {"mkdir temprrr TempRRR; touch temprrr/mine TempRRR/1.ini; printf 1 >a.1.sly; printf 2 "
     ">a.2.sly;"
     "$SLY join a.1.sly; $SLY recover $P one; echo ab | $SLY recover --password-file - one;"
     "rm temprrr/mine TempRRR/1.ini; rmdir temprrr TempRRR; rm a.1.sly a.2.sly",
     0, "",
     "@/temprrr Holds Other Files. Move Them Away.\nUnable To Join File.\n"
     "@/TempRRR Holds Other Files. Move Them Away.\nUnable To Recover File.\n"
     "@/TempRRR Holds Other Files. Move Them Away.\nUnable To Recover File.\n"},
    {"printf 'PK\\3\\4....' >z; $SLY hide -q $P z a.bin; rm z", 0, "@/Hidden File z\n",
     "z: The New File May Not Open: ZIP Allows No Data After Its End.\n"},
    // Encrypted files. A list that is open to everyone needs no password.
    {"c='Hidden File m.png'; echo p >pp; PP='--passphrase-file pp'; echo plain >t;"
     "$SLY hide -q -e $PP m.png t; $SLY list \"$c\"; grep -ac plain \"$c\";"
     "$SLY hide -q -y \"$c\" b.bin && $SLY recover -q $PP --all \"Hidden File $c\";"
     "cmp t 'Original t' && cmp b.bin 'Original b.bin'; stat -c %a 'Original t';"
     "$SLY recover -q -f 0 \"Hidden File $c\";"
     "for job in list recover; do $SLY $job $P \"$c\"; done;"
     "$SLY hide -y -q $P \"$c\" b.bin; $SLY hide -y -q -e $PP $P \"$c\" b.bin;"
     "$SLY hide -q -e $PP $P m.png b.bin; $SLY recover $PP $P --all two;"
     "printf xx | dd of=\"$c\" bs=1 seek=3170 conv=notrunc 2>/dev/null; $SLY recover $PP \"$c\"",
     1,
     "@/Hidden File m.png\n0\t188\tt.age\n0\n@/Hidden File Hidden File m.png\n@/Original t\n"
     "@/Original b.bin\n600\n@/Original t.age\n",
     "t.age Is Still Encrypted.\n" NOT_ITS_PASSWORD NOT_ITS_PASSWORD
     "Incorrect Password.\nIncorrect Password.\n"
     "A New List Takes No Password Where The File Is Encrypted. Leave The Password Out.\n"
     "No File Hidden In two Is Encrypted Under A Passphrase.\nUnable To Recover File.\n"
     "t Is Damaged.\nUnable To Recover File.\n"},
    {"printf 'Ab\\np\\n' >pw; $SLY hide -q -y -e --passphrase-file - $P one b.bin <pw;"
     "$SLY hide -q -y -e --passphrase-file - --password-file - one b.bin <pw >/dev/null &&"
     "$SLY recover -q --file 1 --password-file - --passphrase-file - 'Hidden File one' <pw;"
     "cmp b.bin 'Original b.bin'; echo slyver | $SLY hide -e --passphrase-file - m.png a.bin",
     1, "@/Original b.bin\n", SAME SAME},
    // What is refused, with its reason and nothing else.
    {"seq 9999 | $SLY split /dev/stdin", 1, "", "/dev/stdin: Not a regular file\n"},
    {"truncate -s 80000 a; $SLY split a -n 40000; $SLY split a -s 2; rm a", 0, "",
     "Overflow\nOverflow\n"},
    {"$SLY split e.bin --quiet", 1, "", "Chunk Size Bigger Than File Size.\n"},
    {"cp e.bin e.1.sly; $SLY split e.bin -o none; $SLY join e.1.sly -o none || rm e.1.sly", 0, "",
     "@/none Does Not Exists. Do You Want To Create It?" NOBODY
     "@/none Does Not Exists. Do You Want To Create It?" NOBODY},
    {"$SLY split .", 1, "", "@/.: Is a directory\n"},
    {"$SLY join none.1.sly", 1, "", "none.1.sly Is Missing.\nUnable To Join File.\n"},
    {"mkdir -m 500 ro; $DROP $SLY split e.bin -s 3000 -o ro; rmdir ro", 0, "",
     "@/ro: Permission denied\n"},
    {"cp a.bin b; chmod 0 b; $DROP $SLY split b; rm -f b", 0, "", "@/b: Permission denied\n"},
    // The limit is one of blocks of 512 bytes: piece 2 fits, piece 1 does not and is begun first.
    {"ulimit -f 6; $SLY split e.bin -s 4000", 1, "", "@/e.bin.1.sly: File too large\n"},
    {"ulimit -f 6; $SLY hide $P e.bin a.bin", 1, "",
     "@/Hidden File e.bin: File too large\nUnable To Hide File.\n"},
    {"$SLY list $P six >/dev/full", 1, "", "standard output: cannot be written\n"},
    {"$SLY hide m.png a.bin", 1, "", NO_PASSWORD},
    {"$SLY recover six <pw", 1, "", NO_PASSWORD},
    {"$SLY list six --password-file .", 1, "", ".: Is a directory\n"},
    {"$SLY list six --password-file /dev/null", 1, "", "/dev/null: The first line is empty\n"},
    {"$SLY hide --password-file - m.png a.bin", 1, "", "standard input: The first line is empty\n"},
    {"timeout 9 $SLY list --password-file - six <&-", 1, "",
     "standard input: Bad file descriptor\n"},
    // These need no password, and none is asked for.
    {"$SLY list m.png --quiet", 1, "", "No File Is Hidden In This File.\n"},
    {"$SLY recover --main a.bin", 1, "", "Unable To Recover File.\n"},
    {"echo ab | $SLY recover six --main --password-file -", 1, "", NOT_ITS_PASSWORD},
    {"$SLY recover $P six", 1, "",
     LIST "There are several hidden files; choose one with --file, or all with --all.\n"},
    {"printf '%065536d' 0 >long; $SLY hide -e --passphrase-file long $P m.png a.bin; s=$?; rm long;"
     "exit $s",
     1, "", "long: The first line is too long\n"},
    {"$SLY hide six a.bin --yes", 1, "",
     "There Are Aready 6 Files Hidden In This File. Unable To Hide File. Please Select Another "
     "File.\n"},
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
    if (*c.out == '\0') {
      EXPECT_EQ(Names(), before) << "something was left";
    }
  }
}

TEST_F(Sly, TellsWrongUsageInALine) {
  // Behind "#" stands what must be said.
  for (const std::string arguments : {"# subcommand",
                                      "splot a # subcommand",
                                      "split # FILE",
                                      "join # PIECE",
                                      "list # CARRIER",
                                      "split a b # b",
                                      "split a -s 5 -n 2 # --size excludes --count",
                                      "split a -s 1.5 # --size: \"1.5\"",
                                      "split a -s 0 # --size: \"0\"",
                                      "split a -n 0 # --count: \"0\"",
                                      "split a -n -1 # --count: \"-1\"",
                                      "recover six -f 0 -m $P # --file excludes --main",
                                      "recover six --all -m $P # --all excludes --main",
                                      "list six --password Ab # --password",
                                      "split '' # FILE",
                                      "split a -o '' # --output",
                                      "hide '' a.bin # MAIN",
                                      "hide m.png '' # FILE",
                                      "hide m.png a.bin --passphrase-file pw # --encrypt",
                                      "list six --password-file '' # --password-file"}) {
    const Outcome outcome = Run("$SLY " + arguments + "\n");
    EXPECT_EQ(outcome.status, 2) << arguments;
    EXPECT_EQ(outcome.out, "") << arguments;
    EXPECT_NE(outcome.err.find(arguments.substr(arguments.find('#') + 2)), std::string::npos)
        << arguments << outcome.err;
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
  }
  for (const char* arguments : {"--help", "split --help", "--version"}) {
    const Outcome outcome = Run(std::string("$SLY ") + arguments);
    EXPECT_TRUE(outcome.status == 0 && !outcome.out.empty() && outcome.err.empty()) << arguments;
  }
  EXPECT_EQ(Names(), before);
}

/// A script on a terminal: what is waited for and, in angle brackets, what is then typed; the
/// status; and another script that must succeed when it is over.
struct Talk {
  const char* script;
  const char* talk;
  int status;
  const char* check;
};

#define JOIN "printf old >a; printf 12 >a.1.sly; printf 3 >a.2.sly; exec $SLY join a.1.sly"
#define HIDE "exec $SLY hide m.png a.bin"
#define RECOVER "exec $SLY recover six"
#define PASSWORD "Enter Password :<Ab\n>"
#define AGAIN "Re-Enter Password :"
#define DIFFERENT PASSWORD AGAIN "<AB\n>Passwords Do Not Match. Re-Enter Them.<>"
#define WHICH "Serial number of the file to recover, 0 to 5:"
#define NOTHING_MADE "! ls | grep -q '^[HO]'"

constexpr Talk talks[] = {
    {JOIN, REPLACE " [y/n] <perhaps\n>" REPLACE " [y/n] <n\n>", 1, "grep old a"},
    {JOIN, REPLACE " [y/n] <\x04>", 1, "grep old a"},
    {JOIN, REPLACE " [y/n] <\x03>", 130, "grep old a"},
    {JOIN, REPLACE " [y/n] <YES\n>File Joined.", 0, "grep 123 a"},
    // A terminal at one end only cannot be asked on.
    {"$SLY hide one b.bin $P <pw", ADD " No (no terminal", 1, NOTHING_MADE},
    {HIDE, PASSWORD AGAIN "<Ab\n>File Hidden.", 0, "cmp 'Hidden File m.png' one"},
    {HIDE, DIFFERENT PASSWORD AGAIN "<Ab\n>File Hidden.", 0, "cmp 'Hidden File m.png' one"},
    {HIDE, DIFFERENT DIFFERENT DIFFERENT, 1, NOTHING_MADE},
    {HIDE, PASSWORD AGAIN "<\x04>Enter Password.", 1, NOTHING_MADE},
    {HIDE, PASSWORD AGAIN "<\x03>", 130, NOTHING_MADE},
    // Whatever ends or stops the prompt, what is typed is seen afterwards, and only then.
    {"trap : QUIT; ulimit -c 0; $SLY hide m.png a.bin; stty -a", "Enter Password :<\x1c> echo ", 0,
     NOTHING_MADE},
    {"(sleep 0.5; kill -STOP $$; stty echo </dev/tty; kill -CONT $$) & exec $SLY list six",
     "Enter Password :<>" PASSWORD "f.bin", 0, "true"},
    {"set -m; $SLY list six; stty -a; fg", "Enter Password :<A\x1a> echo <>" PASSWORD "f.bin", 0,
     "true"},
    // The keys that edit a line, and other ways to a terminal.
    {"exec $SLY list six --password-file -",
     "Enter Password :<xy\x15"
     "Axx\x7F\x7F"
     "b a a\x17\x17\x7F\n>f.bin",
     0, "true"},
    {"$SLY list six --password-file /dev/tty <pw", PASSWORD "f.bin", 0, "true"},
    {"mkfifo p; (sleep 0.5; kill $$) & exec $SLY list --password-file p six", "", 143, "true"},
    {"exec $SLY hide one b.bin", PASSWORD AGAIN "<Ab\n>" ADD " [y/n] <y\n>File Hidden.", 0,
     "cmp 'Hidden File one' two"},
    // What one program encrypts the other opens.
    {"$SLY hide -e m.png a.bin; $SLY recover --raw 'Hidden File m.png'; "
     "exec age -d -o opened 'Original a.bin.age'",
     "Enter Passphrase :<a \xC3\xA9\n>Re-Enter Passphrase :<a \xC3\xA9\n>File Recovered.<>"
     "Enter passphrase:<a \xC3\xA9\n>",
     0, "cmp a.bin opened"},
    {"age -p -o x.age b.bin; $SLY hide -q $P m.png x.age; exec $SLY recover $P 'Hidden File m.png'",
     "Enter passphrase<a \xC3\xA9\n>Confirm passphrase<a \xC3\xA9\n>"
     "Enter Passphrase Of x.<a \xC3\xA9\n>File Recovered.",
     0, "cmp b.bin 'Original x'"},
    {RECOVER, PASSWORD "d.bin<>" WHICH "<3\n>", 0, "cmp d.bin 'Original d.bin'"},
    {RECOVER, PASSWORD WHICH "<6\n>", 1, NOTHING_MADE},
    {RECOVER, PASSWORD WHICH "<\x04>", 1, NOTHING_MADE},
    {RECOVER, PASSWORD WHICH "<\x03>", 130, NOTHING_MADE},
    {"exec $SLY split e.bin -s 2kB", "100%  5.00 kB of 5.00 kB\033[K\r\033[KFile Successfully", 0,
     "true"},
    {"stty cols 20; exec $SLY split e.bin -s 2kB", "\r100%\033[K\r\033[KFile", 0, "true"},
    {"exec $SLY split \"$(printf 'a\\033[2J\\302\\233\\233\\304\\233')\"",
     "a?[2J??\xC4\x9B: No such file", 1, "true"},
    // A terminal gets names that a shell takes back; a file gets them as they are.
    {"f=$(printf \"a'\\033\\302\\233\\233\\304\\233\"); cp e.bin \"$f\"; $SLY split -q -v -n 2 "
     "\"$f\" | grep -F \"$f\" &&"
     "$SLY verify \"$f.1.sly\" ; exec $SLY join \"$f.1.sly\" -y",
     "\n$'a\\'\\033\\302\\233\\233\xC4\x9B.1.sly'\tOK<>/a\\'\\033\\302\\233\\233\xC4\x9B'\r\n", 0,
     "true"},
    // What takes no space on the disk is not copied, so it is reserved.
    {"fallocate -l 2000000000 a.bin; exec $SLY hide $P m.png a.bin", " of 2.00 GB<\x03>", 130,
     NOTHING_MADE},
    {"truncate -s 47GB a; exec $SLY split a", " of 47.0 GB<\x03>\r\033[K", 130, "! ls | grep sly"},
    {"truncate -s 2GB a.1.sly a.2.sly; printf '%064d  a.1.sly\n%064d  a.2.sly\n' 0 0 >a.sha256;"
     "exec $SLY verify a.1.sly >out",
     " of 4.00 GB<\x03>\r\033[K", 130, "! grep . out"},
};
// NOLINTEND(modernize-avoid-c-arrays,modernize-raw-string-literal)

TEST_F(Sly, TalksOnATerminal) {
  for (const Talk& talk : talks) {
    StartAnew();
    OnTerminal terminal(folder, talk.script);
    for (std::string rest = talk.talk; !rest.empty();) {
      const std::size_t typed = std::min(rest.find('<'), rest.size());
      terminal.WaitFor(rest.substr(0, typed));
      const std::size_t end = std::min(rest.find('>'), rest.size() - 1);
      if (typed < end) terminal.Type(rest.substr(typed + 1, end - typed - 1));
      rest.erase(0, end + 1);
    }
    EXPECT_EQ(terminal.Finish(), talk.status) << talk.script << terminal.Shown();
    EXPECT_EQ(Run(talk.check).status, 0) << talk.script << terminal.Shown();
    // Neither what is typed for a password nor the progress of reading a directory.
    for (const char* unseen : {"Ab", "AB", "2.50 kB"})
      EXPECT_EQ(terminal.Shown().find(unseen), std::string::npos) << terminal.Shown();
  }
  const std::string passphrase(10000, 'p');
  OnTerminal pasted(folder, "exec $SLY hide -q -e m.png a.bin");
  for (const char* prompt : {"Enter Passphrase :", "Re-Enter Passphrase :"}) {
    pasted.WaitFor(prompt);
    pasted.Type(passphrase + "\n");
  }
  EXPECT_EQ(pasted.Finish(), 0);
  WriteFile(folder / "pp", passphrase);
  EXPECT_EQ(Run("$SLY recover --passphrase-file pp 'Hidden File m.png'").status, 0);
  OnTerminal quiet(folder, "$SLY split e.bin -s 2kB -q; $SLY join e.bin.1.sly --quiet -y");
  EXPECT_EQ(quiet.Finish(), 0);
  EXPECT_EQ(quiet.Shown(), (folder / "e.bin\r\n").string());
}

TEST_F(Sly, SeveralAtOnceDoNotMix) {
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
      cmp one "${mark}Hidden File m.png" || exit
      $SLY list $P "${mark}Hidden File b.bin" || exit
    done)");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, "0\t1\tc.bin\n0\t1\tc.bin\n0\t1\tc.bin\n");
}

}  // namespace
}  // namespace slyver
