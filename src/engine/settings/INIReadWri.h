#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace slyver {

/// The profile calls read a value through a buffer of 50 characters: no more than these come back.
inline constexpr std::size_t iniReadLimit = 49;

/// An ini text as the Windows profile calls read and write it. All text is 8-bit text.
///
/// A line "[section]" opens a section (the "]" may be missing, and what is behind it does not
/// count), "key=value" gives a value, ";" begins a comment line. Sections and keys are found
/// whatever the case of their letters; of two of the same name the first counts. Blanks around a
/// key or a value are not part of it, nor is one pair of quotation marks or apostrophes around a
/// value. A zero byte ends the text.
class IniText {
 public:
  explicit IniText(std::string_view text = {});

  /// A value, whole; `defaultValue` when it is missing.
  std::string Value(std::string_view section, std::string_view key,
                    std::string_view defaultValue = {}) const;

  /// Sets a value as "key=value", with CR LF line ends: over the key's line where there is one,
  /// whose spelling of the key stays, else behind the section's last line, else in a new section at
  /// the end.
  void Set(std::string_view section, std::string_view key, std::string_view value);

  /// Takes the line of a value out; false when there is none.
  bool Remove(std::string_view section, std::string_view key);

  std::string Text() const;

 private:
  struct Line {
    std::string text;  ///< With its line end, where it has one.
    bool opensSection = false;
    std::string name;                  ///< Of the section that it opens, or of its key.
    std::optional<std::string> value;  ///< Nothing in a line that gives none.
  };
  struct Place {
    bool sectionFound = false;
    std::size_t sectionEnd = 0;       ///< Behind the section's last line that is not blank.
    std::optional<std::size_t> line;  ///< That gives the value.
  };

  static Line Parsed(std::string_view text);
  Place Find(std::string_view section, std::string_view key) const;
  void EndLine(std::size_t before);

  std::vector<Line> lines_;
};

/// Writes a value into the ini file `file`, a full path, which is made if need be. Returns true
/// even when the file cannot be written (then it stays as it was), and false when another error has
/// come up; whoever needs to know reads the value back.
bool WriteIniValue(const std::filesystem::path& file, std::string_view section,
                   std::string_view key, std::string_view value);

/// The first 49 characters of a value of the ini file `file`, or of `defaultValue` when the file,
/// the section or the key is missing or the file cannot be read.
std::string ReadIniValue(const std::filesystem::path& file, std::string_view section,
                         std::string_view key, std::string_view defaultValue);

}  // namespace slyver
