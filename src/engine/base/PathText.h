#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace slyver {

/// Returns a path as UTF-8 text, to show or compare; on POSIX its bytes unchanged.
std::string PathText(const std::filesystem::path& path);

/// Returns PathText() of a folder, without a separator at its end.
inline std::string FolderText(const std::filesystem::path& folder) {
  return PathText(folder.has_filename() ? folder : folder.parent_path());
}

/// Returns the path that PathText() turned into `text`.
std::filesystem::path PathFromText(std::string_view text);

/// Returns a file's name (UTF-8) with "_" for each character that this system does not allow.
std::string SystemFileName(std::string name);

}  // namespace slyver
