#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "engine/talk/Ui.h"

namespace slyver {

/// The message's end for a name that is not a piece's.
inline constexpr std::string_view isNoPiece = " Is Not A Piece Of A Split File.";

/// Returns how many threads to use for looking at pieces. A few take less time than starting one.
constexpr unsigned ThreadsToLookWith(std::size_t pieces) {
  return pieces < 256 ? 1 : 2;
}

/// The existing pieces of one split, by their numbers from 1.
///
/// They are in one folder and its subfolders. A subfolder with a piece 1, or with a number that the
/// folder has too, contains another set and is ignored.
class Pieces {
 public:
  /// Finds all pieces of `origName` in `folder` and below. Shows which subfolders cannot be read.
  /// Throws as FindFilesAPI() does.
  Pieces(const std::filesystem::path& folder, std::string origName, Ui& ui);

  /// Returns the highest number found.
  std::size_t Count() const { return found_.size(); }

  bool Has(std::size_t number) const { return number <= Count() && found_[number - 1].count > 0; }

  /// Returns the name of a piece, found or not.
  std::string NameOf(std::size_t number) const;

  /// Returns the PathText() of a piece that was found.
  std::string TextOf(std::size_t number) const;

  /// Returns the path of a piece that was found.
  std::filesystem::path PathOf(std::size_t number) const;

  /// Returns the numbers above `proven` of pieces in subfolders, in ascending order.
  std::vector<std::size_t> BelowFrom(std::size_t proven) const;

  /// Returns the text for pieces in subfolders: "NAME.4.sly Is In FOLDER", and how many more.
  std::string WhereAre(const std::vector<std::size_t>& below) const;

  /// True if no piece was found twice; otherwise shows which.
  bool AreSingle(Ui& ui) const;

  /// True if the numbers are 1 to n, each once, and the piece `chosen` (0 for none) is in the
  /// folder itself; otherwise shows what is wrong. Throws FileError if a piece cannot be read.
  bool AreWhole(std::size_t chosen, Ui& ui) const;

  /// Shows that a piece is missing; always false. Throws FileError if it exists and is not a
  /// readable file.
  bool Missing(std::size_t number, Ui& ui) const;

 private:
  /// The files found for a number. Without a name, to save memory.
  struct Piece {
    std::uint32_t count = 0;  ///< The number of files in the folder, or in subfolders.
    std::string below;        ///< The subfolder, with a separator; empty for the folder itself.
    std::string ending;       ///< ".sly" in any case.
  };
  struct Candidate {
    std::size_t number;
    std::string ending;
  };
  /// The pieces in subfolders, by their paths relative to the folder.
  using Candidates = std::map<std::filesystem::path, std::vector<Candidate>>;

  void Take(Piece piece, std::size_t number);
  void TakeSubfolders(const Candidates& candidates);
  std::string IsIn(std::size_t number) const;

  std::string folder_;  ///< With a separator at its end.
  std::string origName_;
  std::vector<Piece> found_;
  std::string twice_;  ///< The message for the first piece found in two subfolders.
};

}  // namespace slyver
