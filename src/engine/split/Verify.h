#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "engine/talk/Ui.h"

namespace slyver {

/// The state of a piece, or of all pieces together.
enum class PieceState : std::uint8_t { Ok, Damaged, Missing, NotChecked };

/// The result of verifying the pieces of a split.
struct Verified {
  std::string origName;                 ///< The name of the file that was split.
  std::vector<PieceState> pieces = {};  ///< From piece 1 on.
  /// Of the whole file, if the checksum file is for that alone.
  std::optional<PieceState> whole = {};
  bool sound = false;  ///< Nothing is known to be wrong, and a join would not ask.
};

/// Verifies all pieces of the split of the piece `FullPath`, found as a join finds them. Reads
/// their bytes if a checksum file is next to the piece; otherwise compares numbers and sizes and
/// says so. Unreadable pieces count as damaged, pieces in subfolders without a checksum as not
/// checked.
///
/// Shows what is wrong. Returns `nullopt` if it cannot start. Throws Cancelled if the user stops
/// it.
std::optional<Verified> VerifyPieces(const std::filesystem::path& FullPath, Ui& ui);

}  // namespace slyver
