#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "engine/disk/SourceFile.h"
#include "engine/disk/TargetFile.h"

namespace slyver {

/// The state of the regular file `path`. Throws FileError.
FileState StateOf(const std::filesystem::path& path);

/// The length of the regular file `path` in bytes. Throws FileError.
std::uint64_t FileLength(const std::filesystem::path& path);

/// The bytes of the file `path`, for files that are small by nature. Throws FileError when it
/// cannot be read.
std::string ReadSmallFile(const std::filesystem::path& path);

/// Writes `bytes` as the file `path`, replacing a file of that name only when all are written.
/// Throws FileError.
void WriteSmallFile(const std::filesystem::path& path, std::string_view bytes,
                    Existing existing = Existing::Replace);

/// A name made with a mark: "" for the first try, then "[1] ", "[2] " and so on.
using MarkedName = std::function<std::string(const std::string& mark)>;

/// The first of the names that is free in `folder`. Throws FileError when that cannot be told, and
/// OverflowError past "[32767] ".
std::filesystem::path FirstFreePath(const std::filesystem::path& folder, const MarkedName& nameOf);

/// Moves the file `from` to the first of the names that is free in `folder`, on the same file
/// system, and returns its new path. Throws FileError, and OverflowError as FirstFreePath does.
std::filesystem::path MoveToFirstFreePath(const std::filesystem::path& from,
                                          const std::filesystem::path& folder,
                                          const MarkedName& nameOf);

}  // namespace slyver
