#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "engine/talk/Ui.h"

namespace slyver {

/// What is known of a piece, or of all pieces together.
enum class PieceState : std::uint8_t { Ok, Damaged, Missing, NotChecked };

/// What a look at the pieces of a split has shown.
struct Verified {
  std::string origName;                 ///< The name of the file that was split.
  std::vector<PieceState> pieces = {};  ///< From piece 1 on.
  /// Of the whole file, where the checksum file is of that and says nothing about single pieces.
  std::optional<PieceState> whole = {};
  bool sound = false;  ///< Nothing is known to be wrong, and a join would ask nothing.
};

/// Looks at all pieces of the split that the piece `FullPath` belongs to, found as a join finds
/// them, and changes nothing. Where a checksum file is beside the piece, reads their bytes; else it
/// looks at numbers and sizes alone, and says so. Pieces that cannot be read count as damaged, and
/// those in subfolders that no checksum file proves as not checked.
///
/// Returns nothing when it cannot begin. What is wrong has been said. Throws Cancelled when the
/// user stops it.
std::optional<Verified> VerifyPieces(const std::filesystem::path& FullPath, Ui& ui);

}  // namespace slyver
