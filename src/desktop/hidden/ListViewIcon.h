#pragma once

#include <wx/bitmap.h>
#include <wx/imaglist.h>
#include <wx/string.h>
#include <wx/window.h>

#include <map>

namespace slyver {

/// Small icons by key: an upper-case file extension, or "DEFAULT".
class IconList {
 public:
  static constexpr const char* defaultKey = "DEFAULT";

  /// Creates a list with the icon of "DEFAULT", in a size for the resolution of `window`.
  explicit IconList(const wxWindow& window);

  wxImageList& Images() { return images_; }
  bool Has(const wxString& key) const { return indices_.contains(key); }
  void Add(const wxString& key, const wxBitmap& icon);

  /// Returns the index of the icon of `key` in Images(), from 0. `key` must exist.
  int IndexOf(const wxString& key) const { return indices_.at(key); }

  /// Returns the width and height of an icon in pixels.
  int Size() const { return size_; }

  /// Returns the icon of "DEFAULT".
  const wxBitmap& Default() const { return default_; }

 private:
  int size_;
  wxBitmap default_;
  wxImageList images_;
  std::map<wxString, int> indices_;
};

/// Returns the key of a file's icon, its extension in capitals, and adds the icon to `imageList` if
/// missing. Returns `defaultKey` for a name without an extension, and for programs, each of which
/// has an icon of its own.
wxString GetFileIconKey(const wxString& fileName, IconList& imageList, const wxString& defaultKey);

/// Returns the system's icon for files of this extension, `size` pixels wide and high. The bitmap's
/// IsOk() is false if there is none.
wxBitmap GetShellIcon(const wxString& extension, int size);

}  // namespace slyver
