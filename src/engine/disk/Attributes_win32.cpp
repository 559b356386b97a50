#include "engine/base/Wide_win32.h"
#include "engine/disk/Attributes.h"

namespace slyver {

void ClearAttributes(const std::filesystem::path& path) {
  constexpr DWORD cleared = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
  const std::wstring name = LongPath(path);
  const DWORD attributes = GetFileAttributesW(name.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & cleared) == 0) return;
  (void)SetFileAttributesW(name.c_str(), attributes & ~cleared);
}

}  // namespace slyver
