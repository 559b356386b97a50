#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>

#include "engine/disk/Rights.h"

namespace slyver {

/// The cause if a file has changed since a job has started.
inline constexpr std::string_view fileWasChanged = "The file was changed while it was being read";

/// A file's identity and state. Equal: the same file, unchanged.
struct FileState {
  std::uint64_t length = 0;  ///< In bytes.
  std::uint64_t device = 0;  ///< The disk's number.
  std::uint64_t number = 0;  ///< The file's number on the disk.
  std::int64_t seconds = 0;  ///< The time of the last write, since the system's own epoch.
  std::int32_t nanoseconds = 0;
  Rights rights;            ///< Not compared. Only StateOf() considers access lists.
  std::uint64_t space = 0;  ///< Bytes on the disk. Not compared: it changes without a write.

  /// True if the file may have holes.
  bool IsSparse() const { return space < length; }
  bool operator==(const FileState& other) const;
};

/// A regular file, open for reading at any offset, from any thread.
class SourceFile {
 public:
  /// Opens `path`. Throws FileError, also if it is not a regular file: a pipe or a device has no
  /// length and may block.
  explicit SourceFile(std::filesystem::path path);
  ~SourceFile();
  SourceFile(const SourceFile&) = delete;
  SourceFile& operator=(const SourceFile&) = delete;

  const std::filesystem::path& Path() const { return path_; }

  /// Returns the state of the file when it was opened.
  const FileState& Opened() const { return opened_; }

  /// Returns rights for people who may read the file, its access list included.
  Rights RightsOfReaders() const;

  /// Returns the POSIX file descriptor; -1 on Windows.
  int Descriptor() const;

  /// Returns the length in bytes when the file was opened.
  std::uint64_t Length() const { return Opened().length; }

  /// Fills `buffer` with the bytes from `offset` (bytes, from 0). Throws FileError, also if the
  /// file ends too early.
  void Read(std::uint64_t offset, std::span<char> buffer) const;

  /// Returns the first offset from `offset` on that is not in a hole; `end` if there is none before
  /// it.
  std::uint64_t NextData(std::uint64_t offset, std::uint64_t end) const;

  /// Throws FileError unless the file was in the state `expected` when it was opened.
  void ThrowUnlessOpenedAs(const FileState& expected) const;

  /// Throws FileError if the file has changed since it was opened, so that the bytes read may be of
  /// two versions.
  void ThrowIfChanged() const;

 private:
  struct Handle;  ///< The system's.

  std::filesystem::path path_;
  FileState opened_;
  std::unique_ptr<Handle> handle_;
};

}  // namespace slyver
