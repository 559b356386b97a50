#include "desktop/system/MessageBox.h"

#include <gtk/gtk.h>
#include <wx/artprov.h>
#include <wx/button.h>
#include <wx/display.h>
#include <wx/scrolwin.h>
#include <wx/statbmp.h>
#include <wx/stattext.h>

#include <algorithm>

#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/Dialog.h"
#include "desktop/system/WxText.h"

namespace slyver {

namespace {

/// A message box. GTK's own lacks the icon on some systems and cuts long words.
class MessageBox final : public Dialog {
 public:
  MessageBox(wxWindow* parent, std::string_view text, Icon icon, long buttons);

 private:
  wxWindow* NewText(const wxString& text, const wxSize& largest);
};

/// Wraps a text at `width` pixels, inside words if needed, and makes it selectable. Returns its
/// size.
wxSize WrapAnywhere(const wxStaticText& text, int width) {
  GtkWidget* const widget = text.GetHandle();
  GtkLabel* const label = GTK_LABEL(widget);
  gtk_label_set_line_wrap(label, TRUE);
  gtk_label_set_line_wrap_mode(label, PANGO_WRAP_WORD_CHAR);
  gtk_label_set_selectable(label, TRUE);
  PangoLayout* const layout = gtk_widget_create_pango_layout(widget, gtk_label_get_text(label));
  pango_layout_set_width(layout, width * PANGO_SCALE);
  pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
  wxSize size;
  pango_layout_get_pixel_size(layout, &size.x, &size.y);
  g_object_unref(layout);
  // Rounding would wrap a text that just fits.
  return {std::min(size.x + 2, width), size.y};
}

MessageBox::MessageBox(wxWindow* parent, std::string_view text, Icon icon, long buttons)
    : Dialog(parent) {
  wxSize largest = wxDisplay(parent == nullptr ? this : parent).GetClientArea().GetSize() * 2 / 3;
  largest -= {2 * Margin(), 5 * Margin()};
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  if (icon != Icon::None) {
    const bool critical = icon == Icon::Critical;
    auto* const picture =
        new wxStaticBitmap(this, wxID_ANY,
                           wxArtProvider::GetBitmapBundle(
                               critical ? wxART_ERROR : wxART_INFORMATION, wxART_MESSAGE_BOX));
    SetAccessibleName(*picture, critical ? "Error" : "Information");
    row->Add(picture, wxSizerFlags().Top().Border(wxRIGHT, Margin()));
    largest.x -= picture->GetBestSize().x + Margin();
  }
  wxString shown = ToWx(text);
  shown.Replace("\r\n", "\n");
  constexpr int charactersPerLine = 60;
  largest.x = std::min(largest.x, charactersPerLine * GetCharWidth());
  row->Add(NewText(shown, largest), wxSizerFlags(1).CentreVertical());
  Complete(row, buttons);
  const bool lastIsDefault = (buttons & (wxNO_DEFAULT | wxCANCEL_DEFAULT)) != 0;
  auto* const button =
      dynamic_cast<wxButton*>(FindWindow(lastIsDefault ? GetEscapeId() : GetAffirmativeId()));
  button->SetDefault();
  button->SetFocus();
}

/// Creates the text; a text higher than `largest` scrolls.
wxWindow* MessageBox::NewText(const wxString& text, const wxSize& largest) {
  const auto made = [&](wxWindow* in) {
    auto* const label = new wxStaticText(in, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                         wxST_NO_AUTORESIZE, "Text");
    label->SetLabelText(text);
    return label;
  };
  wxStaticText* label = made(this);
  wxSize size = WrapAnywhere(*label, largest.x);
  if (size.y <= largest.y) {
    label->SetMinSize(size);
    return label;
  }
  label->Destroy();
  auto* const area = new wxScrolledWindow(this, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                          wxVSCROLL | wxBORDER_NONE);
  label = made(area);
  size = WrapAnywhere(*label, largest.x - Margin());
  label->SetSize(size);
  label->SetMinSize(size);
  area->SetVirtualSize(size);
  area->SetScrollRate(0, GetCharHeight());
  area->SetMinSize(largest);
  return area;
}

}  // namespace

bool ShowMessageBox(wxWindow* parent, std::string_view text, Icon icon, long buttons) {
  MessageBox box(parent, text, icon, buttons);
  return box.ShowModal() == box.GetAffirmativeId();
}

}  // namespace slyver
