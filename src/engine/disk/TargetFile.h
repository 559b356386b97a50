#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

#include "engine/disk/Rights.h"
#include "engine/disk/SourceFile.h"

namespace slyver {

/// What becomes of a file that already has the target's name. Where it is replaced, it goes only
/// when the new bytes are on the disk; a scratch file, whose loss would do no harm, is not waited
/// for.
enum class Existing { Keep, Replace, ReplaceScratch };

/// The name, in the target's folder, under which a target is written until it is complete. It
/// depends on the target's name alone, so that a later run finds and removes what a killed one has
/// left, and it is short whatever the length of that name.
std::filesystem::path TemporaryPath(const std::filesystem::path& target);

/// Removes what a killed run has left of `target` under its temporary name. Throws FileError when
/// another program is writing it.
void RemoveLeftoverOf(const std::filesystem::path& target);

/// Whether a file can be without any name until it gets the name `target`. Tries it, with
/// TemporaryPath() for the name; false where that is taken.
bool CanBeNamelessUntil(const std::filesystem::path& target);

/// What the file system of a target does by itself: it lets files share whole blocks, which takes
/// neither time nor space, or has its server copy bytes, so that they do not cross the network
/// twice.
struct Sharing {
  std::uint64_t unit = 0;  ///< It brings over whole units of so many bytes that lie at multiples of
                           ///< it in source and target; 0: none.
  std::uint64_t device = 0;  ///< From files with this FileState::device.
  bool byServer = false;     ///< Whether its server copies them, which takes space.
};

/// A new file that gets its name only when it is complete.
///
/// It is written under TemporaryPath() and locked, so that a second program writing the same
/// target is told so and cannot mix its bytes in. Until Commit() the target's name is untouched;
/// an object that is destroyed without Commit() leaves nothing behind. One that has no name at all
/// until then is its writer's alone and needs no lock, which halves the time of small files.
class TargetFile {
 public:
  /// Starts a file. Before the first byte is written it has RightsIn() for a source with `rights`.
  /// Or, if a file exists at `inPlaceOf`, it has that one's mode, group and access list, but lets
  /// nobody read who may not read the source; and at the end its owner, where this user may give
  /// it. `inPlaceOf` is `target` itself with Existing::Replace. Throws FileError: the folder cannot
  /// be written to, `target` exists and cannot be replaced or `existing` is Keep, or another
  /// program is writing it.
  TargetFile(std::filesystem::path target, Existing existing, Rights rights = {},
             std::filesystem::path inPlaceOf = {});

  /// Starts a file of `folder` that has no name until Commit(), where CanBeNamelessUntil() says
  /// that it can. A file that bears the name then is kept. It gets its `rights`, which are as
  /// RightsIn() returns them, there, too: until then nobody else can open it. Throws FileError: the
  /// folder cannot be written to.
  static std::shared_ptr<TargetFile> StartNameless(const std::filesystem::path& folder,
                                                   std::filesystem::path target, Rights rights);
  ~TargetFile();
  TargetFile(const TargetFile&) = delete;
  TargetFile& operator=(const TargetFile&) = delete;

  /// Reserves space for `length` bytes where the file system can and it is worth the time. Throws
  /// FileError: the disk has no room.
  void Reserve(std::uint64_t length);

  /// What the file system promises to do by itself with bytes of `source`.
  Sharing SharingWith(const SourceFile& source) const;

  /// Has the file system bring over `length` bytes as it promised; from any thread. False where it
  /// does not, for whatever reason; then any bytes may be there.
  bool Share(const Sharing& promised, const SourceFile& source, std::uint64_t sourceOffset,
             std::uint64_t targetOffset, std::uint64_t length);

  /// Writes all of `bytes` at `offset` (bytes, from 0); may be called from several threads at
  /// once. Throws FileError.
  void Write(std::uint64_t offset, std::span<const char> bytes);

  /// Waits until all bytes are on the disk. Throws FileError.
  void Flush();

  /// Gives the file its name; one that replaces another is flushed before, and its folder after.
  /// Throws FileError; then the name is as it was before, unless it is the folder that fails.
  void Commit();

 private:
  struct State;
  explicit TargetFile(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

/// Returns the rights of a new file in `folder` whose source has `rights`: these less the user's
/// mask. What the folder's default access list adds is left out unless everybody may read the
/// source.
Rights RightsIn(const std::filesystem::path& folder, Rights rights);

/// Throws FileError if what exists at `path` cannot be replaced by a file: a folder, a device, what
/// the system keeps from being changed.
void RequireReplaceable(const std::filesystem::path& path);

/// Renames the file `from` to `to` in the same file system; `false` if `to` exists, and then
/// nothing has changed. Throws FileError, naming `named`.
bool MoveToFreeName(const std::filesystem::path& from, const std::filesystem::path& to,
                    const std::filesystem::path& named);

}  // namespace slyver
