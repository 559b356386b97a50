#include "engine/split/Pieces.h"

#include <utility>

#include "engine/split/FindFiles.h"
#include "engine/split/PieceName.h"
#include "engine/system/Disk.h"
#include "engine/system/Files.h"
#include "engine/system/PathText.h"

namespace slyver {

namespace fs = std::filesystem;

Pieces::Pieces(const fs::path& folder, std::string origName, Ui& ui)
    : folder_(PathText(folder / "")), origName_(std::move(origName)) {
  (void)FindFilesAPI(folder, "*.sly", ui,
                     [this](const fs::path& below, const std::string& name) { Take(below, name); });
}

void Pieces::Take(const fs::path& below, std::string_view name) {
  const auto number = static_cast<std::size_t>(PieceNumberOf(name, origName_));
  if (number == 0) return;
  if (number > found_.size()) found_.resize(number);
  Piece& piece = found_[number - 1];
  if (piece.count > 0 && below.empty() == piece.below.empty()) ++piece.count;
  if (piece.count > 0 && (!below.empty() || piece.below.empty())) return;
  piece = {1, below.empty() ? "" : PathText(below / ""), std::string(name.substr(name.rfind('.')))};
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

bool Pieces::AreSingle(Ui& ui) const {
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
  // A link that leads nowhere, say, would be taken for the end of the pieces.
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
