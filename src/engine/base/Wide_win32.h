#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace slyver {

/// Converts wide text to UTF-8; half a surrogate pair becomes U+FFFD.
std::string Utf8Of(std::wstring_view wide);

/// Converts UTF-8 to wide text; what is not UTF-8 becomes U+FFFD.
std::wstring WideOf(std::string_view utf8);

/// Returns `path` in the absolute form that system calls accept at any length. Never shown to the
/// user. Throws FileError.
std::wstring LongPath(const std::filesystem::path& path);

/// Returns `path` made absolute, "." and ".." resolved. Throws FileError.
std::wstring AbsolutePath(const std::filesystem::path& path);

/// Returns the error of the last call that failed on this thread, as std::errc if possible, so that
/// messages are the same on every system.
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

/// Repeats `step` for up to half a second while another program has the file open. Virus scanners
/// and search indexes open new files for a moment. Returns the last result, with its last error.
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
