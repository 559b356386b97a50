#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

namespace slyver {

// Operations on names. SourceFile and TargetFile read and write bytes.

/// True if `path` exists, dangling links included. Throws FileError if it cannot be looked at.
bool NameIsTaken(const std::filesystem::path& path);

/// True if `path` is a folder or a link to one; false on an error.
bool FolderExists(const std::filesystem::path& path);

/// True if `path` is a folder and not a link; false on an error.
bool IsFolderItself(const std::filesystem::path& path);

/// True if `path` is a regular file and not a link; false on an error.
bool IsFileItself(const std::filesystem::path& path);

/// Returns the bytes that this user can still write in the folder `path`; UINT64_MAX if unknown.
std::uint64_t FreeSpace(const std::filesystem::path& path);

/// Flushes the names in the folder `path` to the disk, if folders can be flushed. Throws FileError.
void FlushFolder(const std::filesystem::path& path);

/// Creates the folder `path`; false if it exists. Throws FileError.
bool MakeFolder(const std::filesystem::path& path);

/// Creates the folder `path`, on POSIX for its owner alone; false if `path` exists. Throws
/// FileError.
bool MakeNewFolder(const std::filesystem::path& path);

/// Deletes the folder `path` if it is empty. Returns the error, such as directory_not_empty; none
/// if it does not exist.
std::error_code RemoveEmptyFolder(const std::filesystem::path& path);

/// Deletes the file or link `path`. Returns the error; none if it does not exist.
std::error_code RemoveFile(const std::filesystem::path& path);

/// Renames the file `from` to `to` in the same file system, replacing a file. Throws FileError for
/// `to`.
void RenameFile(const std::filesystem::path& from, const std::filesystem::path& to);

/// The kind of an entry in a folder.
enum class EntryKind {
  File,    ///< A regular file, or a link to one.
  Folder,  ///< A folder itself.
  Other    ///< A link to a folder or to nothing, a device, a pipe.
};
using EntryVisitor = std::function<void(const std::string& name, EntryKind kind)>;

/// Calls `visit` for each entry of `folder`, in no fixed order; names are as in PathText(). Returns
/// the error that ended the listing, if any. Rethrows what `visit` throws.
std::error_code ListFolder(const std::filesystem::path& folder, const EntryVisitor& visit);

/// Returns the absolute path of a path that the user typed. Throws FileError.
std::filesystem::path FullPathOf(const std::filesystem::path& typed);

}  // namespace slyver
