#include "engine/split/Pieces.h"

#include <algorithm>
#include <utility>

#include "engine/base/PathText.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"
#include "engine/split/FindFiles.h"
#include "engine/split/PieceName.h"

namespace slyver {

namespace fs = std::filesystem;

Pieces::Pieces(const fs::path& folder, std::string origName, Ui& ui)
    : folder_(PathText(folder / "")), origName_(std::move(origName)) {
  Candidates candidates;
  const auto found = [&](const fs::path& below, const std::string& name) {
    const auto number = static_cast<std::size_t>(PieceNumberOf(name, origName_));
    if (number == 0) return;
    std::string ending = name.substr(name.rfind('.'));
    if (below.empty())
      Take({1, {}, std::move(ending)}, number);
    else
      candidates[below].push_back({number, std::move(ending)});
  };
  const FindCounts counts = FindFilesAPI(folder, "*.sly", ui, found);
  TakeSubfolders(candidates);
  if (counts.unreadable == 0) return;
  const std::uint64_t more = counts.unreadable - 1;
  ui.Message(PathText(folder / counts.firstUnreadable) +
                 (more == 0 ? "" : " And " + std::to_string(more) + " More Folders") +
                 " Cannot Be Read.",
             Icon::None);
}

void Pieces::Take(Piece piece, std::size_t number) {
  if (number > found_.size()) found_.resize(number);
  Piece& known = found_[number - 1];
  if (known.count == 0)
    known = std::move(piece);
  else
    ++known.count;
}

void Pieces::TakeSubfolders(const Candidates& candidates) {
  std::vector<bool> inFolder(found_.size());
  for (std::size_t i = 0; i < found_.size(); ++i) inFolder[i] = found_[i].count > 0;
  const auto isOfAnotherSet = [&](const Candidate& candidate) {
    return candidate.number == 1 ||
           (candidate.number <= inFolder.size() && inFolder[candidate.number - 1]);
  };
  for (const auto& [folder, pieces] : candidates) {
    if (std::any_of(pieces.begin(), pieces.end(), isOfAnotherSet)) continue;
    const std::string below = PathText(folder / "");
    for (const Candidate& piece : pieces) {
      if (twice_.empty() && Has(piece.number) && found_[piece.number - 1].below != below)
        twice_ = IsIn(piece.number) + " And In " + folder_ + PathText(folder) + ".";
      Take({1, below, piece.ending}, piece.number);
    }
  }
}

std::string Pieces::NameOf(std::size_t number) const {
  return PieceNameOf(origName_, static_cast<int>(number));
}

std::string Pieces::TextOf(std::size_t number) const {
  const Piece& piece = found_[number - 1];
  std::string text = folder_ + piece.below + NameOf(number);
  text.replace(text.size() - piece.ending.size(), piece.ending.size(), piece.ending);
  return text;
}

fs::path Pieces::PathOf(std::size_t number) const {
  return PathFromText(TextOf(number));
}

std::vector<std::size_t> Pieces::BelowFrom(std::size_t proven) const {
  std::vector<std::size_t> below;
  for (std::size_t number = proven + 1; number <= Count(); ++number)
    if (!found_[number - 1].below.empty()) below.push_back(number);
  return below;
}

std::string Pieces::IsIn(std::size_t number) const {
  return NameOf(number) + " Is In " + PathText(PathOf(number).parent_path());
}

std::string Pieces::WhereAre(const std::vector<std::size_t>& below) const {
  const std::size_t more = below.size() - 1;
  return IsIn(below.front()) +
         (more == 0 ? "" : ", And " + std::to_string(more) + " More In Subfolders");
}

bool Pieces::AreSingle(Ui& ui) const {
  if (!twice_.empty()) {
    ui.Message(twice_, Icon::Critical);
    return false;
  }
  for (std::size_t number = 1; number <= Count(); ++number) {
    if (found_[number - 1].count <= 1) continue;
    ui.Message(NameOf(number) + " Is There More Than Once.", Icon::Critical);
    return false;
  }
  return true;
}

bool Pieces::AreWhole(std::size_t chosen, Ui& ui) const {
  for (std::size_t number = 1; number <= Count(); ++number)
    if (!Has(number) || (number == chosen && !found_[number - 1].below.empty()))
      return Missing(number, ui);
  if (!AreSingle(ui)) return false;
  if (Count() < 2) return Missing(Count() + 1, ui);
  if (chosen > Count()) return Missing(chosen, ui);
  // A dangling link, for example, is not the end of the pieces.
  const fs::path next = PathFromText(folder_ + NameOf(Count() + 1));
  return !NameIsTaken(next) || Missing(Count() + 1, ui);
}

bool Pieces::Missing(std::size_t number, Ui& ui) const {
  const fs::path path = PathFromText(folder_ + NameOf(number));
  if (NameIsTaken(path)) (void)StateOf(path);
  ui.Message(NameOf(number) + " Is Missing.", Icon::Critical);
  return false;
}

}  // namespace slyver
