#include "desktop/system/MessageBox.h"

#include <wx/artprov.h>
#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/sizer.h>
#include <wx/statbmp.h>

#include "desktop/chrome/WindowSystem.h"
#include "desktop/system/ModernForm.h"
#include "desktop/system/WxText.h"

namespace slyver {

namespace {

/// The desktop's own message box leaves the icon out on some systems.
class MessageBox final : public wxDialog {
 public:
  MessageBox(wxWindow* parent, std::string_view text, Icon icon, long buttons);
};

MessageBox::MessageBox(wxWindow* parent, std::string_view text, Icon icon, long buttons)
    : wxDialog(parent, wxID_ANY, "Slyver") {
  const int gap = GetCharHeight();
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  if (icon != Icon::None) {
    const bool critical = icon == Icon::Critical;
    auto* const picture =
        new wxStaticBitmap(this, wxID_ANY,
                           wxArtProvider::GetBitmapBundle(
                               critical ? wxART_ERROR : wxART_INFORMATION, wxART_MESSAGE_BOX));
    SetAccessibleName(*picture, critical ? "Error" : "Information");
    row->Add(picture, wxSizerFlags().CentreVertical().Border(wxRIGHT, gap));
  }
  wxString shown = ToWx(text);
  shown.Replace("\r\n", "\n");
  constexpr int charactersPerLine = 60;
  row->Add(CreateTextSizer(shown, charactersPerLine * GetCharWidth()),
           wxSizerFlags(1).CentreVertical());
  auto* const column = new wxBoxSizer(wxVERTICAL);
  column->Add(row, wxSizerFlags(1).Expand().Border(wxALL, gap));
  column->Add(CreateStdDialogButtonSizer(buttons),
              wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, gap));
  for (const int id : {wxID_YES, wxID_NO, wxID_OK, wxID_CANCEL})
    if (wxWindow* const button = FindWindow(id)) MakeRoomForFont(*button);
  SetSizerAndFit(column);
  CentreOnParent();

  const bool asks = (buttons & wxYES_NO) == wxYES_NO;
  SetAffirmativeId(asks ? wxID_YES : wxID_OK);
  SetEscapeId(asks ? wxID_NO : (buttons & wxCANCEL) != 0 ? wxID_CANCEL : wxID_OK);
  FindWindow(GetAffirmativeId())->SetFocus();
  Bind(wxEVT_BUTTON, [this](wxCommandEvent& event) { EndModal(event.GetId()); });
}

}  // namespace

bool ShowMessageBox(wxWindow* parent, std::string_view text, Icon icon, long buttons) {
  MessageBox box(parent, text, icon, buttons);
  return box.ShowModal() == box.GetAffirmativeId();
}

}  // namespace slyver
