#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace slyver {

/// What TakeCharacter() returns for a byte that is not UTF-8.
constexpr char32_t noCharacter = 0xFFFFFFFF;

/// Takes one character off the front of `rest`, or one byte if that is not UTF-8, and returns it.
/// `rest` must not be empty.
char32_t TakeCharacter(std::string_view& rest);

/// 8-bit text is Windows-1252 on every platform, so that carriers travel. The five codes that the
/// code page leaves undefined stand for the control characters U+0081, U+008D, U+008F, U+0090 and
/// U+009D, so that every sequence of bytes is a text and comes back unchanged.

/// UTF-8 to 8-bit text. Empty when a character is not in the code page or the text is not UTF-8.
std::optional<std::string> ToText8(std::string_view utf8);

/// UTF-8 to 8-bit text, with "_" for each character that the code page lacks and for each byte
/// that is not UTF-8.
std::string ToText8Lossy(std::string_view utf8);

/// 8-bit text to UTF-8; every text has one.
std::string FromText8(std::string_view text8);

}  // namespace slyver
