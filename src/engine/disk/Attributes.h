#pragma once

#include <filesystem>

namespace slyver {

/// Clears the attributes read-only, hidden and system of a file, which keep some programs from
/// reading it. A failure goes unnoticed: the reading will show it. Where files have no such
/// attributes nothing is changed.
void ClearAttributes(const std::filesystem::path& path);

}  // namespace slyver
