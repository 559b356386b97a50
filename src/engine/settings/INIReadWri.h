#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace slyver {

/// The characters of a value that are read: the profile calls read through a buffer of 50.
inline constexpr std::size_t iniReadLimit = 49;

/// An ini text as the Windows profile calls read and write it. All text is 8-bit text.
///
/// "[section]" opens a section (the "]" may be missing; text after it is ignored). "key=value" sets
/// a value. ";" begins a comment line. Names of sections and keys ignore case; the first of two
/// counts. Blanks around a key or a value are ignored, and one pair of quotation marks or
/// apostrophes around a value. A zero byte ends the text.
class IniText {
 public:
  explicit IniText(std::string_view text = {});

  /// Reads an ini file; empty if missing. Throws FileError.
  static IniText OfFile(const std::filesystem::path& file);

  /// Returns a whole value; `defaultValue` if missing.
  std::string Value(std::string_view section, std::string_view key,
                    std::string_view defaultValue = {}) const;

  /// Sets a value as "key=value" with CR LF. Replaces the key's line and keeps its spelling of the
  /// key; otherwise adds a line at the end of the section, or a new section at the end.
  void Set(std::string_view section, std::string_view key, std::string_view value);

  /// Removes the line of a value; false if missing.
  bool Remove(std::string_view section, std::string_view key);

  std::string Text() const;

 private:
  struct Line {
    std::string text;  ///< With its line end, if any.
    bool opensSection = false;
    std::string name;                  ///< The section's or the key's.
    std::optional<std::string> value;  ///< `nullopt` if the line has none.
  };
  struct Place {
    bool sectionFound = false;
    std::size_t sectionEnd = 0;       ///< After the section's last line that is not blank.
    std::optional<std::size_t> line;  ///< The value's.
  };

  static Line Parsed(std::string_view text);
  Place Find(std::string_view section, std::string_view key) const;
  void EndLine(std::size_t before);

  std::vector<Line> lines_;
};

/// Writes a value to the ini file `file`, a full path; creates the file if missing. Returns true
/// even if the file cannot be written, and then it is unchanged; false on any other error. Callers
/// that need to know read the value back.
bool WriteIniValue(const std::filesystem::path& file, std::string_view section,
                   std::string_view key, std::string_view value);

/// Returns the first 49 characters of a value of the ini file `file`, or of `defaultValue` if the
/// file, the section or the key is missing or the file cannot be read.
std::string ReadIniValue(const std::filesystem::path& file, std::string_view section,
                         std::string_view key, std::string_view defaultValue);

}  // namespace slyver
