#include <system_error>

#include "desktop/app/HelpPage.h"

namespace slyver {

std::filesystem::path HelpPage(const std::filesystem::path& programFolder) {
  std::filesystem::path book = programFolder / "Orm Valis Help.chm";
  std::error_code unreadable;
  return std::filesystem::is_regular_file(book, unreadable) ? book : std::filesystem::path{};
}

}  // namespace slyver
