#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "engine/system/Files.h"
#include "engine/system/Ui.h"

namespace slyver {

/// "Join File": asks whether the pieces are together and for one of them, then joins. A piece that
/// the user has given already, as by dropping it on a form, is not asked for: `dropped`, else
/// empty. Returns the path of the joined file, or nothing when none was made. Unless the user goes
/// back to the selection form, it asks for the end of the program. Throws Cancelled.
std::optional<std::filesystem::path> JoinFile(Ui& ui, const std::filesystem::path& dropped = {});

/// The join of a program started with the piece `FilePath`: asks whether the pieces are together
/// and for the one to start from, in a dialog that opens in the folder of `FilePath`, then joins.
/// Returns what JoinPieces() does. Always asks for the end of the program. Throws Cancelled.
std::optional<std::filesystem::path> JoinFromCommandLine(const std::filesystem::path& FilePath,
                                                         Ui& ui);

/// Joins the split that the piece `FullPath` belongs to, into the folder of that piece, under the
/// piece's name without ".number.sly".
///
/// The other pieces are found by their names, in the folder and its subfolders; one in the folder
/// counts before one of the same number below it. The user is asked before a file of that name is
/// replaced, which stays until the new one is complete, and when the sizes show that pieces of
/// different splits may be mixed. A number that is missing or there twice is an error: numbers must
/// run from 1 to n. Always asks for the end of the program.
///
/// Returns the path of the joined file, or nothing when none was made; then the user has been told
/// why, or has said no. Throws Cancelled when the user stops it; then nothing has changed.
std::optional<std::filesystem::path> JoinPieces(const std::filesystem::path& FullPath, Ui& ui);

/// Joins the ranges of `joined` in order into the file joined.target. A file that exists there is
/// replaced if `overwrite`; otherwise it is said that it exists, and nothing is done. Returns the
/// number of ranges, 1 to 32767, or 0 when refused or failed; errors are shown. Throws Cancelled.
std::int16_t JoinFolder(const Output& joined, bool overwrite, Ui& ui, const Watch& watch);

}  // namespace slyver
