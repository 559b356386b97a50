#pragma once

#include <filesystem>

namespace slyver {

/// Clears a file's attributes read-only, hidden and system on Windows. Ignores errors: reading the
/// file will report them.
void ClearAttributes(const std::filesystem::path& path);

}  // namespace slyver
