#include "system/Disk.h"

#include "system/FileError.h"

namespace slyver {

void TryToRemoveFile(const std::filesystem::path& path) {
  try {
    RemoveFile(path);
  } catch (const FileError&) {
    return;
  }
}

}  // namespace slyver
