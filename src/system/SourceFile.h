#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace slyver {

/// A regular file that is open for reading at any offset, from any thread.
class SourceFile {
 public:
  /// Opens `path`. Throws FileError when it cannot be opened or is not a regular file (a pipe or a
  /// device has no length and may never answer).
  explicit SourceFile(const std::filesystem::path& path);
  ~SourceFile();
  SourceFile(const SourceFile&) = delete;
  SourceFile& operator=(const SourceFile&) = delete;

  const std::filesystem::path& Path() const;

  /// The length in bytes that the file had when it was opened.
  std::uint64_t Length() const;

  /// Fills all of `buffer` with the bytes from `offset` (bytes, from 0). Throws FileError when
  /// they cannot be read or the file ends before.
  void Read(std::uint64_t offset, std::span<char> buffer) const;

  /// Throws FileError when the file's length or modification time is no longer what it was when
  /// the file was opened: what was read since may be a mixture of two states.
  void ThrowIfChanged() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace slyver
