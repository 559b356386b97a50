#include "engine/split/FindFiles.h"

#include <chrono>
#include <system_error>
#include <vector>

#include "engine/base/Ascii.h"
#include "engine/base/FileError.h"
#include "engine/base/PathText.h"
#include "engine/disk/Disk.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds progressInterval{100};

/// The most folders open at once. Below that depth, names of subfolders are stored.
constexpr int openLevels = 64;

/// The prefix of the staging folders of jobs.
constexpr std::string_view ownFolders = ".slyver-";

struct Search {
  const fs::path& top;
  std::string_view pattern;
  Ui& ui;
  const FoundFile& found;
  FindCounts counts = {};
  std::uint64_t names = 0;
  Clock::time_point reported = Clock::now();

  void CountName() {
    ++names;
    const Clock::time_point now = Clock::now();
    if (now - reported < progressInterval) return;
    reported = now;
    if (!ui.GoOn()) throw Cancelled{};
    ui.SetProgress({.bar = "PB1", .searched = names});
  }

  /// Searches the folder `below`. Returns the error of listing that folder itself, if any.
  std::error_code LookInto(const fs::path& below, int level) {
    std::vector<std::string> later;
    const auto look = [&](const std::string& name, EntryKind kind) {
      CountName();
      if (kind == EntryKind::Folder) {
        ++counts.folders;
        if (name.starts_with(ownFolders)) return;
        if (level < openLevels)
          LookBelow(below / PathFromText(name), level + 1);
        else
          later.push_back(name);
      } else if (kind == EntryKind::File && EndsIgnoringCase(name, pattern.substr(1))) {
        ++counts.files;
        found(below, name);
      }
    };
    const std::error_code error = ListFolder(top / below, look);
    for (const std::string& name : later) LookBelow(below / PathFromText(name), level + 1);
    return error;
  }

  void LookBelow(const fs::path& below, int level) {
    if (LookInto(below, level) && counts.unreadable++ == 0) counts.firstUnreadable = below;
  }
};

}  // namespace

FindCounts FindFilesAPI(const fs::path& path, std::string_view pattern, Ui& ui,
                        const FoundFile& found) {
  Search search{path, pattern, ui, found};
  if (const std::error_code error = search.LookInto({}, 1)) throw FileError(path, error);
  return search.counts;
}

std::string StripNulls(std::string_view text) {
  return std::string(text.substr(0, text.find('\0')));
}

std::string StripBackslash(std::string_view path) {
  const std::size_t first = path.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  path = path.substr(first, path.find_last_not_of(' ') + 1 - first);
  if (path.back() == static_cast<char>(fs::path::preferred_separator)) path.remove_suffix(1);
  return std::string(path);
}

bool DirExists(std::string_view path) {
  return FolderExists(PathFromText(StripBackslash(path)));
}

}  // namespace slyver
