#include "engine/system/INIReadWri.h"

#include <exception>
#include <optional>

#include "engine/system/Ascii.h"
#include "engine/system/Disk.h"
#include "engine/system/FileError.h"
#include "engine/system/Files.h"

namespace slyver {

namespace {

constexpr std::size_t readLimit = 49;
constexpr std::string_view blanks = " \t\r\n\v\f";

std::string_view TrimmedRight(std::string_view text) {
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(blanks);
  return first == std::string_view::npos ? std::string_view{} : TrimmedRight(text.substr(first));
}

std::string_view UpToZero(std::string_view text) {
  return text.substr(0, text.find('\0'));
}

/// The text of the first line, its line end included.
std::string_view FirstLine(std::string_view text) {
  const std::size_t end = text.find('\n');
  return end == std::string_view::npos ? text : text.substr(0, end + 1);
}

/// The section that a line opens, if it opens one. The name ends at the first bracket, or with the
/// line.
std::optional<std::string_view> SectionOpenedBy(std::string_view line) {
  line = Trimmed(line);
  if (line.empty() || line.front() != '[') return std::nullopt;
  return Trimmed(line.substr(1, line.find(']') - 1));
}

std::string_view WithoutQuotes(std::string_view value) {
  const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                      (value.front() == '"' || value.front() == '\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

/// Where a value stands, or would stand, in an ini text; offsets in bytes.
struct Place {
  bool sectionFound = false;
  std::size_t sectionEnd = 0;  ///< Behind the section's last line that is not blank.
  std::optional<std::string_view> line;
  std::string_view key;  ///< As the line spells it.
  std::string_view value;
};

Place Find(std::string_view text, std::string_view section, std::string_view key) {
  Place place;
  bool inside = false;
  for (std::size_t at = 0; at < text.size();) {
    const std::string_view line = FirstLine(text.substr(at));
    at += line.size();
    if (const auto opened = SectionOpenedBy(line)) {
      if (inside) return place;
      inside = place.sectionFound = SameIgnoringCase(*opened, section);
    }
    if (!inside || Trimmed(line).empty()) continue;
    place.sectionEnd = at;
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || Trimmed(line).front() == ';') continue;
    place.key = Trimmed(line.substr(0, equals));
    if (!SameIgnoringCase(place.key, key)) continue;
    place.line = line;
    place.value = WithoutQuotes(Trimmed(line.substr(equals + 1)));
    return place;
  }
  return place;
}

/// `text`, ending in a line end unless it is empty.
std::string WithLineEnd(std::string_view text) {
  std::string result(text);
  if (!result.empty() && result.back() != '\n') result += "\r\n";
  return result;
}

}  // namespace

std::string IniValueIn(std::string_view text, std::string_view section, std::string_view key,
                       std::string_view defaultValue) {
  const Place place = Find(UpToZero(text), Trimmed(section), Trimmed(key));
  return std::string(place.line ? place.value : TrimmedRight(defaultValue));
}

std::string WithIniValue(std::string_view text, std::string_view section, std::string_view key,
                         std::string_view value) {
  text = UpToZero(text);
  section = Trimmed(section);
  key = Trimmed(key);
  const Place place = Find(text, section, key);
  const std::string line =
      std::string(place.line ? place.key : key) + "=" + std::string(UpToZero(value)) + "\r\n";
  if (!place.sectionFound) return WithLineEnd(text) + "[" + std::string(section) + "]\r\n" + line;
  if (!place.line)
    return WithLineEnd(text.substr(0, place.sectionEnd)) + line +
           std::string(text.substr(place.sectionEnd));
  std::string result(text);
  return result.replace(static_cast<std::size_t>(place.line->data() - text.data()),
                        place.line->size(), line);
}

std::string WithoutIniValue(std::string_view text, std::string_view section, std::string_view key) {
  text = UpToZero(text);
  std::string result(text);
  const Place place = Find(text, Trimmed(section), Trimmed(key));
  if (place.line)
    result.erase(static_cast<std::size_t>(place.line->data() - text.data()), place.line->size());
  return result;
}

bool WriteIniValue(const std::filesystem::path& file, std::string_view section,
                   std::string_view key, std::string_view value) {
  try {
    const std::string text = NameIsTaken(file) ? ReadSmallFile(file) : std::string{};
    WriteSmallFile(file, WithIniValue(text, section, key, value), Existing::ReplaceScratch);
  } catch (const FileError&) {
    return true;  // As with the profile call, whose result nobody looks at.
  } catch (const std::exception&) {
    return false;
  }
  return true;
}

std::string ReadIniValue(const std::filesystem::path& file, std::string_view section,
                         std::string_view key, std::string_view defaultValue) {
  std::string text;
  try {
    text = ReadSmallFile(file);
  } catch (const FileError&) {
    text.clear();
  }
  return ReadIniValueIn(text, section, key, defaultValue);
}

std::string ReadIniValueIn(std::string_view text, std::string_view section, std::string_view key,
                           std::string_view defaultValue) {
  return IniValueIn(text, section, key, defaultValue).substr(0, readLimit);
}

}  // namespace slyver
