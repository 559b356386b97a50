#pragma once

#include <wx/window.h>

#include <optional>
#include <string>
#include <string_view>

#include "engine/talk/Ui.h"

namespace slyver {

/// Asks for one line under `prompt`, in a box that has the program's title and shows "*" for each
/// character typed. A line says it when a password is longer than one can be. Returns the plain
/// text, or nothing when the user has cancelled.
std::optional<std::string> MaskedInput(wxWindow* parent, std::string_view prompt, SecretKind kind);

}  // namespace slyver
