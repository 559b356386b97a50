#pragma once

#include <string>
#include <string_view>

namespace slyver {

/// Returns `text` with "?" for each control character; line feeds and tabs stay. A terminal obeys
/// control characters, U+0080 to U+009F and such bytes outside UTF-8 among them, and a file's name
/// may hold any.
std::string Printable(std::string_view text);

/// Returns `name` quoted for a shell, as in $'a\033b', if it has a control character or looks
/// quoted already; any other name as it is.
std::string Quoted(std::string_view name);

}  // namespace slyver
