#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "engine/bytes/CopyPlan.h"

namespace slyver {

/// Returns the name of piece `number` (from 1) of the file `name`: name + "." + number + ".sly",
/// without leading zeros.
std::string PieceNameOf(std::string_view name, int number);

/// Returns the name of the file that was split: `pieceName` without "." + number + ".sly", the
/// number of one to six characters. `nullopt` if it does not end so.
std::optional<std::string> OrigNameOf(std::string_view pieceName);

/// Returns the number of a piece of the file `origName`, 1 to 99999; 0 if `fileName` is not one.
/// Ignores the case of ".sly".
int PieceNumberOf(std::string_view fileName, std::string_view origName);

/// Returns the names of the pieces of the file `origName` in `folder`.
TargetNames PieceNames(const std::filesystem::path& folder, std::string_view origName);

}  // namespace slyver
