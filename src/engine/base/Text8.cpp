#include "engine/base/Text8.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace slyver {

namespace {

/// The characters of the codes 0x80 to 0x9F. Every other code is its character's number.
constexpr std::array<char32_t, 32> upperControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

/// Returns the code of a character, or -1.
int CodeOf(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character <= 0xFF))
    return static_cast<int>(character);
  const auto* const found = std::find(upperControls.begin(), upperControls.end(), character);
  return found == upperControls.end() ? -1 : 0x80 + static_cast<int>(found - upperControls.begin());
}

void AppendUtf8(std::string& text, char32_t character) {
  const auto append = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (character < 0x80) {
    append(character);
  } else if (character < 0x800) {
    append(0xC0U | (character >> 6U));
    append(0x80U | (character & 0x3FU));
  } else {
    append(0xE0U | (character >> 12U));
    append(0x80U | ((character >> 6U) & 0x3FU));
    append(0x80U | (character & 0x3FU));
  }
}

}  // namespace

char32_t TakeCharacter(std::string_view& rest) {
  const auto byteAt = [&](std::size_t i) {
    return i < rest.size() ? static_cast<std::uint8_t>(rest[i]) : std::uint8_t{0};
  };
  const std::uint8_t lead = byteAt(0);
  const std::size_t size = lead < 0x80   ? 1
                           : lead < 0xC2 ? 0
                           : lead < 0xE0 ? 2
                           : lead < 0xF0 ? 3
                           : lead < 0xF5 ? 4
                                         : 0;
  static constexpr std::array<char32_t, 5> leadMask = {0, 0x7F, 0x1F, 0x0F, 0x07};
  static constexpr std::array<char32_t, 5> smallest = {0, 0, 0x80, 0x800, 0x10000};
  char32_t character = lead & leadMask[size];
  bool valid = size > 0;
  for (std::size_t i = 1; i < size; ++i) {
    valid = valid && (byteAt(i) & 0xC0U) == 0x80U;
    character = (character << 6U) | (byteAt(i) & 0x3FU);
  }
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  valid = valid && character >= smallest[size] && character <= 0x10FFFF && !surrogate;
  rest.remove_prefix(valid ? size : 1);
  return valid ? character : noCharacter;
}

std::optional<std::string> ToText8(std::string_view utf8) {
  std::string result;
  while (!utf8.empty()) {
    const int code = CodeOf(TakeCharacter(utf8));
    if (code < 0) return std::nullopt;
    result.push_back(static_cast<char>(code));
  }
  return result;
}

std::string ToText8Lossy(std::string_view utf8) {
  std::string result;
  while (!utf8.empty()) {
    const int code = CodeOf(TakeCharacter(utf8));
    result.push_back(code < 0 ? '_' : static_cast<char>(code));
  }
  return result;
}

std::string FromText8(std::string_view text8) {
  std::string result;
  for (const char c : text8) {
    const auto code = static_cast<std::uint8_t>(c);
    AppendUtf8(result, code >= 0x80 && code < 0xA0 ? upperControls[code - 0x80U] : code);
  }
  return result;
}

}  // namespace slyver
