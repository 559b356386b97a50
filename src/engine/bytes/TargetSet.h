#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "engine/bytes/CopyPlan.h"
#include "engine/disk/TargetFile.h"

namespace slyver {

/// Returns the state of the file with the first target's name; that of no file if it is missing or
/// cannot be read.
FileState StateOfFirst(const CopyPlan& plan);

/// Creates the targets of a plan and renames them into place: a new set, each when it is complete
/// and the first one last, or all together in exchange for an earlier set.
class TargetSet {
 public:
  /// Creates the first target, which locks the set for other programs. `plan` must outlive the
  /// object. Throws FileError if that fails, a name cannot be created, or a file to keep exists;
  /// SpaceError if the disk is full.
  static std::unique_ptr<TargetSet> Start(const CopyPlan& plan);

  virtual ~TargetSet() = default;
  TargetSet(const TargetSet&) = delete;
  TargetSet& operator=(const TargetSet&) = delete;

  /// Returns how the file system can clone blocks of the plan's sources on the first one's disk.
  const Sharing& SharingThere() const { return sharing_; }

  /// True if one thread can commit targets while another creates them.
  virtual bool AreNamedApart() const = 0;

  /// Creates the file of target `index`; the first one is created already. Throws FileError.
  std::shared_ptr<TargetFile> Begin(std::size_t index);

  /// Commits a target whose bytes are all written, from any thread. Throws FileError.
  virtual void Complete(std::size_t index, TargetFile& file) = 0;

  /// Renames the remaining targets into place, the list last. `digests` are the list's. Throws
  /// FileError and rolls back to the earlier set.
  virtual void Finish(const std::vector<Digest>& digests) = 0;

  /// Deletes temporary files; with `removeTargets` also the new set's committed targets. Must be
  /// called at the end.
  virtual void CleanUp(bool removeTargets) = 0;

 protected:
  TargetSet(const CopyPlan& plan, std::shared_ptr<TargetFile> first, const Sharing& sharing);

  /// Creates the file of a target that is not the first.
  virtual std::shared_ptr<TargetFile> NewTarget(const std::filesystem::path& path) = 0;

  const CopyPlan& Plan() const { return plan_; }
  TargetFile& First() { return *first_; }
  /// Returns the list's file; null for none.
  TargetFile* List() { return list_.get(); }
  void WriteList(const std::vector<Digest>& digests);
  void CloseFirstAndList();

 private:
  const CopyPlan& plan_;
  std::shared_ptr<TargetFile> first_;
  std::unique_ptr<TargetFile> list_;
  Sharing sharing_;
};

}  // namespace slyver
