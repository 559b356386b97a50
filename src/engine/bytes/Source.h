#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "engine/disk/SourceFile.h"

namespace slyver {

/// Reads a source on one thread. Must not outlive it.
class Reader {
 public:
  Reader() = default;
  virtual ~Reader() = default;
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  /// Fills `buffer` with the bytes from `offset`, all before Source::Length(). Throws Error if they
  /// cannot be read or are not authentic.
  virtual void Read(std::uint64_t offset, std::span<char> buffer) = 0;

  /// Throws FileError if a file has changed since it was opened, so that the bytes read may be of
  /// two versions.
  virtual void ThrowIfChanged() = 0;
};

/// Immutable bytes that can be read at any offset, from any thread: a file, several files in a row,
/// or what encrypts or decrypts another source.
class Source {
 public:
  Source() = default;
  virtual ~Source() = default;
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  /// Returns the length in bytes.
  virtual std::uint64_t Length() const = 0;

  /// Returns a reader. Throws Error if the source has no bytes to read and is not authentic.
  virtual std::unique_ptr<Reader> NewReader() const = 0;

  /// Returns the first offset from `offset` on that is not in a hole; `end` if there is none before
  /// it.
  virtual std::uint64_t NextData(std::uint64_t offset, std::uint64_t /*end*/) const {
    return offset;
  }

  /// Returns the best place to end a read from `begin` on: at most `end`, and such that no work is
  /// done twice if the next read begins there.
  virtual std::uint64_t Cut(std::uint64_t /*begin*/, std::uint64_t end) const { return end; }

  /// Returns the file if the source is just one, whose blocks can be cloned; otherwise null.
  virtual const SourceFile* File() const { return nullptr; }
};

/// The sources of a plan. Files are listed by their paths and the state that each must still be in;
/// paths are packed, since maxCount path objects would take several times the memory.
class SourceList {
 public:
  SourceList() = default;
  /// Lists one file for each state; `textOf` returns its PathText().
  SourceList(std::vector<FileState> states,
             const std::function<std::string(std::size_t number)>& textOf);

  /// Adds a file and returns its number, from 0.
  std::uint32_t Add(const std::filesystem::path& path, const FileState& state);

  /// Adds a source that is not just a file and returns its number.
  std::uint32_t Add(std::shared_ptr<const Source> source);

  /// Opens source `number`. Throws FileError, also if a file is not in its state.
  std::shared_ptr<const Source> Open(std::uint32_t number) const;

  /// True if source `number` is a file.
  bool IsFile(std::uint32_t number) const { return !others_.contains(number); }

  /// Returns the path of a file; empty for another source.
  std::filesystem::path Path(std::uint32_t number) const;

  /// Returns the state of a file; of another source its length and space alone.
  const FileState& State(std::uint32_t number) const { return states_[number]; }

  /// Returns what Source::Cut() does.
  std::uint64_t Cut(std::uint32_t number, std::uint64_t begin, std::uint64_t end) const;

  std::size_t Count() const { return states_.size(); }

 private:
  std::string paths_;
  std::vector<std::size_t> ends_;  ///< The end of each path in `paths_`.
  std::vector<FileState> states_;
  std::map<std::uint32_t, std::shared_ptr<const Source>> others_;
};

/// Returns the bytes of all files in a list, one after the other. A reader holds one file open, and
/// checks its state when it opens it and before it leaves it.
std::shared_ptr<const Source> FilesInARow(SourceList files);

}  // namespace slyver
