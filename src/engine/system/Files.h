#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "engine/system/SourceFile.h"
#include "engine/system/TargetFile.h"

namespace slyver {

/// A run of bytes of one file: `length` bytes from `offset`, both in bytes, offsets from 0.
struct ByteRange {
  std::filesystem::path path;
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
  /// The state that the file must still be in; any, where there is none.
  std::optional<FileState> state = std::nullopt;
};

/// One file to be written: its bytes are those of `rangeCount` ranges, in order. The ranges are
/// asked for one by one, so that a job of 32767 of them keeps no list of paths.
struct Output {
  std::filesystem::path target;
  std::uint64_t length = 0;  ///< The sum of the ranges' lengths, in bytes.
  std::size_t rangeCount = 0;
  std::function<ByteRange(std::size_t)> range;  ///< Range number 0 to rangeCount - 1.
  Existing existing = Existing::Keep;           ///< Where something bears the target's name.
};

/// How far a copy has come.
struct CopyProgress {
  std::size_t rangesStarted = 0;
  std::uint64_t bytesDone = 0;
  std::uint64_t bytesTotal = 0;
};

/// Told of the progress about twenty times a second and at the end, on the calling thread.
/// Returns false to stop the copy; what it throws stops the copy too and reaches the caller.
using Watch = std::function<bool(const CopyProgress&)>;

/// Writes `count` files. `output` gives file number 0 to count - 1, the same whenever it is asked;
/// `bytesTotal` is the sum of their lengths.
///
/// Each file gets its name when it is complete, and the last one only after all the others have
/// theirs; an old file of its name goes before. So where the last one stands, all stand. It is
/// begun first, so that a second program that writes the same files is told so before it touches
/// any of them. Two threads at most copy at a time, each with a small buffer, since one reads while
/// the other writes; memory does not grow with the sizes.
///
/// Throws FileError when a file cannot be read or written or when a source changes meanwhile or is
/// not in the state that its range tells of; the
/// files that were complete by then stay. Throws Cancelled when `watch` returns false; then none
/// of the files stays.
void WriteOutputs(std::size_t count, const std::function<Output(std::size_t)>& output,
                  std::uint64_t bytesTotal, const Watch& watch);

/// Writes the ranges, in order, into the new file `target`, as WriteOutputs does.
void Concatenate(std::span<const ByteRange> ranges, const std::filesystem::path& target,
                 Existing existing, const Watch& watch);

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
