#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

namespace slyver {

/// What the tests need of the system that they run on.

/// Keeps the program's settings, and where the system allows it its private files, in the folder
/// `root` while what it returns lives.
std::shared_ptr<void> KeepPlacesIn(const std::filesystem::path& root);

/// Makes the link `at` to a file or folder, a full path. False where the system has no such links,
/// or only for administrators.
bool MakeLink(const std::filesystem::path& to, const std::filesystem::path& at);

/// True if the keys that tests press reach a form on this system's test screen. Under Wine this was
/// not tried; there scripts drive the forms.
bool KeysReachForms();

/// How many bytes the file takes on the disk, holes left out.
std::uint64_t SpaceTaken(const std::filesystem::path& path);

/// Holds a file, which is made if need be, as another program does that is writing it, while what
/// it returns lives.
std::shared_ptr<void> LockFile(const std::filesystem::path& path);

}  // namespace slyver
