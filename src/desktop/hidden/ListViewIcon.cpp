#include "desktop/hidden/ListViewIcon.h"

#include <wx/bmpbndl.h>

namespace slyver {

namespace {

/// A sheet of paper with a corner turned down.
constexpr const char* sheet =
    R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 16 16" width="16" height="16">)"
    R"(<path d="M3.5 1.5h6l3 3v10h-9z" fill="#fff" stroke="#6b7a82"/>)"
    R"(<path d="M9.5 1.5v3h3" fill="none" stroke="#6b7a82"/></svg>)";

}  // namespace

IconList::IconList(const wxWindow& window)
    : size_(window.FromDIP(16)),
      default_(wxBitmapBundle::FromSVG(sheet, wxSize(16, 16)).GetBitmap({size_, size_})),
      images_(size_, size_) {
  Add(defaultKey, default_);
}

void IconList::Add(const wxString& key, const wxBitmap& icon) {
  indices_[key] = images_.Add(icon);
}

wxString GetFileIconKey(const wxString& fileName, IconList& imageList, const wxString& defaultKey) {
  const wxString extension = fileName.Contains(".") ? fileName.AfterLast('.').Upper() : wxString();
  if (extension.empty() || extension == "EXE") return defaultKey;
  if (!imageList.Has(extension)) {
    const wxBitmap icon = GetShellIcon(extension, imageList.Size());
    imageList.Add(extension, icon.IsOk() ? icon : imageList.Default());
  }
  return extension;
}

}  // namespace slyver
