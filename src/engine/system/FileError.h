#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace slyver {

/// A failure that concerns one file or folder. what() is the path, ": " and the cause, ready to be
/// shown.
class FileError : public std::runtime_error {
 public:
  FileError(const std::filesystem::path& path, std::string_view cause);
  /// The cause is the operating system's own description of `code`.
  FileError(const std::filesystem::path& path, std::error_code code);
};

/// A disk without room for what is to be written. what() tells both byte counts.
class SpaceError : public std::runtime_error {
 public:
  SpaceError(const std::filesystem::path& folder, std::uint64_t needed, std::uint64_t free);
};

/// A 16-bit count has passed 32767. what() is "Overflow".
class OverflowError : public std::runtime_error {
 public:
  OverflowError() : std::runtime_error("Overflow") {}
};

/// Thrown by a job that the user has stopped, after it has cleaned up. It is not an error and so
/// derives from none: no handler that shows errors catches it.
struct Cancelled {};

}  // namespace slyver
