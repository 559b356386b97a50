#include "engine/hidden/HideJob.h"

#include <algorithm>
#include <array>
#include <utility>

#include "engine/hidden/Password.h"
#include "engine/split/JoinM.h"
#include "engine/split/SplitM.h"
#include "engine/system/Attributes.h"
#include "engine/system/Disk.h"
#include "engine/system/FileError.h"
#include "engine/system/INIReadWri.h"
#include "engine/system/PathText.h"
#include "engine/system/StepProgress.h"
#include "engine/system/Text8.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

constexpr int maxTicks = 80;
constexpr std::string_view statusSection = "ndenif";
constexpr std::array<std::string_view, 4> statusKeys = {"DONE", "DONE2", "DONE3", "DONE4"};

/// Formats that their own programs rewrite whole when the file is opened and saved.
constexpr std::array<std::string_view, 10> refusedEndings = {"txt",  "ini", "inf", "doc", "log",
                                                             "html", "htm", "php", "rtf", "dot"};

std::string StoredName(const fs::path& path) {
  return ToText8Lossy(PathText(path.filename()));
}

std::string NoDataText(const fs::path& path) {
  return "File " + PathText(path) + " Does Not Contain Any Data In It. Unable To Hide File.";
}

/// The directory tells of lengths that must still be true when the bytes are copied, and an
/// addition of the old directory.
void RequireState(const fs::path& path, const FileState& state) {
  if (StateOf(path) != state)
    throw FileError(path, "The file was changed while it was being hidden");
}

}  // namespace

std::string NameNote(const fs::path& hidden) {
  if (!ToText8(PathText(hidden.filename())))
    return "The Name Has Characters That Will Come Back As \"_\".";
  if (StoredName(hidden).size() > maxNameLength)
    return "The Name Is Longer Than 24 Characters And Will Come Back Shortened.";
  return {};
}

HideJob::HideJob(HideForm form, Ui& ui, BigFiles bigFiles)
    : form_(std::move(form)), ui_(ui), bigFiles_(bigFiles) {}

bool HideJob::Check() {
  return ShowingErrors(ui_, false, [&] {
    const std::string main = PathText(form_.Text1);
    if (main.empty()) {
      ui_.Message("Main File Is Missing. Select The File Again.", Icon::Information);
      return false;
    }
    const auto endsLikeMain = [&](std::string_view ending) { return main.ends_with(ending); };
    if (std::any_of(refusedEndings.begin(), refusedEndings.end(), endsLikeMain)) {
      ui_.Message(
          "Select Some Other File Format In Which You Want To Hide File. Unable To Hide File In " +
              main.substr(main.size() - 3) + " Format.",
          Icon::Information);
      form_ = {};
      return false;
    }
    if (form_.Text2.empty()) {
      ui_.Message("File To Hide Is Missing. Select The File Again.", Icon::Information);
      return false;
    }
    return CheckPasswords() && CheckLengths();
  });
}

bool HideJob::CheckPasswords() {
  if (form_.Text3.empty() || form_.Text4.empty()) {
    ui_.Message("Enter Password.", Icon::Information);
    return false;
  }
  if (form_.Text3 != form_.Text4) {
    ui_.Message("Passwords Do Not Match. Re-Enter Them.", Icon::Information);
    form_.Text3.clear();
    form_.Text4.clear();
    return false;
  }
  const std::optional<std::string> password = PasswordText8(form_.Text3, ui_);
  if (!password) return false;
  password_ = *password;
  return true;
}

bool HideJob::CheckLengths() {
  main_ = StateOf(form_.Text1);
  if (main_.length == 0) {
    ui_.Message(NoDataText(form_.Text1), Icon::Information);
    return false;
  }
  hidden_ = StateOf(form_.Text2);
  if (hidden_.length == 0) {
    ui_.Message(NoDataText(form_.Text2), Icon::Information);
    return false;
  }
  if (!IsBareFileName(StoredName(form_.Text2))) {
    // A carrier whose directory holds such a name would never be recovered from.
    ui_.Message("The Name " + PathText(form_.Text2.filename()) +
                    " Cannot Be Kept In A Carrier. Rename The File. Unable To Hide File.",
                Icon::Information);
    return false;
  }
  if (bigFiles_ == BigFiles::Ask && std::max(main_.length, hidden_.length) > quiteBig &&
      !AskYesNo(
          ui_,
          "The File Size Is Quite Big. It Will Take Several Minutes To Hide This File. Please "
          "Exit Other Applications You Might Be Running. Do You Want To Continue?")) {
    ui_.EndProgram();
    return false;
  }
  return true;
}

bool HideJob::PrepareHide() {
  try {
    ClearAttributes(form_.Text1);
    ClearAttributes(form_.Text2);
    if (FileLength(form_.Text1) == 0)
      return Over("An Error Has Occured. Please Try Again.", Icon::Critical);
    const fs::path privateFolder = PrivateFolder();
    lock_.emplace(privateFolder, ui_);
    work_.emplace(privateFolder / "tempHHH", Access::OwnerOnly);
    added_.emplace(privateFolder / "3.ini");
    if (main_.length <= directoryLength) return StageHideFiles(nullptr);

    ChunkOptions options;
    options.folder = work_->Path();
    options.SmallTailChunks = main_.length < 2 * directoryLength;
    options.TrailerSize = directoryLength;
    options.only = 2;  // The first chunk is read where it lies.
    options.state = main_;
    const ChunkResult cut = ChunkToTemp(form_.Text1, main_.length - directoryLength, options, ui_);
    if (cut.chunks < 1) return Unable();

    oldDirectory_ = work_->Path() / ("1." + cut.NumberMask.substr(1) + "2.ini");
    const ValueReader old = DirectoryFile(oldDirectory_);
    const int records = CountRecords(old);
    if (records == 0) return StageHideFiles(nullptr);
    if (records >= maxHiddenFiles)
      return Over(
          "There Are Aready " + std::to_string(records) +
              " Files Hidden In This File. Unable To Hide File. Please Select Another File.",
          Icon::Information);
    return ChooseAddition(records, old);
  } catch (const std::exception& error) {
    ui_.Message(error.what(), Icon::Critical);
    return Unable();
  }
}

bool HideJob::ChooseAddition(int records, const ValueReader& old) {
  if (!AskYesNo(ui_,
                "There are Files Already Hidden In This File. Do You Want To Add Another File In "
                "It?")) {
    work_.reset();
    ui_.EndProgram();
    return false;
  }
  const std::string typed =
      ui_.MaskedInputBox("Enter Password Of The Last File.").value_or(std::string{});
  const std::optional<std::string> password = ToText8(typed);
  if (!password || password->empty() || !IsPasswordOf(old, *password))
    return Over("Incorrect Password.", Icon::Critical);
  password_ = *password;
  if (!PartsFillCarrier(old, password_, records, main_.length))
    throw FileError(form_.Text1, "The list of the files hidden in it is damaged");
  index_ = records;
  return StageHideFiles(&old);
}

/// Writes the new directory: of a first hide, or of an addition to `old`.
bool HideJob::StageHideFiles(const ValueReader* old) {
  const Record hidden = {StoredName(form_.Text2), std::to_string(hidden_.length)};
  if (old == nullptr) {
    mainBytes_ = main_.length;
    const Record main = {StoredName(form_.Text1), std::to_string(main_.length)};
    WriteSmallFile(InWork("3.ini"), FirstDirectory(main, hidden, password_),
                   Existing::ReplaceScratch);
  } else {
    mainBytes_ = main_.length - directoryLength;
    WriteSmallFile(added_->Path(), AddedDirectory(*old, index_, hidden, password_),
                   Existing::ReplaceScratch);
  }
  if (!oldDirectory_.empty()) (void)RemoveFile(oldDirectory_);
  return true;
}

/// Whether the directory that is to be carried has all its values.
bool HideJob::DirectoryIsWritten() const {
  const fs::path directory = InWork("3.ini");
  if (NameIsTaken(added_->Path())) {
    WriteSmallFile(directory, ReadSmallFile(added_->Path()), Existing::ReplaceScratch);
    if (const std::error_code error = RemoveFile(added_->Path()))
      throw FileError(added_->Path(), error);
  }
  const ValueReader written = DirectoryFile(directory);
  const std::string section = RecordSection(index_);
  return !written(mainSection, nameKey).empty() && !written(mainSection, lengthKey).empty() &&
         !written(mainSection, checkKey).empty() && !written(section, nameKey).empty() &&
         !written(section, lengthKey).empty();
}

HideJob::Ini HideJob::CheckIni() {
  if (!ui_.GoOn()) throw Cancelled{};
  bool complete = false;
  try {
    complete = DirectoryIsWritten();
  } catch (const std::exception&) {
    complete = false;  // The next tick tries again.
  }
  for (const std::string_view key : statusKeys) {
    if (complete) (void)WriteIniValue(InWork("4.ini"), statusSection, key, key);
    complete = complete && ReadIniValue(InWork("4.ini"), statusSection, key, "") == key;
  }
  if (complete) return Ini::Complete;
  if (++ticks_ < maxTicks) return Ini::Waiting;
  (void)Over("Unable To Hide File. Please Try Again.", Icon::Critical);
  return Ini::Over;
}

std::optional<fs::path> HideJob::DoAll() {
  std::optional<fs::path> carrier = ShowingErrors(ui_, {}, [&]() -> std::optional<fs::path> {
    RequireState(form_.Text1, main_);
    RequireState(form_.Text2, hidden_);
    const fs::path directory = InWork("8.ini");
    WriteSmallFile(InWork("3.ini"), Padded(ReadSmallFile(InWork("3.ini"))),
                   Existing::ReplaceScratch);
    (void)RemoveFile(InWork("4.ini"));
    RenameFile(InWork("3.ini"), directory);
    const std::array<ByteRange, 3> parts = {ByteRange{form_.Text1, 0, mainBytes_, main_},
                                            ByteRange{form_.Text2, 0, hidden_.length, hidden_},
                                            ByteRange{directory, 0, FileLength(directory)}};
    const Output joined{OutputPath(), mainBytes_ + hidden_.length + parts[2].length, parts.size(),
                        [&](std::size_t i) { return parts.at(i); }};
    const auto stay = [](double value, std::size_t) { return value; };
    if (JoinFolder(joined, false, ui_, StepProgress(ui_, "PB1", 0, stay)) < 1) return std::nullopt;
    return joined.target;
  });
  if (carrier)
    (void)Over("File Hidden.", Icon::Information);
  else
    (void)Unable();
  return carrier;
}

fs::path HideJob::OutputPath() const {
  const std::string name = PathText(form_.Text1.filename());
  return FirstFreePath(form_.Text1.parent_path(),
                       [&](const std::string& mark) { return mark + "Hidden File " + name; });
}

fs::path HideJob::InWork(const char* name) const {
  return work_->Path() / name;
}

bool HideJob::Over(std::string_view message, Icon icon) {
  work_.reset();
  added_.reset();
  lock_.reset();
  ui_.Message(message, icon);
  ui_.EndProgram();
  return false;
}

bool HideJob::Unable() {
  return Over("Unable To Hide File.", Icon::Critical);
}

}  // namespace slyver
