#include "engine/base/Wide_win32.h"

#include <array>

#include "engine/base/FileError.h"

namespace slyver {

namespace {

/// Returns the std::errc of an error that users meet, or none.
std::errc NameOf(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
      return std::errc::no_such_file_or_directory;
    case ERROR_ACCESS_DENIED:
      return std::errc::permission_denied;
    case ERROR_ALREADY_EXISTS:
    case ERROR_FILE_EXISTS:
      return std::errc::file_exists;
    case ERROR_DIR_NOT_EMPTY:
      return std::errc::directory_not_empty;
    case ERROR_DIRECTORY:
      return std::errc::not_a_directory;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return std::errc::no_space_on_device;
    case ERROR_FILE_TOO_LARGE:
      return std::errc::file_too_large;
    case ERROR_FILENAME_EXCED_RANGE:
      return std::errc::filename_too_long;
    case ERROR_WRITE_PROTECT:
      return std::errc::read_only_file_system;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
      return std::errc::not_enough_memory;
    default:
      return {};
  }
}

/// Errors that NameOf() does not know, in the system's own words.
class SystemCategory final : public std::error_category {
 public:
  const char* name() const noexcept override { return "system"; }
  std::string message(int error) const override {
    if (error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION)
      return "Another program is using this file";
    std::array<wchar_t, 512> text = {};
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                       static_cast<DWORD>(error), 0, text.data(), text.size(), nullptr);
    std::wstring_view sentence(text.data(), length);
    sentence = sentence.substr(0, sentence.find_last_not_of(L"\r\n. ") + 1);
    return sentence.empty() ? "Error " + std::to_string(error) : Utf8Of(sentence);
  }
};

}  // namespace

std::string Utf8Of(std::wstring_view wide) {
  const int length = static_cast<int>(wide.size());
  std::string utf8(3 * wide.size(), '\0');
  utf8.resize(static_cast<std::size_t>(
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(),
                          static_cast<int>(utf8.size()), nullptr, nullptr)));
  return utf8;
}

std::wstring WideOf(std::string_view utf8) {
  const int length = static_cast<int>(utf8.size());
  std::wstring wide(utf8.size(), L'\0');
  wide.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), length)));
  return wide;
}

std::wstring AbsolutePath(const std::filesystem::path& path) {
  if (path.empty()) throw FileError(path, std::make_error_code(std::errc::invalid_argument));
  std::wstring absolute;
  DWORD length = MAX_PATH;
  do {
    absolute.resize(length);
    length = GetFullPathNameW(path.c_str(), length, absolute.data(), nullptr);
    if (length == 0) FailWithLastError(path);
  } while (length > absolute.size());
  absolute.resize(length);
  return absolute;
}

std::wstring LongPath(const std::filesystem::path& path) {
  const auto isDevice = [](const std::wstring& name) {
    return name.starts_with(LR"(\\?\)") || name.starts_with(LR"(\\.\)");
  };
  if (isDevice(path.native())) return path.native();
  std::wstring absolute = AbsolutePath(path);
  if (isDevice(absolute)) return absolute;
  if (absolute.starts_with(LR"(\\)")) return LR"(\\?\UNC\)" + absolute.substr(2);
  return LR"(\\?\)" + absolute;
}

std::error_code LastError() {
  static const SystemCategory category;
  const DWORD error = GetLastError();
  const std::errc name = NameOf(error);
  if (name != std::errc{}) return std::make_error_code(name);
  return {static_cast<int>(error), category};
}

void FailWithLastError(const std::filesystem::path& path) {
  throw FileError(path, LastError());
}

}  // namespace slyver
