#include "engine/system/WorkFolders.h"

#include <array>
#include <string>

#include "engine/system/Wide_win32.h"

namespace slyver {

namespace {

/// Whether this user can make files in the folder `folder`. A file is made for it, which is gone
/// again when its handle is closed.
bool CanMakeFilesIn(const std::filesystem::path& folder) {
  const std::wstring name = L".slyver-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                            std::to_wstring(GetCurrentThreadId()) + L".tmp";
  const Handle probe(CreateFileW(LongPath(folder / name).c_str(), GENERIC_WRITE, 0, nullptr,
                                 CREATE_NEW, FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE,
                                 nullptr));
  return static_cast<bool>(probe);
}

}  // namespace

std::filesystem::path PrivateFolder() {
  std::filesystem::path root = LR"(C:\)";
  if (CanMakeFilesIn(root)) return root;
  std::array<wchar_t, MAX_PATH + 2> folder = {};
  if (GetTempPathW(folder.size(), folder.data()) == 0) FailWithLastError(root);
  return folder.data();
}

std::filesystem::path HomeFolder() {
  return LR"(c:\)";
}

}  // namespace slyver
