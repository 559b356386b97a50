#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/base/FileError.h"
#include "engine/base/PathText.h"
#include "engine/settings/Registry.h"
#include "support/Platform.h"

namespace slyver {

/// A test with a folder of its own, removed at the end, and settings and private folders in it.
class TempFolderTest : public testing::Test {
 protected:
  void SetUp() override {
    root_ = std::filesystem::temp_directory_path() /
            ("slyver-test-" + std::to_string(std::random_device{}()));
    ASSERT_TRUE(std::filesystem::create_directory(root_)) << root_;
    folder = root_ / "work";
    std::filesystem::create_directory(folder);
    std::filesystem::create_directory(root_ / "run");
    places_ = KeepPlacesIn(root_);
  }
  void TearDown() override {
    places_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }

  /// The names of all that lies in `where`.
  static std::set<std::string> Names(const std::filesystem::path& where) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(where))
      names.insert(PathText(entry.path().filename()));
    return names;
  }
  std::set<std::string> Names() const { return Names(folder); }

  std::filesystem::path folder;

 private:
  std::filesystem::path root_;
  std::shared_ptr<void> places_;
};

inline void WriteFile(const std::filesystem::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary).write(bytes.data(), std::ssize(bytes));
}

inline std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

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

/// Makes or looks for the value "filepath", which outside components leave and most exits delete.
inline constexpr const char* filePathKey = R"(Software\Orm Valis\FC)";
inline void LeaveFilePathValue() {
  SaveRegString(RegRoot::LocalMachine, filePathKey, "filepath", "left");
}
inline bool FilePathValueIsLeft() {
  return GetRegString(RegRoot::LocalMachine, filePathKey, "filepath") == "left";
}

/// What the error says that `work` throws.
template <typename Work>
std::string ErrorOf(const Work& work) {
  try {
    work();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "no error";
}

/// `length` bytes without a period that a piece size could hide, the same on every call.
inline std::string SomeBytes(std::size_t length) {
  std::string bytes(length, '\0');
  std::uint64_t state = 0x9E3779B97F4A7C15U;
  for (char& byte : bytes) {
    state ^= state << 13U;
    state ^= state >> 7U;
    state ^= state << 17U;
    byte = static_cast<char>(state);
  }
  return bytes;
}

}  // namespace slyver
