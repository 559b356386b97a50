#include "console/Commands.h"

#include <filesystem>
#include <iostream>
#include <vector>

#include "engine/hidden/HideJob.h"
#include "engine/hidden/RecoverJob.h"
#include "engine/split/JoinM.h"
#include "engine/split/PieceName.h"
#include "engine/split/SizeArithmetic.h"
#include "engine/split/SlyIt.h"
#include "engine/system/Disk.h"
#include "engine/system/PathText.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

fs::path TypedPath(const std::string& typed) {
  return FullPathOf(PathFromText(typed));
}

/// Prints the path of a file made; whether there is one.
bool Print(const std::optional<fs::path>& made) {
  if (made) std::cout << PathText(*made) << '\n';
  return made.has_value();
}

/// Prints the paths of the files made; whether there are any.
bool PrintAll(const std::vector<fs::path>& made) {
  for (const fs::path& path : made) (void)Print(path);
  return !made.empty();
}

/// Puts what --size and --count say where the form would hold it. Throws FileError when the file
/// cannot be looked at.
void TakeSize(SplitForm& form, const Arguments& arguments) {
  form.Option2 = arguments.size > 0 || arguments.count > 0;
  if (arguments.size > 0) form.Text3 = std::to_string(arguments.size);
  if (arguments.count == 0) return;
  form.Nofile = std::to_string(arguments.count);
  form.Text3 = SizeFromCount(form.Nofile, "", FileLength(form.Text1)).other.value_or("");
}

/// The password in a file, which may have been written on another system: neither a byte-order
/// mark nor the line's end is a part of it.
std::string PasswordIn(const std::string& file, const ConsoleUi& ui) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  std::string line = ui.ReadFirstLine(file);
  if (line.starts_with(byteOrderMark)) line.erase(0, byteOrderMark.size());
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

/// The password, from the file that the user names or from the terminal; it answers every later
/// question for a password too. `again` is a second prompt for the same, or null; what is typed
/// there goes to `repeated`. Nothing when there is nobody to ask; that has been said.
std::optional<std::string> Password(const Arguments& arguments, ConsoleUi& ui, const char* again,
                                    std::string& repeated) {
  std::optional<std::string> password;
  if (!arguments.passwordFile.empty()) {
    password = repeated = PasswordIn(arguments.passwordFile, ui);
  } else {
    password = ui.MaskedInputBox("Enter Password :");
    if (password && again != nullptr) repeated = ui.MaskedInputBox(again).value_or("");
  }
  if (password)
    ui.UsePassword(*password);
  else
    ui.Message("Enter Password. (Nobody is at the terminal; --password-file names a file with it.)",
               Icon::Critical);
  return password;
}

std::optional<std::string> Password(const Arguments& arguments, ConsoleUi& ui) {
  std::string unused;
  return Password(arguments, ui, nullptr, unused);
}

void PrintList(const std::vector<HiddenFile>& files, std::ostream& stream) {
  for (std::size_t i = 0; i < files.size(); ++i)
    stream << i << '\t' << files[i].length << '\t' << files[i].name << '\n';
}

/// The serial number (from 0) of the file to recover of several: from the argument or from the
/// terminal. Nothing when there is none.
std::optional<std::size_t> ChooseFile(const Arguments& arguments,
                                      const std::vector<HiddenFile>& files, ConsoleUi& ui) {
  if (arguments.number) return *arguments.number;
  PrintList(files, std::cerr);
  const std::optional<std::string> line = ui.AskLine("Serial number of the file to recover, 0 to " +
                                                     std::to_string(files.size() - 1) + ":");
  for (std::size_t i = 0; line && i < files.size(); ++i)
    if (*line == std::to_string(i)) return i;
  ui.Message(line ? "There is no such file."
                  : "There are several hidden files; name one of them with --file.",
             Icon::Critical);
  return std::nullopt;
}

}  // namespace

bool Split(const Arguments& arguments, ConsoleUi& ui) {
  SplitForm form;
  form.Text1 = TypedPath(arguments.file);
  form.Text2 = arguments.output.empty() ? form.Text1.parent_path() : TypedPath(arguments.output);
  TakeSize(form, arguments);
  const int pieces = SlyIt(form, ui, AfterFailure::End);
  const std::string name = PathText(form.Text1.filename());
  for (int i = 1; arguments.verbose && i <= pieces; ++i)
    Print(form.Text2 / PathFromText(PieceNameOf(name, i)));
  return pieces > 0;
}

bool Join(const Arguments& arguments, ConsoleUi& ui) {
  const std::optional<JoinedFile> joined = JoinPieces(TypedPath(arguments.file), ui);
  return Print(joined ? std::optional(joined->path) : std::nullopt);
}

bool Hide(const Arguments& arguments, ConsoleUi& ui) {
  HideForm form;
  form.Text1 = TypedPath(arguments.file);
  form.Text2 = TypedPath(arguments.hidden);
  const std::optional<std::string> password =
      Password(arguments, ui, "Re-Enter Password :", form.Text4);
  if (!password) return false;
  form.Text3 = *password;
  if (const std::string note = NameNote(form.Text2); !note.empty())
    ui.Message(PathText(form.Text2.filename()) + ": " + note, Icon::None);
  if (const std::string note = FormatNote(form.Text1); !note.empty())
    ui.Message(PathText(form.Text1.filename()) + ": " + note, Icon::None);
  HideJob job(form, ui, BigFiles::Take);
  using Next = HideJob::Next;
  if (job.Check() != Next::GoOn || job.PrepareHide() != Next::GoOn) return false;
  Next next = Next::Wait;
  while (next == Next::Wait) next = job.CheckIni();
  return next == Next::GoOn && Print(job.DoAll());
}

bool List(const Arguments& arguments, ConsoleUi& ui) {
  const std::optional<std::string> password = Password(arguments, ui);
  if (!password) return false;
  const auto files = ListHiddenFiles(TypedPath(arguments.file), *password, ui);
  if (files) PrintList(*files, std::cout);
  return files.has_value();
}

bool Recover(const Arguments& arguments, ConsoleUi& ui) {
  const std::optional<std::string> password = Password(arguments, ui);
  if (!password) return false;
  const RecoverForm form{TypedPath(arguments.file), *password};
  RecoverJob job(form, ui, BigFiles::Take);
  if (arguments.main) {
    (void)job.RecMain();
    return PrintAll(job.Recovered());
  }
  if (arguments.number) {
    // A single hidden file is recovered unasked, so a wrong number must be found before.
    const auto files = ListHiddenFiles(form.Text1, *password, ui);
    if (!files) return false;
    if (*arguments.number >= files->size()) {
      ui.Message("There is no such file.", Icon::Critical);
      return false;
    }
  }
  if (job.RecHidden() == RecoverJob::Next::Choose) {
    const std::optional<std::size_t> chosen = ChooseFile(arguments, job.Files(), ui);
    if (chosen) (void)job.DorestOfStuff(static_cast<int>(*chosen) + 1);
  }
  return PrintAll(job.Recovered());
}

}  // namespace slyver
