#include "engine/hidden/RecoverJob.h"

#include <algorithm>
#include <utility>

#include "engine/base/FileError.h"
#include "engine/base/Gcrypt.h"
#include "engine/base/PathText.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"
#include "engine/disk/TargetFile.h"
#include "engine/hidden/Password.h"
#include "engine/split/SplitM.h"
#include "engine/talk/WorkAside.h"

namespace slyver {

namespace fs = std::filesystem;
using Next = RecoverJob::Next;

namespace {

/// Thrown if nothing can be recovered, or the user must try again.
struct Refusal {
  std::string_view text;  ///< Empty if a message was shown.
  Icon icon = Icon::Information;
  Next next = Next::Over;
};
constexpr Refusal unable = {"Unable To Recover File.", Icon::Critical};
constexpr Refusal noneHidden = {"No File Is Hidden In This File."};
constexpr Refusal incorrect = {"Incorrect Password. Unable To Recover File.", Icon::Critical};
constexpr Refusal noCarrier = {"Main File Is Missing. Select The File Again.", Icon::Information,
                               Next::Form};
constexpr Refusal noPassword = {"Enter Password.", Icon::Information, Next::Form};

constexpr const char* wrongPassphrase = "Incorrect Passphrase.";

/// The base name of the pieces in the work folder.
constexpr std::string_view pieceTitle = "tempRRR.tmp";

/// Returns the password of a carrier's list as 8-bit text: the typed one, or the public one of an
/// open list. Throws Refusal.
std::string ListPassword(const fs::path& carrier, std::string_view typed, Ui& ui) {
  const bool open = ListIsOpen(carrier);
  if (open && typed.empty()) return std::string(openPassword);
  if (open) throw incorrect;
  if (typed.empty()) throw noPassword;
  std::optional<std::string> password = PasswordText8(typed, ui);
  if (!password) throw Refusal{{}, Icon::None, Next::Form};
  return std::move(*password);
}

void RequirePassword(const Directory& directory, std::string_view password) {
  if (directory.Count(nameKey) == 0) throw noneHidden;
  if (!directory.IsPassword(password)) throw incorrect;
}

std::vector<HiddenFile> FilesOf(const Directory& directory, std::string_view password,
                                std::uint64_t carrierLength) {
  auto files = directory.Files(password, carrierLength);
  if (!files) throw unable;
  return std::move(*files);
}

/// Calls `work` with a carrier's length and returns its result; `nullopt` on an error, which is
/// shown.
template <typename Work>
auto LookInto(const fs::path& carrier, Ui& ui, const Work& work)
    -> std::optional<decltype(work(std::uint64_t{}))> {
  try {
    return ShowingErrors(ui, {}, [&]() -> std::optional<decltype(work(std::uint64_t{}))> {
      if (carrier.empty()) throw noCarrier;
      return work(FileLength(carrier));
    });
  } catch (const Refusal& refusal) {
    if (!refusal.text.empty()) ui.Message(refusal.text, refusal.icon);
    return std::nullopt;
  }
}

Directory DirectoryOf(const fs::path& carrier, std::uint64_t length) {
  if (length <= directoryLength) throw unable;
  return Directory::OfCarrier(carrier);
}

}  // namespace

RecoverJob::RecoverJob(RecoverForm form, Ui& ui, BigFiles bigFiles)
    : form_(std::move(form)), ui_(ui), bigFiles_(bigFiles) {}

/// Runs a procedure; shows an error and ends the job with it.
template <typename Procedure>
Next RecoverJob::Guarded(const Procedure& procedure) {
  try {
    const auto next = ShowingErrors(ui_, {}, [&]() -> std::optional<Next> { return procedure(); });
    return next ? *next : Over(unable.text, unable.icon);
  } catch (const Refusal& refusal) {
    if (refusal.next == Next::Over) return Over(refusal.text, refusal.icon);
    if (!refusal.text.empty()) ui_.Message(refusal.text, refusal.icon);
    return refusal.next;
  }
}

/// Checks the form, creates the work folder and shows the progress form, for every procedure.
void RecoverJob::Preamble() {
  if (form_.Text1.empty()) throw noCarrier;
  carrier_ = StateOf(form_.Text1);
  if (bigFiles_ == BigFiles::Ask && carrier_.length > quiteBig &&
      !AskYesNo(ui_,
                "The File Size Is Quite Big. It Will Take Several Minutes To Recover From This "
                "File. Please Exit Other Applications You Might Be Running. Do You Want To "
                "Continue?"))
    throw Refusal{};
  password_ = ListPassword(form_.Text1, form_.Text2.Text(), ui_);
  passphrase_ = form_.passphrase.Text().empty() ? form_.Text2 : form_.passphrase;
  folder_ = form_.output.empty() ? FullPathOf(form_.Text1).parent_path() : form_.output;
  if (!form_.passphrase.Text().empty()) InitGcrypt();
  work_.emplace(folder_ / "TempRRR", WorkFiles{{"#.ini", "tempRRR.tmp*"}});
  ui_.ShowProgressForm("Recovering Files");
}

/// Cuts the directory out, sets the bar to `progress` and checks the password.
Directory RecoverJob::OpenDirectory(double progress) {
  Preamble();
  if (carrier_.length <= directoryLength) throw unable;
  Directory directory =
      Directory::InFile(Cut(carrier_.length - directoryLength, directoryLength, "1.ini", 0));
  SetProgress(progress);
  RequirePassword(directory, password_);
  return directory;
}

void RecoverJob::OpenFiles() {
  const Directory directory = OpenDirectory(40);
  files_ = FilesOf(directory, password_, carrier_.length);
}

Next RecoverJob::RecHidden() {
  return Guarded([&] {
    OpenFiles();
    if (files_.size() == 1) return Recover(files_);
    work_.reset();  // The user may take long to choose.
    return Next::Choose;
  });
}

Next RecoverJob::DorestOfStuff(int k) {
  return Guarded([&] {
    if (StateOf(form_.Text1) != carrier_)
      throw FileError(form_.Text1, "The file was changed while it was being recovered from");
    work_.emplace(folder_ / "TempRRR", WorkFiles{{"#.ini", "tempRRR.tmp*"}});
    return Recover({files_.at(static_cast<std::size_t>(k) - 1)});
  });
}

Next RecoverJob::RecAll() {
  return Guarded([&] {
    OpenFiles();
    return Recover(files_);
  });
}

/// Recovers the files, or none if one fails.
Next RecoverJob::Recover(const std::vector<HiddenFile>& files) {
  std::vector<Contents> contents;
  contents.reserve(files.size());
  for (const HiddenFile& file : files) contents.push_back(ContentsOf(file));
  RequireDecrypted(contents);
  form_.Text2 = form_.passphrase = passphrase_ = {};
  if (!work_) work_.emplace(folder_ / "TempRRR", WorkFiles{{"#.ini", "tempRRR.tmp*"}});
  for (const double value : {50, 60, 75}) SetProgress(value);
  std::vector<fs::path> pieces;
  pieces.reserve(files.size());
  for (const Contents& each : contents)
    pieces.push_back(Cut(each.file.offset, each.file.length,
                         std::string(pieceTitle) + "-" + std::to_string(pieces.size()), 75,
                         each.plain));
  SetProgress(85);
  SetProgress(90);
  for (std::size_t i = 0; i < files.size(); ++i) MoveOut(pieces[i], contents[i].file.name);
  SetProgress(95);
  SetProgress(100);
  work_.reset();
  // No option hides a message without an icon.
  for (const Contents& each : contents)
    if (each.isAge && !each.plain) ui_.Message(each.file.name + " Is Still Encrypted.", Icon::None);
  return Over("File Recovered.", Icon::Information);
}

/// Returns the bytes to write for a hidden file. Asks for a passphrase if it is encrypted.
RecoverJob::Contents RecoverJob::ContentsOf(const HiddenFile& file) {
  if (form_.raw || !file.name.ends_with(encryptedEnding) || file.name == encryptedEnding)
    return {file};
  const SourceFile carrier(form_.Text1);
  carrier.ThrowUnlessOpenedAs(carrier_);
  std::string beginning(
      static_cast<std::size_t>(std::min<std::uint64_t>(file.length, ageHeaderRoom)), '\0');
  carrier.Read(file.offset, beginning);
  if (!beginning.starts_with(ageBeginning)) return {file};
  const std::string name =
      SystemFileName(file.name.substr(0, file.name.size() - encryptedEnding.size()));
  const auto header = ReadAgeHeader(beginning, file.length, name);
  auto plain = header ? Decrypt(file, *header) : nullptr;
  if (!plain) return {file, true};
  return {{name, file.offset, file.length}, true, std::move(plain)};
}

/// Throws Error if a passphrase was given and decrypts none of the files.
void RecoverJob::RequireDecrypted(const std::vector<Contents>& contents) const {
  const auto isDecrypted = [](const Contents& each) { return each.plain != nullptr; };
  if (form_.passphrase.Text().empty() || std::any_of(contents.begin(), contents.end(), isDecrypted))
    return;
  if (contents.size() > 1)
    throw Error("No File Hidden In " + PathText(form_.Text1.filename()) +
                " Is Encrypted Under A Passphrase.");
  const auto& [file, isAge, plain] = contents.front();
  const bool damaged = !isAge && file.name.ends_with(encryptedEnding);
  throw Error(file.name + (damaged ? " Is Damaged." : " Is Not Encrypted Under A Passphrase."));
}

/// Returns the plaintext of a file; null if no passphrase is given or typed.
std::shared_ptr<const Source> RecoverJob::Decrypt(const HiddenFile& file, const AgeHeader& header) {
  SourceList carrier;
  carrier.Add(form_.Text1, carrier_);
  const auto all = FilesInARow(std::move(carrier));
  const auto open = [&] {
    return WorkAside(ui_, [&] {
      return DecryptedWithAge(all, file.offset + header.length, file.length - header.length, header,
                              passphrase_.Text());
    });
  };
  if (!passphrase_.Text().empty()) {
    if (auto plain = open()) return plain;
    if (!form_.passphrase.Text().empty()) throw Error(wrongPassphrase);
  }
  if (!form_.ask) return nullptr;
  work_.reset();  // The user may take long to answer.
  auto typed =
      ui_.MaskedInputBox("Enter Passphrase Of " + header.name + ".", SecretKind::Passphrase);
  if (!typed) throw Refusal{};
  passphrase_ = Secret::Of(std::move(*typed));
  if (passphrase_.Text().empty()) return nullptr;
  auto plain = open();
  if (!plain) throw Error(wrongPassphrase);
  return plain;
}

Next RecoverJob::RecMain() {
  return Guarded([&] {
    const Directory directory = OpenDirectory(60);
    const auto mainLength = directory.MainLength(password_, carrier_.length);
    if (!mainLength) throw unable;
    SetProgress(85);
    MoveOut(Cut(0, *mainLength, std::string(pieceTitle), 85), PathText(form_.Text1.filename()));
    SetProgress(100);
    work_.reset();
    ui_.Message("File Recovered.", Icon::Information);
    return Next::Unload;
  });
}

/// Cuts bytes of the carrier into the file `name` of the work folder and returns its path. The bar
/// is at `barValue`.
fs::path RecoverJob::Cut(std::uint64_t offset, std::uint64_t length, const std::string& name,
                         double barValue, std::shared_ptr<const Source> plain) {
  fs::path made;
  if (offset == 0) {
    ChunkOptions options;
    options.folder = work_->Path();
    options.only = 1;
    options.state = carrier_;
    options.barValue = barValue;
    const ChunkResult cut = ChunkToTemp(form_.Text1, length, options, ui_);
    if (cut.chunks < 1) throw Refusal(unable);
    made = "1." + cut.NumberMask.substr(1) + "1.ini";
  } else {
    SplitOptions options;
    options.outputFolder = work_->Path();
    options.title = pieceTitle;
    options.TwoPieceMode = options.forRecovery = true;
    (offset + length == carrier_.length ? options.SkipThenTrailer : options.SkipThenRange) = true;
    options.TrailerSize = options.SecondPieceSize = length;
    options.state = carrier_;
    options.barValue = barValue;
    options.contents = std::move(plain);
    const SplitResult cut = SplitFile(form_.Text1, offset, options, ui_);
    if (cut.pieces < 1) throw Refusal(unable);
    made = options.title + "." + cut.NumberMask.substr(1) + "1";
  }
  fs::path piece = work_->Path() / name;
  RenameFile(work_->Path() / made, piece);
  return piece;
}

void RecoverJob::SetProgress(double value) {
  ui_.SetProgress({"PB1", value, 0, 0});
}

void RecoverJob::MoveOut(const fs::path& piece, const std::string& name) {
  recovered_.push_back(FirstFreePath(
      folder_, [&](const std::string& mark) { return "Original " + mark + name; },
      [&](const fs::path& path) { return MoveToFreeName(piece, path, path); }));
  ui_.TellPlace(recovered_.back());
}

/// Deletes the work folder, shows the message unless it is empty, and ends the program.
Next RecoverJob::Over(std::string_view message, Icon icon) {
  work_.reset();
  if (!message.empty()) ui_.Message(message, icon);
  ui_.EndProgram();
  return Next::Over;
}

std::optional<int> CountHiddenFiles(const fs::path& carrier, Ui& ui) {
  return LookInto(carrier, ui, [&](std::uint64_t length) {
    const int count = DirectoryOf(carrier, length).Count(nameKey);
    if (count == 0) throw noneHidden;
    return count;
  });
}

std::optional<std::vector<HiddenFile>> ListHiddenFiles(const fs::path& carrier,
                                                       const Secret& password, Ui& ui) {
  return LookInto(carrier, ui, [&](std::uint64_t length) {
    const std::string password8 = ListPassword(carrier, password.Text(), ui);
    const Directory directory = DirectoryOf(carrier, length);
    RequirePassword(directory, password8);
    return FilesOf(directory, password8, length);
  });
}

}  // namespace slyver
