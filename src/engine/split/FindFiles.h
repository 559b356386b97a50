#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "engine/talk/Ui.h"

namespace slyver {

/// The results of a search.
struct FindCounts {
  std::uint64_t files = 0;                ///< Files whose name matches.
  std::uint64_t folders = 0;              ///< Subfolders, at any depth.
  std::uint64_t unreadable = 0;           ///< Subfolders that could not be read.
  std::filesystem::path firstUnreadable;  ///< The first of them, relative to the folder searched.
};

/// Receives a file that was found: its folder, relative to the folder searched, and its name.
using FoundFile = std::function<void(const std::filesystem::path& below, const std::string& name)>;

/// Searches `path` and its subfolders for regular files that match `pattern`: "*" and an ending of
/// either case. Calls `found` for each, in no fixed order. Links to files count as files; links to
/// folders are not followed. Skips subfolders whose names begin with ".slyver-", the work folders
/// of jobs. Reports the number of names to `ui` ten times a second. Memory grows with the number of
/// names only below 64 levels of folders.
///
/// Throws FileError if `path` itself cannot be read, and Cancelled if the user stops the search.
FindCounts FindFilesAPI(const std::filesystem::path& path, std::string_view pattern, Ui& ui,
                        const FoundFile& found);

/// Returns `text` up to its first zero character.
std::string StripNulls(std::string_view text);

/// Returns `path` without blanks at both ends and then without one separator at its end.
std::string StripBackslash(std::string_view path);

/// True if the folder StripBackslash(`path`) exists.
bool DirExists(std::string_view path);

}  // namespace slyver
