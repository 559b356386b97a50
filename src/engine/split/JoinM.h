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

/// What a join has made.
struct JoinedFile {
  std::filesystem::path path;
  std::size_t pieces = 0;    ///< 2 to 32767.
  std::uint64_t length = 0;  ///< In bytes.
  std::string lastPiece;     ///< The name of the piece with the highest number.
  bool allAlike = false;     ///< All pieces are equally long, so none shows that it is the last.
  bool checked = false;      ///< All bytes are those of a checksum file.
  bool damaged = false;      ///< They are not, and were joined anyway.
  bool deleted = false;      ///< The pieces are gone.
};

/// What becomes of the pieces when the joined file is on the disk.
enum class PiecesThen { Stay, Delete };

/// What a JoinFolder() has done.
struct JoinResult {
  std::int16_t ranges = 0;           ///< 1 to 32767; 0 when refused or failed.
  std::vector<std::size_t> damaged;  ///< The ranges that Copy() returns.
};

/// "Join File": asks whether the pieces are together and for one of them, then joins. `dropped` is
/// a piece that the user has given already, as by dropping it on a form; it is not asked for then.
/// Returns what JoinPieces() does. Unless the user goes back to the selection form, it asks for the
/// end of the program. Throws Cancelled.
std::optional<JoinedFile> JoinFile(Ui& ui, const std::filesystem::path& dropped = {});

/// The join of a program started with the piece `FilePath`: asks whether the pieces are together
/// and for the one to start from, in a dialog that opens in the folder of `FilePath`, then joins.
/// Returns what JoinPieces() does. Always asks for the end of the program. Throws Cancelled.
std::optional<JoinedFile> JoinFromCommandLine(const std::filesystem::path& FilePath, Ui& ui);

/// Joins the split that the piece `FullPath` belongs to, under the piece's name without
/// ".number.sly", into `outputFolder`, or beside the piece where that is empty.
///
/// Finds the other pieces by their names, in the piece's folder and its subfolders (Pieces.h). The
/// numbers must run from 1 to n, 2 at least, each once and the given piece among them, unless its
/// number has six digits. Asks before it replaces a file, which stays until the new one is
/// complete, and, with Stakes::Unproven, when pieces of different splits may be mixed: their sizes
/// are odd, or some are in subfolders. Always asks for the end of the program.
///
/// Where a checksum file is beside the piece, no piece on it may be missing, and the joined bytes
/// are checked before the rename; the user is asked, with Stakes::Unproven, where something is
/// wrong. The pieces are deleted, if that is wanted, once the joined file is on the disk and was
/// found right; where it cannot be checked the user is asked before. JoinedFile::deleted is `true`
/// if they are; why not has been said.
///
/// Returns what was made, or nothing; then the user has been told why, or has said no. Throws
/// Cancelled when the user stops it; then nothing has changed.
std::optional<JoinedFile> JoinPieces(const std::filesystem::path& FullPath, Ui& ui,
                                     const std::filesystem::path& outputFolder = {},
                                     PiecesThen then = PiecesThen::Stay);

/// Carries out `joined`, a plan of one target. Replaces a file of its name if `overwrite`; else
/// says that it exists, and does nothing. Nothing is made where a range is damaged. Errors are
/// shown. Throws Cancelled.
JoinResult JoinFolder(CopyPlan& joined, bool overwrite, Ui& ui, const Watch& watch);

}  // namespace slyver
