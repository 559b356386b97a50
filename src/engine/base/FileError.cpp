#include "engine/base/FileError.h"

#include <new>
#include <string>

#include "engine/base/PathText.h"

namespace slyver {

FileError::FileError(const std::filesystem::path& path, std::string_view cause)
    : Error(PathText(path) + ": " + std::string(cause)) {}

FileError::FileError(const std::filesystem::path& path, std::error_code code)
    : FileError(path, code.message()) {}

SpaceError::SpaceError(const std::filesystem::path& folder, std::uint64_t needed,
                       std::uint64_t free)
    : Error("Not Enough Space In " + FolderText(folder) + ": " + std::to_string(needed) +
            " Bytes Are Needed, " + std::to_string(free) + " Are Free.") {}

std::string TextFor(const std::exception& error) {
  if (dynamic_cast<const Error*>(&error) != nullptr) return error.what();
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "Not Enough Memory.";
  return "An Error Has Occured. Please Try Again.";
}

}  // namespace slyver
