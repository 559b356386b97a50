#pragma once

#include <wx/strconv.h>
#include <wx/string.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "engine/base/PathText.h"

namespace slyver {

/// Converts UTF-8 to the toolkit's text. Bytes that are not UTF-8 survive the way back through
/// FromWx().
inline wxString ToWx(std::string_view text) {
  const wxMBConvUTF8 conversion(wxMBConvUTF8::MAP_INVALID_UTF8_TO_PUA);
  return {text.data(), conversion, text.size()};
}

inline std::string FromWx(const wxString& text) {
  const wxMBConvUTF8 conversion(wxMBConvUTF8::MAP_INVALID_UTF8_TO_PUA);
  const wxScopedCharBuffer bytes = text.mb_str(conversion);
  return {bytes.data(), bytes.length()};
}

inline wxString PathToWx(const std::filesystem::path& path) {
  return ToWx(PathText(path));
}

inline std::filesystem::path PathFromWx(const wxString& text) {
  return PathFromText(FromWx(text));
}

}  // namespace slyver
