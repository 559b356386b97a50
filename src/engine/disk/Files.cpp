#include "engine/disk/Files.h"

#include "engine/base/FileError.h"
#include "engine/base/Numbers.h"
#include "engine/base/PathText.h"
#include "engine/disk/Disk.h"

namespace slyver {

FileState StateOf(const std::filesystem::path& path) {
  const SourceFile file(path);
  FileState state = file.Opened();
  state.rights = file.RightsOfReaders();
  return state;
}

std::uint64_t FileLength(const std::filesystem::path& path) {
  return StateOf(path).length;
}

std::string ReadSmallFile(const std::filesystem::path& path) {
  const SourceFile file(path);
  std::string bytes(static_cast<std::size_t>(file.Length()), '\0');
  file.Read(0, bytes);
  return bytes;
}

void WriteSmallFile(const std::filesystem::path& path, std::string_view bytes, Existing existing) {
  TargetFile file(path, existing);
  file.Write(0, bytes);
  file.Commit();
}

std::filesystem::path FirstFreePath(const std::filesystem::path& folder, const MarkedName& nameOf,
                                    const std::function<bool(const std::filesystem::path&)>& take) {
  for (int n = 0; n <= maxCount; ++n) {
    std::filesystem::path path =
        folder / PathFromText(nameOf(n == 0 ? std::string{} : "[" + std::to_string(n) + "] "));
    if (take(path)) return path;
  }
  throw OverflowError();
}

}  // namespace slyver
