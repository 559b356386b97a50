#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace slyver {

/// An error whose what() is a message for the user. That of other exceptions is not.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// An error about one file or folder. what() is the path, ": " and the cause.
class FileError : public Error {
 public:
  FileError(const std::filesystem::path& path, std::string_view cause);
  /// The cause is the operating system's own description of `code`.
  FileError(const std::filesystem::path& path, std::error_code code);
};

/// A full disk. what() has the bytes needed and the bytes free.
class SpaceError : public Error {
 public:
  SpaceError(const std::filesystem::path& folder, std::uint64_t needed, std::uint64_t free);
};

/// A count beyond maxCount. what() is "Overflow".
class OverflowError : public Error {
 public:
  OverflowError() : Error("Overflow") {}
};

/// Thrown by a job that the user has stopped, after it has cleaned up. Derives from no exception,
/// so that handlers that show errors do not catch it.
struct Cancelled {};

/// Returns the message for `error`: what() of an Error, "Not Enough Memory." for std::bad_alloc,
/// and "An Error Has Occured. Please Try Again." for any other.
std::string TextFor(const std::exception& error);

}  // namespace slyver
