#include "desktop/hidden/ListViewIcon.h"

#include <gtk/gtk.h>

#include <memory>

namespace slyver {

namespace {

struct Release {
  void operator()(void* object) const { g_object_unref(object); }
  void operator()(char* text) const { g_free(text); }
};

}  // namespace

wxBitmap GetShellIcon(const wxString& extension, int size) {
  // MIME types are registered for extensions in lower case.
  const wxString name = "x." + extension.Lower();
  const std::unique_ptr<char, Release> type(
      g_content_type_guess(name.utf8_str(), nullptr, 0, nullptr));
  const std::unique_ptr<GIcon, Release> icon(g_content_type_get_icon(type.get()));
  const std::unique_ptr<GtkIconInfo, Release> found(gtk_icon_theme_lookup_by_gicon(
      gtk_icon_theme_get_default(), icon.get(), size, GTK_ICON_LOOKUP_FORCE_SIZE));
  GdkPixbuf* const picture = found ? gtk_icon_info_load_icon(found.get(), nullptr) : nullptr;
  return picture == nullptr ? wxBitmap() : wxBitmap(picture);
}

}  // namespace slyver
