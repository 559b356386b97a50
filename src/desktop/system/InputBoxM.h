#pragma once

#include <wx/window.h>

#include <optional>
#include <string>
#include <string_view>

#include "engine/system/Ui.h"

namespace slyver {

/// Asks for one line under `prompt`, in a box that has the program's title and shows "*" for each
/// character typed. Of a password at most 24 characters can be typed: longer ones do not survive in
/// a carrier. Returns the plain text, or nothing when the user has cancelled.
std::optional<std::string> MaskedInput(wxWindow* parent, std::string_view prompt, Typed what);

}  // namespace slyver
