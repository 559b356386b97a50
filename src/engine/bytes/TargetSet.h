#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/base/Mutex.h"
#include "engine/bytes/CopyPlan.h"
#include "engine/disk/TargetFile.h"

namespace slyver {

/// Restores the earlier set that a killed exchange has moved aside. Throws FileError; the rest then
/// stays aside for the next call.
void RestoreEarlierSet(const CopyPlan& plan);

/// Creates the targets of a plan and renames them into place.
///
/// A new set is written into its folder, and each target renamed when it is complete, the first one
/// last. A set that replaces an earlier one is written into a staging folder, flushed, and
/// exchanged for the earlier one when it is complete.
class TargetSet {
 public:
  /// Creates the first target, which locks the set for other programs. `plan` must outlive the
  /// object. Throws FileError if that fails, a name cannot be created, or a file to keep exists;
  /// SpaceError if the disk is full.
  explicit TargetSet(const CopyPlan& plan);

  TargetSet(const TargetSet&) = delete;
  TargetSet& operator=(const TargetSet&) = delete;

  /// Returns how the file system can clone blocks of the plan's sources on the first one's disk.
  const Sharing& SharingThere() const { return sharing_; }

  /// True if one thread can commit targets while another creates them. File systems that clone
  /// blocks lock their lists of nameless files.
  bool AreNamedApart() const { return nameless_ && sharing_.unit == 0; }

  /// Creates the file of target `index`. Throws FileError.
  std::shared_ptr<TargetFile> Begin(std::size_t index);

  /// Commits a target whose bytes are all written, from any thread. Throws FileError.
  void Complete(std::size_t index, TargetFile& file) EXCLUDES(mutex_);

  /// Renames the remaining targets into place, the list last. `digests` are the list's. Throws
  /// FileError and rolls back to the earlier set.
  void Finish(const std::vector<Digest>& digests);

  /// Deletes temporary files; with `removeTargets` also the new set's committed targets. Must be
  /// called at the end.
  void CleanUp(bool removeTargets) EXCLUDES(mutex_);

 private:
  void FindEarlier();
  void RequireRoom();
  void WriteList(const std::vector<Digest>& digests);
  void Exchange();
  void UndoExchange(std::size_t movedAside, std::size_t named);
  std::filesystem::path Aside(std::size_t index) const;

  const CopyPlan& plan_;
  std::shared_ptr<TargetFile> first_;
  Sharing sharing_;
  std::unique_ptr<TargetFile> list_;  ///< Null for none.
  /// The names of the earlier set: its list, if any, then number 1, then the rest.
  std::vector<std::string> earlier_;
  bool hasEarlierList_ = false;
  bool hasEarlierFirst_ = false;
  std::filesystem::path staging_;  ///< Empty if no set is replaced.
  bool nameless_ = false;          ///< All targets but the first are nameless until committed.
  Rights rights_;                  ///< Of nameless files.

  Mutex mutex_;
  std::vector<std::size_t> named_ GUARDED_BY(mutex_);  ///< Committed targets of a new set.
};

}  // namespace slyver
