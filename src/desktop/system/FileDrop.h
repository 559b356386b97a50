#pragma once

#include <wx/window.h>

#include <filesystem>
#include <functional>
#include <string>

namespace slyver {

/// Called with the full path of the first of the files dropped, and what to say when there were
/// more; empty when it is alone.
using FileDropped =
    std::function<void(const std::filesystem::path& path, const std::string& remark)>;

/// Lets the user drop a file on `target`. While `target` is disabled nothing can be dropped.
void AcceptDroppedFile(wxWindow& target, FileDropped dropped);

}  // namespace slyver
