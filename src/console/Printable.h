#pragma once

#include <string>
#include <string_view>

namespace slyver {

/// Returns `text` with "?" for each control character except line feeds and tabs. A file name may
/// contain control characters, which a terminal obeys: U+0000 to U+001F, U+007F to U+009F and bytes
/// of these values outside UTF-8.
std::string Printable(std::string_view text);

/// Returns `name` quoted for a shell, as in $'a\033b', if it contains a control character or looks
/// quoted; otherwise unchanged.
std::string Quoted(std::string_view name);

}  // namespace slyver
