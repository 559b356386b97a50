#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "engine/talk/Ui.h"

namespace slyver {

/// What a search has come across.
struct FindCounts {
  std::uint64_t files = 0;                ///< Files whose name matches.
  std::uint64_t folders = 0;              ///< Subfolders, at any depth.
  std::uint64_t unreadable = 0;           ///< How many of them could not be read.
  std::filesystem::path firstUnreadable;  ///< One of those, relative to the folder searched.
};

/// Told of a file that was found: the folder that it lies in, and its name.
using FoundFile = std::function<void(const std::filesystem::path& below, const std::string& name)>;

/// Searches the folder `path` and all folders below it for regular files whose name ends as
/// `pattern` says: "*" and an ending, whose letters may be of either case. Calls `found` for each,
/// in no fixed order, with the path of its folder relative to `path`, which is empty for `path`
/// itself, and with its name. Links to files count as files; links to folders are not followed, and
/// subfolders whose name begins with ".slyver-" are not searched: a job works in them, or was
/// killed. Ten times a second it reports to `ui` how many names it has seen, and asks whether to go
/// on. Memory does not grow with the number of names, but for folders more than 64 levels down.
///
/// Throws FileError when `path` itself cannot be read, and Cancelled when the user stops the
/// search.
FindCounts FindFilesAPI(const std::filesystem::path& path, std::string_view pattern, Ui& ui,
                        const FoundFile& found);

/// The part of `text` before its first zero character; all of it when there is none.
std::string StripNulls(std::string_view text);

/// `path` without blanks at its ends and then without one separator at its end.
std::string StripBackslash(std::string_view path);

/// Whether the folder StripBackslash(`path`) exists.
bool DirExists(std::string_view path);

}  // namespace slyver
