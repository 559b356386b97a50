#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

namespace slyver {

/// All that the program does with names on the disk; what it does with the bytes of files is in
/// SourceFile and TargetFile. Paths may be as long as the system can bear.

/// Whether something bears the name `path`, be it a link that leads nowhere. Throws FileError when
/// that cannot be told: what cannot be seen is not to be taken for free.
bool NameIsTaken(const std::filesystem::path& path);

/// Whether `path` is a folder, or a link to one. A path that cannot be looked at is none.
bool FolderExists(const std::filesystem::path& path);

/// Whether `path` is a folder and no link to one.
bool IsFolderItself(const std::filesystem::path& path);

/// Whether `path` is a regular file and no link to one.
bool IsFileItself(const std::filesystem::path& path);

/// How many bytes this user can still write in the folder `path`; where that cannot be told, as
/// many as there are numbers.
std::uint64_t FreeSpace(const std::filesystem::path& path);

/// Waits until the names in the folder `path` are on the disk as they are now. Where folders cannot
/// be flushed it does nothing. Throws FileError.
void FlushFolder(const std::filesystem::path& path);

/// Creates the folder `path`; `false` if it exists, and then it stays as it is. Throws FileError.
bool MakeFolder(const std::filesystem::path& path);

/// Makes the folder `path`, which on POSIX nobody but its owner may enter. False when something
/// bears the name. Throws FileError.
bool MakeNewFolder(const std::filesystem::path& path);

/// Removes the folder `path` if it is empty. Returns why it could not, directory_not_empty among
/// others; nothing of that name is no failure.
std::error_code RemoveEmptyFolder(const std::filesystem::path& path);

/// Removes the file or link `path`. Returns why it could not; nothing of that name is no failure.
std::error_code RemoveFile(const std::filesystem::path& path);

/// Gives the file `from` the name `to` in the same file system; a file of that name is replaced.
/// Throws FileError, naming `to`.
void RenameFile(const std::filesystem::path& from, const std::filesystem::path& to);

/// What is told of a name in a folder.
enum class EntryKind {
  File,    ///< A regular file, or a link to one.
  Folder,  ///< A folder itself.
  Other    ///< A link to a folder or to nothing, a device, a pipe.
};
using EntryVisitor = std::function<void(const std::string& name, EntryKind kind)>;

/// Calls `visit` for everything in the folder `folder`, in no fixed order, with its name as
/// PathText() has it; what it throws ends the listing and reaches the caller. Returns the error
/// with which the listing ended, if any.
std::error_code ListFolder(const std::filesystem::path& folder, const EntryVisitor& visit);

/// The full path of a name that the user typed, which is relative to the current folder. Throws
/// FileError when there is none.
std::filesystem::path FullPathOf(const std::filesystem::path& typed);

}  // namespace slyver
