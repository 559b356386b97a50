#pragma once

#include <algorithm>
#include <string_view>

namespace slyver {

/// Returns the letters A to Z in lower case, any other character unchanged.
constexpr char LowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// True if two texts are equal, ignoring the case of the letters A to Z.
inline bool SameIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return LowerAscii(x) == LowerAscii(y); });
}

/// True if `text` ends in `ending`, ignoring the case of the letters A to Z.
inline bool EndsIgnoringCase(std::string_view text, std::string_view ending) {
  return text.size() >= ending.size() &&
         SameIgnoringCase(text.substr(text.size() - ending.size()), ending);
}

}  // namespace slyver
