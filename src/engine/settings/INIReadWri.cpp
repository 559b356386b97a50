#include "engine/settings/INIReadWri.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "engine/base/Ascii.h"
#include "engine/base/FileError.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"

namespace slyver {

namespace {

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

std::string_view WithoutQuotes(std::string_view value) {
  const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                      (value.front() == '"' || value.front() == '\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace

IniText IniText::OfFile(const std::filesystem::path& file) {
  return IniText(NameIsTaken(file) ? ReadSmallFile(file) : std::string{});
}

IniText::IniText(std::string_view text) {
  text = UpToZero(text);
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    const std::size_t size = std::min(line.size() + 1, text.size());
    lines_.push_back(Parsed(text.substr(0, size)));
    text.remove_prefix(size);
  }
}

IniText::Line IniText::Parsed(std::string_view text) {
  Line line{std::string(text), false, {}, {}};
  const std::string_view content = Trimmed(text);
  const std::size_t equals = content.find('=');
  if (content.starts_with('[')) {
    line.opensSection = true;
    line.name = Trimmed(content.substr(1, content.find(']') - 1));
  } else if (!content.starts_with(';') && equals != std::string_view::npos) {
    line.name = TrimmedRight(content.substr(0, equals));
    line.value = WithoutQuotes(Trimmed(content.substr(equals + 1)));
  }
  return line;
}

IniText::Place IniText::Find(std::string_view section, std::string_view key) const {
  Place place;
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    const Line& line = lines_[i];
    if (line.opensSection) {
      if (place.sectionFound) return place;
      place.sectionFound = SameIgnoringCase(line.name, Trimmed(section));
    }
    if (!place.sectionFound) continue;
    if (!Trimmed(line.text).empty()) place.sectionEnd = i + 1;
    if (!line.value || !SameIgnoringCase(line.name, Trimmed(key))) continue;
    place.line = i;
    return place;
  }
  return place;
}

std::string IniText::Value(std::string_view section, std::string_view key,
                           std::string_view defaultValue) const {
  const Place place = Find(section, key);
  return place.line ? *lines_[*place.line].value : std::string(TrimmedRight(defaultValue));
}

void IniText::Set(std::string_view section, std::string_view key, std::string_view value) {
  const Place place = Find(section, key);
  const std::string name(place.line ? std::string_view(lines_[*place.line].name) : Trimmed(key));
  Line line = Parsed(name + "=" + std::string(UpToZero(value)) + "\r\n");
  if (place.line) {
    lines_[*place.line] = std::move(line);
  } else if (place.sectionFound) {
    EndLine(place.sectionEnd);
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(place.sectionEnd), std::move(line));
  } else {
    EndLine(lines_.size());
    lines_.push_back(Parsed("[" + std::string(Trimmed(section)) + "]\r\n"));
    lines_.push_back(std::move(line));
  }
}

/// Adds a missing line end to the line before line number `before`.
void IniText::EndLine(std::size_t before) {
  if (before > 0 && !lines_[before - 1].text.ends_with('\n')) lines_[before - 1].text += "\r\n";
}

bool IniText::Remove(std::string_view section, std::string_view key) {
  const Place place = Find(section, key);
  if (place.line) lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(*place.line));
  return place.line.has_value();
}

std::string IniText::Text() const {
  std::string text;
  for (const Line& line : lines_) text += line.text;
  return text;
}

bool WriteIniValue(const std::filesystem::path& file, std::string_view section,
                   std::string_view key, std::string_view value) {
  try {
    IniText ini = IniText::OfFile(file);
    ini.Set(section, key, value);
    WriteSmallFile(file, ini.Text(), Existing::ReplaceScratch);
  } catch (const FileError&) {
    return true;  // As with the profile call, whose result is ignored.
  } catch (const std::exception&) {
    return false;
  }
  return true;
}

std::string ReadIniValue(const std::filesystem::path& file, std::string_view section,
                         std::string_view key, std::string_view defaultValue) {
  IniText ini;
  try {
    ini = IniText::OfFile(file);
  } catch (const FileError&) {
    ini = IniText();
  }
  return ini.Value(section, key, defaultValue).substr(0, iniReadLimit);
}

}  // namespace slyver
