#include "engine/system/FileError.h"

#include <string>

#include "engine/system/PathText.h"

namespace slyver {

FileError::FileError(const std::filesystem::path& path, std::string_view cause)
    : std::runtime_error(PathText(path) + ": " + std::string(cause)) {}

FileError::FileError(const std::filesystem::path& path, std::error_code code)
    : FileError(path, code.message()) {}

}  // namespace slyver
