#include "engine/split/JoinM.h"

#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/split/PieceName.h"
#include "engine/split/Pieces.h"
#include "engine/system/Disk.h"
#include "engine/system/FileError.h"
#include "engine/system/Files.h"
#include "engine/system/PathText.h"
#include "engine/system/Registry.h"
#include "engine/system/StepProgress.h"
#include "engine/system/WorkFolders.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view scratchName = "temprrr";
constexpr std::size_t mostPieces = std::numeric_limits<std::int16_t>::max();
constexpr std::string_view pieceFilter = "Sly File (*.Sly)|*.Sly;|";

/// The plan of a join into `target`. The states of the pieces are those of one split: whoever
/// replaces the pieces meanwhile replaces the first one too. Nobody may read the joined file who
/// may not read all pieces. Throws FileError, and Cancelled.
CopyPlan PlanOf(const Pieces& pieces, const fs::path& target, Ui& ui) {
  CopyPlan plan;
  plan.names = {target.parent_path(), PathText(target.filename()), "", 0};
  for (std::size_t number = 1; number <= pieces.Count(); ++number) {
    if (!ui.GoOn()) throw Cancelled{};
    const fs::path path = pieces.PathOf(number);
    const FileState state = StateOf(path);
    plan.rights = number == 1 ? state.rights : Narrowed(plan.rights, state.rights);
    plan.ranges.push_back({plan.sources.Add(path, state), 0, state.length});
  }
  plan.EndTarget();
  if (StateOf(pieces.PathOf(1)) != plan.sources.State(0))
    throw FileError(pieces.PathOf(1), fileWasChanged);
  return plan;
}

/// The number of the first piece whose size is not that of one split: all are alike but the last,
/// which is not larger. 0 when there is none.
std::size_t OddPiece(const std::vector<ByteRange>& pieces) {
  const std::uint64_t common = pieces.front().length;
  for (std::size_t i = 1; i + 1 < pieces.size(); ++i)
    if (pieces[i].length != common) return i + 1;
  return pieces.back().length > common ? pieces.size() : 0;
}

bool HasSixDigits(std::string_view pieceName, std::string_view origName) {
  constexpr std::string_view around = "..sly";
  return pieceName.size() == origName.size() + around.size() + 6 &&
         pieceName.substr(origName.size() + 1, 6).find_first_not_of("0123456789") ==
             std::string_view::npos;
}

enum class Ending { Failed, Declined, Joined };

/// The join up to its final message.
Ending Join(const fs::path& FullPath, const std::string& OrigName, JoinedFile& joined, Ui& ui,
            std::optional<ScratchFolder>& scratch) {
  const std::string PieceName = PathText(FullPath.filename());
  const int chosen = PieceNumberOf(PieceName, OrigName);
  if (chosen == 0 && !HasSixDigits(PieceName, OrigName)) {
    ui.Message(PieceName + std::string(isNoPiece), Icon::Critical);
    return Ending::Failed;
  }
  if (!NameIsTaken(FullPath)) {
    ui.Message(PieceName + " Is Missing.", Icon::Critical);
    return Ending::Failed;
  }
  const bool replace = NameIsTaken(joined.path);
  if (replace && !AskYesNo(ui, OrigName + " Already Exists. Do You Want To Replace It?"))
    return Ending::Declined;
  // Whether the file can be made at all is better known before the search.
  (void)TargetFile(joined.path, replace ? Existing::ReplaceScratch : Existing::Keep);

  const Pieces pieces(FullPath.parent_path(), OrigName, ui);
  if (!pieces.AreWhole(static_cast<std::size_t>(chosen), ui)) return Ending::Failed;
  joined.pieces = pieces.Count();
  joined.lastPiece = pieces.NameOf(pieces.Count());
  if (joined.pieces > mostPieces) throw OverflowError();
  CopyPlan plan = PlanOf(pieces, joined.path, ui);
  joined.length = plan.TotalLength();
  joined.allAlike = plan.ranges.back().length == plan.ranges.front().length;
  if (const std::size_t odd = OddPiece(plan.ranges);
      odd > 0 && !AskYesNo(ui, pieces.NameOf(odd) +
                                   " Does Not Have The Size Of The Other Pieces. Do You Want To "
                                   "Join Them All The Same?"))
    return Ending::Declined;

  scratch.emplace(joined.path.parent_path() / scratchName);
  ui.ShowProgressForm("Joining Files");
  // The bar's steps grow with the index, so that it fills quickly when there are many pieces.
  const Watch watch = StepProgress(ui, "PB1", 0, [](double value, std::size_t index) {
    return value + static_cast<double>(index) * 5;
  });
  return JoinFolder(plan, replace, ui, watch) < 1 ? Ending::Failed : Ending::Joined;
}

void End(Ui& ui) {
  DeleteFilePathValue();
  ui.EndProgram();
}

bool PiecesAreTogether(Ui& ui) {
  return AskYesNo(ui,
                  "Please Make Sure All The Sly Files Are In The Same Folder. Are They In The Same "
                  "Folder?");
}

bool ExitWithoutFile(Ui& ui) {
  return AskYesNo(ui, "No File Selected. Do You Want To Exit?");
}

}  // namespace

std::int16_t JoinFolder(CopyPlan& joined, bool overwrite, Ui& ui, const Watch& watch) {
  const fs::path target = joined.names.Path(0);
  if (!overwrite && NameIsTaken(target)) {
    ui.Message("'" + PathText(target) + "' already exists, action canceled", Icon::Critical);
    return 0;
  }
  return ShowingErrors(ui, 0, [&]() -> std::int16_t {
    if (joined.ranges.size() > mostPieces) throw OverflowError();
    joined.existing = overwrite ? Existing::Replace : Existing::Keep;
    Copy(joined, watch);
    return static_cast<std::int16_t>(joined.ranges.size());
  });
}

std::optional<JoinedFile> JoinPieces(const fs::path& FullPath, Ui& ui,
                                     const fs::path& outputFolder) {
  const std::string PieceName = PathText(FullPath.filename());
  const std::optional<std::string> OrigName = OrigNameOf(PieceName);
  const fs::path folder = outputFolder.empty() ? FullPath.parent_path() : outputFolder;
  JoinedFile joined;
  std::optional<ScratchFolder> scratch;
  Ending ending = Ending::Failed;
  if (OrigName) {
    joined.path = folder / PathFromText(*OrigName);
    ending = ShowingErrors(ui, Ending::Failed,
                           [&] { return Join(FullPath, *OrigName, joined, ui, scratch); });
  } else {
    ui.Message(PieceName + std::string(isNoPiece), Icon::Critical);
  }
  if (ending == Ending::Failed) ui.Message("Unable To Join File.", Icon::Critical);
  if (ending == Ending::Joined) {
    ui.TellPlace(joined.path);
    ui.Message("File Joined.", Icon::Information);
  }
  scratch.reset();
  End(ui);
  return ending == Ending::Joined ? std::optional(joined) : std::nullopt;
}

std::optional<JoinedFile> JoinFile(Ui& ui, const fs::path& dropped) {
  if (!PiecesAreTogether(ui) && AskYesNo(ui, "Do You Want To Exit?")) {
    End(ui);
    return std::nullopt;
  }
  const std::optional<fs::path> FullPath =
      dropped.empty() ? ui.OpenFile("Select File To Join.", pieceFilter, HomeFolder()) : dropped;
  if (FullPath) return JoinPieces(*FullPath, ui);
  if (ExitWithoutFile(ui)) End(ui);
  return std::nullopt;
}

std::optional<JoinedFile> JoinFromCommandLine(const fs::path& FilePath, Ui& ui) {
  if (!PiecesAreTogether(ui)) {
    End(ui);
    return std::nullopt;
  }
  const fs::path folder = WithSeparator(FilePath.parent_path());
  std::optional<fs::path> FullPath;
  do {
    FullPath = ui.OpenFile("Please Select Any Other File To Join.", pieceFilter, folder);
    if (!FullPath && ExitWithoutFile(ui)) {
      End(ui);
      return std::nullopt;
    }
  } while (!FullPath);
  return JoinPieces(*FullPath, ui);
}

}  // namespace slyver
