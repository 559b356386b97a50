#include "engine/hidden/RecoverJob.h"

#include <exception>
#include <utility>

#include "engine/hidden/Password.h"
#include "engine/split/SplitM.h"
#include "engine/system/Disk.h"
#include "engine/system/FileError.h"
#include "engine/system/Files.h"
#include "engine/system/PathText.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view noFileHidden = "No File Is Hidden In This File.";
constexpr std::string_view incorrectPassword = "Incorrect Password. Unable To Recover File.";
constexpr std::string_view unableToRecover = "Unable To Recover File.";

/// What the pieces in the work folder are named after.
constexpr std::string_view pieceTitle = "tempRRR.tmp";

struct Refusal {
  std::string_view text;
  Icon icon;
};

/// What is wrong with a directory: no file in it, or not this password (8-bit text). Nothing when
/// it can be used.
std::optional<Refusal> RefusalOf(const ValueReader& directory, std::string_view password) {
  if (directory(RecordSection(0), nameKey).empty()) return Refusal{noFileHidden, Icon::Information};
  if (!IsPasswordOf(directory, password)) return Refusal{incorrectPassword, Icon::Critical};
  return std::nullopt;
}

std::optional<std::vector<HiddenFile>> FilesOf(const ValueReader& directory,
                                               std::string_view password,
                                               std::uint64_t carrierLength) {
  return LayOut(ReadMainLength(directory, password), ReadRecords(directory, password),
                carrierLength);
}

/// The zeros before a piece number of one digit.
std::string PadOf(const std::string& numberMask) {
  return numberMask.substr(1);
}

}  // namespace

RecoverJob::RecoverJob(RecoverForm form, Ui& ui, BigFiles bigFiles)
    : form_(std::move(form)), ui_(ui), bigFiles_(bigFiles), folder_(form_.Text1.parent_path()) {}

/// Runs a procedure; an error in it is shown, and the job is over.
template <typename Procedure>
RecoverJob::Next RecoverJob::Guarded(const Procedure& procedure) {
  try {
    return procedure();
  } catch (const std::exception& error) {
    ui_.Message(error.what(), Icon::Critical);
    return Unable();
  }
}

/// What both procedures begin with. Nothing when they can go on.
std::optional<RecoverJob::Next> RecoverJob::Preamble() {
  if (form_.Text1.empty()) {
    ui_.Message("Main File Is Missing. Select The File Again.", Icon::Information);
    return Next::Form;
  }
  carrier_ = StateOf(form_.Text1);
  if (bigFiles_ == BigFiles::Ask && carrier_.length > quiteBig &&
      !AskYesNo(ui_,
                "The File Size Is Quite Big. It Will Take Several Minutes To Recover From This "
                "File. Please Exit Other Applications You Might Be Running. Do You Want To "
                "Continue?")) {
    ui_.EndProgram();
    return Next::Over;
  }
  if (form_.Text2.empty()) {
    ui_.Message("Enter Password.", Icon::Information);
    return Next::Form;
  }
  const std::optional<std::string> password = PasswordText8(form_.Text2, ui_);
  if (!password) return Next::Form;
  password_ = *password;
  lock_.emplace(folder_, ui_);
  work_.emplace(folder_ / "TempRRR");
  ui_.ShowProgressForm("Recovering Files");
  if (carrier_.length <= directoryLength) return Unable();
  return std::nullopt;
}

RecoverJob::Next RecoverJob::RecHidden() {
  return Guarded([&] {
    if (const std::optional<Next> next = Preamble()) return *next;
    SplitOptions options;
    options.outputFolder = work_->Path();
    options.TwoPieceMode = true;
    options.SkipThenTrailer = true;
    options.TrailerSize = directoryLength;
    options.forRecovery = true;
    options.title = pieceTitle;
    options.state = carrier_;
    const SplitResult cut = SplitFile(form_.Text1, carrier_.length - directoryLength, options, ui_);
    if (cut.pieces < 1) return Unable();
    SetProgress(40);
    numberMask_ = cut.NumberMask;
    const fs::path index = work_->Path() / "1.ini";
    RenameFile(PieceOne(numberMask_), index);

    const ValueReader directory = DirectoryFile(index);
    if (const auto refusal = RefusalOf(directory, password_))
      return Over(refusal->text, refusal->icon);
    std::optional<std::vector<HiddenFile>> files = FilesOf(directory, password_, carrier_.length);
    if (!files) return Unable();
    files_ = std::move(*files);
    return files_.size() > 1 ? Next::Choose : DorestOfStuff2();
  });
}

RecoverJob::Next RecoverJob::DorestOfStuff2() {
  return DorestOfStuff(1);
}

RecoverJob::Next RecoverJob::DorestOfStuff(int k) {
  return Guarded([&] {
    // The user may have taken long to choose.
    if (StateOf(form_.Text1) != carrier_)
      throw FileError(form_.Text1, "The file was changed while it was being recovered from");
    const HiddenFile& file = files_.at(static_cast<std::size_t>(k) - 1);
    for (const double value : {50, 60, 75}) SetProgress(value);
    SplitOptions options;
    options.outputFolder = work_->Path();
    options.TwoPieceMode = true;
    options.SkipThenRange = true;
    options.SecondPieceSize = file.length;
    options.forRecovery = true;
    options.title = pieceTitle;
    options.state = carrier_;
    options.NumberMask = numberMask_;
    options.barValue = 75;
    const SplitResult cut = SplitFile(form_.Text1, file.offset, options, ui_);
    if (cut.pieces < 1) return Unable();
    SetProgress(85);
    SetProgress(90);
    recovered_ = MoveOut(PieceOne(cut.NumberMask), file.name);
    SetProgress(95);
    SetProgress(100);
    return Over("File Recovered.", Icon::Information);
  });
}

RecoverJob::Next RecoverJob::RecMain() {
  return Guarded([&] {
    if (const std::optional<Next> next = Preamble()) return *next;
    ChunkOptions options;
    options.folder = work_->Path();
    options.SmallTailChunks = true;
    options.TrailerSize = directoryLength;
    options.only = 2;
    options.state = carrier_;
    const ChunkResult index =
        ChunkToTemp(form_.Text1, carrier_.length - directoryLength, options, ui_);
    if (index.chunks < 1) return Unable();
    SetProgress(60);
    const ValueReader directory =
        DirectoryFile(work_->Path() / ("1." + PadOf(index.NumberMask) + "2.ini"));
    if (const auto refusal = RefusalOf(directory, password_))
      return Over(refusal->text, refusal->icon);
    const std::optional<std::uint64_t> mainLength =
        MainLengthIn(ReadMainLength(directory, password_), carrier_.length);
    if (!mainLength) return Unable();
    MakeFreshFolder(work_->Path());
    SetProgress(85);
    options.only = 1;
    options.barValue = 85;
    const ChunkResult main = ChunkToTemp(form_.Text1, *mainLength, options, ui_);
    if (main.chunks < 1) return Unable();
    recovered_ = MoveOut(work_->Path() / ("1." + PadOf(main.NumberMask) + "1.ini"),
                         PathText(form_.Text1.filename()));
    SetProgress(100);
    work_.reset();
    ui_.Message("File Recovered.", Icon::Information);
    return Next::Unload;
  });
}

fs::path RecoverJob::PieceOne(const std::string& numberMask) const {
  return work_->Path() / (std::string(pieceTitle) + "." + PadOf(numberMask) + "1");
}

void RecoverJob::SetProgress(double value) {
  ui_.SetProgress({"PB1", value, 0, 0});
}

fs::path RecoverJob::MoveOut(const fs::path& piece, const std::string& name) {
  return MoveToFirstFreePath(piece, folder_,
                             [&](const std::string& mark) { return "Original " + mark + name; });
}

RecoverJob::Next RecoverJob::Over(std::string_view message, Icon icon) {
  work_.reset();
  lock_.reset();
  ui_.Message(message, icon);
  ui_.EndProgram();
  return Next::Over;
}

RecoverJob::Next RecoverJob::Unable() {
  return Over(unableToRecover, Icon::Critical);
}

std::optional<std::vector<HiddenFile>> ListHiddenFiles(const fs::path& carrier,
                                                       std::string_view password, Ui& ui) {
  return ShowingErrors(ui, {}, [&]() -> std::optional<std::vector<HiddenFile>> {
    const std::uint64_t length = FileLength(carrier);
    const auto refuse = [&](std::string_view message, Icon icon) {
      ui.Message(message, icon);
      return std::nullopt;
    };
    if (password.empty()) return refuse("Enter Password.", Icon::Information);
    const std::optional<std::string> password8 = PasswordText8(password, ui);
    if (!password8) return std::nullopt;
    if (length <= directoryLength) return refuse(unableToRecover, Icon::Critical);
    const ValueReader directory = DirectoryText(ReadDirectoryText(carrier));
    if (const auto refusal = RefusalOf(directory, *password8))
      return refuse(refusal->text, refusal->icon);
    auto files = FilesOf(directory, *password8, length);
    if (!files) return refuse(unableToRecover, Icon::Critical);
    return files;
  });
}

}  // namespace slyver
