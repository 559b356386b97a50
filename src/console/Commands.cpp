#include "console/Commands.h"

#include <array>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <utility>
#include <vector>

#include "console/Printable.h"
#include "engine/base/CoreDump.h"
#include "engine/base/FileError.h"
#include "engine/base/PathText.h"
#include "engine/base/Secret.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"
#include "engine/hidden/HideJob.h"
#include "engine/hidden/RecoverJob.h"
#include "engine/split/ChecksumFile.h"
#include "engine/split/JoinM.h"
#include "engine/split/PieceName.h"
#include "engine/split/SizeArithmetic.h"
#include "engine/split/SlyIt.h"
#include "engine/split/Verify.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

fs::path TypedPath(const std::string& typed) {
  return FullPathOf(PathFromText(typed));
}

/// Returns the output folder: that of --output, which is created if the user agrees, or the folder
/// of `source`. `nullopt` if the user disagrees. Throws FileError.
std::optional<fs::path> OutputFolder(const Arguments& arguments, const fs::path& source,
                                     NewFolders& created, Ui& ui) {
  if (arguments.output.empty()) return source.parent_path();
  fs::path folder = TypedPath(arguments.output);
  if (FolderExists(folder)) return folder;
  (void)StateOf(source);  // A missing source must not leave a new folder.
  if (!OfferFolder(folder, created, ui)) return std::nullopt;
  created.Create(folder);
  return folder;
}

/// Returns `name` safe for standard output.
std::string ForOutput(std::string_view name) {
  return Terminal::ShowsOutput() ? Quoted(name) : std::string(name);
}

/// Prints the paths of new files; `true` if there are any.
bool Print(const std::vector<fs::path>& made) {
  for (const fs::path& path : made) std::cout << ForOutput(PathText(path)) << '\n';
  return !made.empty();
}

/// Fills in the form's fields from --size and --count. Throws FileError if the file cannot be
/// looked at.
void TakeSize(SplitForm& form, const Arguments& arguments) {
  form.Option2 = arguments.size > 0 || arguments.count > 0;
  if (arguments.size > 0) form.Text3 = std::to_string(arguments.size);
  if (arguments.count == 0) return;
  form.Nofile = std::to_string(arguments.count);
  form.Text3 = SizeFromCount(form.Nofile, "", FileLength(form.Text1)).other.value_or("");
}

std::string PromptFor(SecretKind kind) {
  return kind == SecretKind::Passphrase ? "Enter Passphrase :" : "Enter Password :";
}

/// Reads the secret in the first line of a file, without a byte-order mark and either system's line
/// end. Throws FileError, also if it is empty.
Secret SecretIn(const std::string& file, SecretKind kind, ConsoleUi& ui) {
  const Secret line = Secret::Of(ui.ReadSecret(file, PromptFor(kind)));
  std::string_view text = line.Text();
  const auto refuse = [&](std::string_view cause) {
    throw FileError(file == "-" ? "standard input" : PathFromText(file), cause);
  };
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF") ||
      text.find('\0') != std::string_view::npos)
    refuse("The text is UTF-16; save it as UTF-8");
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  if (text.ends_with('\r')) text.remove_suffix(1);
  if (text.empty()) refuse("The first line is empty");
  return text;
}

struct TypedTwice {
  Secret first, second;
};

constexpr int mostTries = 3;

/// Returns a password or passphrase from the user's file or the terminal, where it asks `twice` and
/// again while the two differ. `nullopt` if nobody can be asked; the reason has been shown.
std::optional<TypedTwice> Ask(SecretKind kind, bool twice, const Arguments& arguments,
                              ConsoleUi& ui) {
  const std::string& file =
      kind == SecretKind::Passphrase ? arguments.passphraseFile : arguments.passwordFile;
  if (!file.empty()) {
    const Secret secret = SecretIn(file, kind, ui);
    return TypedTwice{secret, secret};
  }
  for (int tries = 1;; ++tries) {
    std::optional<std::string> first = ui.MaskedInputBox(PromptFor(kind), kind);
    if (!first) return std::nullopt;
    TypedTwice typed{Secret::Of(std::move(*first)), {}};
    if (!twice || typed.first.Text().empty()) return typed;
    std::optional<std::string> second = ui.MaskedInputBox("Re-" + PromptFor(kind), kind);
    if (second) typed.second = Secret::Of(std::move(*second));
    // The job refuses a mismatch of the last try.
    if (!second || typed.first == typed.second || tries == mostTries) return typed;
    ui.Message("Passwords Do Not Match. Re-Enter Them.", Icon::Critical);
  }
}

/// Returns the password of a carrier's list; empty if the list needs none. `nullopt` if nobody can
/// be asked; the reason has been shown.
std::optional<Secret> ListPassword(const fs::path& carrier, const Arguments& arguments,
                                   ConsoleUi& ui) {
  if (ListIsOpen(carrier) && arguments.passwordFile.empty()) return Secret();
  const std::optional<TypedTwice> typed = Ask(SecretKind::Password, false, arguments, ui);
  return typed ? std::optional(typed->first) : std::nullopt;
}

/// Fills in the passwords of a hide. False if nobody can be asked; the reason has been shown.
bool TakePasswords(HideForm& form, const Arguments& arguments, ConsoleUi& ui) {
  if (!arguments.encrypt && arguments.passwordFile.empty() && ListIsOpen(form.Text1)) return true;
  if (arguments.encrypt && !arguments.passwordFile.empty())
    form.last = SecretIn(arguments.passwordFile, SecretKind::Password, ui);
  const auto typed =
      Ask(arguments.encrypt ? SecretKind::Passphrase : SecretKind::Password, true, arguments, ui);
  if (!typed) return false;
  form.Text3 = typed->first;
  form.Text4 = typed->second;
  if (!arguments.encrypt) form.last = typed->first;
  return true;
}

void WarnOf(const fs::path& file, const std::string& note, Ui& ui) {
  if (!note.empty()) ui.Message(PathText(file.filename()) + ": " + note, Icon::None);
}

std::string ListOf(const std::vector<HiddenFile>& files) {
  std::ostringstream list;
  for (std::size_t i = 0; i < files.size(); ++i)
    list << (i > 0 ? "\n" : "") << i << '\t' << files[i].length << '\t' << files[i].name;
  return list.str();
}

bool NoSuchFile(Ui& ui) {
  ui.Message("There is no such file.", Icon::Critical);
  return false;
}

/// Returns the serial number (from 0) of the file to recover, from the argument or the terminal.
/// `nullopt` if there is none; the reason has been shown.
std::optional<std::size_t> ChooseFile(const Arguments& arguments,
                                      const std::vector<HiddenFile>& files, ConsoleUi& ui) {
  if (arguments.number) return *arguments.number;
  ui.Message(ListOf(files), Icon::None);
  const std::optional<std::string> line = ui.AskLine("Serial number of the file to recover, 0 to " +
                                                     std::to_string(files.size() - 1) + ":");
  for (std::size_t i = 0; line && i < files.size(); ++i)
    if (*line == std::to_string(i)) return i;
  if (line)
    (void)NoSuchFile(ui);
  else
    ui.Message("There are several hidden files; choose one with --file, or all with --all.",
               Icon::Critical);
  return std::nullopt;
}

}  // namespace

bool Split(const Arguments& arguments, ConsoleUi& ui) {
  SplitForm form;
  form.Text1 = TypedPath(arguments.file);
  NewFolders created;
  const std::optional<fs::path> folder = OutputFolder(arguments, form.Text1, created, ui);
  if (!folder) return false;
  form.Text2 = *folder;
  form.Check1 = arguments.checksum;
  TakeSize(form, arguments);
  const int pieces = SlyIt(form, ui, AfterFailure::End);
  if (pieces < 1) return false;
  ui.Message(std::to_string(pieces) + " pieces of " +
                 (form.Option2 ? form.Text3 : std::to_string(predefinedSize)) + " bytes in " +
                 (arguments.output.empty() ? PathText(*folder) : arguments.output),
             Icon::Information);
  const std::string name = PathText(form.Text1.filename());
  for (int i = 1; arguments.verbose && i <= pieces; ++i)
    (void)Print({*folder / PathFromText(PieceNameOf(name, i))});
  if (arguments.verbose && form.Check1) (void)Print({*folder / PathFromText(ChecksumNameOf(name))});
  return true;
}

bool Join(const Arguments& arguments, ConsoleUi& ui) {
  const fs::path piece = TypedPath(arguments.file);
  NewFolders created;
  const std::optional<fs::path> folder = OutputFolder(arguments, piece, created, ui);
  if (!folder) return false;
  const std::optional<JoinedFile> joined = JoinPieces(
      piece, ui, *folder, arguments.deletePieces ? PiecesThen::Delete : PiecesThen::Stay);
  if (!joined) return false;
  ui.Message(std::to_string(joined->pieces) + " pieces, " + std::to_string(joined->length) +
                 " bytes in all" +
                 (joined->checked    ? "; checked"
                  : joined->damaged  ? "; damaged"
                  : joined->allAlike ? "; " + joined->lastPiece + " is taken for the last one"
                                     : "") +
                 (joined->deleted ? "; the pieces are deleted" : ""),
             Icon::Information);
  return Print({joined->path}) && !joined->damaged && joined->deleted == arguments.deletePieces;
}

bool Verify(const Arguments& arguments, ConsoleUi& ui) {
  const std::optional<Verified> verified = VerifyPieces(TypedPath(arguments.file), ui);
  if (!verified) return false;
  const auto print = [](const std::string& name, PieceState state) {
    constexpr std::array words = {"OK", "DAMAGED", "MISSING", "NOT CHECKED"};
    const std::string shown = ForOutput(name);
    std::cout << (shown == name ? NameOnALine(name) : shown) << '\t'
              << words[static_cast<std::size_t>(state)] << '\n';
  };
  int number = 0;
  for (const PieceState state : verified->pieces)
    print(PieceNameOf(verified->origName, ++number), state);
  if (verified->whole) print(verified->origName, *verified->whole);
  return verified->sound;
}

bool Hide(const Arguments& arguments, ConsoleUi& ui) {
  const NoCoreDump noCoreDump;
  HideForm form;
  form.encrypt = arguments.encrypt;
  form.Text1 = TypedPath(arguments.file);
  form.Text2 = TypedPath(arguments.hidden);
  if (!HideJob(form, ui, BigFiles::Take).CheckFiles()) return false;
  NewFolders created;
  const std::optional<fs::path> folder = OutputFolder(arguments, form.Text1, created, ui);
  if (!folder) return false;
  form.output = *folder;
  WarnOf(form.Text2, NameNote(form.Text2, arguments.encrypt), ui);
  WarnOf(form.Text1, FormatNote(form.Text1), ui);
  if (!TakePasswords(form, arguments, ui)) return false;
  HideJob job(std::exchange(form, {}), ui, BigFiles::Take);  // No copy of the secrets stays.
  using Next = HideJob::Next;
  if (job.Check() != Next::GoOn || job.PrepareHide() != Next::GoOn) return false;
  Next next = Next::Wait;
  while (next == Next::Wait) next = job.CheckIni();
  if (next != Next::GoOn) return false;
  const std::optional<fs::path> carrier = job.DoAll();
  return carrier && Print({*carrier});
}

bool List(const Arguments& arguments, ConsoleUi& ui) {
  const fs::path carrier = TypedPath(arguments.file);
  if (!CountHiddenFiles(carrier, ui)) return false;
  const std::optional<Secret> password = ListPassword(carrier, arguments, ui);
  if (!password) return false;
  auto files = ListHiddenFiles(carrier, *password, ui);
  if (!files) return false;
  for (HiddenFile& file : *files) file.name = ForOutput(file.name);
  std::cout << ListOf(*files) << '\n';
  return true;
}

bool Recover(const Arguments& arguments, ConsoleUi& ui) {
  const NoCoreDump noCoreDump;
  RecoverForm form;
  form.raw = arguments.raw;
  form.Text1 = TypedPath(arguments.file);
  const std::optional<int> count = CountHiddenFiles(form.Text1, ui);
  if (!count) return false;
  if (arguments.number && *arguments.number >= static_cast<std::uint64_t>(*count))
    return NoSuchFile(ui);
  NewFolders created;
  const std::optional<fs::path> folder = OutputFolder(arguments, form.Text1, created, ui);
  if (!folder) return false;
  form.output = *folder;
  // Files are read before anything is asked, the password first: both may be lines of standard
  // input.
  std::optional<Secret> password;
  if (!arguments.passwordFile.empty()) password = ListPassword(form.Text1, arguments, ui);
  if (!arguments.passphraseFile.empty())
    form.passphrase = SecretIn(arguments.passphraseFile, SecretKind::Passphrase, ui);
  if (!password) password = ListPassword(form.Text1, arguments, ui);
  if (!password) return false;
  form.Text2 = *password;
  form.ask = Terminal::CanAsk();
  RecoverJob job(std::exchange(form, {}), ui, BigFiles::Take);
  if (arguments.main) {
    (void)job.RecMain();
  } else if (arguments.all) {
    (void)job.RecAll();
  } else if (job.RecHidden() == RecoverJob::Next::Choose) {
    const std::optional<std::size_t> chosen = ChooseFile(arguments, job.Files(), ui);
    if (chosen) (void)job.DorestOfStuff(static_cast<int>(*chosen) + 1);
  }
  return Print(job.Recovered());
}

}  // namespace slyver
