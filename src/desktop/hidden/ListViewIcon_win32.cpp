#include <windows.h>
// shellapi.h needs windows.h first.
#include <shellapi.h>
#include <wx/icon.h>

#include "desktop/hidden/ListViewIcon.h"

namespace slyver {

wxBitmap GetShellIcon(const wxString& extension, int size) {
  SHFILEINFOW found = {};
  const wxString name = "x." + extension;
  // With SHGFI_USEFILEATTRIBUTES the file need not exist.
  if (SHGetFileInfoW(name.wc_str(), FILE_ATTRIBUTE_NORMAL, &found, sizeof found,
                     SHGFI_ICON | SHGFI_SMALLICON | SHGFI_USEFILEATTRIBUTES) == 0 ||
      found.hIcon == nullptr)
    return {};
  wxIcon icon;
  icon.CreateFromHICON(found.hIcon);
  wxBitmap picture(icon);
  if (picture.IsOk() && picture.GetSize() != wxSize(size, size))
    wxBitmap::Rescale(picture, wxSize(size, size));
  return picture;
}

}  // namespace slyver
