#include "engine/base/PathText.h"
#include "engine/base/Wide_win32.h"

namespace slyver {

std::string PathText(const std::filesystem::path& path) {
  return Utf8Of(path.native());
}

std::filesystem::path PathFromText(std::string_view text) {
  return WideOf(text);
}

std::string SystemFileName(std::string name) {
  for (std::size_t at = 0; (at = name.find_first_of(R"(<>:"|?*)", at)) != std::string::npos;)
    name[at] = '_';
  // Windows cuts off blanks and dots at the end.
  for (std::size_t end = name.size(); end > 0 && (name[end - 1] == ' ' || name[end - 1] == '.');)
    name[--end] = '_';
  return name;
}

}  // namespace slyver
