#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "engine/talk/Ui.h"

namespace slyver {

/// A password as 8-bit text, from UTF-8. One of more than 24 characters, or with a character
/// outside the code page, would not be known again; it is refused with a message, and nothing
/// returned.
std::optional<std::string> PasswordText8(std::string_view typed, Ui& ui);

}  // namespace slyver
