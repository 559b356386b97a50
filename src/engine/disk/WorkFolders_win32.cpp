#include "engine/disk/WorkFolders.h"

#include <array>

#include "engine/base/Wide_win32.h"

namespace slyver {

std::filesystem::path PrivateFolder() {
  std::array<wchar_t, MAX_PATH + 2> folder = {};
  if (GetTempPathW(folder.size(), folder.data()) == 0) FailWithLastError(LR"(C:\)");
  return folder.data();
}

std::filesystem::path HomeFolder() {
  return LR"(c:\)";
}

}  // namespace slyver
