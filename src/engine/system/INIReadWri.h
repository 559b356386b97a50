#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace slyver {

/// Ini files as the Windows profile calls read and write them. All text is 8-bit text.
///
/// A line "[section]" opens a section (the "]" may be missing, and what is behind it does not
/// count), "key=value" gives a value, ";" begins a comment line.
/// Sections and keys are found whatever the case of their letters; of two of the same name the
/// first counts. Blanks around a key or a value are not part of it, nor is one pair of quotation
/// marks or apostrophes around a value. A zero byte ends the file.

/// Writes a value as "key=value", with CR LF line ends: over the key's line where there is one,
/// whose spelling of the key stays, else behind the section's last line, else in a new section at
/// the end of the file, which is made if need be. `file` is a full path. Returns true even when the
/// file cannot be written (then it stays as it was), and false when another error has come up;
/// whoever needs to know reads the value back.
bool WriteIniValue(const std::filesystem::path& file, std::string_view section,
                   std::string_view key, std::string_view value);

/// Reads a value through a buffer of 50 characters: at most its first 49 come back. Returns
/// `defaultValue`, cut alike, when the file, the section or the key is missing or the file cannot
/// be read.
std::string ReadIniValue(const std::filesystem::path& file, std::string_view section,
                         std::string_view key, std::string_view defaultValue);

/// Reads a value of the ini text `text` as ReadIniValue does.
std::string ReadIniValueIn(std::string_view text, std::string_view section, std::string_view key,
                           std::string_view defaultValue);

/// The value in the ini text `text`, whole. Returns `defaultValue` when it is missing.
std::string IniValueIn(std::string_view text, std::string_view section, std::string_view key,
                       std::string_view defaultValue);

/// The ini text `text` with the value set, as WriteIniValue sets it.
std::string WithIniValue(std::string_view text, std::string_view section, std::string_view key,
                         std::string_view value);

/// The ini text `text` without the line that gives the value.
std::string WithoutIniValue(std::string_view text, std::string_view section, std::string_view key);

}  // namespace slyver
