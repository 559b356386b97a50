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

  /// Holds the icon of "DEFAULT", in a size that suits `window`.
  explicit IconList(const wxWindow& window);

  wxImageList& Images() { return images_; }
  bool Has(const wxString& key) const { return indices_.contains(key); }
  void Add(const wxString& key, const wxBitmap& icon);

  /// The place of the icon of `key` in Images(), from 0; `key` must be there.
  int IndexOf(const wxString& key) const { return indices_.at(key); }

  /// The width and height of an icon in pixels.
  int Size() const { return size_; }

  /// The picture of "DEFAULT".
  const wxBitmap& Default() const { return default_; }

 private:
  int size_;
  wxBitmap default_;
  wxImageList images_;
  std::map<wxString, int> indices_;
};

/// The key of the icon for a file of this name: its extension in capitals, whose icon is looked up
/// and added when `imageList` does not hold it yet. A name without an extension gets `defaultKey`,
/// and so does a program, whose icon is its own and not that of its kind.
wxString GetFileIconKey(const wxString& fileName, IconList& imageList, const wxString& defaultKey);

/// The system's small icon for files of this extension, `size` pixels wide and high; no bitmap
/// (IsOk() is false) when it has none.
wxBitmap GetShellIcon(const wxString& extension, int size);

}  // namespace slyver
