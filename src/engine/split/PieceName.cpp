#include "engine/split/PieceName.h"

#include "engine/base/Ascii.h"

namespace slyver {

namespace {

constexpr std::string_view extension = ".sly";

}  // namespace

std::string PieceNameOf(std::string_view name, int number) {
  return std::string(name) + "." + std::to_string(number) + std::string(extension);
}

std::optional<std::string> OrigNameOf(std::string_view pieceName) {
  if (!EndsIgnoringCase(pieceName, extension)) return std::nullopt;
  const std::string_view numbered = pieceName.substr(0, pieceName.size() - extension.size());
  for (std::size_t digits = 1; digits <= 6 && digits + 1 < numbered.size(); ++digits) {
    const std::size_t dot = numbered.size() - digits - 1;
    if (numbered[dot] == '.') return std::string(numbered.substr(0, dot));
  }
  return std::nullopt;
}

int PieceNumberOf(std::string_view fileName, std::string_view origName) {
  return PieceNames({}, origName).NumberOf(fileName);
}

TargetNames PieceNames(const std::filesystem::path& folder, std::string_view origName) {
  return {folder, std::string(origName) + '.', std::string(extension), 1};
}

}  // namespace slyver
