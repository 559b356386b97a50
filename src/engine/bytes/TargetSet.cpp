#include "engine/bytes/TargetSet.h"

#include <algorithm>
#include <string>
#include <utility>

#include "engine/base/FileError.h"
#include "engine/base/Mutex.h"
#include "engine/base/PathText.h"
#include "engine/bytes/Exchange.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

/// The most space that a file's last block takes after the file's end.
constexpr std::uint64_t blockLength = 4096;

Sharing SharingOf(const CopyPlan& plan, const TargetFile& target) {
  const std::uint32_t source = plan.ranges.front().source;
  // Digests need the bytes anyway.
  if (plan.LooksAtBytes() || !plan.sources.IsFile(source)) return {};
  try {
    return target.SharingWith(SourceFile(plan.sources.Path(source)));
  } catch (const FileError&) {
    return {};  // Reading it will report the error.
  }
}

std::uint64_t ListLength(const CopyPlan& plan) {
  std::uint64_t length = 0;
  for (std::size_t i = 0; plan.list.line && i < plan.TargetCount(); ++i)
    length += plan.list.line(i, {}).size();
  return length;
}

/// Returns the names of the earlier set. Called under the lock: another program may have created
/// one just now. Throws FileError if one cannot be replaced or is to be kept.
EarlierSet FindEarlier(const CopyPlan& plan) {
  EarlierSet earlier;
  const auto found = [&](const std::string& name, EntryKind kind) {
    const bool isList = plan.list.isThere && name == plan.list.name;
    const int number = plan.names.NumberOf(name);
    if (number == 0 && !isList) return;
    // A folder is only in the way of a target.
    const bool isTarget = static_cast<std::size_t>(number) <= plan.TargetCount();
    if (kind == EntryKind::Folder && !isTarget) return;
    const fs::path path = plan.names.folder / PathFromText(name);
    RequireReplaceable(path);
    if (plan.existing == Existing::Keep)
      throw FileError(path, std::make_error_code(std::errc::file_exists));
    earlier.Add(name, isList, number == 1);
  };
  if (const std::error_code error = ListFolder(plan.names.folder, found))
    throw FileError(plan.names.folder, error);
  return earlier;
}

/// Throws SpaceError if the disk is full. Deletes a failed split's leftover first if that helps:
/// pieces without a first one.
void RequireRoom(const CopyPlan& plan, const Sharing& sharing, EarlierSet& earlier) {
  const fs::path& folder = plan.names.folder;
  const std::uint64_t needed = plan.SpaceNeeded(sharing) + ListLength(plan);
  std::uint64_t free = FreeSpace(folder);
  const std::uint64_t inBlocks = needed + plan.TargetCount() * blockLength;
  if (inBlocks > free && !earlier.hasFirst && !earlier.hasList) {
    std::uint64_t held = 0;
    for (const std::string& name : earlier.names)
      held += StateOf(folder / PathFromText(name)).space;
    if (needed <= held || needed - held <= free) {
      for (const std::string& name : earlier.names) (void)RemoveFile(folder / PathFromText(name));
      earlier.names.clear();
      free = FreeSpace(folder);
    }
  }
  if (needed > free) throw SpaceError(folder, needed, free);
}

/// A new set, or targets that are no set. Each target is committed when it is complete.
class NewSet final : public TargetSet {
 public:
  NewSet(const CopyPlan& plan, std::shared_ptr<TargetFile> first, const Sharing& sharing)
      : TargetSet(plan, std::move(first), sharing),
        nameless_(plan.isSet && CanBeNamelessUntil(plan.names.Path(1))),
        rights_(nameless_ ? RightsIn(plan.names.folder, plan.rights) : Rights{}) {}

  // File systems that clone blocks lock their lists of nameless files.
  bool AreNamedApart() const override { return nameless_ && SharingThere().unit == 0; }

  void Complete(std::size_t index, TargetFile& file) override EXCLUDES(mutex_) {
    if (Plan().flush) file.Flush();
    if (index == 0) return;
    file.Commit();
    const Lock lock(mutex_);
    committed_.push_back(index);
  }

  void Finish(const std::vector<Digest>& digests) override {
    if (List() != nullptr) WriteList(digests);
    First().Commit();
    try {
      if (List() != nullptr) List()->Commit();
      if (Plan().flush) FlushFolder(Plan().names.folder);
    } catch (const FileError&) {
      // An incomplete set must have no first file.
      if (List() != nullptr) (void)RemoveFile(Plan().names.Path(0));
      throw;
    }
  }

  void CleanUp(bool removeTargets) override EXCLUDES(mutex_) {
    CloseFirstAndList();
    const Lock lock(mutex_);
    for (const std::size_t index : committed_)
      if (removeTargets) (void)RemoveFile(Plan().names.Path(index));
  }

 private:
  std::shared_ptr<TargetFile> NewTarget(const fs::path& path) override {
    if (nameless_) return TargetFile::StartNameless(path.parent_path(), path, rights_);
    const Existing existing = Plan().isSet ? Existing::Keep : Plan().existing;
    return std::make_shared<TargetFile>(path, existing, Plan().rights);
  }

  const bool nameless_;  ///< All targets but the first are nameless until committed.
  const Rights rights_;  ///< Of nameless files.

  Mutex mutex_;
  std::vector<std::size_t> committed_ GUARDED_BY(mutex_);
};

}  // namespace

FileState StateOfFirst(const CopyPlan& plan) {
  try {
    return StateOf(plan.names.Path(0));
  } catch (const FileError&) {
    return {};
  }
}

std::unique_ptr<TargetSet> TargetSet::Start(const CopyPlan& plan) {
  // The last name is the longest. If it is too long, fail before the long work.
  (void)NameIsTaken(plan.names.Path(plan.TargetCount() - 1));
  auto first = std::make_shared<TargetFile>(plan.names.Path(0), plan.existing, plan.rights);
  const Sharing sharing = SharingOf(plan, *first);
  EarlierSet earlier;
  if (plan.isSet) {
    RemoveStagingLeftover(plan);
    if (plan.replaces && StateOfFirst(plan) != *plan.replaces)
      throw FileError(plan.names.Path(0), "Another program has replaced it");
    earlier = FindEarlier(plan);
  }
  RequireRoom(plan, sharing, earlier);
  first->Reserve(plan.SpaceToReserve(0, sharing));
  std::unique_ptr<TargetSet> set;
  if (earlier.names.empty())
    set = std::make_unique<NewSet>(plan, std::move(first), sharing);
  else
    set = ExchangeFor(std::move(earlier), plan, std::move(first), sharing);
  if (set->List() != nullptr) set->List()->Reserve(ListLength(plan));
  return set;
}

TargetSet::TargetSet(const CopyPlan& plan, std::shared_ptr<TargetFile> first,
                     const Sharing& sharing)
    : plan_(plan), first_(std::move(first)), sharing_(sharing) {
  if (plan.list.line)
    list_ = std::make_unique<TargetFile>(plan.names.folder / PathFromText(plan.list.name),
                                         plan.list.isThere ? Existing::Replace : Existing::Keep,
                                         plan.rights);
}

std::shared_ptr<TargetFile> TargetSet::Begin(std::size_t index) {
  if (index == 0) return first_;
  std::shared_ptr<TargetFile> file = NewTarget(plan_.names.Path(index));
  file->Reserve(plan_.SpaceToReserve(index, sharing_));
  return file;
}

void TargetSet::WriteList(const std::vector<Digest>& digests) {
  constexpr std::size_t much = std::size_t{64} * 1024;
  std::uint64_t written = 0;
  std::string text;
  for (std::size_t i = 0; i < digests.size(); ++i) {
    text += plan_.list.line(i, digests[i]);
    if (text.size() < much && i + 1 < digests.size()) continue;
    list_->Write(written, text);
    written += text.size();
    text.clear();
  }
}

void TargetSet::CloseFirstAndList() {
  first_.reset();
  list_.reset();
}

}  // namespace slyver
