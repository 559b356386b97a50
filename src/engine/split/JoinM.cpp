#include "engine/split/JoinM.h"

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "engine/split/FindFiles.h"
#include "engine/split/PieceName.h"
#include "engine/system/Disk.h"
#include "engine/system/FileError.h"
#include "engine/system/PathText.h"
#include "engine/system/Registry.h"
#include "engine/system/StepProgress.h"
#include "engine/system/WorkFolders.h"

namespace slyver {

namespace {

constexpr std::string_view scratchName = "temprrr";
constexpr std::string_view pieceFilter = "Sly File (*.Sly)|*.Sly;|";

/// A piece that was found. The path is kept as text: a path object takes several times the memory,
/// and there may be 32767.
struct Piece {
  int number = 0;
  bool inSubfolder = false;
  FileState state;
  std::string path;
};

/// Whether a file below `folder` lies in what an interrupted join has left, and so is no piece.
bool LiesInScratch(const std::filesystem::path& file, const std::filesystem::path& folder) {
  const std::filesystem::path below = file.lexically_relative(folder).parent_path();
  return std::find(below.begin(), below.end(), scratchName) != below.end();
}

/// All pieces of `origName` in `folder` and below, by number, and of each number those in the
/// folder itself first.
std::vector<Piece> FindPieces(const std::filesystem::path& folder, std::string_view origName,
                              Ui& ui) {
  std::vector<Piece> pieces;
  (void)FindFilesAPI(folder, "*.sly", ui, [&](const std::filesystem::path& path) {
    const int number = PieceNumberOf(PathText(path.filename()), origName);
    if (number == 0 || LiesInScratch(path, folder)) return;
    pieces.push_back({number, path.parent_path() != folder, {}, PathText(path)});
  });
  std::sort(pieces.begin(), pieces.end(), [](const Piece& a, const Piece& b) {
    return std::tie(a.number, a.inSubfolder) < std::tie(b.number, b.inSubfolder);
  });
  return pieces;
}

/// Takes out the pieces in subfolders that the folder holds too.
void DropShadowed(std::vector<Piece>& pieces) {
  const auto shadowed = [](const Piece& kept, const Piece& next) {
    return kept.number == next.number && !kept.inSubfolder && next.inSubfolder;
  };
  pieces.erase(std::unique(pieces.begin(), pieces.end(), shadowed), pieces.end());
}

/// Whether the numbers are 1 to n, each once. Says what is wrong.
bool NumbersAreWhole(const std::vector<Piece>& pieces, const std::string& origName, Ui& ui) {
  int expected = 1;
  for (const Piece& piece : pieces) {
    if (piece.number < expected) {
      ui.Message(PieceNameOf(origName, piece.number) + " Is There More Than Once.", Icon::Critical);
      return false;
    }
    if (piece.number > expected) break;
    ++expected;
  }
  if (expected > 1 && expected > static_cast<int>(pieces.size())) return true;
  ui.Message(PieceNameOf(origName, expected) + " Is Missing.", Icon::Critical);
  return false;
}

/// Whether the sizes are those of one split: all alike but the last, which is not larger. If not,
/// the user decides.
bool SizesAreRight(const std::vector<Piece>& pieces, const std::string& origName, Ui& ui) {
  const std::uint64_t common = pieces.front().state.length;
  const auto odd = std::find_if(pieces.begin(), pieces.end(), [&](const Piece& piece) {
    const std::uint64_t length = piece.state.length;
    return &piece == &pieces.back() ? length > common : length != common;
  });
  return odd == pieces.end() ||
         AskYesNo(ui, PieceNameOf(origName, odd->number) +
                          " Does Not Have The Size Of The Other Pieces. Do You Want To Join "
                          "Them All The Same?");
}

enum class Ending { Failed, Declined, Joined };

/// The join up to its final message.
Ending Join(const std::filesystem::path& folder, const std::string& origName,
            const std::filesystem::path& target, Ui& ui, std::optional<ScratchFolder>& scratch) {
  const bool replace = NameIsTaken(target);
  if (replace && !AskYesNo(ui, origName + " Already Exists. Do You Want To Replace It?"))
    return Ending::Declined;

  // Whoever splits a file into these pieces holds the name of piece 1; so does the join, lest
  // pieces are replaced under its hands. It replaces none itself, so piece 1 may be read-only.
  const TargetFile held(folder / PathFromText(PieceNameOf(origName, 1)), 0,
                        Existing::ReplaceScratch);
  std::vector<Piece> pieces = FindPieces(folder, origName, ui);
  DropShadowed(pieces);
  if (!NumbersAreWhole(pieces, origName, ui)) return Ending::Failed;
  // A link that leads nowhere, say, is a piece that cannot be read, and not the end of the pieces.
  const auto next = folder / PathFromText(PieceNameOf(origName, pieces.back().number + 1));
  if (NameIsTaken(next)) (void)StateOf(next);
  std::uint64_t total = 0;
  for (Piece& piece : pieces) {
    piece.state = StateOf(PathFromText(piece.path));
    total += piece.state.length;
  }
  if (!SizesAreRight(pieces, origName, ui)) return Ending::Declined;

  scratch.emplace(folder / scratchName);
  ui.ShowProgressForm("Joining Files");
  const Output joined{target, total, pieces.size(), [&](std::size_t i) {
                        const FileState& state = pieces[i].state;
                        return ByteRange{PathFromText(pieces[i].path), 0, state.length, state};
                      }};
  // The bar's steps grow with the index, so that it fills quickly when there are many pieces.
  const Watch watch = StepProgress(ui, "PB1", 0, [](double value, std::size_t index) {
    return value + static_cast<double>(index) * 5;
  });
  return JoinFolder(joined, replace, ui, watch) < 1 ? Ending::Failed : Ending::Joined;
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

std::int16_t JoinFolder(const Output& joined, bool overwrite, Ui& ui, const Watch& watch) {
  if (!overwrite && NameIsTaken(joined.target)) {
    ui.Message("'" + PathText(joined.target) + "' already exists, action canceled", Icon::Critical);
    return 0;
  }
  return ShowingErrors(ui, [&]() -> std::int16_t {
    if (joined.rangeCount > std::size_t{std::numeric_limits<std::int16_t>::max()})
      throw OverflowError();
    Output output = joined;
    output.existing = overwrite ? Existing::Replace : Existing::Keep;
    WriteOutputs(
        1, [&](std::size_t) { return output; }, output.length, watch);
    return static_cast<std::int16_t>(joined.rangeCount);
  });
}

std::optional<std::filesystem::path> JoinPieces(const std::filesystem::path& FullPath, Ui& ui) {
  const std::string PieceName = PathText(FullPath.filename());
  const std::optional<std::string> OrigName = OrigNameOf(PieceName);
  const std::filesystem::path target = FullPath.parent_path() / PathFromText(OrigName.value_or(""));
  std::optional<ScratchFolder> scratch;
  Ending ending = Ending::Failed;
  if (OrigName) {
    ending = ShowingErrors(
        ui, [&] { return Join(FullPath.parent_path(), *OrigName, target, ui, scratch); });
  } else {
    ui.Message(PieceName + " Is Not A Piece Of A Split File.", Icon::Critical);
  }
  if (ending == Ending::Failed) ui.Message("Unable To Join File.", Icon::Critical);
  if (ending == Ending::Joined) ui.Message("File Joined.", Icon::Information);
  scratch.reset();
  End(ui);
  return ending == Ending::Joined ? std::optional(target) : std::nullopt;
}

std::optional<std::filesystem::path> JoinFile(Ui& ui, const std::filesystem::path& dropped) {
  if (!PiecesAreTogether(ui) && AskYesNo(ui, "Do You Want To Exit?")) {
    End(ui);
    return std::nullopt;
  }
  const std::optional<std::filesystem::path> FullPath =
      dropped.empty() ? ui.OpenFile("Select File To Join.", pieceFilter, HomeFolder()) : dropped;
  if (FullPath) return JoinPieces(*FullPath, ui);
  if (ExitWithoutFile(ui)) End(ui);
  return std::nullopt;
}

std::optional<std::filesystem::path> JoinFromCommandLine(const std::filesystem::path& FilePath,
                                                         Ui& ui) {
  if (!PiecesAreTogether(ui)) {
    End(ui);
    return std::nullopt;
  }
  const std::filesystem::path folder = WithSeparator(FilePath.parent_path());
  std::optional<std::filesystem::path> FullPath;
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
