#include "engine/hidden/HideJob.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

#include "engine/base/FileError.h"
#include "engine/base/Gcrypt.h"
#include "engine/base/Numbers.h"
#include "engine/base/PathText.h"
#include "engine/base/Text8.h"
#include "engine/disk/Attributes.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"
#include "engine/disk/TargetFile.h"
#include "engine/hidden/Password.h"
#include "engine/settings/INIReadWri.h"
#include "engine/split/JoinM.h"
#include "engine/split/SplitM.h"
#include "engine/talk/StepProgress.h"
#include "engine/talk/WorkAside.h"

namespace slyver {

namespace fs = std::filesystem;
using Next = HideJob::Next;

namespace {

constexpr int maxTicks = 80;
constexpr std::string_view workName = "tempHHH";
const std::vector<std::string_view> workFiles = {"#.ini"};
constexpr std::string_view statusSection = "ndenif";
constexpr std::array<std::string_view, 4> statusKeys = {"DONE", "DONE2", "DONE3", "DONE4"};

/// Formats that their own programs rewrite whole when the file is opened and saved.
constexpr std::array<std::string_view, 10> refusedEndings = {"txt",  "ini", "inf", "doc", "log",
                                                             "html", "htm", "php", "rtf", "dot"};

/// Formats that are read from their end or allow no data after it.
struct Format {
  std::string_view firstBytes;
  const char* name;
};
constexpr std::array<Format, 6> closedFormats = {{{"PK\x03\x04", "ZIP"},
                                                  {"PK\x05\x06", "ZIP"},
                                                  {"\x1F\x8B", "gzip"},
                                                  {"\xFD"
                                                   "7zXZ",
                                                   "xz"},
                                                  {"\x28\xB5\x2F\xFD", "zstd"},
                                                  {"7z\xBC\xAF", "7z"}}};

std::string NameOf(const fs::path& path) {
  return PathText(path.filename());
}

std::string NoDataText(const fs::path& path) {
  return "File " + PathText(path) + " Does Not Contain Any Data In It. Unable To Hide File.";
}

/// Throws FileError if a file has changed: the new directory has its length.
void RequireState(const fs::path& path, const FileState& state) {
  if (StateOf(path) != state)
    throw FileError(path, "The file was changed while it was being hidden");
}

/// True if a file can be created at `path`: it does not exist, and no other job is writing it.
bool CanBegin(const fs::path& path) {
  if (NameIsTaken(path)) return false;
  try {
    const TargetFile begun(path, Existing::Keep);
    return true;
  } catch (const FileError&) {
    if (NameIsTaken(path) || NameIsTaken(TemporaryPath(path))) return false;
    throw;
  }
}

/// Returns the name for a file's record, without the extension of an encrypted one.
std::string RecordName(const fs::path& hidden, bool encrypt) {
  return StoredName(NameOf(hidden), maxNameLength - (encrypt ? encryptedEnding.size() : 0));
}

constexpr std::string_view sameAsList =
    "The Passphrase Is The List's Password, Which Is Not Secret. Choose Another One.";
constexpr std::string_view incorrect = "Incorrect Password.";
constexpr std::string_view publicPassword =
    "Everybody Knows This Password, As Lists Without A Password Have It. Choose Another One.";
constexpr std::string_view noListPassword =
    "A New List Takes No Password Where The File Is Encrypted. Leave The Password Out.";

/// True if a carrier with so many records has no room for another.
bool IsFull(int records) {
  return records >= maxHiddenFiles;
}

std::string FullText(int records) {
  return "There Are Aready " + std::to_string(records) +
         " Files Hidden In This File. Unable To Hide File. Please Select Another File.";
}

}  // namespace

std::string NameNote(const fs::path& hidden, bool encrypt) {
  const std::string name = NameOf(hidden);
  const std::string stored = FromText8(RecordName(hidden, encrypt));
  return stored == name ? std::string{} : "The Name Will Come Back As " + stored;
}

std::string FormatNote(const fs::path& main) {
  std::string bytes(6, '\0');
  try {
    const SourceFile file(main);
    if (file.Length() < bytes.size()) return {};
    file.Read(0, bytes);
  } catch (const std::exception&) {
    return {};
  }
  for (const Format& format : closedFormats)
    if (bytes.starts_with(format.firstBytes))
      return std::string("The New File May Not Open: ") + format.name +
             " Allows No Data After Its End.";
  return {};
}

HideJob::HideJob(HideForm form, Ui& ui, BigFiles bigFiles)
    : form_(std::move(form)), ui_(ui), bigFiles_(bigFiles) {}

Next HideJob::Check() {
  return ShowingErrors(ui_, Next::Form, [&] {
    Next next = CheckNames();
    if (next == Next::GoOn) next = CheckPasswords();
    if (next == Next::GoOn) next = CheckLengths();
    return next;
  });
}

bool HideJob::CheckFiles() {
  return ShowingErrors(ui_, false, [&] {
    if (CheckNames() != Next::GoOn || CheckLengths() != Next::GoOn) return false;
    if (main_.length > directoryLength) {
      const Directory directory = Directory::OfCarrier(form_.Text1);
      const int records = directory.Count(lengthKey);
      if (IsFull(records)) {
        ui_.Message(FullText(records), Icon::Information);
        return false;
      }
      if (records > 0 && directory.IsPassword(openPassword))
        RequireFilled(directory, openPassword, records);
    }
    (void)OutputPath();
    return true;
  });
}

Next HideJob::CheckNames() {
  if (form_.Text1.empty()) return Back("Main File Is Missing. Select The File Again.");
  const std::string main = PathText(form_.Text1);
  const auto endsLikeMain = [&](std::string_view ending) { return main.ends_with(ending); };
  if (std::any_of(refusedEndings.begin(), refusedEndings.end(), endsLikeMain)) {
    form_ = {};
    return Back(
        "Select Some Other File Format In Which You Want To Hide File. Unable To Hide File In " +
        main.substr(main.size() - 3) + " Format.");
  }
  if (form_.Text2.empty()) return Back("File To Hide Is Missing. Select The File Again.");
  return Next::GoOn;
}

Next HideJob::CheckPasswords() {
  password_ = openPassword;
  const bool open = ListIsOpen(form_.Text1);
  const bool noneTyped = form_.Text3.Text().empty() && form_.Text4.Text().empty();
  if (open && noneTyped && !form_.encrypt) return Next::GoOn;
  if (form_.Text3.Text().empty() || form_.Text4.Text().empty()) return Back("Enter Password.");
  if (form_.Text3 != form_.Text4) {
    form_.Text3 = form_.Text4 = {};
    return Back("Passwords Do Not Match. Re-Enter Them.");
  }
  if (form_.encrypt) return form_.Text3.Text() == openPassword ? Back(sameAsList) : Next::GoOn;
  const std::optional<std::string> password = PasswordText8(form_.Text3.Text(), ui_);
  if (!password) return Next::Form;
  if (*password == openPassword && !open) return Back(publicPassword);
  password_ = *password;
  return Next::GoOn;
}

Next HideJob::CheckLengths() {
  main_ = StateOf(form_.Text1);
  if (main_.length == 0) return Back(NoDataText(form_.Text1));
  hidden_ = StateOf(form_.Text2);
  if (hidden_.length == 0) return Back(NoDataText(form_.Text2));
  if (bigFiles_ == BigFiles::Ask && std::max(main_.length, hidden_.length) > quiteBig &&
      !AskYesNo(
          ui_,
          "The File Size Is Quite Big. It Will Take Several Minutes To Hide This File. Please "
          "Exit Other Applications You Might Be Running. Do You Want To Continue?")) {
    ui_.EndProgram();
    return Next::Over;
  }
  return Next::GoOn;
}

Next HideJob::PrepareHide() {
  const auto next = ShowingErrors(ui_, {}, [&]() -> std::optional<Next> { return Stage(); });
  return next ? *next : Unable();
}

/// Creates the work folder and reads the old directory, if any.
Next HideJob::Stage() {
  if (form_.encrypt) InitGcrypt();
  ClearAttributes(form_.Text1);
  ClearAttributes(form_.Text2);
  if (FileLength(form_.Text1) == 0)
    return Over("An Error Has Occured. Please Try Again.", Icon::Critical);
  run_.emplace(PrivateFolder() / "slyver-run", WorkFiles{workFiles, workName});
  work_.emplace(run_->Path() / workName, WorkFiles{workFiles});
  added_ = run_->Path() / "3.ini";
  if (main_.length <= directoryLength) return StageHideFiles(nullptr);

  ChunkOptions options;
  options.folder = work_->Path();
  options.SmallTailChunks = main_.length < 2 * directoryLength;
  options.TrailerSize = directoryLength;
  options.only = 2;  // The first chunk is read from the main file.
  options.state = main_;
  const ChunkResult cut = ChunkToTemp(form_.Text1, main_.length - directoryLength, options, ui_);
  if (cut.chunks < 1) return Unable();

  oldDirectory_ = work_->Path() / ("1." + cut.NumberMask.substr(1) + "2.ini");
  const Directory old = Directory::InFile(oldDirectory_);
  const int records = old.Count(lengthKey);
  if (records == 0) return StageHideFiles(nullptr);
  if (IsFull(records)) return Over(FullText(records), Icon::Information);
  return ChooseAddition(records, old);
}

Next HideJob::ChooseAddition(int records, const Directory& old) {
  if (!AskYesNo(ui_,
                "There are Files Already Hidden In This File. Do You Want To Add Another File In "
                "It?"))
    return Over({}, Icon::None);
  if (old.IsPassword(openPassword)) {
    const Secret given = form_.encrypt ? form_.last.value_or(Secret()) : form_.Text3;
    if (!given.Text().empty()) return Over(incorrect, Icon::Critical);
    password_ = openPassword;
  } else {
    if (!form_.last)
      form_.last =
          Secret::Of(ui_.MaskedInputBox("Enter Password Of The Last File.", SecretKind::Password)
                         .value_or(""));
    const std::optional<std::string> password = ToText8(form_.last->Text());
    if (!password || password->empty() || !old.IsPassword(*password))
      return Over(incorrect, Icon::Critical);
    password_ = *password;
    if (form_.encrypt && form_.last == form_.Text3) return Over(sameAsList, Icon::Information);
  }
  RequireFilled(old, password_, records);
  index_ = records;
  return StageHideFiles(&old);
}

void HideJob::RequireFilled(const Directory& directory, std::string_view password,
                            int records) const {
  if (!directory.FillsCarrier(password, records, main_.length))
    throw FileError(form_.Text1, "The list of the files hidden in it is damaged");
}

/// Returns the new record; begins an encrypted file.
Record HideJob::HiddenRecord() {
  const std::string name = RecordName(form_.Text2, form_.encrypt);
  if (!form_.encrypt) return {name, std::to_string(hidden_.length)};
  SourceList plain;
  plain.Add(form_.Text2, hidden_);
  sealed_ = WorkAside(
      ui_, [&] { return EncryptedWithAge(FilesInARow(std::move(plain)), form_.Text3.Text()); });
  form_.Text3 = form_.Text4 = {};
  return {name + std::string(encryptedEnding), std::to_string(sealed_->Length())};
}

/// Writes the new directory: of a first hide if `old` is null, otherwise of an addition.
Next HideJob::StageHideFiles(const Directory* old) {
  if (old == nullptr && form_.encrypt && form_.last && !form_.last->Text().empty())
    return Over(noListPassword, Icon::Information);
  const Record hidden = HiddenRecord();
  if (old == nullptr) {
    mainBytes_ = main_.length;
    const Record main = {StoredName(NameOf(form_.Text1)), std::to_string(main_.length)};
    WriteSmallFile(InWork("3.ini"), FirstDirectory(main, hidden, password_),
                   Existing::ReplaceScratch);
  } else {
    mainBytes_ = main_.length - directoryLength;
    WriteSmallFile(added_, AddedDirectory(*old, index_, hidden, password_),
                   Existing::ReplaceScratch);
  }
  if (!oldDirectory_.empty()) (void)RemoveFile(oldDirectory_);
  return Next::GoOn;
}

/// True if the new directory has all its values.
bool HideJob::DirectoryIsWritten() const {
  const fs::path directory = InWork("3.ini");
  if (NameIsTaken(added_)) {
    WriteSmallFile(directory, ReadSmallFile(added_), Existing::ReplaceScratch);
    if (const std::error_code error = RemoveFile(added_)) throw FileError(added_, error);
  }
  return Directory::InFile(directory).IsComplete(index_);
}

Next HideJob::CheckIni() {
  if (!ui_.GoOn()) throw Cancelled{};
  bool complete = false;
  try {
    complete = DirectoryIsWritten();
  } catch (const std::exception&) {
    complete = false;  // The next tick tries again.
  }
  // The profile calls report no errors, so read each status back.
  for (const std::string_view key : statusKeys) {
    if (complete) (void)WriteIniValue(InWork("4.ini"), statusSection, key, key);
    complete = complete && ReadIniValue(InWork("4.ini"), statusSection, key, "") == key;
  }
  if (complete) return Next::GoOn;
  if (++ticks_ < maxTicks) return Next::Wait;
  return Over("Unable To Hide File. Please Try Again.", Icon::Critical);
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
    const fs::path carrierPath = OutputPath();
    const FileState directoryState = StateOf(directory);
    CopyPlan joined;
    const auto add = [&](std::uint32_t source, std::uint64_t length) {
      joined.ranges.push_back({source, 0, length});
    };
    add(joined.sources.Add(form_.Text1, main_), mainBytes_);
    if (sealed_)
      add(joined.sources.Add(sealed_), sealed_->Length());
    else
      add(joined.sources.Add(form_.Text2, hidden_), hidden_.length);
    add(joined.sources.Add(directory, directoryState), directoryState.length);
    joined.EndTarget();
    joined.names = {carrierPath.parent_path(), PathText(carrierPath.filename()), "", 0};
    joined.rights = Narrowed(main_.rights, hidden_.rights);
    const auto stay = [](double value, std::size_t) { return value; };
    if (JoinFolder(joined, false, ui_, StepProgress(ui_, "PB1", 0, stay)).ranges < 1)
      return std::nullopt;
    return carrierPath;
  });
  if (carrier) {
    ui_.TellPlace(*carrier);
    (void)Over("File Hidden.", Icon::Information);
  } else {
    (void)Unable();
  }
  return carrier;
}

fs::path HideJob::OutputPath() const {
  const auto name = [this](const std::string& mark) {
    return mark + "Hidden File " + NameOf(form_.Text1);
  };
  return FirstFreePath(form_.output.empty() ? form_.Text1.parent_path() : form_.output, name,
                       CanBegin);
}

fs::path HideJob::InWork(const char* name) const {
  return work_->Path() / name;
}

Next HideJob::Back(std::string_view message) {
  ui_.Message(message, Icon::Information);
  return Next::Form;
}

/// Deletes the work folders, shows the message unless it is empty, and ends the program.
Next HideJob::Over(std::string_view message, Icon icon) {
  work_.reset();
  run_.reset();
  if (!message.empty()) ui_.Message(message, icon);
  ui_.EndProgram();
  return Next::Over;
}

Next HideJob::Unable() {
  return Over("Unable To Hide File.", Icon::Critical);
}

}  // namespace slyver
