#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace slyver {

/// The result of TakeCharacter() for a byte that is not UTF-8.
constexpr char32_t noCharacter = 0xFFFFFFFF;

/// Removes the first character of `rest`, or one byte if that is not UTF-8, and returns it. `rest`
/// must not be empty.
char32_t TakeCharacter(std::string_view& rest);

// 8-bit text is Windows-1252 on every platform, so that carriers can be exchanged. The five
// undefined codes are the control characters U+0081, U+008D, U+008F, U+0090 and U+009D, so that
// every sequence of bytes survives the way to UTF-8 and back.

/// Converts UTF-8 to 8-bit text; `nullopt` if it is not UTF-8 or has a character that the code page
/// lacks.
std::optional<std::string> ToText8(std::string_view utf8);

/// Converts UTF-8 to 8-bit text, with "_" for each character that the code page lacks and for each
/// byte that is not UTF-8.
std::string ToText8Lossy(std::string_view utf8);

/// Converts 8-bit text to UTF-8.
std::string FromText8(std::string_view text8);

}  // namespace slyver
