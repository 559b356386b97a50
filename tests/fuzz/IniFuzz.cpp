#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/settings/INIReadWri.h"
#include "fuzz/Require.h"

using namespace slyver;

namespace {

/// The characters of words that no writer has to quote: what stands in a directory is made of such.
constexpr std::string_view plain =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz@)&#?*^!`<%-.";

bool IsPlain(std::string_view word) {
  return !word.empty() && word.find_first_not_of(plain) == std::string_view::npos;
}

std::string_view TakeLine(std::string_view& rest) {
  const std::string_view line = rest.substr(0, rest.find('\n'));
  rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  return line;
}

}  // namespace

/// The input is a section, a key and a value, each in a line of its own, and an ini text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(data, data + size);
  std::string_view text = input;
  const std::string_view section = TakeLine(text);
  const std::string_view key = TakeLine(text);
  const std::string_view value = TakeLine(text);

  IniText written(text);
  written.Set(section, key, value);
  IniText removed(text);
  (void)removed.Remove(section, key);
  Require(removed.Text().size() <= text.size());
  if (!IsPlain(section) || !IsPlain(key) || !IsPlain(value)) return 0;

  Require(written.Value(section, key) == value);
  Require(IniText(written.Text()).Value(section, key) == value);
  return 0;
}
