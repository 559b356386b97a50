#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/system/Ascii.h"
#include "engine/system/INIReadWri.h"
#include "fuzz/Require.h"

using namespace slyver;

namespace {

constexpr std::string_view missing = "(missing)";

/// The characters of words that no writer has to quote: what stands in a directory is made of such.
constexpr std::string_view plain =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz@)&#?*^!`<%-.";

bool IsPlain(std::string_view word) {
  return !word.empty() && word.find_first_not_of(plain) == std::string_view::npos;
}

/// The first plain words of a text: some of them are its sections and keys.
std::vector<std::string_view> Words(std::string_view text) {
  std::vector<std::string_view> words;
  text = text.substr(0, text.find('\0'));
  std::size_t at = 0;
  while (words.size() < 12 && (at = text.find_first_of(plain, at)) != std::string_view::npos) {
    words.push_back(text.substr(at, text.find_first_not_of(plain, at) - at));
    at += words.back().size();
  }
  return words;
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

  const IniText before(text);
  IniText written(text);
  written.Set(section, key, value);
  IniText removed(text);
  (void)removed.Remove(section, key);
  Require(removed.Text().size() <= text.size());
  if (!IsPlain(section) || !IsPlain(key) || !IsPlain(value)) return 0;

  Require(written.Value(section, key) == value);
  const IniText again(written.Text());
  Require(again.Value(section, key) == value);
  const std::vector<std::string_view> words = Words(text);
  for (const std::string_view otherSection : words)
    for (const std::string_view otherKey : words)
      if (!SameIgnoringCase(otherSection, section) || !SameIgnoringCase(otherKey, key))
        Require(again.Value(otherSection, otherKey, missing) ==
                before.Value(otherSection, otherKey, missing));
  return 0;
}
