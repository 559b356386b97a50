#pragma once

#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/ScriptedUi.h"
#include "support/TempFolder.h"

namespace slyver {

/// All that lies in a folder: the files with their bytes, and "/" for the folders.
using Files = std::map<std::string, std::string>;

inline Files FilesIn(const std::filesystem::path& folder) {
  Files files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
    files[PathText(entry.path().lexically_relative(folder))] =
        entry.is_regular_file() ? ReadFile(entry.path()) : "/";
  return files;
}

/// The pairs of a text such as "a=1 b=2 c=".
inline std::vector<std::pair<std::string, std::string>> PairsIn(const std::string& text) {
  std::vector<std::pair<std::string, std::string>> pairs;
  std::istringstream words(text);
  for (std::string word; words >> word;)
    pairs.emplace_back(word.substr(0, word.find('=')), word.substr(word.find('=') + 1));
  return pairs;
}

/// Makes files, each given as its name and its bytes, and their folders.
inline void MakeFiles(const std::filesystem::path& folder, const std::string& text) {
  for (const auto& [name, bytes] : PairsIn(text)) {
    std::filesystem::create_directories((folder / PathFromText(name)).parent_path());
    WriteFile(folder / PathFromText(name), bytes);
  }
}

}  // namespace slyver
