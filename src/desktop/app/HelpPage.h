#pragma once

#include <filesystem>

namespace slyver {

/// Returns the first page of the help, next to the program or in the system's data folder. Empty if
/// missing.
std::filesystem::path HelpPage(const std::filesystem::path& programFolder);

}  // namespace slyver
