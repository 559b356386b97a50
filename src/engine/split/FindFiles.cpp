#include "engine/split/FindFiles.h"

#include <system_error>
#include <vector>

#include "engine/system/Ascii.h"
#include "engine/system/Disk.h"
#include "engine/system/FileError.h"
#include "engine/system/PathText.h"

namespace slyver {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t entriesBetweenEvents = 256;

}  // namespace

FindCounts FindFilesAPI(const fs::path& path, std::string_view pattern, Ui& ui,
                        const std::function<void(const fs::path&)>& found) {
  FindCounts counts;
  std::uint64_t entries = 0;
  std::vector<fs::path> folders = {path};
  for (std::size_t next = 0; next < folders.size(); ++next) {
    const fs::path folder = folders[next];
    const std::error_code error = ListFolder(folder, [&](const fs::path& entry, EntryKind kind) {
      if (entries++ % entriesBetweenEvents == 0 && !ui.GoOn()) throw Cancelled{};
      if (kind == EntryKind::Folder) folders.push_back(entry);
      if (kind != EntryKind::File ||
          !EndsIgnoringCase(PathText(entry.filename()), pattern.substr(1)))
        return;
      ++counts.files;
      found(entry);
    });
    if (error && next == 0) throw FileError(path, error);
  }
  counts.folders = folders.size() - 1;
  return counts;
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
