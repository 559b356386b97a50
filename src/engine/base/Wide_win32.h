#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace slyver {

/// What the files for Windows share. The system's calls take wide text; everywhere else text is
/// UTF-8 and paths are path objects.

/// UTF-8 text of wide text; what is no text (half a surrogate pair) becomes U+FFFD.
std::string Utf8Of(std::wstring_view wide);

/// Wide text of UTF-8 text; what is not UTF-8 becomes U+FFFD.
std::wstring WideOf(std::string_view utf8);

/// `path`, made absolute, as the system's calls take it whatever its length. To be used at the call
/// alone: the user never sees this form. Throws FileError when the path has no absolute form.
std::wstring LongPath(const std::filesystem::path& path);

/// `path` made absolute, "." and ".." resolved. Throws FileError when that fails.
std::wstring AbsolutePath(const std::filesystem::path& path);

/// The error of the last call that failed on this thread, as std::errc where that has a name for
/// it, so that the same failure is told in the same words on every system.
std::error_code LastError();

/// Throws a FileError with LastError().
[[noreturn]] void FailWithLastError(const std::filesystem::path& path);

/// A system handle, closed with the object.
class Handle {
 public:
  Handle() = default;
  explicit Handle(HANDLE handle) : handle_(handle) {}
  ~Handle() { Close(); }
  Handle(Handle&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  HANDLE Get() const { return handle_; }
  explicit operator bool() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
  void Close() {
    if (*this) (void)CloseHandle(handle_);
    handle_ = nullptr;
  }

 private:
  HANDLE handle_ = nullptr;
};

/// Runs `step` until it returns true, for half a second at most, while it fails because another
/// program has the file open: virus scanners and search indexes look into new files for a moment.
/// Returns what the last run returned; the last error is that run's.
template <typename Step>
bool Patiently(const Step& step) {
  for (int tries = 10;; --tries) {
    if (step()) return true;
    const DWORD error = GetLastError();
    const bool passing = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED ||
                         error == ERROR_DIR_NOT_EMPTY;
    if (!passing || tries == 0) return false;
    Sleep(50);
    SetLastError(error);
  }
}

}  // namespace slyver
