#pragma once

#include <wx/window.h>

#include <filesystem>
#include <functional>

namespace slyver {

/// Lets the user drop a file on `target`: `dropped` is then called with the full path of the first
/// of the files dropped. While `target` is disabled nothing can be dropped.
void AcceptDroppedFile(wxWindow& target, std::function<void(const std::filesystem::path&)> dropped);

}  // namespace slyver
