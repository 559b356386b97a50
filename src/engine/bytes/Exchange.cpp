#include "engine/bytes/Exchange.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "engine/base/FileError.h"
#include "engine/base/Mutex.h"
#include "engine/base/PathText.h"
#include "engine/disk/Disk.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view asideName = "earlier";
constexpr int numberOfList = std::numeric_limits<int>::max();

/// A file of a set: its number, numberOfList for the list, and its name.
using SetFile = std::pair<int, std::string>;

/// Returns the files of the plan's set in a folder, in ascending order; none on an error.
std::vector<SetFile> FilesOfSet(const fs::path& folder, const CopyPlan& plan) {
  std::vector<SetFile> files;
  (void)ListFolder(folder, [&](const std::string& name, EntryKind kind) {
    if (kind == EntryKind::Folder) return;
    const int number = name == plan.list.name ? numberOfList : plan.names.NumberOf(name);
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

/// Returns the staging folder of the plan's set.
fs::path StagingPath(const CopyPlan& plan) {
  return TemporaryPath(plan.names.Path(0)).replace_extension(".set");
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
  const int firstStaged = staged.empty() ? numberOfList : staged.front().first;
  const auto isBetween = [](const SetFile& file) {
    return file.first > 1 && file.first < numberOfList;
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

/// A new set that replaces an earlier one when it is complete.
class Exchange final : public TargetSet {
 public:
  Exchange(EarlierSet earlier, const CopyPlan& plan, std::shared_ptr<TargetFile> first,
           const Sharing& sharing)
      : TargetSet(plan, std::move(first), sharing),
        earlier_(std::move(earlier)),
        staging_(StagingPath(plan)) {
    MakeOwnFolder(staging_);
    try {
      MakeOwnFolder(staging_ / asideName);
    } catch (const FileError&) {
      (void)RemoveEmptyFolder(staging_);
      throw;
    }
  }

  bool AreNamedApart() const override { return false; }

  void Complete(std::size_t index, TargetFile& file) override EXCLUDES(mutex_) {
    file.Flush();
    if (index == 0) return;
    file.Commit();
    const Lock lock(mutex_);
    staged_.push_back(index);
  }

  void Finish(const std::vector<Digest>& digests) override {
    if (List() != nullptr) {
      WriteList(digests);
      List()->Flush();
    }
    try {
      ExchangeAll();
    } catch (const FileError&) {
      Undo();
      throw;
    }
  }

  void CleanUp(bool /*removeTargets*/) override {
    CloseFirstAndList();
    if (!isStuck_) (void)RemoveStaging(staging_, Plan());
  }

 private:
  /// A renamed file. One without `from` was committed, and is deleted to undo that.
  struct Step {
    fs::path from;
    fs::path to;
  };

  std::shared_ptr<TargetFile> NewTarget(const fs::path& path) override {
    RemoveLeftoverOf(path);
    return std::make_shared<TargetFile>(staging_ / path.filename(), Existing::Keep, Plan().rights,
                                        path);
  }

  /// Moves the earlier list and first file aside first and commits the new ones last, each with a
  /// flush. So after a power failure too, a first file or a list means a whole set.
  void ExchangeAll() EXCLUDES(mutex_) {
    const fs::path& folder = Plan().names.folder;
    FlushFolder(staging_);
    const std::size_t guards = earlier_.hasList ? 2 : 1;
    for (const std::string& name : earlier_.names) {
      const fs::path path = PathFromText(name);
      MoveOnTheWay(folder / path, staging_ / asideName / path, folder / path);
      if (journal_.size() <= guards) FlushFolder(folder);
    }
    const Lock lock(mutex_);
    std::sort(staged_.begin(), staged_.end());
    for (const std::size_t index : staged_) {
      const fs::path target = Plan().names.Path(index);
      MoveOnTheWay(staging_ / target.filename(), target, target);
    }
    FlushFolder(folder);
    Commit(First(), Plan().names.Path(0));
    if (List() != nullptr) Commit(*List(), folder / PathFromText(Plan().list.name));
  }

  void MoveOnTheWay(const fs::path& from, const fs::path& to, const fs::path& named) {
    Move(from, to, named);
    journal_.push_back({from, to});
  }

  void Commit(TargetFile& file, const fs::path& path) {
    file.Commit();
    journal_.push_back({{}, path});
    FlushFolder(path.parent_path());
  }

  /// Rolls back, the last step first. On an error the earlier files stay aside, and the same split
  /// restores them when it runs again.
  void Undo() {
    try {
      for (; !journal_.empty(); journal_.pop_back()) {
        const auto& [from, to] = journal_.back();
        if (!from.empty())
          Move(to, from, to);
        else if (const std::error_code error = RemoveFile(to))
          throw FileError(to, error);
      }
    } catch (const FileError&) {
      isStuck_ = true;
    }
  }

  const EarlierSet earlier_;
  const fs::path staging_;
  std::vector<Step> journal_;
  bool isStuck_ = false;  ///< An exchange could not be undone.

  Mutex mutex_;
  std::vector<std::size_t> staged_ GUARDED_BY(mutex_);  ///< The complete targets in `staging_`.
};

}  // namespace

void EarlierSet::Add(const std::string& name, bool isList, bool isFirst) {
  const auto place = isList    ? names.begin()
                     : isFirst ? names.begin() + (hasList ? 1 : 0)
                               : names.end();
  names.insert(place, name);
  hasList = hasList || isList;
  hasFirst = hasFirst || isFirst;
}

void RemoveStagingLeftover(const CopyPlan& plan) {
  const fs::path staging = StagingPath(plan);
  if (!IsFolderItself(staging)) return;
  UndoKilledExchange(staging, plan);
  const std::error_code error = RemoveStaging(staging, plan);
  if (error == std::errc::directory_not_empty)
    throw Error(PathText(staging) + " Holds Other Files. Move Them Away.");
  if (error) throw FileError(staging, error);
}

void RestoreEarlierSet(const CopyPlan& plan) {
  if (FilesOfSet(StagingPath(plan) / asideName, plan).empty()) return;
  const TargetFile lock(plan.names.Path(0), Existing::ReplaceScratch);
  RemoveStagingLeftover(plan);
}

std::unique_ptr<TargetSet> ExchangeFor(EarlierSet earlier, const CopyPlan& plan,
                                       std::shared_ptr<TargetFile> first, const Sharing& sharing) {
  return std::make_unique<Exchange>(std::move(earlier), plan, std::move(first), sharing);
}

}  // namespace slyver
