#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/base/PathText.h"
#include "engine/base/Text8.h"
#include "engine/hidden/Carrier.h"
#include "engine/settings/INIReadWri.h"
#include "fuzz/Require.h"

using namespace slyver;

namespace {

constexpr std::string_view password = "Ab";
constexpr std::uint64_t directoryBytes = 2500;

/// Whoever takes `files` for true stays within the carrier and within one folder.
void RequireSafe(const std::vector<HiddenFile>& files, std::uint64_t mainLength,
                 std::uint64_t carrierLength) {
  std::uint64_t end = mainLength;
  for (const HiddenFile& file : files) {
    Require(file.offset == end);
    Require(file.length >= 1);
    Require(file.length <= carrierLength - end);
    end += file.length;

    const auto path = PathFromText(file.name);
    Require(!file.name.empty() && path == path.filename());
    Require(file.name != "." && file.name != "..");
    Require(file.name.find_first_of(std::string_view("/\\\0\n\r\t\x1B\x7F", 8)) ==
            std::string::npos);
    Require(ToText8(file.name).has_value());
  }
  Require(end <= carrierLength - directoryBytes);
}

/// A value that is set is read back, from the written text too.
void RequireWritable(std::string_view text) {
  IniText ini(text);
  (void)ini.Remove(mainSection, lengthKey);
  Require(ini.Text().size() <= text.size());
  ini.Set(mainSection, nameKey, "1F");
  Require(ini.Value(mainSection, nameKey) == "1F");
  Require(IniText(ini.Text()).Value(mainSection, nameKey) == "1F");
}

}  // namespace

/// The input is a carrier's length, eight bytes from the lowest on, and the text of its directory.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 8) return 0;
  std::uint64_t carrierLength = 0;
  for (std::size_t i = 8; i-- > 0;) carrierLength = carrierLength << 8U | data[i];
  std::string text(data + 8, data + size);
  RequireWritable(text);
  text.resize(directoryBytes, '\0');
  const Directory directory(text);

  Require(directory.Count(lengthKey) <= static_cast<int>(directoryBytes));
  (void)directory.IsPassword(password);
  const std::vector<Record> records = directory.Records(password);
  for (const Record& record : records) Require(record.name.size() <= 25);

  const auto main = directory.MainLength(password, carrierLength);
  const auto files = directory.Files(password, carrierLength);
  Require(main.has_value() || !files.has_value());
  if (!files) return 0;
  Require(files->size() == records.size());
  RequireSafe(*files, *main, carrierLength);
  return 0;
}
