#include "engine/split/PieceName.h"

#include "engine/base/Ascii.h"
#include "engine/base/Numbers.h"

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
  if (!EndsIgnoringCase(fileName, extension)) return 0;
  std::string_view number = fileName.substr(0, fileName.size() - extension.size());
  if (!number.starts_with(origName)) return 0;
  number.remove_prefix(origName.size());
  if (number.size() < 2 || number.size() > 6 || number[0] != '.' || number[1] == '0') return 0;
  return static_cast<int>(NumberIn<unsigned>(number.substr(1)).value_or(0));
}

}  // namespace slyver
