#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "engine/bytes/Copy.h"
#include "engine/talk/Ui.h"

namespace slyver {

/// The result of a join.
struct JoinedFile {
  std::filesystem::path path;
  std::size_t pieces = 0;    ///< 2 to maxCount.
  std::uint64_t length = 0;  ///< In bytes.
  std::string lastPiece;     ///< The name of the piece with the highest number.
  bool allAlike = false;     ///< All pieces have the same length, so a missing last one is unknown.
  bool checked = false;      ///< All bytes match a checksum file.
  bool damaged = false;      ///< Some bytes do not, and were joined anyway.
  bool deleted = false;      ///< The pieces were deleted.
};

/// What to do with the pieces when the joined file is flushed.
enum class PiecesThen { Stay, Delete };

/// The result of JoinFolder().
struct JoinResult {
  std::int16_t ranges = 0;           ///< 1 to maxCount; 0 if refused or failed.
  std::vector<std::size_t> damaged;  ///< The ranges that Copy() returns.
};

/// Runs "Join File": asks whether the pieces are together and for one of them, then joins. Does not
/// ask for a piece if the user has `dropped` one. Returns what JoinPieces() does. Ends the program
/// unless the user goes back to the selection form. Throws Cancelled.
std::optional<JoinedFile> JoinFile(Ui& ui, const std::filesystem::path& dropped = {});

/// Runs the join of a program started with the piece `FilePath`: asks whether the pieces are
/// together and for the one to start from, in the folder of `FilePath`, then joins. Returns what
/// JoinPieces() does. Always ends the program. Throws Cancelled.
std::optional<JoinedFile> JoinFromCommandLine(const std::filesystem::path& FilePath, Ui& ui);

/// Joins the split of the piece `FullPath` into `outputFolder`, or next to the piece if empty. The
/// result has the piece's name without ".number.sly".
///
/// Finds the other pieces by their names, in the piece's folder and its subfolders (Pieces.h). The
/// numbers must be 1 to n, at least 2, each once and the given piece among them, unless its number
/// has six digits. Asks before it replaces a file, which stays until the new one is complete. Asks
/// with Stakes::Unproven if pieces of different splits may be mixed: their sizes are odd, or some
/// are in subfolders. Always ends the program.
///
/// With a checksum file next to the piece, no piece on it may be missing, and the joined bytes are
/// checked before the rename. Asks with Stakes::Unproven if something is wrong. Deletes the pieces,
/// if wanted, once the joined file is flushed and checked; asks first if it cannot be checked.
///
/// Returns `nullopt` on an error, which is shown, or if the user declines. Throws Cancelled if the
/// user stops it; then nothing has changed.
std::optional<JoinedFile> JoinPieces(const std::filesystem::path& FullPath, Ui& ui,
                                     const std::filesystem::path& outputFolder = {},
                                     PiecesThen then = PiecesThen::Stay);

/// Copies `joined`, a plan of one target. Replaces an existing file if `overwrite`, otherwise shows
/// an error. Creates nothing if a range is damaged. Errors are shown. Throws Cancelled.
JoinResult JoinFolder(CopyPlan& joined, bool overwrite, Ui& ui, const Watch& watch);

}  // namespace slyver
