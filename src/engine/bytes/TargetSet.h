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

/// Restores what a killed exchange of the plan's set has put aside. Throws FileError; then what is
/// not restored stays aside, for the next call.
void RestoreEarlierSet(const CopyPlan& plan);

/// Gives the targets of a plan their names.
///
/// A new set is written into its folder and each target named when it is complete, the first one
/// last. A set that replaces an earlier one is written into a folder of its own, flushed, and
/// exchanged for the earlier one when it is complete.
class TargetSet {
 public:
  /// Locks the set: its first target is begun, so that no other program writes these files. Throws
  /// FileError where that fails, a name cannot be given, or files stand there that are to be kept;
  /// SpaceError where there is no room. `plan` outlives the object.
  explicit TargetSet(const CopyPlan& plan);

  TargetSet(const TargetSet&) = delete;
  TargetSet& operator=(const TargetSet&) = delete;

  /// What the file system does by itself with bytes of the plan's first source, and so of others
  /// beside it.
  const Sharing& SharingThere() const { return sharing_; }

  /// Whether one thread can name targets while another makes them. A file system that shares blocks
  /// keeps its nameless files in lists that only one thread at a time may change.
  bool AreNamedApart() const { return nameless_ && sharing_.unit == 0; }

  /// The file of target `index`, begun. Throws FileError.
  std::shared_ptr<TargetFile> Begin(std::size_t index);

  /// Takes over a target whose bytes are all written; from any thread. Throws FileError.
  void Complete(std::size_t index, TargetFile& file) EXCLUDES(mutex_);

  /// Gives the names that are left when all targets are complete, that of the list after all.
  /// `digests` are those of the targets, where a list is wanted. Throws FileError; then an earlier
  /// set is as it was.
  void Finish(const std::vector<Digest>& digests);

  /// Leaves nothing behind but what has its name, and, where `removeTargets` says so, not even
  /// that. To be called at the end, whatever came before.
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
  std::unique_ptr<TargetFile> list_;  ///< Null where none is wanted.
  /// The names of the set that is replaced: its list, if it has one, then number 1, then the rest.
  std::vector<std::string> earlier_;
  bool hasEarlierList_ = false;
  bool hasEarlierFirst_ = false;
  std::filesystem::path staging_;  ///< Empty where no set is replaced.
  bool nameless_ = false;          ///< Whether the others have no name until they are complete.
  Rights rights_;                  ///< Of nameless files.

  Mutex mutex_;
  std::vector<std::size_t> named_ GUARDED_BY(mutex_);  ///< Targets of a new set.
};

}  // namespace slyver
