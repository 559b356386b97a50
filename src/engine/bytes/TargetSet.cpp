#include "engine/bytes/TargetSet.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "engine/base/FileError.h"
#include "engine/base/PathText.h"
#include "engine/disk/Disk.h"
#include "engine/disk/Files.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

Sharing SharingOf(const CopyPlan& plan, const TargetFile& target) {
  if (plan.LooksAtBytes()) return {};  // Digests need the bytes anyway.
  try {
    return target.SharingWith(SourceFile(plan.sources.Path(plan.ranges.front().source)));
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

fs::path ListPath(const CopyPlan& plan) {
  return plan.names.folder / PathFromText(plan.list.name);
}

constexpr std::string_view asideName = "earlier";

/// The most space that a file's last block takes after the file's end.
constexpr std::uint64_t blockLength = 4096;

/// A file of a set: its number, CopyPlan::numberOfList for the list, and its name.
using SetFile = std::pair<int, std::string>;

/// Returns the files of the plan's set in a folder, in ascending order; none on an error.
std::vector<SetFile> FilesOfSet(const fs::path& folder, const CopyPlan& plan) {
  std::vector<SetFile> files;
  (void)ListFolder(folder, [&](const std::string& name, EntryKind kind) {
    if (kind == EntryKind::Folder) return;
    const int number = name == plan.list.name ? CopyPlan::numberOfList : plan.numberInSet(name);
    if (number > 0) files.emplace_back(number, name);
  });
  std::sort(files.begin(), files.end());
  return files;
}

/// Deletes the new and earlier files of a set in `staging`, and the folder if it is then empty.
/// Returns the error.
std::error_code RemoveStaging(const fs::path& staging, const CopyPlan& plan) {
  for (const fs::path& folder : {staging / asideName, staging}) {
    std::vector<std::string> names;
    (void)ListFolder(folder, [&](const std::string& name, EntryKind kind) {
      if (kind != EntryKind::Folder && name.starts_with(".slyver-") && name.ends_with(".tmp"))
        names.push_back(name);
    });
    for (SetFile& file : FilesOfSet(folder, plan)) names.push_back(std::move(file.second));
    for (const std::string& name : names) (void)RemoveFile(folder / PathFromText(name));
    if (const std::error_code error = RemoveEmptyFolder(folder)) return error;
  }
  return {};
}

/// Returns the staging folder of the set with the first file `first`.
fs::path StagingPath(const fs::path& first) {
  return TemporaryPath(first).replace_extension(".set");
}

void MakeOwnFolder(const fs::path& path) {
  if (!MakeNewFolder(path)) throw FileError(path, std::make_error_code(std::errc::file_exists));
}

/// Renames a file to a path that must not exist. Throws FileError, for `named` or `to`.
void Move(const fs::path& from, const fs::path& to, const fs::path& named) {
  if (!MoveToFreeName(from, to, named))
    throw FileError(to, std::make_error_code(std::errc::file_exists));
}

/// Rolls back a killed exchange. Moves new files back into `staging`, the last one first, then
/// restores the earlier ones, the first and the list at the end. Can be repeated after any step.
void UndoKilledExchange(const fs::path& staging, const CopyPlan& plan) {
  const fs::path& folder = plan.names.folder;
  const auto move = [](const fs::path& from, const fs::path& to, const std::string& name) {
    const fs::path path = PathFromText(name);
    Move(from / path, to / path, to / path);
  };
  std::vector<SetFile> earlier = FilesOfSet(staging / asideName, plan);
  if (earlier.empty()) return;
  const std::vector<SetFile> staged = FilesOfSet(staging, plan);
  std::vector<SetFile> present = FilesOfSet(folder, plan);
  const bool hasFirst = !present.empty() && present.front().first == 1;
  if (hasFirst && staged.empty()) return;  // It was complete.
  const int firstStaged = staged.empty() ? CopyPlan::numberOfList : staged.front().first;
  const auto isBetween = [](const SetFile& file) {
    return file.first > 1 && file.first < CopyPlan::numberOfList;
  };
  const auto isNew = [&](const SetFile& file) {
    return file.first < firstStaged ||
           std::any_of(earlier.begin(), earlier.end(),
                       [&](const SetFile& old) { return old.first == file.first; });
  };
  std::reverse(present.begin(), present.end());
  for (const SetFile& file : present)
    if (isBetween(file) && isNew(file)) move(folder, staging, file.second);
  std::stable_partition(earlier.begin(), earlier.end(), isBetween);
  for (const auto& [number, name] : earlier) move(staging / asideName, folder, name);
  FlushFolder(folder);
}

/// Rolls back and deletes a killed run's staging folder. Throws Error if it has other files.
void RemoveLeftover(const fs::path& staging, const CopyPlan& plan) {
  if (!IsFolderItself(staging)) return;
  UndoKilledExchange(staging, plan);
  const std::error_code error = RemoveStaging(staging, plan);
  if (error == std::errc::directory_not_empty)
    throw Error(PathText(staging) + " Holds Other Files. Move Them Away.");
  if (error) throw FileError(staging, error);
}

}  // namespace

void RestoreEarlierSet(const CopyPlan& plan) {
  const fs::path first = plan.names.Path(0);
  const fs::path staging = StagingPath(first);
  if (FilesOfSet(staging / asideName, plan).empty()) return;
  const TargetFile lock(first, Existing::ReplaceScratch);
  RemoveLeftover(staging, plan);
}

TargetSet::TargetSet(const CopyPlan& plan) : plan_(plan) {
  // The last name is the longest. If it is too long, fail before the long work.
  (void)NameIsTaken(plan.names.Path(plan.TargetCount() - 1));
  first_ = std::make_shared<TargetFile>(plan.names.Path(0), plan.existing, plan.rights);
  sharing_ = SharingOf(plan, *first_);
  const fs::path staging = StagingPath(plan.names.Path(0));
  if (plan.numberInSet) {
    RemoveLeftover(staging, plan);
    FindEarlier();
  }
  RequireRoom();
  first_->Reserve(plan.SpaceToReserve(0, sharing_));
  if (!plan.numberInSet) return;
  if (plan.list.line) {
    list_ = std::make_unique<TargetFile>(
        ListPath(plan), hasEarlierList_ ? Existing::Replace : Existing::Keep, plan.rights);
    list_->Reserve(ListLength(plan));
  }
  if (earlier_.empty()) {
    nameless_ = plan.TargetCount() > 1 && CanBeNamelessUntil(plan.names.Path(1));
    rights_ = RightsIn(plan.names.folder, plan.rights);
    return;
  }
  for (std::size_t i = 1; i < plan.TargetCount(); ++i) RemoveLeftoverOf(plan.names.Path(i));
  MakeOwnFolder(staging);
  try {
    MakeOwnFolder(staging / asideName);
  } catch (const FileError&) {
    (void)RemoveEmptyFolder(staging);
    throw;
  }
  staging_ = staging;
}

/// Finds the earlier set. Called under the lock: another program may have created one just now.
void TargetSet::FindEarlier() {
  const auto found = [&](const std::string& name, EntryKind kind) {
    const int number = plan_.numberInSet(name);
    if (number == 0) return;
    const bool isTarget = static_cast<std::size_t>(number) <= plan_.TargetCount();
    if (kind == EntryKind::Folder && !isTarget) return;
    const fs::path path = plan_.names.folder / PathFromText(name);
    RequireReplaceable(path);
    if (plan_.existing == Existing::Keep)
      throw FileError(path, std::make_error_code(std::errc::file_exists));
    const auto place = number == CopyPlan::numberOfList ? earlier_.begin()
                       : number == 1 ? earlier_.begin() + (hasEarlierList_ ? 1 : 0)
                                     : earlier_.end();
    earlier_.insert(place, name);
    hasEarlierList_ = hasEarlierList_ || number == CopyPlan::numberOfList;
    hasEarlierFirst_ = hasEarlierFirst_ || number == 1;
  };
  if (const std::error_code error = ListFolder(plan_.names.folder, found))
    throw FileError(plan_.names.folder, error);
}

/// Throws SpaceError if the disk is full. Deletes a failed split's leftover first if that helps:
/// pieces without a first one.
void TargetSet::RequireRoom() {
  const fs::path& folder = plan_.names.folder;
  const std::uint64_t needed = plan_.SpaceNeeded(sharing_) + ListLength(plan_);
  std::uint64_t free = FreeSpace(folder);
  const std::uint64_t inBlocks = needed + plan_.TargetCount() * blockLength;
  if (inBlocks > free && !hasEarlierFirst_ && !hasEarlierList_) {
    std::uint64_t held = 0;
    for (const std::string& name : earlier_) held += StateOf(folder / PathFromText(name)).space;
    if (needed <= held || needed - held <= free) {
      for (const std::string& name : earlier_) (void)RemoveFile(folder / PathFromText(name));
      earlier_.clear();
      free = FreeSpace(folder);
    }
  }
  if (needed > free) throw SpaceError(folder, needed, free);
}

std::shared_ptr<TargetFile> TargetSet::Begin(std::size_t index) {
  if (index == 0) return first_;
  fs::path target = plan_.names.Path(index);
  std::shared_ptr<TargetFile> file;
  if (nameless_) {
    file = TargetFile::StartNameless(plan_.names.folder, std::move(target), rights_);
  } else if (staging_.empty()) {
    const Existing existing = plan_.numberInSet ? Existing::Keep : plan_.existing;
    file = std::make_shared<TargetFile>(target, existing, plan_.rights);
  } else {
    file = std::make_shared<TargetFile>(staging_ / target.filename(), Existing::Keep, plan_.rights,
                                        target);
  }
  file->Reserve(plan_.SpaceToReserve(index, sharing_));
  return file;
}

void TargetSet::Complete(std::size_t index, TargetFile& file) {
  if (!staging_.empty() || plan_.flush) file.Flush();
  if (index == 0) return;
  file.Commit();
  const Lock lock(mutex_);
  if (staging_.empty()) named_.push_back(index);
}

void TargetSet::Finish(const std::vector<Digest>& digests) {
  if (list_) WriteList(digests);
  if (!staging_.empty()) {
    Exchange();
    return;
  }
  first_->Commit();
  try {
    if (list_) list_->Commit();
    if (plan_.flush) FlushFolder(plan_.names.folder);
  } catch (const FileError&) {
    // An incomplete set must have no first file.
    if (list_) (void)RemoveFile(plan_.names.Path(0));
    throw;
  }
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
  if (!staging_.empty()) list_->Flush();
}

/// Replaces the earlier set. Moves its list and first file aside first and commits the new ones
/// last, each with a flush. So after a power failure too, a first file or a list means a whole set.
void TargetSet::Exchange() {
  const fs::path& folder = plan_.names.folder;
  const std::size_t guards = hasEarlierList_ ? 2 : 1;
  std::size_t movedAside = 0;
  std::size_t named = 0;
  try {
    FlushFolder(staging_);
    while (movedAside < earlier_.size()) {
      const fs::path path = folder / PathFromText(earlier_[movedAside]);
      Move(path, Aside(movedAside), path);
      if (++movedAside <= guards) FlushFolder(folder);
    }
    for (std::size_t i = 1; i < plan_.TargetCount(); ++i, ++named) {
      const fs::path target = plan_.names.Path(i);
      Move(staging_ / target.filename(), target, target);
    }
    FlushFolder(folder);
    first_->Commit();
    ++named;
    FlushFolder(folder);
    if (!list_) return;
    list_->Commit();
    ++named;
    FlushFolder(folder);
  } catch (const FileError&) {
    UndoExchange(movedAside, named);
    throw;
  }
}

/// Rolls back an exchange, the last step first. On an error the earlier files stay aside, and the
/// same split restores them when it runs again.
void TargetSet::UndoExchange(std::size_t movedAside, std::size_t named) {
  const std::size_t count = plan_.TargetCount();
  const auto remove = [](const fs::path& path) {
    if (const std::error_code error = RemoveFile(path)) throw FileError(path, error);
  };
  try {
    if (named > count) remove(ListPath(plan_));
    if (named >= count) remove(plan_.names.Path(0));
    for (std::size_t i = std::min(named, count - 1); i > 0; --i) {
      const fs::path target = plan_.names.Path(i);
      Move(target, staging_ / target.filename(), target);
    }
    for (; movedAside > 0; --movedAside) {
      const fs::path path = plan_.names.folder / PathFromText(earlier_[movedAside - 1]);
      Move(Aside(movedAside - 1), path, path);
    }
  } catch (const FileError&) {
    staging_.clear();
  }
}

fs::path TargetSet::Aside(std::size_t index) const {
  return staging_ / asideName / PathFromText(earlier_[index]);
}

void TargetSet::CleanUp(bool removeTargets) {
  first_.reset();
  list_.reset();
  if (!staging_.empty()) (void)RemoveStaging(staging_, plan_);
  const Lock lock(mutex_);
  for (const std::size_t index : named_)
    if (removeTargets) (void)RemoveFile(plan_.names.Path(index));
}

}  // namespace slyver
