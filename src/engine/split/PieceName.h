#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace slyver {

/// The name of piece `number` (1-based) of a file named `name`: name + "." + number + ".sly", the
/// number in plain decimal without leading zeros.
std::string PieceNameOf(std::string_view name, int number);

/// The name of the file that a piece belongs to: `pieceName` without its final "." + number +
/// ".sly", where a number may have one to six characters. Nothing when `pieceName` does not end so.
std::optional<std::string> OrigNameOf(std::string_view pieceName);

/// The number of a piece of the file `origName`: 1 to 99999, or 0 when `fileName` is not the name
/// of one. The letters of ".sly" may be of either case.
int PieceNumberOf(std::string_view fileName, std::string_view origName);

}  // namespace slyver
