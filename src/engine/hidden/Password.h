#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "engine/talk/Ui.h"

namespace slyver {

/// Message for a password with more than maxNameLength characters.
inline constexpr const char* passwordTooLong = "A Password Has At Most 24 Characters.";

/// Converts a password from UTF-8 to 8-bit text. Refuses one with more than maxNameLength
/// characters, or with a character outside the code page, with a message and `nullopt`.
std::optional<std::string> PasswordText8(std::string_view typed, Ui& ui);

}  // namespace slyver
