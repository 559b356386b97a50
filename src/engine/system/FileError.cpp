#include "engine/system/FileError.h"

#include <string>

#include "engine/system/PathText.h"

namespace slyver {

FileError::FileError(const std::filesystem::path& path, std::string_view cause)
    : std::runtime_error(PathText(path) + ": " + std::string(cause)) {}

FileError::FileError(const std::filesystem::path& path, std::error_code code)
    : FileError(path, code.message()) {}

SpaceError::SpaceError(const std::filesystem::path& folder, std::uint64_t needed,
                       std::uint64_t free)
    : std::runtime_error("Not Enough Space In " + FolderText(folder) + ": " +
                         std::to_string(needed) + " Bytes Are Needed, " + std::to_string(free) +
                         " Are Free.") {}

}  // namespace slyver
