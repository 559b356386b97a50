#include "engine/hidden/Carrier.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

#include "engine/hidden/Crypt.h"
#include "engine/system/Ascii.h"
#include "engine/system/FileError.h"
#include "engine/system/Files.h"
#include "engine/system/INIReadWri.h"
#include "engine/system/SourceFile.h"
#include "engine/system/Text8.h"

namespace slyver {

namespace {

/// A length: decimal digits only, 1 to 64 bits.
std::optional<std::uint64_t> PositiveDecimal(std::string_view text) {
  std::uint64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc{} || stop != end || value == 0) return std::nullopt;
  return value;
}

/// Whether Windows takes the name, whatever its extension, for a device.
bool IsDeviceName(std::string_view name) {
  std::string stem(name.substr(0, name.find('.')));
  std::transform(stem.begin(), stem.end(), stem.begin(), LowerAscii);
  stem.erase(stem.find_last_not_of(' ') + 1);
  static constexpr std::array<std::string_view, 4> devices = {"con", "prn", "aux", "nul"};
  if (std::find(devices.begin(), devices.end(), stem) != devices.end()) return true;
  return stem.size() == 4 && (stem.starts_with("com") || stem.starts_with("lpt")) &&
         stem[3] >= '1' && stem[3] <= '9';
}

std::string WithRecord(std::string_view text, std::string_view section, const Record& record,
                       std::string_view password) {
  return WithIniValue(WithIniValue(text, section, nameKey, EncryptText(record.name, password)),
                      section, lengthKey, EncryptText(record.length, password));
}

}  // namespace

std::string RecordSection(int index) {
  return std::to_string(index) + "dfg%";
}

ValueReader DirectoryFile(const std::filesystem::path& file) {
  return DirectoryText(ReadSmallFile(file));
}

ValueReader DirectoryText(std::string text) {
  return [text = std::move(text)](std::string_view section, std::string_view key) {
    return ReadIniValueIn(text, section, key, "");
  };
}

std::string ReadDirectoryText(const std::filesystem::path& carrier) {
  const SourceFile file(carrier);
  if (file.Length() <= directoryLength) throw FileError(carrier, "The file is too short");
  std::string text(directoryLength, '\0');
  file.Read(file.Length() - directoryLength, text);
  return text;
}

int CountRecords(const ValueReader& directory) {
  int count = 0;
  while (!directory(RecordSection(count), lengthKey).empty()) ++count;
  return count;
}

bool IsPasswordOf(const ValueReader& directory, std::string_view password) {
  return DecryptText(directory(mainSection, checkKey), password) == password;
}

std::vector<Record> ReadRecords(const ValueReader& directory, std::string_view password) {
  std::vector<Record> records;
  while (true) {
    const std::string section = RecordSection(static_cast<int>(records.size()));
    const std::string name = directory(section, nameKey);
    if (name.empty()) return records;
    records.push_back(
        {DecryptText(name, password), DecryptText(directory(section, lengthKey), password)});
  }
}

std::string ReadMainLength(const ValueReader& directory, std::string_view password) {
  return DecryptText(directory(mainSection, lengthKey), password);
}

std::optional<std::uint64_t> MainLengthIn(std::string_view mainLength,
                                          std::uint64_t carrierLength) {
  const std::optional<std::uint64_t> length = PositiveDecimal(mainLength);
  if (!length || carrierLength < directoryLength || *length > carrierLength - directoryLength)
    return std::nullopt;
  return length;
}

std::optional<std::vector<HiddenFile>> LayOut(std::string_view mainLength,
                                              const std::vector<Record>& records,
                                              std::uint64_t carrierLength) {
  const std::optional<std::uint64_t> main = MainLengthIn(mainLength, carrierLength);
  if (!main) return std::nullopt;
  std::uint64_t offset = *main;
  std::vector<HiddenFile> files;
  for (const Record& record : records) {
    const std::optional<std::uint64_t> length = PositiveDecimal(record.length);
    if (!length || *length > carrierLength - directoryLength - offset) return std::nullopt;
    if (!IsBareFileName(record.name)) return std::nullopt;
    files.push_back({FromText8(record.name), offset, *length});
    offset += *length;
  }
  return files;
}

bool PartsFillCarrier(const ValueReader& directory, std::string_view password, int records,
                      std::uint64_t carrierLength) {
  const auto files =
      LayOut(ReadMainLength(directory, password), ReadRecords(directory, password), carrierLength);
  return files && !files->empty() && files->size() == static_cast<std::size_t>(records) &&
         files->back().offset + files->back().length == carrierLength - directoryLength;
}

bool IsBareFileName(std::string_view name) {
  // The codes from \x81 on are those that the code page leaves to control characters; a terminal
  // may obey them.
  static constexpr std::string_view refused = "/\\\x7F\x81\x8D\x8F\x90\x9D";
  const bool badCharacter = std::any_of(name.begin(), name.end(), [](char c) {
    return (c >= '\0' && c < ' ') || refused.find(c) != std::string_view::npos;
  });
  const bool drive = name.size() >= 2 && name[1] == ':';
  return !name.empty() && !badCharacter && !drive && name != "." && name != ".." &&
         !IsDeviceName(name);
}

std::string FirstDirectory(const Record& main, const Record& hidden, std::string_view password) {
  const std::string text = WithIniValue(WithRecord({}, mainSection, main, password), mainSection,
                                        checkKey, EncryptText(password, password));
  return WithRecord(text, RecordSection(0), hidden, password);
}

std::string AddedDirectory(const ValueReader& old, int index, const Record& hidden,
                           std::string_view password) {
  std::string text;
  const auto copy = [&](std::string_view section, std::string_view key) {
    text = WithIniValue(text, section, key, old(section, key));
  };
  for (const std::string_view key : {nameKey, lengthKey, checkKey}) copy(mainSection, key);
  for (int i = 0; i < index; ++i)
    for (const std::string_view key : {nameKey, lengthKey}) copy(RecordSection(i), key);
  return WithRecord(text, RecordSection(index), hidden, password);
}

std::string Padded(std::string directory) {
  if (directory.empty() || directory.size() >= directoryLength) return directory;
  directory.back() = '\0';
  directory.resize(directoryLength, '\0');
  return directory;
}

}  // namespace slyver
