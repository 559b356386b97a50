#pragma once

#include <algorithm>
#include <string_view>

namespace slyver {

/// `c` in lower case where it is one of the letters A to Z; every other character as it is.
constexpr char LowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether two texts are alike but for the case of the letters A to Z.
inline bool SameIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return LowerAscii(x) == LowerAscii(y); });
}

/// Whether `text` ends in `ending`, the case of the letters A to Z aside.
inline bool EndsIgnoringCase(std::string_view text, std::string_view ending) {
  return text.size() >= ending.size() &&
         SameIgnoringCase(text.substr(text.size() - ending.size()), ending);
}

}  // namespace slyver
