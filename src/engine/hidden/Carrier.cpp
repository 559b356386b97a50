#include "engine/hidden/Carrier.h"

#include <algorithm>

#include "engine/base/FileError.h"
#include "engine/base/Numbers.h"
#include "engine/base/PathText.h"
#include "engine/base/Text8.h"
#include "engine/disk/Files.h"
#include "engine/disk/SourceFile.h"
#include "engine/hidden/Crypt.h"

namespace slyver {

namespace {

/// Returns the decimal number above 0 that is all of `text`, or `nullopt`.
std::optional<std::uint64_t> PositiveDecimal(std::string_view text) {
  const auto value = NumberIn<std::uint64_t>(text);
  return value == 0U ? std::nullopt : value;
}

/// True if `c` is in no bare file name. The codes from \x81 on are control characters, which a
/// terminal may obey.
bool IsRefused(char c) {
  static constexpr std::string_view refused = "/\\\x7F\x81\x8D\x8F\x90\x9D";
  return (c >= '\0' && c < ' ') || refused.find(c) != std::string_view::npos;
}

bool NamesADrive(std::string_view name) {
  return name.size() >= 2 && name[1] == ':';
}

void SetRecord(IniText& ini, std::string_view section, const Record& record,
               std::string_view password) {
  ini.Set(section, nameKey, EncryptText(record.name, password));
  ini.Set(section, lengthKey, EncryptText(record.length, password));
}

}  // namespace

std::string RecordSection(int index) {
  return std::to_string(index) + "dfg%";
}

Directory Directory::InFile(const std::filesystem::path& file) {
  return Directory(ReadSmallFile(file));
}

Directory Directory::OfCarrier(const std::filesystem::path& carrier) {
  const SourceFile file(carrier);
  if (file.Length() <= directoryLength) throw FileError(carrier, "The file is too short");
  std::string text(directoryLength, '\0');
  file.Read(file.Length() - directoryLength, text);
  return Directory(text);
}

std::string Directory::Value(std::string_view section, std::string_view key) const {
  return ini_.Value(section, key).substr(0, iniReadLimit);
}

int Directory::Count(std::string_view key) const {
  int count = 0;
  while (!Value(RecordSection(count), key).empty()) ++count;
  return count;
}

bool Directory::IsComplete(int index) const {
  const std::string section = RecordSection(index);
  return !Value(mainSection, nameKey).empty() && !Value(mainSection, lengthKey).empty() &&
         !Value(mainSection, checkKey).empty() && !Value(section, nameKey).empty() &&
         !Value(section, lengthKey).empty();
}

bool Directory::IsPassword(std::string_view password) const {
  return DecryptText(Value(mainSection, checkKey), password) == password;
}

std::vector<Record> Directory::Records(std::string_view password) const {
  std::vector<Record> records;
  const int count = Count(nameKey);
  for (int i = 0; i < count; ++i) {
    const std::string section = RecordSection(i);
    records.push_back({DecryptText(Value(section, nameKey), password),
                       DecryptText(Value(section, lengthKey), password)});
  }
  return records;
}

std::optional<std::uint64_t> Directory::MainLength(std::string_view password,
                                                   std::uint64_t carrierLength) const {
  const std::optional<std::uint64_t> length =
      PositiveDecimal(DecryptText(Value(mainSection, lengthKey), password));
  if (!length || carrierLength < directoryLength || *length > carrierLength - directoryLength)
    return std::nullopt;
  return length;
}

std::optional<std::vector<HiddenFile>> Directory::Files(std::string_view password,
                                                        std::uint64_t carrierLength) const {
  const std::optional<std::uint64_t> main = MainLength(password, carrierLength);
  if (!main) return std::nullopt;
  std::uint64_t offset = *main;
  std::vector<HiddenFile> files;
  for (const Record& record : Records(password)) {
    const std::optional<std::uint64_t> length = PositiveDecimal(record.length);
    if (!length || *length > carrierLength - directoryLength - offset) return std::nullopt;
    if (!IsBareFileName(record.name)) return std::nullopt;
    files.push_back({SystemFileName(FromText8(record.name)), offset, *length});
    offset += *length;
  }
  return files;
}

bool Directory::FillsCarrier(std::string_view password, int records,
                             std::uint64_t carrierLength) const {
  const auto files = Files(password, carrierLength);
  return files && !files->empty() && files->size() == static_cast<std::size_t>(records) &&
         files->back().offset + files->back().length == carrierLength - directoryLength;
}

bool IsBareFileName(std::string_view name) {
  return !name.empty() && std::none_of(name.begin(), name.end(), IsRefused) && !NamesADrive(name) &&
         name != "." && name != "..";
}

bool ListIsOpen(const std::filesystem::path& carrier) {
  try {
    const Directory directory = Directory::OfCarrier(carrier);
    return directory.Count(nameKey) > 0 && directory.IsPassword(openPassword);
  } catch (const FileError&) {
    return false;
  }
}

std::string StoredName(std::string_view name, std::size_t most) {
  std::string stored = ToText8Lossy(name);
  std::replace_if(stored.begin(), stored.end(), IsRefused, '_');
  if (NamesADrive(stored)) stored[1] = '_';
  if (stored.size() <= most) return stored;
  const std::size_t dot = stored.rfind('.');
  const std::string extension = dot == std::string::npos ? std::string{} : stored.substr(dot);
  const bool keeps = extension.size() < most;
  return stored.substr(0, most - (keeps ? extension.size() : 0)) +
         (keeps ? extension : std::string{});
}

std::string FirstDirectory(const Record& main, const Record& hidden, std::string_view password) {
  IniText ini;
  SetRecord(ini, mainSection, main, password);
  ini.Set(mainSection, checkKey, EncryptText(password, password));
  SetRecord(ini, RecordSection(0), hidden, password);
  return ini.Text();
}

std::string AddedDirectory(const Directory& old, int index, const Record& hidden,
                           std::string_view password) {
  IniText ini;
  const auto copy = [&](std::string_view section, std::string_view key) {
    ini.Set(section, key, old.Value(section, key));
  };
  for (const std::string_view key : {nameKey, lengthKey, checkKey}) copy(mainSection, key);
  for (int i = 0; i < index; ++i)
    for (const std::string_view key : {nameKey, lengthKey}) copy(RecordSection(i), key);
  SetRecord(ini, RecordSection(index), hidden, password);
  return ini.Text();
}

std::string Padded(std::string directory) {
  if (directory.empty() || directory.size() >= directoryLength) return directory;
  directory.back() = '\0';
  directory.resize(directoryLength, '\0');
  return directory;
}

}  // namespace slyver
