#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "engine/disk/SourceFile.h"
#include "engine/disk/TargetFile.h"

namespace slyver {

/// Returns the state of the regular file `path`. Throws FileError.
FileState StateOf(const std::filesystem::path& path);

/// Returns the length of the regular file `path` in bytes. Throws FileError.
std::uint64_t FileLength(const std::filesystem::path& path);

/// Reads all of a small file. Throws FileError.
std::string ReadSmallFile(const std::filesystem::path& path);

/// Writes the file `path`, and replaces an earlier one only when all bytes are written. Throws
/// FileError.
void WriteSmallFile(const std::filesystem::path& path, std::string_view bytes,
                    Existing existing = Existing::Replace);

/// Returns a name with a mark: "" at first, then "[1] ", "[2] " and so on.
using MarkedName = std::function<std::string(const std::string& mark)>;

/// Returns the first path in `folder` with such a name that `take` accepts. Throws what `take`
/// does, and OverflowError past "[32767] ".
std::filesystem::path FirstFreePath(const std::filesystem::path& folder, const MarkedName& nameOf,
                                    const std::function<bool(const std::filesystem::path&)>& take);

}  // namespace slyver
