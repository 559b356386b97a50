#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace slyver {

/// An error whose what() is written for the user. What other exceptions say is not.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A failure that concerns one file or folder. what() is the path, ": " and the cause.
class FileError : public Error {
 public:
  FileError(const std::filesystem::path& path, std::string_view cause);
  /// The cause is the operating system's own description of `code`.
  FileError(const std::filesystem::path& path, std::error_code code);
};

/// A disk without room for what is to be written. what() tells both byte counts.
class SpaceError : public Error {
 public:
  SpaceError(const std::filesystem::path& folder, std::uint64_t needed, std::uint64_t free);
};

/// A 16-bit count has passed 32767. what() is "Overflow".
class OverflowError : public Error {
 public:
  OverflowError() : Error("Overflow") {}
};

/// Thrown by a job that the user has stopped, after it has cleaned up. It is not an error and so
/// derives from none: no handler that shows errors catches it.
struct Cancelled {};

/// Returns what the user is shown of `error`: what() of an Error, "Not Enough Memory." when memory
/// has run out, and "An Error Has Occured. Please Try Again." for any other.
std::string TextFor(const std::exception& error);

}  // namespace slyver
