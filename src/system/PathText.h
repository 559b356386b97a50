#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace slyver {

/// A path as UTF-8 text, to be shown to the user or compared with other text. Where the system's
/// file names are bytes, they come out as they are.
inline std::string PathText(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

/// The path that PathText() turned into `text`.
inline std::filesystem::path PathFromText(std::string_view text) {
  return std::u8string(text.begin(), text.end());
}

}  // namespace slyver
