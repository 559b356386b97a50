#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "engine/system/Ui.h"

namespace slyver {

enum class PieceState : std::uint8_t { Ok, Damaged, Missing };

/// What a look at the pieces of a split has shown.
struct Verified {
  std::string origName;            ///< The name of the file that was split.
  std::vector<PieceState> pieces;  ///< From piece 1 on.
  bool sound = false;              ///< Nothing is wrong with them, as far as can be told.
};

/// Looks at all pieces of the split that the piece `FullPath` belongs to, found as a join finds
/// them, and changes nothing. Where a checksum file lies beside the piece, reads their bytes; else
/// it looks at numbers and sizes alone, and says so. Pieces that cannot be read count as damaged.
///
/// Returns nothing when it cannot begin. What is wrong has been said. Throws Cancelled when the
/// user stops it.
std::optional<Verified> VerifyPieces(const std::filesystem::path& FullPath, Ui& ui);

}  // namespace slyver
