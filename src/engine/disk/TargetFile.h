#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

#include "engine/disk/Rights.h"
#include "engine/disk/SourceFile.h"

namespace slyver {

/// What to do with an existing file. Replace flushes the new bytes before it; ReplaceScratch does
/// not, since losing a scratch file does no harm.
enum class Existing { Keep, Replace, ReplaceScratch };

/// Returns the temporary path of a target until it is complete, in the same folder. Depends on the
/// target's name alone, so that a later run finds a killed run's leftover. Always short.
std::filesystem::path TemporaryPath(const std::filesystem::path& target);

/// Deletes a killed run's leftover at the temporary path of `target`. Throws FileError if another
/// program is writing it.
void RemoveLeftoverOf(const std::filesystem::path& target);

/// True if a file can stay nameless until it is committed as `target`. Tries it with
/// TemporaryPath(); false if that exists.
bool CanBeNamelessUntil(const std::filesystem::path& target);

/// How a target's file system can clone blocks, or have its server copy bytes.
struct Sharing {
  std::uint64_t unit = 0;    ///< Clones units of so many bytes, aligned in both files; 0: none.
  std::uint64_t device = 0;  ///< The FileState::device of files to clone from.
  bool byServer = false;     ///< The server copies bytes, which takes space.
};

/// A new file that is renamed into place when it is complete.
///
/// It is written at TemporaryPath() and locked, so that a second program cannot write the same
/// target. Without Commit() the destructor deletes it. A nameless file belongs to its writer alone
/// and needs no lock, which halves the time of small files.
class TargetFile {
 public:
  /// Creates the file, with RightsIn() for a source with `rights` before the first byte is written.
  /// If a file exists at `inPlaceOf`, it gets that one's mode, group and access list instead, less
  /// the rights of people who may not read the source; at the end also its owner, if this user may
  /// set it. Existing::Replace implies `target` for `inPlaceOf`.
  ///
  /// Throws FileError if the folder cannot be written to, `target` exists and cannot be replaced or
  /// `existing` is Keep, or another program is writing it.
  TargetFile(std::filesystem::path target, Existing existing, Rights rights = {},
             std::filesystem::path inPlaceOf = {});

  /// Creates a file that is nameless until Commit(), which then keeps an existing `target`.
  /// Requires CanBeNamelessUntil(). Commit() also sets `rights`, as returned by RightsIn(): nobody
  /// else can open the file before. Throws FileError.
  static std::shared_ptr<TargetFile> StartNameless(const std::filesystem::path& folder,
                                                   std::filesystem::path target, Rights rights);
  ~TargetFile();
  TargetFile(const TargetFile&) = delete;
  TargetFile& operator=(const TargetFile&) = delete;

  /// Reserves space for `length` bytes if the file system can and it is worth the time. Throws
  /// FileError if the disk is full.
  void Reserve(std::uint64_t length);

  /// Returns how the file system can clone blocks of `source`.
  Sharing SharingWith(const SourceFile& source) const;

  /// Clones `length` bytes as `promised`, from any thread. False on an error; the target's bytes
  /// are then undefined.
  bool Share(const Sharing& promised, const SourceFile& source, std::uint64_t sourceOffset,
             std::uint64_t targetOffset, std::uint64_t length);

  /// Writes all of `bytes` at `offset` (bytes, from 0), from any thread. Throws FileError.
  void Write(std::uint64_t offset, std::span<const char> bytes);

  /// Flushes all bytes to the disk. Throws FileError.
  void Flush();

  /// Renames the file into place. If it replaces another, flushes it before and its folder after.
  /// Throws FileError; the target is then unchanged, unless flushing the folder has failed.
  void Commit();

 private:
  struct State;
  explicit TargetFile(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

/// Returns the rights of a new file in `folder` whose source has `rights`: these less the user's
/// mask. The folder's default access list counts only if everybody may read the source.
Rights RightsIn(const std::filesystem::path& folder, Rights rights);

/// Throws FileError if `path` exists and cannot be replaced: a folder, a device, an immutable file.
void RequireReplaceable(const std::filesystem::path& path);

/// Renames the file `from` to `to` in the same file system; false if `to` exists. Throws FileError
/// for `named`.
bool MoveToFreeName(const std::filesystem::path& from, const std::filesystem::path& to,
                    const std::filesystem::path& named);

}  // namespace slyver
