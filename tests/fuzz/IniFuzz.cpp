#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "engine/system/INIReadWri.h"
#include "fuzz/Require.h"

using namespace slyver;

namespace {

constexpr std::string_view missing = "(missing)";

/// A word that no writer has to quote: what stands in a directory is made of such.
bool IsPlain(std::string_view word) {
  static constexpr std::string_view punctuation = "@)&#?*^!`<%-.";
  return !word.empty() && std::all_of(word.begin(), word.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           punctuation.find(c) != std::string_view::npos;
  });
}

std::string Lower(std::string_view word) {
  std::string lower(word);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return lower;
}

/// The plain words of a text, in lower case: some of them are its sections and keys.
std::set<std::string> Words(std::string_view text) {
  std::set<std::string> words;
  std::string word;
  for (const char c : text.substr(0, text.find('\0'))) {
    if (IsPlain({&c, 1})) {
      word += c;
      continue;
    }
    if (!word.empty()) words.insert(Lower(word));
    word.clear();
    if (words.size() >= 12) break;
  }
  if (!word.empty()) words.insert(Lower(word));
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
  const std::set<std::string> words = Words(text);
  for (const std::string& otherSection : words)
    for (const std::string& otherKey : words)
      if (otherSection != Lower(section) || otherKey != Lower(key))
        Require(again.Value(otherSection, otherKey, missing) ==
                before.Value(otherSection, otherKey, missing));
  return 0;
}
