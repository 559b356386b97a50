#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace slyver {

/// A path as UTF-8 text, to be shown to the user or compared with other text. Where the system's
/// file names are bytes, they come out as they are.
std::string PathText(const std::filesystem::path& path);

/// The same of a folder's path, without a separator at its end.
inline std::string FolderText(const std::filesystem::path& folder) {
  return PathText(folder.has_filename() ? folder : folder.parent_path());
}

/// The path that PathText() turned into `text`.
std::filesystem::path PathFromText(std::string_view text);

/// A file's name (UTF-8) as this system takes it, with "_" for each character that it does not take
/// there.
std::string SystemFileName(std::string name);

}  // namespace slyver
