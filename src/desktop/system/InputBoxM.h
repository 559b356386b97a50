#pragma once

#include <wx/window.h>

#include <optional>
#include <string>
#include <string_view>

#include "engine/talk/Ui.h"

namespace slyver {

/// Asks for a secret in a dialog that shows "*" for each character. Warns if a password is too
/// long. Returns the plain text; `nullopt` if the user cancels.
std::optional<std::string> MaskedInput(wxWindow* parent, std::string_view prompt, SecretKind kind);

}  // namespace slyver
