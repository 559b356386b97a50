#include "engine/split/JoinM.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/base/FileError.h"
#include "engine/base/Numbers.h"
#include "engine/base/PathText.h"
#include "engine/base/Workers.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"
#include "engine/disk/WorkFolders.h"
#include "engine/settings/Registry.h"
#include "engine/split/ChecksumFile.h"
#include "engine/split/PieceName.h"
#include "engine/split/Pieces.h"
#include "engine/talk/StepProgress.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view scratchName = "temprrr";
constexpr std::string_view pieceFilter = "Sly File (*.Sly)|*.Sly;|";

/// Plans the join into `target`, readable only for people who may read all pieces. The states are
/// of one split: a program that replaces the pieces meanwhile also replaces the first one, which is
/// copied first. Throws FileError and Cancelled.
CopyPlan PlanOf(const Pieces& pieces, const fs::path& target, Ui& ui) {
  CopyPlan plan;
  plan.names = {target.parent_path(), PathText(target.filename()), "", 0};
  std::vector<FileState> states(pieces.Count());
  const auto look = [&](std::size_t i, const Tick& /*between*/) {
    states[i] = StateOf(pieces.PathOf(i + 1));
  };
  ForEachNumber(states.size(), ThreadsToLookWith(states.size()), look, [&] { return ui.GoOn(); });
  plan.sources = SourceList(std::move(states), [&](std::size_t i) { return pieces.TextOf(i + 1); });
  plan.rights = plan.sources.State(0).rights;
  plan.ranges.reserve(pieces.Count());
  for (std::uint32_t i = 0; i < pieces.Count(); ++i) {
    const FileState& state = plan.sources.State(i);
    plan.rights = Narrowed(plan.rights, state.rights);
    plan.ranges.push_back({i, 0, state.length});
  }
  plan.EndTarget();
  return plan;
}

/// Returns the number of the first piece with an odd size, or 0. All have the same size but the
/// last, which may be smaller.
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

bool JoinAnyway(const std::string& although, Ui& ui) {
  return AskYesNo(ui, although + " Do You Want To Join Them Anyway?", Stakes::Unproven);
}

/// One join of the pieces found.
class Joining {
 public:
  Joining(Pieces pieces, const fs::path& folder, const std::string& OrigName, JoinedFile& joined,
          Ui& ui)
      : pieces_(std::move(pieces)),
        list_(folder / PathFromText(ChecksumNameOf(OrigName))),
        checksums_(ReadChecksumFile(folder, OrigName)),
        joined_(joined),
        ui_(ui) {}

  Ending Run(int chosen, bool replace, PiecesThen then) {
    if (!pieces_.AreWhole(static_cast<std::size_t>(chosen), ui_) || !HasAllOfTheList())
      return Ending::Failed;
    joined_.pieces = pieces_.Count();
    joined_.lastPiece = pieces_.NameOf(pieces_.Count());
    if (joined_.pieces > maxCount) throw OverflowError();
    plan_ = PlanOf(pieces_, joined_.path, ui_);
    RequireNoFurtherPiece();
    plan_.expected = std::move(checksums_.digests);
    plan_.flush = then == PiecesThen::Delete;
    joined_.length = plan_.TotalLength();
    joined_.allAlike = plan_.ranges.back().length == plan_.ranges.front().length;
    plan_.expectedOfAll = checksums_.ofWhole;
    joined_.checked = plan_.expectedOfAll || plan_.expected.size() == plan_.ranges.size();
    if (!MayBegin(then)) return Ending::Declined;
    const Ending ending = Join(replace);
    if (ending == Ending::Joined && then == PiecesThen::Delete) DeletePieces();
    return ending;
  }

 private:
  /// Throws FileError if a split has replaced the pieces by more since they were found: the states
  /// would then be those of the first ones of the new set.
  void RequireNoFurtherPiece() const {
    const fs::path next = list_.parent_path() / PathFromText(pieces_.NameOf(pieces_.Count() + 1));
    if (IsFileItself(next)) throw FileError(next, "The piece was made while the others were read");
  }

  bool HasAllOfTheList() const {
    return checksums_.digests.size() <= pieces_.Count() ||
           pieces_.Missing(pieces_.Count() + 1, ui_);
  }

  /// Asks if the pieces may not be those of one split; false if the user declines.
  bool MayBegin(PiecesThen then) {
    if (joined_.checked) return true;
    const std::vector<std::size_t> below = pieces_.BelowFrom(plan_.expected.size());
    if (!below.empty() && !AskYesNo(ui_,
                                    pieces_.WhereAre(below) + ". Do You Want To Join " +
                                        (below.size() == 1 ? "It" : "Them") + " Too?",
                                    Stakes::Unproven))
      return false;
    const std::string list = PathText(list_.filename());
    if (checksums_.kind == Checksums::Kind::NotUnderstood &&
        !JoinAnyway(list + " Cannot Be Understood.", ui_))
      return false;
    if (checksums_.kind == Checksums::Kind::Understood &&
        !JoinAnyway(pieces_.NameOf(pieces_.Count()) + " Is Not In " + list + ".", ui_))
      return false;
    if (const std::size_t odd = OddPiece(plan_.ranges);
        odd > 0 &&
        !JoinAnyway(pieces_.NameOf(odd) + " Does Not Have The Size Of The Other Pieces.", ui_))
      return false;
    return then == PiecesThen::Stay ||
           AskYesNo(ui_, "The Pieces Cannot Be Verified. Delete Them Anyway?", Stakes::Unproven);
  }

  /// Joins. If pieces are damaged, asks and joins again without checking.
  Ending Join(bool replace) {
    const JoinResult result = JoinInScratch(replace);
    if (result.damaged.empty()) return result.ranges < 1 ? Ending::Failed : Ending::Joined;
    if (!JoinAnyway(WhatIsDamaged(result.damaged), ui_)) return Ending::Declined;
    plan_.expectedOfAll.reset();
    plan_.expected.clear();
    joined_.checked = false;
    joined_.damaged = true;
    if (JoinInScratch(replace).ranges < 1) return Ending::Failed;
    const std::size_t count = result.damaged.size();
    const std::string name = PathText(joined_.path.filename());
    ui_.Message(IsWhole(result.damaged) ? name + " Was Joined, But Is Damaged."
                                        : name + " Was Joined With " + std::to_string(count) +
                                              " Damaged Piece" + (count == 1 ? "." : "s."),
                Icon::Critical);
    return Ending::Joined;
  }

  /// True if Copy() has reported the digest of all ranges together.
  bool IsWhole(const std::vector<std::size_t>& damaged) const {
    return damaged.front() == plan_.ranges.size();
  }

  std::string WhatIsDamaged(const std::vector<std::size_t>& ranges) const {
    return (IsWhole(ranges) ? PathText(joined_.path.filename())
                            : pieces_.NameOf(ranges.front() + 1)) +
           (ranges.size() == 1
                ? " Is Damaged."
                : " And " + std::to_string(ranges.size() - 1) + " More Are Damaged.");
  }

  /// Joins with the work folder locked.
  JoinResult JoinInScratch(bool replace) {
    const ScratchFolder scratch(joined_.path.parent_path() / scratchName);
    if (!joined_.damaged) ui_.ShowProgressForm("Joining Files");
    // The bar's steps grow with the index, so that it fills quickly when there are many pieces.
    const Watch watch = StepProgress(ui_, "PB1", 0, [](double value, std::size_t index) {
      return value + static_cast<double>(index) * 5;
    });
    return JoinFolder(plan_, replace, ui_, watch);
  }

  /// Deletes the list first and piece 1 next: if either exists, all pieces exist. Stops at a file
  /// that has changed since.
  void DeletePieces() {
    if (joined_.damaged) {
      ui_.Message("The Pieces Stay, Since Some Are Damaged.", Icon::None);
      return;
    }
    joined_.deleted = ShowingErrors(ui_, false, [&] {
      // If one cannot be deleted, all stay, and the list with them.
      for (std::uint32_t i = 0; i < plan_.ranges.size(); ++i)
        RequireReplaceable(plan_.sources.Path(i));
      // The folders above the joined file may be new.
      const fs::path own = joined_.path.parent_path();
      for (fs::path f = own; own != list_.parent_path() && f != f.parent_path();
           f = f.parent_path())
        FlushFolder(f.parent_path());
      if (checksums_.kind == Checksums::Kind::Understood) {
        Delete(list_, checksums_.state);
        FlushFolder(list_.parent_path());
      }
      for (std::uint32_t i = 0; i < plan_.ranges.size(); ++i) {
        const fs::path path = plan_.sources.Path(i);
        Delete(path, plan_.sources.State(i));
        if (i == 0) FlushFolder(path.parent_path());
      }
      return true;
    });
  }

  /// Deletes a file. Throws FileError if it is no longer in `state`.
  static void Delete(const fs::path& path, const FileState& state) {
    SourceFile(path).ThrowUnlessOpenedAs(state);
    if (const std::error_code error = RemoveFile(path)) throw FileError(path, error);
  }

  Pieces pieces_;
  fs::path list_;
  Checksums checksums_;
  CopyPlan plan_;
  JoinedFile& joined_;
  Ui& ui_;
};

/// Joins up to the final message.
Ending Join(const fs::path& FullPath, const std::string& OrigName, JoinedFile& joined, Ui& ui,
            PiecesThen then) {
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
  if (replace) RequireReplaceable(joined.path);
  if (replace &&
      !AskYesNo(ui, OrigName + " Already Exists. Do You Want To Replace It?", Stakes::Replaces))
    return Ending::Declined;
  // A search may take long, so try to create the file before it.
  (void)TargetFile(joined.path, replace ? Existing::ReplaceScratch : Existing::Keep);
  const fs::path folder = FullPath.parent_path();
  return Joining(Pieces(folder, OrigName, ui), folder, OrigName, joined, ui)
      .Run(chosen, replace, then);
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

}  // namespace

JoinResult JoinFolder(CopyPlan& joined, bool overwrite, Ui& ui, const Watch& watch) {
  const fs::path target = joined.names.Path(0);
  if (!overwrite && NameIsTaken(target)) {
    ui.Message("'" + PathText(target) + "' already exists, action canceled", Icon::Critical);
    return {};
  }
  return ShowingErrors(ui, {}, [&]() -> JoinResult {
    if (joined.ranges.size() > maxCount) throw OverflowError();
    joined.existing = overwrite ? Existing::Replace : Existing::Keep;
    const std::vector<std::size_t> damaged = Copy(joined, watch);
    return {static_cast<std::int16_t>(damaged.empty() ? joined.ranges.size() : 0), damaged};
  });
}

std::optional<JoinedFile> JoinPieces(const fs::path& FullPath, Ui& ui, const fs::path& outputFolder,
                                     PiecesThen then) {
  const std::string PieceName = PathText(FullPath.filename());
  const std::optional<std::string> OrigName = OrigNameOf(PieceName);
  const fs::path folder = outputFolder.empty() ? FullPath.parent_path() : outputFolder;
  JoinedFile joined;
  Ending ending = Ending::Failed;
  if (OrigName) {
    joined.path = folder / PathFromText(*OrigName);
    ending = ShowingErrors(ui, Ending::Failed,
                           [&] { return Join(FullPath, *OrigName, joined, ui, then); });
  } else {
    ui.Message(PieceName + std::string(isNoPiece), Icon::Critical);
  }
  if (ending == Ending::Failed) ui.Message("Unable To Join File.", Icon::Critical);
  if (ending == Ending::Joined) {
    ui.TellPlace(joined.path);
    ui.Message("File Joined.", Icon::Information);
  }
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
