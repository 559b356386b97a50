#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>

#include "engine/disk/Rights.h"

namespace slyver {

/// Said of a file that is no longer what it was when a job began.
inline constexpr std::string_view fileWasChanged = "The file was changed while it was being read";

/// One state of one file. Equal states: the same file, and nothing was written in between.
struct FileState {
  std::uint64_t length = 0;  ///< In bytes.
  std::uint64_t device = 0;  ///< The file system's number of the disk, and of the file on it.
  std::uint64_t number = 0;
  std::int64_t seconds = 0;  ///< When it was last written to, in the system's own time.
  std::int32_t nanoseconds = 0;
  Rights rights;            ///< Does not count. Only StateOf() looks at access lists.
  std::uint64_t space = 0;  ///< What it takes on the disk, in bytes; changes by itself and so
                            ///< does not count either.

  /// Whether some of it may take no space.
  bool IsSparse() const { return space < length; }
  bool operator==(const FileState& other) const;
};

/// A regular file that is open for reading at any offset, from any thread.
class SourceFile {
 public:
  /// Opens `itsPath`. Throws FileError when it cannot be opened or is not a regular file (a pipe or
  /// a device has no length and may never answer).
  explicit SourceFile(std::filesystem::path itsPath);
  ~SourceFile();
  SourceFile(const SourceFile&) = delete;
  SourceFile& operator=(const SourceFile&) = delete;

  const std::filesystem::path& Path() const;

  /// The state of the file when it was opened.
  const FileState& Opened() const;

  /// Returns rights that let nobody read who may not read the file, its access list included.
  Rights RightsOfReaders() const;

  /// What the system knows the open file by, where it has descriptors.
  int Number() const;

  /// The length in bytes that the file had when it was opened.
  std::uint64_t Length() const { return Opened().length; }

  /// Fills all of `buffer` with the bytes from `offset` (bytes, from 0). Throws FileError when
  /// they cannot be read or the file ends before.
  void Read(std::uint64_t offset, std::span<char> buffer) const;

  /// The first offset from `offset` on, and not beyond `end`, from which there may be bytes other
  /// than zeros that take no space on the disk; `end` when there is none.
  std::uint64_t NextData(std::uint64_t offset, std::uint64_t end) const;

  /// Throws FileError when the state in which the file was opened is another than `expected`.
  void ThrowUnlessOpenedAs(const FileState& expected) const;

  /// Throws FileError when the file is no longer in the state in which it was opened: what was read
  /// since may be a mixture of two states.
  void ThrowIfChanged() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace slyver
