#include <array>
#include <system_error>

#include "desktop/app/HelpPage.h"

namespace slyver {

std::filesystem::path HelpPage(const std::filesystem::path& programFolder) {
  const std::array<std::filesystem::path, 2> places = {
      programFolder / "help", (programFolder / SLYVER_INSTALLED_HELP).lexically_normal()};
  for (const std::filesystem::path& place : places) {
    std::filesystem::path page = place / "index.html";
    std::error_code unreadable;
    if (std::filesystem::is_regular_file(page, unreadable)) return page;
  }
  return {};
}

}  // namespace slyver
