#include "engine/base/PathText.h"

namespace slyver {

std::string PathText(const std::filesystem::path& path) {
  return path.native();
}

std::filesystem::path PathFromText(std::string_view text) {
  return text;
}

std::string SystemFileName(std::string name) {
  return name;
}

}  // namespace slyver
