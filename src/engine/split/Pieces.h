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

/// Said of a name that is not that of a piece.
inline constexpr std::string_view isNoPiece = " Is Not A Piece Of A Split File.";

/// Returns with how many threads to look at so many pieces. A few take less time than a thread
/// takes to start.
constexpr unsigned ThreadsToLookWith(std::size_t pieces) {
  return pieces < 256 ? 1 : 2;
}

/// The pieces of one split that exist, by their numbers from 1.
///
/// They are in one folder, or some of them in its subfolders. A subfolder that holds a number which
/// the folder has too, or a piece 1, holds another set and is left alone.
class Pieces {
 public:
  /// Finds all pieces of `origName` in `folder` and below, and names subfolders that cannot be
  /// read. Throws as FindFilesAPI() does.
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

  /// The numbers above `proven`, in ascending order, of the pieces that are in subfolders.
  std::vector<std::size_t> BelowFrom(std::size_t proven) const;

  /// Says where pieces are that are in subfolders: "NAME.4.sly Is In FOLDER", and how many more.
  std::string WhereAre(const std::vector<std::size_t>& below) const;

  /// True if every piece was found once at most. Says which was not.
  bool AreSingle(Ui& ui) const;

  /// True if the numbers are 1 to n, each once, and the piece `chosen` (0 for none) is among those
  /// of the folder itself. Says what is wrong. Throws FileError where a piece cannot be read.
  bool AreWhole(std::size_t chosen, Ui& ui) const;

  /// Says that a piece is missing; always false. Throws FileError where something that is no
  /// readable file has its name.
  bool Missing(std::size_t number, Ui& ui) const;

 private:
  /// What was found under a number. It holds no name, since there may be 32767 of them.
  struct Piece {
    std::uint32_t count = 0;  ///< How many there are in the folder, or in subfolders.
    std::string below;        ///< The subfolder, with a separator; empty for the folder itself.
    std::string ending;       ///< ".sly", in letters of either case.
  };
  struct Candidate {
    std::size_t number;
    std::string ending;
  };
  /// What subfolders hold, by their paths relative to the folder.
  using Candidates = std::map<std::filesystem::path, std::vector<Candidate>>;

  void Take(Piece piece, std::size_t number);
  void TakeSubfolders(const Candidates& candidates);
  std::string IsIn(std::size_t number) const;

  std::string folder_;  ///< Its path, with a separator at its end.
  std::string origName_;
  std::vector<Piece> found_;
  std::string twice_;  ///< Names the first piece that is in two subfolders, and both.
};

}  // namespace slyver
