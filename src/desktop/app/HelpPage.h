#pragma once

#include <filesystem>

namespace slyver {

/// The first page of the help, which lies beside the program or where the system keeps such
/// files. Empty when it is not there.
std::filesystem::path HelpPage(const std::filesystem::path& programFolder);

}  // namespace slyver
