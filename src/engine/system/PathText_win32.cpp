#include "engine/system/PathText.h"
#include "engine/system/Wide_win32.h"

namespace slyver {

std::string PathText(const std::filesystem::path& path) {
  return Utf8Of(path.native());
}

std::filesystem::path PathFromText(std::string_view text) {
  return WideOf(text);
}

}  // namespace slyver
