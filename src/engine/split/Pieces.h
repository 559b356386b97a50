#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "engine/system/Ui.h"

namespace slyver {

/// Said of a name that is not that of a piece.
inline constexpr std::string_view isNoPiece = " Is Not A Piece Of A Split File.";

/// How many threads to open so many pieces with, just to look at them. A few take less time than a
/// thread takes to start.
constexpr unsigned ThreadsToLookWith(std::size_t pieces) {
  return pieces < 256 ? 1 : 2;
}

/// The pieces of one split that are there, by their numbers from 1.
class Pieces {
 public:
  /// Finds all pieces of `origName` in `folder` and below. Throws as FindFilesAPI() does.
  Pieces(const std::filesystem::path& folder, std::string origName, Ui& ui);

  /// The highest number found.
  std::size_t Count() const { return found_.size(); }

  bool Has(std::size_t number) const { return number <= Count() && found_[number - 1].count > 0; }

  /// The name of a piece, found or not.
  std::string NameOf(std::size_t number) const;

  /// The path of a piece that was found, as PathText() has it.
  std::string TextOf(std::size_t number) const;

  /// The path of a piece that was found.
  std::filesystem::path PathOf(std::size_t number) const;

  /// Whether every piece was found once at most. Says which was not.
  bool AreSingle(Ui& ui) const;

  /// Whether the numbers are 1 to n, each once, and the piece `chosen` (0 for none) is among those
  /// of the folder itself. Says what is wrong. Throws FileError where a piece cannot be read.
  bool AreWhole(std::size_t chosen, Ui& ui) const;

  /// Says that a piece is missing; always false. Throws FileError where something that is no
  /// readable file bears its name.
  bool Missing(std::size_t number, Ui& ui) const;

 private:
  /// What was found under a number. A piece in the folder counts before those below it. It holds
  /// no name, since there may be 32767 of them.
  struct Piece {
    std::uint32_t count = 0;  ///< How many there are at the best place.
    std::string below;        ///< The subfolder that it lies in, with a separator; empty for
                              ///< the folder itself.
    std::string ending;       ///< ".sly", in letters of either case.
  };

  void Take(const std::filesystem::path& below, std::string_view name);

  std::string folder_;  ///< Its path, with a separator at its end.
  std::string origName_;
  std::vector<Piece> found_;
};

}  // namespace slyver
