#pragma once

#include <wx/window.h>

#include <filesystem>
#include <functional>
#include <string>

namespace slyver {

/// Called with the full path of the first dropped file, and a remark if there were more.
using FileDropped =
    std::function<void(const std::filesystem::path& path, const std::string& remark)>;

/// Lets the user drop a file on `target`, unless `target` is disabled.
void AcceptDroppedFile(wxWindow& target, FileDropped dropped);

}  // namespace slyver
